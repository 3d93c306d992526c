#include "device/device_settings_store.h"

#include <windows.h>
#include <winspool.h>

#include "base/spooler.h"
#include "device/legacy_transports.h"
#include "device/protocol/decimal_text.h"
#include "device/protocol/legacy_reply_parser.h"
#include "device/protocol/legacy_settings_table.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

constexpr DWORD kTextValueBytes = 4096;          // firmware, serial number and model
constexpr DWORD kBrailleTableValueBytes = 260;   // the braille table name

// A text value ended at the size the spooler returned. False when it cannot be read
// (absent, or longer than `capacityBytes`); `text` then holds an empty string.
template <size_t Characters>
bool ReadStoredText(HANDLE printer, const wchar_t* name, DWORD capacityBytes, wchar_t (&text)[Characters]) {
    static_assert(Characters > 1, "room for a character and the terminator");
    text[0] = L'\0';
    if (capacityBytes >= Characters * sizeof(wchar_t)) {
        capacityBytes = static_cast<DWORD>((Characters - 1) * sizeof(wchar_t));
    }
    DWORD type = 0;
    DWORD needed = 0;
    const DWORD status = Spool().GetPrinterDataW(printer, name, &type, reinterpret_cast<BYTE*>(text), capacityBytes,
                                                 &needed);
    if (status != ERROR_SUCCESS) {
        text[0] = L'\0';
        return false;
    }
    const DWORD bytes = needed < capacityBytes ? needed : capacityBytes;
    text[bytes / sizeof(wchar_t)] = L'\0';
    return true;
}

// A 32-bit value. A value of any other size is not taken.
bool ReadStoredNumber(HANDLE printer, const wchar_t* name, DWORD* value) {
    DWORD data = 0;
    DWORD type = 0;
    DWORD needed = 0;
    const DWORD status =
        Spool().GetPrinterDataW(printer, name, &type, reinterpret_cast<BYTE*>(&data), sizeof(data), &needed);
    if (status != ERROR_SUCCESS) {
        return false;
    }
    if (needed != sizeof(data)) {
        Trace(L"GetQuorlSettings(): %s has %d bytes, not 4\n", name, static_cast<int>(needed));
        return false;
    }
    *value = data;
    return true;
}

