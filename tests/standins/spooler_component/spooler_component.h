// The driver's spooler-side component, as far as the plug-in sees it: when the printer
// data value "LegacyDataAvailable" becomes 0, it asks the embosser for its settings,
// stores them as printer data and then sets "LegacyDataAvailable" to the number of
// parameters. This stand-in runs as a thread that watches the value through a printer
// handle of its own (the real spooler) and answers after a chosen delay, or never.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace standin {

// One printer-data value as the component stores it: a number, a text (with its
// terminator) or any bytes.
struct StoredValue {
    StoredValue(const wchar_t* name, DWORD number);
    StoredValue(const wchar_t* name, const std::wstring& text);
    StoredValue(const wchar_t* name, DWORD type, std::vector<BYTE> data);
    std::wstring name;
    DWORD type;
    std::vector<BYTE> data;
};

// What a typical embosser reports, in the component's terms (paper sizes in 1/720 inch):
// firmware "3.1.12", serial number "QX-0042", model "Quorl 640", paper 6120 x 7920,
// 38 characters, 27 lines, margins left 7, right 6, top 12, table "DE_DE", automatic
// carriage return 0, graphics 1, 8 dots, standard 3, extra space 4, force 2, media 11,
// custom media 40..200, quality 2, duplex 2, output face 2.
std::vector<StoredValue> TypicalStoredValues();

// The component's answer: `values` in their order (a later one replaces an earlier one
// of the same name), then "LegacyDataAvailable" = `parameterCount`.
void Store(HANDLE printer, std::vector<StoredValue> values, DWORD parameterCount);

class SpoolerComponent {
public:
    static constexpr int kNever = -1;

    // Starts watching `printerName`. Each request (the value turning 0) is answered after
    // `answerDelayMs` by Store(values, parameterCount); kNever: not answered.
    SpoolerComponent(const std::wstring& printerName, std::vector<StoredValue> values, DWORD parameterCount,
                     int answerDelayMs);
    ~SpoolerComponent();

    int RequestCount() const { return requests_.load(); }

private:
    HANDLE printer_ = nullptr;
    std::atomic<bool> stopping_{false};
    std::atomic<int> requests_{0};
    std::thread thread_;
};

}  // namespace standin
