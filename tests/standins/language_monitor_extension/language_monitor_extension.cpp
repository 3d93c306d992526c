// Stand-in for the language-monitor extension library of the driver family. It shows no
// dialog: it records what it was asked and tells the error it is given (see
// language_monitor_extension_record.h).
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <type_traits>

#include "language_monitor_extension_record.h"
#include "printer_ui/extension_services.h"

namespace {

// The error the test set: its code, and its text after the first space.
bool ReadSetError(int32_t* code, wchar_t* text, size_t capacity) {
    wchar_t error[2048] = {};
    if (GetEnvironmentVariableW(OZDK_PRINTER_ERROR, error, 2048) == 0) return false;
    wchar_t* rest = nullptr;
    *code = static_cast<int32_t>(wcstol(error, &rest, 10));
    while (*rest == L' ') ++rest;
    if (text != nullptr) _snwprintf(text, capacity - 1, L"%ls", rest), text[capacity - 1] = L'\0';
    return true;
}

}  // namespace

extern "C" DWORD WINAPI DllExportPrinterService(HWND owner, const wchar_t* printerName, void* request) {
    wchar_t calls[4096] = {};  // the calls before this one, if any
    GetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls, 4000);
    const size_t used = wcslen(calls);
    // Read as the library may: a whole record, whatever the code.
    const auto& record = *static_cast<const PrinterServiceRecord*>(request);
    const bool table = record.printTestPage.service == kServiceBrailleTable;
    unsigned beyond = 0;
    for (size_t i = table ? 8 : 4; i < sizeof(record.bytes); ++i) beyond += record.bytes[i] != 0;
    _snwprintf(calls + used, 4095 - used, L"%llu %ls %u %u %u\n",
               static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(owner)), printerName,
               record.printTestPage.service, table ? record.brailleTable.tableIndex : 0, beyond);
    SetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls);
    return ERROR_SUCCESS;
}

// Answers only the record the library defines: two fields, both preset to -1.
extern "C" DWORD WINAPI DllExportGetPrinterError(HWND, const wchar_t*, int32_t* record, DWORD fieldCount) {
    if (record == nullptr || fieldCount != 2 || record[0] != -1 || record[1] != -1) return ERROR_INVALID_PARAMETER;
    return ReadSetError(&record[0], nullptr, 0) ? ERROR_SUCCESS : ERROR_NOT_FOUND;
}

extern "C" DWORD WINAPI DllExportGetPrinterErrorText(HWND, int32_t errorCode, wchar_t* text) {
    int32_t code = 0;
    return ReadSetError(&code, text, kPrinterErrorTextCapacity) && code == errorCode ? ERROR_SUCCESS : ERROR_NOT_FOUND;
}

// The exports have exactly the plug-in's calling conventions.
static_assert(std::is_same<decltype(&DllExportPrinterService), PrinterServiceFunction>::value, "service");
static_assert(std::is_same<decltype(&DllExportGetPrinterError), GetPrinterErrorFunction>::value, "error");
static_assert(std::is_same<decltype(&DllExportGetPrinterErrorText), GetPrinterErrorTextFunction>::value, "text");
