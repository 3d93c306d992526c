// Stand-in for the language-monitor extension library of the driver family. It shows no
// dialog: it records what it was asked (see language_monitor_extension_record.h).
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <type_traits>

#include "language_monitor_extension_record.h"
#include "printer_ui/extension_services.h"

extern "C" DWORD WINAPI DllExportPrinterService(HWND owner, const wchar_t* printerName, void* request) {
    // Only the fields the service code defines are read.
    const auto* fields = static_cast<const BrailleTableServiceRequest*>(request);
    wchar_t calls[4096] = {};  // the calls before this one, if any
    GetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls, 4000);
    const size_t used = wcslen(calls);
    _snwprintf(calls + used, 4095 - used, L"%llu %ls %u %u\n",
               static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(owner)), printerName, fields->service,
               fields->service == kServiceBrailleTable ? fields->tableIndex : 0u);
    SetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls);
    return ERROR_SUCCESS;
}

// The export has exactly the plug-in's calling convention.
static_assert(std::is_same<decltype(&DllExportPrinterService), PrinterServiceFunction>::value, "service");
