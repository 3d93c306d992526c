// Writing changed device settings back to the embosser: one raw print job per PJL
// "DEFAULT" command, then "@PJL SERVICE UPDATE" to make the device commit them.
//
// Nothing is sent while config.LegacyParmCount is not above 0 (the device's settings are
// not known); the UIConfig fields are updated all the same.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "config/ui_config.h"
#include "device/protocol/pjl_commands.h"

// One item of the device-settings branch as the writer takes it: its id (UserItemID),
// and its selection or, for an edit box, its text.
struct LegacyItemEdit {
    uint32_t id;
    int32_t selection;
    const wchar_t* text;  // an edit box's NUL-terminated text, else null
    bool rewritten;       // set when the item's text is to become `rewrittenText`
    wchar_t rewrittenText[kMeasureTextCapacity];
};

// Compares every edit in list order with the setting it shows (by the settings table),
// stores and sends each difference, and commits through UpdateNvRamData when anything
// changed. The extra line spacing's text comes back rewritten to the value kept. Returns
// true when something changed.
bool ApplyLegacyChanges(UIConfig& config, LegacyItemEdit* edits, size_t count);

// One "DEFAULT" command: KEY=decimal number, KEY=ON/OFF or KEY=word.
void SendLegacyDefault(UIConfig& config, const PjlDefault& command);

// Corrects characters per line and lines per page on the device when they do not fit the
// page, then sends "@PJL SERVICE UPDATE".
void UpdateNvRamData(UIConfig& config);

// Sends `length` bytes as one job to the printer named `printerName` (opened without
// defaults, else with full access). Returns 0 when every byte was written, a Windows
// error code when a call failed, else the number of bytes written.
DWORD SendPrinterCommand(const wchar_t* printerName, const void* bytes, DWORD length);
