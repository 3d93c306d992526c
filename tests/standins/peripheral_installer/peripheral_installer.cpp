// Stand-in for the peripheral installer of the driver family. It records how it was
// called (see peripheral_installer_record.h) and, like the real one, recreates the
// "Config" key of the printer named by its command line.
#include <windows.h>
#include <winspool.h>

#include <string>

#include "peripheral_installer_record.h"

namespace {

bool RecreateConfigKey(const char* printerName) {
    wchar_t name[512] = {};
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    if (printerName == nullptr || MultiByteToWideChar(CP_ACP, 0, printerName, -1, name, 512) == 0 ||
        !OpenPrinterW(name, &printer, &defaults)) {
        return false;
    }
    DWORD version = 1;
    const bool made = SetPrinterDataExW(printer, L"Config", L"OutputVersion", REG_DWORD,
                                        reinterpret_cast<BYTE*>(&version), 4) == ERROR_SUCCESS;
    ClosePrinter(printer);
    return made;
}

}  // namespace

extern "C" void CALLBACK InstallQuorlPeripherals(HWND window, HINSTANCE instance, LPSTR commandLine, int show) {
    const bool repaired = RecreateConfigKey(commandLine);
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return;
    }
    std::string calls(4096, '\0');
    DWORD size = static_cast<DWORD>(calls.size());
    calls.resize(RegQueryValueExW(key, L"Calls", nullptr, nullptr, reinterpret_cast<BYTE*>(&calls[0]), &size) ==
                         ERROR_SUCCESS ? size : 0);
    calls += std::string(commandLine != nullptr ? commandLine : "(null)") + " " + std::to_string(show) + " " +
             (window == nullptr && instance == nullptr ? "1" : "0") + " " + (repaired ? "1" : "0") + "\n";
    RegSetValueExW(key, L"Calls", 0, REG_BINARY, reinterpret_cast<const BYTE*>(calls.data()),
                   static_cast<DWORD>(calls.size()));
    RegCloseKey(key);
}