uint32_t PackFirmwareVersion(const wchar_t* text) {
    char narrow[64];
    size_t i = 0;
    for (; i + 1 < sizeof(narrow) && text[i] != L'\0'; ++i) {
        narrow[i] = text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    narrow[i] = '\0';
    uint32_t numbers[3] = {};
    ozdk::ReadDottedNumbers(narrow, numbers, 3);
    return numbers[0] << 16 | numbers[1] << 8 | numbers[2];
}

// The 32-bit values the spooler-side component stores, in reading order.
struct StoredNumber {
    const wchar_t* name;
    void (*store)(UIConfig&, DWORD);
};

const StoredNumber kStoredNumbers[] = {
    // The component stores paper sizes as the embosser gives them, in 1/720 inch.
    {L"EmbsrPaperWidth", [](UIConfig& c, DWORD v) { c.EmbsrPaperWidth = static_cast<int32_t>(v / kDeviceUnitsPerTwentieth); }},
    {L"EmbsrPaperLength", [](UIConfig& c, DWORD v) { c.EmbsrPaperLength = static_cast<int32_t>(v / kDeviceUnitsPerTwentieth); }},
    {L"EmbsrCharsWidth", [](UIConfig& c, DWORD v) { c.EmbsrCharsWidth = static_cast<int32_t>(v); }},
    {L"EmbsrLinesLength", [](UIConfig& c, DWORD v) { c.EmbsrLinesLength = static_cast<int32_t>(v); }},
    {L"EmbsrLeftMargin", [](UIConfig& c, DWORD v) { c.EmbsrLeftMargin = static_cast<int32_t>(v); }},
    {L"EmbsrRightMargin", [](UIConfig& c, DWORD v) { c.EmbsrRightMargin = static_cast<int32_t>(v); }},
    {L"EmbsrTopMargin", [](UIConfig& c, DWORD v) { c.EmbsrTopMargin = static_cast<int32_t>(v); }},
};

const StoredNumber kStoredSwitchesAndCodes[] = {
    {L"EmbsrAutoCr", [](UIConfig& c, DWORD v) { c.EmbsrAutoCr = v; }},
    {L"EmbsrGraphicsMode", [](UIConfig& c, DWORD v) { c.EmbsrGraphicsMode = v; }},
    {L"EmbsrBrailleDots", [](UIConfig& c, DWORD v) { c.EmbsrBrailleDots = v; }},
    {L"EmbsrBrailleStandard", [](UIConfig& c, DWORD v) { c.EmbsrBrailleStandard = v; }},
    {L"EmbsrLineSpacing", [](UIConfig& c, DWORD v) { c.EmbsrLineSpacing = static_cast<int32_t>(v); }},
    {L"EmbsrBrailleForce", [](UIConfig& c, DWORD v) { c.EmbsrBrailleForce = v; }},
    {L"EmbsrMediaType", [](UIConfig& c, DWORD v) { c.EmbsrMediaType = v; }},
    {L"EmbsrCustomMediaMin", [](UIConfig& c, DWORD v) { c.EmbsrCustomMediaMin = v; }},
    {L"EmbsrCustomMediaMax", [](UIConfig& c, DWORD v) { c.EmbsrCustomMediaMax = v; }},
    {L"EmbsrQuality", [](UIConfig& c, DWORD v) { c.EmbsrQuality = v; }},
    {L"EmbsrDuplex", [](UIConfig& c, DWORD v) { c.EmbsrDuplex = v; }},
    {L"EmbsrOutputFace", [](UIConfig& c, DWORD v) { c.EmbsrOutputFace = v; }},
};

int ReadStoredNumbers(HANDLE printer, UIConfig& config, const StoredNumber* values, size_t count) {
    int read = 0;
    for (size_t i = 0; i < count; ++i) {
        DWORD value = 0;
        if (ReadStoredNumber(printer, values[i].name, &value)) {
            values[i].store(config, value);
            ++read;
        }
    }
    return read;
}

// The values the spooler-side component left as printer data; returns how many were read.
int ReadStoredSettings(HANDLE printer, UIConfig& config) {
    int read = 0;
    wchar_t text[kTextValueBytes / sizeof(wchar_t) + 1];
    if (ReadStoredText(printer, L"FirmwareVersion", kTextValueBytes, text)) {
        config.FirmwareVersion = PackFirmwareVersion(text);
        ++read;
    }
    if (ReadStoredText(printer, L"SerialNumber", kTextValueBytes, text)) {
        CopyWide(config.SerialNumber, kTextCapacity, text);
        ++read;
    }
    if (ReadStoredText(printer, L"ModelNumber", kTextValueBytes, text)) {
        CopyWide(config.ModelNumber, kTextCapacity, text);
        ++read;
    }
    read += ReadStoredNumbers(printer, config, kStoredNumbers, sizeof(kStoredNumbers) / sizeof(kStoredNumbers[0]));
    wchar_t table[kBrailleTableValueBytes / sizeof(wchar_t) + 1];
    if (ReadStoredText(printer, L"EmbsrBrailleTable", kBrailleTableValueBytes, table)) {
        CopyWide(config.EmbsrBrailleTable, kTextCapacity, table);
        ++read;
    }
    read += ReadStoredNumbers(printer, config, kStoredSwitchesAndCodes,
                              sizeof(kStoredSwitchesAndCodes) / sizeof(kStoredSwitchesAndCodes[0]));
    return read;
}

enum class NetworkOutcome { NotNetwork, Silent, Replied };

// The network path: the reply is parsed into `config`.
NetworkOutcome ReadOverNetwork(UIConfig& config, const CancelSignal* cancel) {
    const HeapBuffer info = FetchPrinterInfo(config.PrinterHandle, 2);
    if (!info) {
        return NetworkOutcome::NotNetwork;
    }
    const wchar_t* portName = info.as<PRINTER_INFO_2W>()->pPortName;
    Trace(L"GetLegacyDataNetwork(): network port %s\n", portName != nullptr ? portName : L"");
    int length = kLegacyInfoTcpPort;
    const char* reply = GetLegacyDataNetwork(portName, kLegacyInfoRequest, &length, cancel);
    if (reply != nullptr) {
        config.LegacyParmCount = ParseInfoLegacySettings(config, reply);
        config.LegacyStateA = 0;
        config.LegacyStateB = 0;
        return NetworkOutcome::Replied;
    }
    return length == 0 ? NetworkOutcome::Silent : NetworkOutcome::NotNetwork;
}

}  // namespace

