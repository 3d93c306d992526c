// The driver's spooler-side component, as far as the plug-in sees it: when the printer
// data value "LegacyDataAvailable" becomes 0, it asks the embosser for its settings,
// stores them as printer data and then sets "LegacyDataAvailable" to the number of
// parameters. This stand-in runs as a thread that watches the value through a printer
// handle of its own (the real spooler) and answers one request after a chosen delay.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace standin {

// One printer-data value as the component stores it: a number, or a text with its
// terminator.
struct StoredValue {
    StoredValue(const wchar_t* name, DWORD number)
        : name(name), type(REG_DWORD), data{BYTE(number), BYTE(number >> 8), BYTE(number >> 16), BYTE(number >> 24)} {}
    StoredValue(const wchar_t* name, const std::wstring& text)
        : name(name), type(REG_SZ), data(reinterpret_cast<const BYTE*>(text.c_str()),
                                         reinterpret_cast<const BYTE*>(text.c_str() + text.size() + 1)) {}
    std::wstring name;
    DWORD type;
    std::vector<BYTE> data;
};

// The component's answer: `values` in their order (a later one replaces an earlier one
// of the same name), then "LegacyDataAvailable" = `parameterCount`.
inline void Store(HANDLE printer, std::vector<StoredValue> values, DWORD parameterCount) {
    values.emplace_back(L"LegacyDataAvailable", parameterCount);
    for (auto& value : values) {
        SetPrinterDataW(printer, &value.name[0], value.type, value.data.data(), static_cast<DWORD>(value.data.size()));
    }
}

class SpoolerComponent {
public:
    // Starts watching `printerName`: the first request (the value turning 0) is answered
    // after `answerDelayMs` by Store(values, parameterCount), unless the component is
    // destroyed first.
    SpoolerComponent(const std::wstring& printerName, std::vector<StoredValue> values, DWORD parameterCount,
                     int answerDelayMs) {
        PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
        OpenPrinterW(const_cast<wchar_t*>(printerName.c_str()), &printer_, &defaults);
        thread_ = std::thread([this, values = std::move(values), parameterCount, answerDelayMs] {
            wchar_t available[] = L"LegacyDataAvailable";
            DWORD value = 1, type = 0, needed = 0;
            while (!stopping_ && (GetPrinterDataW(printer_, available, &type, reinterpret_cast<BYTE*>(&value),
                                                  sizeof(value), &needed) != ERROR_SUCCESS || value != 0)) Sleep(10);
            const auto answerAt = std::chrono::steady_clock::now() + std::chrono::milliseconds(answerDelayMs);
            while (!stopping_ && std::chrono::steady_clock::now() < answerAt) Sleep(10);
            if (!stopping_) Store(printer_, values, parameterCount);
        });
    }
    ~SpoolerComponent() {
        stopping_ = true;
        thread_.join();
        ClosePrinter(printer_);
    }

private:
    HANDLE printer_ = nullptr;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

}  // namespace standin
