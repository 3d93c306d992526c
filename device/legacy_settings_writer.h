// Writing changed device settings back to the embosser: one raw print job per PJL
// "DEFAULT" command, then "@PJL SERVICE UPDATE" to make the device commit them.
//
// Nothing is sent while config.LegacyParmCount is not above 0 (the device's settings are
// not known); the UIConfig fields are updated all the same.
#pragma once

#include <windows.h>
#include <compstui.h>

#include <cstdint>

#include "config/ui_config.h"

// Compares every item of the callback's item array with the setting it shows (items are
// told apart by UserItemID; edit boxes are read from their text, other items from their
// selection), stores and sends each difference, and commits through UpdateNvRamData
// when anything changed. The extra line spacing item's text is rewritten to the value
// kept. Returns true when something changed.
bool ApplyLegacyChanges(CPSUICBPARAM* param, UIConfig& config);

// One "DEFAULT" command each: KEY=decimal number, KEY=ON/OFF, KEY=word.
void UpdateLegacyConfig(UIConfig& config, const wchar_t* key, uint32_t value);
void UpdateLegacyConfigBool(UIConfig& config, const wchar_t* key, bool on);
void UpdateLegacyConfigString(UIConfig& config, const wchar_t* key, const char* word);

// Corrects characters per line and lines per page on the device when they do not fit the
// page, then sends "@PJL SERVICE UPDATE".
void UpdateNvRamData(UIConfig& config);

// Sends `length` bytes as one job to the printer named `printerName` (opened without
// defaults, else with full access). Returns 0 when every byte was written, a Windows
// error code when a call failed, else the number of bytes written.
DWORD SendPrinterCommand(const wchar_t* printerName, const void* bytes, DWORD length);