bool GetQuorlSettings(UIConfig& config, const CancelSignal* cancel) {
    switch (ReadOverNetwork(config, cancel)) {
        case NetworkOutcome::Replied:
            return config.LegacyParmCount != 0;
        case NetworkOutcome::Silent:
            return false;
        case NetworkOutcome::NotNetwork:
            break;
    }

    DWORD count = 0;
    if (GetLegacyData(config.PrinterHandle, &count, cancel) != ERROR_SUCCESS) {
        return false;
    }
    Trace(L"GetQuorlSettings(): 0=GetLegacyData(), nbrParms=%d\n", static_cast<int>(count));
    config.LegacyParmCount = static_cast<int32_t>(count);
    config.LegacyStateA = 0;
    config.LegacyStateB = 0;
    const int read = ReadStoredSettings(config.PrinterHandle, config);
    Trace(L"GetQuorlSettings(): nbrParms=%d, count=%d\n", static_cast<int>(config.LegacyParmCount), read);
    return config.LegacyParmCount > 0 && read > 0;
}

void TakeDeviceSettings(UIConfig& config, const UIConfig& read) {
    config.EmbsrDuplex = read.EmbsrDuplex;
    config.EmbsrGraphicsMode = read.EmbsrGraphicsMode;
    config.EmbsrAutoCr = read.EmbsrAutoCr;
    config.EmbsrOutputFace = read.EmbsrOutputFace;
    config.EmbsrMediaType = read.EmbsrMediaType;
    config.EmbsrCustomMediaMin = read.EmbsrCustomMediaMin;
    config.EmbsrCustomMediaMax = read.EmbsrCustomMediaMax;
    config.EmbsrBrailleDots = read.EmbsrBrailleDots;
    config.EmbsrBrailleStandard = read.EmbsrBrailleStandard;
    config.EmbsrLineSpacing = read.EmbsrLineSpacing;
    config.EmbsrTopMargin = read.EmbsrTopMargin;
    config.EmbsrLeftMargin = read.EmbsrLeftMargin;
    config.EmbsrRightMargin = read.EmbsrRightMargin;
    config.EmbsrCharsWidth = read.EmbsrCharsWidth;
    config.EmbsrLinesLength = read.EmbsrLinesLength;
    config.EmbsrPaperWidth = read.EmbsrPaperWidth;
    config.EmbsrPaperLength = read.EmbsrPaperLength;
    config.EmbsrBrailleForce = read.EmbsrBrailleForce;
    config.EmbsrQuality = read.EmbsrQuality;
    config.LegacyParmCount = read.LegacyParmCount;
    config.BrailleTableIndex = read.BrailleTableIndex;
    config.FirmwareVersion = read.FirmwareVersion;
    config.LegacyStateA = read.LegacyStateA;
    config.LegacyStateB = read.LegacyStateB;
    CopyWide(config.EmbsrBrailleTable, kTextCapacity, read.EmbsrBrailleTable);
    CopyWide(config.SerialNumber, kTextCapacity, read.SerialNumber);
    CopyWide(config.ModelNumber, kTextCapacity, read.ModelNumber);
}

void ReadQuorlSettingsOnce(UIConfig& config, const wchar_t* caller) {
    if (IsDeviceReadPending(config)) {
        RecordDeviceRead(config, GetQuorlSettings(config), caller);
    }
}

void RecordDeviceRead(UIConfig& config, bool read, const wchar_t* caller) {
    Trace(L"%s(): %d=GetQuorlSettings()\n", caller, read ? 1 : 0);
    if (read) {
        config.LegacyRefresh = 1;
    } else {
        config.LegacyParmCount = -1;
    }
}
