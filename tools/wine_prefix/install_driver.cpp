// Prepares a fresh Wine prefix for the tests or the demo: the printer driver "Test
// Embosser" (wineps with the test PPD), the plug-in in the driver folder, and the maker's
// folder that turns the trace log on.
//
// usage: install_driver <test-printer.ppd> <ozdkrnui.dll>   (Windows paths)
#include <windows.h>
#include <shlobj.h>
#include <winspool.h>

#include <cstdio>
#include <string>

namespace {

std::wstring DriverDirectory() {
    wchar_t directory[MAX_PATH] = {};
    DWORD needed = 0;
    GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory), sizeof(directory), &needed);
    return directory;
}

bool Fail(const char* what) {
    std::printf("install_driver: %s failed, error %lu\n", what, GetLastError());
    return false;
}

bool Install(const wchar_t* ppd, const wchar_t* plugin) {
    const std::wstring version3 = DriverDirectory() + L"\\3";
    CreateDirectoryW(version3.c_str(), nullptr);
    if (!CopyFileW(ppd, (version3 + L"\\TESTPRN.PPD").c_str(), FALSE)) return Fail("copying the PPD");
    if (!CopyFileW(plugin, (version3 + L"\\ozdkrnui.dll").c_str(), FALSE)) return Fail("copying the plug-in");

    DRIVER_INFO_3W driver = {};
    driver.cVersion = 3;
    driver.pName = const_cast<wchar_t*>(L"Test Embosser");
    driver.pDriverPath = const_cast<wchar_t*>(L"wineps.drv");
    driver.pDataFile = const_cast<wchar_t*>(L"TESTPRN.PPD");
    driver.pConfigFile = const_cast<wchar_t*>(L"wineps.drv");
    if (!AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&driver))) return Fail("AddPrinterDriverW");

    wchar_t common[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common);
    CreateDirectoryW((std::wstring(common) + L"\\Kestrova").c_str(), nullptr);
    return true;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::printf("usage: install_driver <ppd> <ozdkrnui.dll>\n");
        return 2;
    }
    return Install(argv[1], argv[2]) ? 0 : 1;
}
