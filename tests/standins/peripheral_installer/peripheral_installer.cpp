// Stand-in for the peripheral installer of the driver family. It records how it was
// called (see peripheral_installer_record.h) and, like the real one, recreates the
// "Config" key of the printer named by its command line.
#include <windows.h>
#include <winspool.h>

#include <cstring>

#include "peripheral_installer_record.h"

namespace {

void RecordCall(HWND window, HINSTANCE instance, const char* commandLine, int show, DWORD repaired) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return;
    }
    const DWORD length = commandLine != nullptr ? static_cast<DWORD>(strlen(commandLine)) : 0;
    RegSetValueExW(key, L"CommandLine", 0, REG_BINARY, reinterpret_cast<const BYTE*>(commandLine ? commandLine : ""),
                   length);
    const DWORD showCommand = static_cast<DWORD>(show);
    RegSetValueExW(key, L"ShowCommand", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&showCommand), sizeof(DWORD));
    const DWORD nullWindow = window == nullptr && instance == nullptr ? 1 : 0;
    RegSetValueExW(key, L"NullWindow", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&nullWindow), sizeof(DWORD));
    DWORD calls = 0;
    DWORD size = sizeof(calls);
    RegQueryValueExW(key, L"Calls", nullptr, nullptr, reinterpret_cast<BYTE*>(&calls), &size);
    ++calls;
    RegSetValueExW(key, L"Calls", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&calls), sizeof(DWORD));
    RegSetValueExW(key, L"Repaired", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&repaired), sizeof(DWORD));
    RegCloseKey(key);
}

DWORD RecreateConfigKey(const char* printerName) {
    wchar_t name[512] = {};
    if (printerName == nullptr || MultiByteToWideChar(CP_ACP, 0, printerName, -1, name, 512) == 0) {
        return 0;
    }
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    if (!OpenPrinterW(name, &printer, &defaults)) {
        return 0;
    }
    const DWORD version = 1;
    const DWORD status = SetPrinterDataExW(printer, L"Config", L"OutputVersion", REG_DWORD,
                                           reinterpret_cast<BYTE*>(const_cast<DWORD*>(&version)), sizeof(version));
    ClosePrinter(printer);
    return status == ERROR_SUCCESS ? 1 : 0;
}

}  // namespace

extern "C" void CALLBACK InstallQuorlPeripherals(HWND window, HINSTANCE instance, LPSTR commandLine, int show) {
    RecordCall(window, instance, commandLine, show, RecreateConfigKey(commandLine));
}
