// Stand-in for the language-monitor extension library of the driver family. It shows no
// dialog: it records what it was asked (see language_monitor_extension_record.h).
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "language_monitor_extension_record.h"
#include "printer_ui/extension_services.h"

extern "C" DWORD WINAPI DllExportPrinterService(HWND owner, const wchar_t* printerName, void* request) {
    if (request == nullptr) return ERROR_INVALID_PARAMETER;
    BrailleTableServiceRequest fields = {};
    std::memcpy(&fields.service, request, sizeof(fields.service));  // only the fields its code defines
    if (fields.service == kServiceBrailleTable) std::memcpy(&fields, request, sizeof(fields));

    wchar_t calls[4096] = {};  // the calls before this one, if any
    DWORD size = sizeof(calls) - sizeof(wchar_t);
    RegGetValueW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, L"Calls", RRF_RT_REG_SZ | RRF_ZEROONFAILURE, nullptr,
                 calls, &size);
    const size_t used = wcslen(calls);
    _snwprintf(calls + used, 4095 - used, L"%llu %ls %u %u\n",
               static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(owner)),
               printerName != nullptr ? printerName : L"(null)", fields.service, fields.tableIndex);
    RegSetKeyValueW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, L"Calls", REG_SZ, calls,
                    static_cast<DWORD>((wcslen(calls) + 1) * sizeof(wchar_t)));
    return ERROR_SUCCESS;
}

// The export has exactly the plug-in's calling convention.
static_assert(std::is_same<decltype(&DllExportPrinterService), PrinterServiceFunction>::value, "service");
