// The services of the driver family's language-monitor extension library
// ("ozdkrnlmex.dll" in the "3" folder of the printer-driver directory), which the device
// pages reach through ExtDllLoadFunction. The library shows its own dialogs.
//
// Calling conventions, as the library exports them by name:
//   DllExportPrinterService(owner, printerName, request)
//       Runs one service for the printer. `owner` (may be null) owns the library's
//       dialogs. `request` begins with the 32-bit service code; the fields that follow
//       depend on the code (see the request records below), and the library may read a
//       whole PrinterServiceRecord whatever the code. Returns 0 when the service ran,
//       else a Windows error code.
//   DllExportGetPrinterError(owner, printerName, record, fieldCount)
//       Puts the printer's current error code into record[0]; the caller presets all
//       `fieldCount` 32-bit fields to -1. Returns 0 when it answered.
//   DllExportGetPrinterErrorText(owner, errorCode, text)
//       Writes the text of `errorCode`, terminated, into `text`, which holds
//       kPrinterErrorTextCapacity wide characters. Returns 0 when it knew the code.
#pragma once

#include <windows.h>

#include <cstdint>

#include "config/extension_library.h"

inline constexpr char kPrinterServiceExport[] = "DllExportPrinterService";
inline constexpr char kGetPrinterErrorExport[] = "DllExportGetPrinterError";
inline constexpr char kGetPrinterErrorTextExport[] = "DllExportGetPrinterErrorText";

inline constexpr DWORD kPrinterErrorTextCapacity = 1024;

// Service codes, the first field of every request.
inline constexpr uint32_t kServicePrintTestPage = 8;    // PrintTestPageServiceRequest
inline constexpr uint32_t kServiceBrailleTable = 14;    // BrailleTableServiceRequest
inline constexpr uint32_t kServiceSerialSettings = 15;  // SerialSettingsServiceRequest

// A test page printed by the device.
struct PrintTestPageServiceRequest {
    uint32_t service;  // kServicePrintTestPage
};

// The braille-table dialog, opened on the table the device has loaded.
struct BrailleTableServiceRequest {
    uint32_t service;     // kServiceBrailleTable
    uint32_t tableIndex;  // braille table code of the device's current table
};
static_assert(sizeof(BrailleTableServiceRequest) == 8, "two 32-bit fields");

// The serial-interface settings dialog; the settings are the library's business.
struct SerialSettingsServiceRequest {
    uint32_t service;  // kServiceSerialSettings
    uint8_t settings[20];
};
static_assert(sizeof(SerialSettingsServiceRequest) == 24, "the code and 20 bytes");

// The record every request is handed over in: as large as the largest request, and zero
// beyond the fields its code defines (`= {}` zeroes all of it, then one request is set).
union PrinterServiceRecord {
    uint8_t bytes[sizeof(SerialSettingsServiceRequest)];
    PrintTestPageServiceRequest printTestPage;
    BrailleTableServiceRequest brailleTable;
    SerialSettingsServiceRequest serialSettings;
};
static_assert(sizeof(PrinterServiceRecord) == sizeof(SerialSettingsServiceRequest), "the largest request");

typedef DWORD(WINAPI* PrinterServiceFunction)(HWND owner, const wchar_t* printerName, void* request);
typedef DWORD(WINAPI* GetPrinterErrorFunction)(HWND owner, const wchar_t* printerName, int32_t* record,
                                               DWORD fieldCount);
typedef DWORD(WINAPI* GetPrinterErrorTextFunction)(HWND owner, int32_t errorCode, wchar_t* text);
