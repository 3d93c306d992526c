// Stand-in for the peripheral installer of the driver family. It records how it was
// called (see peripheral_installer_record.h) and, like the real one, recreates the
// "Config" key of the printer named by its command line.
#include <windows.h>
#include <winspool.h>

#include <cstring>

#include "peripheral_installer_record.h"

namespace {

DWORD RecreateConfigKey(const char* printerName) {
    wchar_t name[512] = {};
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    if (printerName == nullptr || MultiByteToWideChar(CP_ACP, 0, printerName, -1, name, 512) == 0 ||
        !OpenPrinterW(name, &printer, &defaults)) {
        return 0;
    }
    DWORD version = 1;
    const DWORD status =
        SetPrinterDataExW(printer, L"Config", L"OutputVersion", REG_DWORD, reinterpret_cast<BYTE*>(&version), 4);
    ClosePrinter(printer);
    return status == ERROR_SUCCESS ? 1 : 0;
}

}  // namespace

extern "C" void CALLBACK InstallQuorlPeripherals(HWND window, HINSTANCE instance, LPSTR commandLine, int show) {
    const DWORD repaired = RecreateConfigKey(commandLine);
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return;
    }
    const auto setDword = [key](const wchar_t* name, DWORD value) {
        RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
    };
    RegSetValueExW(key, L"CommandLine", 0, REG_BINARY, reinterpret_cast<const BYTE*>(commandLine ? commandLine : ""),
                   commandLine != nullptr ? static_cast<DWORD>(strlen(commandLine)) : 0);
    DWORD calls = 0;
    DWORD size = sizeof(calls);
    RegQueryValueExW(key, L"Calls", nullptr, nullptr, reinterpret_cast<BYTE*>(&calls), &size);
    setDword(L"Calls", calls + 1);
    setDword(L"ShowCommand", static_cast<DWORD>(show));
    setDword(L"NullWindow", window == nullptr && instance == nullptr ? 1 : 0);
    setDword(L"Repaired", repaired);
    RegCloseKey(key);
}
