#include "spooler_component.h"

#include <winspool.h>

#include <chrono>
#include <utility>

namespace standin {

namespace {

constexpr wchar_t kLegacyDataAvailable[] = L"LegacyDataAvailable";
constexpr int kWatchIntervalMs = 10;

}  // namespace

StoredValue StoredValue::Number(const wchar_t* name, DWORD value) {
    std::vector<BYTE> data(sizeof(value));
    memcpy(data.data(), &value, sizeof(value));
    return {name, REG_DWORD, std::move(data)};
}

StoredValue StoredValue::Text(const wchar_t* name, const std::wstring& text) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {name, REG_SZ, std::vector<BYTE>(bytes, bytes + (text.size() + 1) * sizeof(wchar_t))};
}

StoredValue StoredValue::Bytes(const wchar_t* name, DWORD type, std::vector<BYTE> data) {
    return {name, type, std::move(data)};
}

std::vector<StoredValue> TypicalStoredValues() {
    return {
        StoredValue::Text(L"FirmwareVersion", L"3.1.12"),
        StoredValue::Text(L"SerialNumber", L"QX-0042"),
        StoredValue::Text(L"ModelNumber", L"Quorl 640"),
        StoredValue::Number(L"EmbsrPaperWidth", 6120),
        StoredValue::Number(L"EmbsrPaperLength", 7920),
        StoredValue::Number(L"EmbsrCharsWidth", 38),
        StoredValue::Number(L"EmbsrLinesLength", 27),
        StoredValue::Number(L"EmbsrLeftMargin", 7),
        StoredValue::Number(L"EmbsrRightMargin", 6),
        StoredValue::Number(L"EmbsrTopMargin", 12),
        StoredValue::Text(L"EmbsrBrailleTable", L"DE_DE"),
        StoredValue::Number(L"EmbsrAutoCr", 0),
        StoredValue::Number(L"EmbsrGraphicsMode", 1),
        StoredValue::Number(L"EmbsrBrailleDots", 8),
        StoredValue::Number(L"EmbsrBrailleStandard", 3),
        StoredValue::Number(L"EmbsrLineSpacing", 4),
        StoredValue::Number(L"EmbsrBrailleForce", 2),
        StoredValue::Number(L"EmbsrMediaType", 11),
        StoredValue::Number(L"EmbsrCustomMediaMin", 40),
        StoredValue::Number(L"EmbsrCustomMediaMax", 200),
        StoredValue::Number(L"EmbsrQuality", 2),
        StoredValue::Number(L"EmbsrDuplex", 2),
        StoredValue::Number(L"EmbsrOutputFace", 2),
    };
}

void Replace(std::vector<StoredValue>& values, StoredValue value) {
    for (auto& each : values) {
        if (each.name == value.name) {
            each = std::move(value);
            return;
        }
    }
    values.push_back(std::move(value));
}

SpoolerComponent::SpoolerComponent(const std::wstring& printerName, std::vector<StoredValue> values,
                                   DWORD parameterCount, int answerDelayMs)
    : values_(std::move(values)), parameterCount_(parameterCount), answerDelayMs_(answerDelayMs) {
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(const_cast<wchar_t*>(printerName.c_str()), &printer_, &defaults);
    thread_ = std::thread([this] { Watch(); });
}

SpoolerComponent::~SpoolerComponent() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
    if (printer_ != nullptr) ClosePrinter(printer_);
}

DWORD SpoolerComponent::ReadAvailable(bool* present) const {
    DWORD value = 0;
    DWORD type = 0;
    DWORD needed = 0;
    *present = GetPrinterDataW(printer_, const_cast<wchar_t*>(kLegacyDataAvailable), &type,
                               reinterpret_cast<BYTE*>(&value), sizeof(value), &needed) == ERROR_SUCCESS;
    return value;
}

void SpoolerComponent::Store() {
    for (const auto& value : values_) {
        SetPrinterDataW(printer_, const_cast<wchar_t*>(value.name.c_str()), value.type,
                        const_cast<BYTE*>(value.data.data()), static_cast<DWORD>(value.data.size()));
    }
    DWORD count = parameterCount_;
    SetPrinterDataW(printer_, const_cast<wchar_t*>(kLegacyDataAvailable), REG_DWORD, reinterpret_cast<BYTE*>(&count),
                    sizeof(count));
}

void SpoolerComponent::Watch() {
    if (printer_ == nullptr) return;
    bool pending = false;  // a request seen and not answered
    while (!stopping_) {
        Sleep(kWatchIntervalMs);
        bool present = false;
        const DWORD available = ReadAvailable(&present);
        if (!present || available != 0) {
            pending = false;
            continue;
        }
        if (pending) continue;
        pending = true;
        ++requests_;
        if (answerDelayMs_ == kNever) continue;
        const auto answerAt = std::chrono::steady_clock::now() + std::chrono::milliseconds(answerDelayMs_);
        while (!stopping_ && std::chrono::steady_clock::now() < answerAt) Sleep(kWatchIntervalMs);
        if (stopping_) return;
        Store();
        ++answers_;
    }
}

}  // namespace standin
