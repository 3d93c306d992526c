// The per-printer settings store: typed readers that fall back to a default and write
// it back, typed writers that retry once through a full-access reopen of the printer,
// the administrator rewrite of the printer's level-2 information, and the printer's
// list of custom media types.
//
// Document settings live under the printer-data key "Config"; the embosser's settings
// (values named Embsr...) are top-level printer data.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <cstdint>

#include "config/ui_config.h"

inline constexpr const wchar_t* kConfigKey = L"Config";
inline constexpr const wchar_t* kMediaTypesKey = L"Config\\MediaTypes";
inline constexpr const wchar_t* kFormsKey = L"Config\\Forms";

// Readers. A value that cannot be read (absent, wrong type or size, no access) takes
// its default, which is written back at once.
void GetPrinterDataInteger(HANDLE printer, const wchar_t* name, uint32_t* destination, uint32_t defaultValue);
void GetPrinterDataInteger(HANDLE printer, const wchar_t* name, int32_t* destination, int32_t defaultValue);
// String of "Config" into a buffer of 260 characters (`capacityBytes` at most 520).
void GetPrinterDataString(HANDLE printer, const wchar_t* name, wchar_t* destination, const wchar_t* defaultValue,
                          DWORD capacityBytes);
// Top-level printer data; 0 when the read succeeded, else the status of the write-back.
DWORD GetPrinterDataInteger2(HANDLE printer, const wchar_t* name, uint32_t* destination, uint32_t defaultValue);
DWORD GetPrinterDataInteger2(HANDLE printer, const wchar_t* name, int32_t* destination, int32_t defaultValue);
// "PaperSize" of "Config": 8 bytes, width then height. False when it could not be read.
bool GetPrinterDataPaperSize(HANDLE printer, PaperDimensions* size);

// Writers: the spooler's status of the last write (0 = success).
DWORD SetPrinterDataInteger(HANDLE printer, const wchar_t* name, uint32_t value);
DWORD SetPrinterDataInteger2(HANDLE printer, const wchar_t* name, uint32_t value);
// Writes `length` characters without a terminator (2 x length bytes).
DWORD SetPrinterDataString(HANDLE printer, const wchar_t* name, const wchar_t* value, DWORD length);
// Always writes "PaperSize" of "Config", REG_BINARY, 8 bytes, whatever name and size say.
DWORD SetPrinterDataPaperSize(HANDLE printer, const wchar_t* name, const PaperDimensions* size, DWORD bytes);

// Custom media types under "Config\\MediaTypes".
// ERROR_INVALID_HANDLE without a printer.
DWORD SetConfigMediaType(HANDLE printer, const wchar_t* name, DWORD number);
DWORD RemoveConfigMediaType(const wchar_t* name, HANDLE printer);
// The number stored for a custom media type. False when it cannot be read.
bool GetConfigMediaType(HANDLE printer, const wchar_t* name, DWORD* number);
// Sizing call with a null buffer, then a filling call: the names as a double-terminated
// multi-string. Returns the byte count; 0 when the key does not exist.
DWORD EnumConfigMediaTypes(const UIConfig* config, wchar_t* buffer, DWORD* byteCount);
// The same, filling at most `capacityBytes`: a name that no longer fits (a type added
// since the sizing call) is left out, and the list still ends with its two terminators.
// The byte count is then what was filled; nothing is filled when not even the closing
// terminator fits.
DWORD EnumConfigMediaTypes(const UIConfig* config, wchar_t* buffer, DWORD capacityBytes, DWORD* byteCount);

// This printer's own forms under "Config\\Forms": one binary value per form, named by
// the form and holding its level-1 form record.
DWORD SetConfigForm(HANDLE printer, const FORM_INFO_1W* form);
bool IsConfigForm(HANDLE printer, const wchar_t* name);
DWORD RemoveConfigForm(HANDLE printer, const wchar_t* name);

// SetPrinterW through a full-access reopen of the printer. Non-zero on success.
BOOL SetPrinterAsAdmin(HANDLE printer, DWORD level, PRINTER_INFO_2W* info);
