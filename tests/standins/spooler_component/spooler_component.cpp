#include "spooler_component.h"

#include <winspool.h>

#include <chrono>
#include <utility>

namespace standin {

namespace {
wchar_t kLegacyDataAvailable[] = L"LegacyDataAvailable";
constexpr int kWatchIntervalMs = 10;
}  // namespace

StoredValue::StoredValue(const wchar_t* name, DWORD number)
    : name(name), type(REG_DWORD), data(reinterpret_cast<BYTE*>(&number), reinterpret_cast<BYTE*>(&number + 1)) {}

StoredValue::StoredValue(const wchar_t* name, const std::wstring& text)
    : name(name), type(REG_SZ), data(reinterpret_cast<const BYTE*>(text.c_str()),
                                     reinterpret_cast<const BYTE*>(text.c_str() + text.size() + 1)) {}

StoredValue::StoredValue(const wchar_t* name, DWORD type, std::vector<BYTE> data)
    : name(name), type(type), data(std::move(data)) {}

std::vector<StoredValue> TypicalStoredValues() {
    const DWORD off = 0;
    return {{L"FirmwareVersion", L"3.1.12"}, {L"SerialNumber", L"QX-0042"},   {L"ModelNumber", L"Quorl 640"},
            {L"EmbsrBrailleTable", L"DE_DE"}, {L"EmbsrPaperWidth", 6120},     {L"EmbsrPaperLength", 7920},
            {L"EmbsrCharsWidth", 38},         {L"EmbsrLinesLength", 27},      {L"EmbsrLeftMargin", 7},
            {L"EmbsrRightMargin", 6},         {L"EmbsrTopMargin", 12},        {L"EmbsrAutoCr", off},
            {L"EmbsrGraphicsMode", 1},        {L"EmbsrBrailleDots", 8},       {L"EmbsrBrailleStandard", 3},
            {L"EmbsrLineSpacing", 4},         {L"EmbsrBrailleForce", 2},      {L"EmbsrMediaType", 11},
            {L"EmbsrCustomMediaMin", 40},     {L"EmbsrCustomMediaMax", 200},  {L"EmbsrQuality", 2},
            {L"EmbsrDuplex", 2},              {L"EmbsrOutputFace", 2}};
}

void Store(HANDLE printer, std::vector<StoredValue> values, DWORD parameterCount) {
    values.emplace_back(kLegacyDataAvailable, parameterCount);
    for (const auto& value : values) {
        SetPrinterDataW(printer, const_cast<wchar_t*>(value.name.c_str()), value.type,
                        const_cast<BYTE*>(value.data.data()), static_cast<DWORD>(value.data.size()));
    }
}

SpoolerComponent::SpoolerComponent(const std::wstring& printerName, std::vector<StoredValue> values,
                                   DWORD parameterCount, int answerDelayMs) {
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(const_cast<wchar_t*>(printerName.c_str()), &printer_, &defaults);
    thread_ = std::thread([this, values = std::move(values), parameterCount, answerDelayMs] {
        // A request is the value turning 0; it is answered once.
        for (bool pending = false; !stopping_; Sleep(kWatchIntervalMs)) {
            DWORD available = 1, type = 0, needed = 0;
            const DWORD status = GetPrinterDataW(printer_, kLegacyDataAvailable, &type,
                                                 reinterpret_cast<BYTE*>(&available), sizeof(available), &needed);
            const bool requested = status == ERROR_SUCCESS && available == 0;
            if (requested && !pending) ++requests_;
            if (requested && !pending && answerDelayMs != kNever) {
                const auto answerAt = std::chrono::steady_clock::now() + std::chrono::milliseconds(answerDelayMs);
                while (!stopping_ && std::chrono::steady_clock::now() < answerAt) Sleep(kWatchIntervalMs);
                if (!stopping_) Store(printer_, values, parameterCount);
            }
            pending = requested;
        }
    });
}

SpoolerComponent::~SpoolerComponent() {
    stopping_ = true;
    thread_.join();
    if (printer_ != nullptr) ClosePrinter(printer_);
}

}  // namespace standin
