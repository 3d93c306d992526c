// What the configuration tests share: a host heap and call block, registry values that
// are put back as they were, the companion stand-in libraries copied to where the
// plug-in looks for them, and a spooler that records and can withhold a few answers.
#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "config/ui_config.h"
#include "frame/printer_oem_ui.h"
#include "support/host_fixtures.h"
#include "support/spooler_doubles.h"
#include "support/wine_environment.h"

namespace configtest {

inline constexpr const wchar_t* kMakerKey = L"SOFTWARE\\Kestrova";
inline constexpr const wchar_t* kSetupKey = L"SOFTWARE\\Kestrova\\QuorlSetup";
inline constexpr const wchar_t* kPatternsKey = L"SOFTWARE\\Kestrova\\Patterns";

using testenv::HostHeap;

// The host's call block for a printer, with this test program as the plug-in's module.
OEMCUIPPARAM MakeParam(const testenv::TestPrinter& printer, HANDLE heap, DEVMODEW* publicDevMode = nullptr);

// One registry value, restored (or removed again) when the object goes.
class RegistryValueGuard {
public:
    RegistryValueGuard(HKEY root, std::wstring path, std::wstring name);
    ~RegistryValueGuard();
    RegistryValueGuard(const RegistryValueGuard&) = delete;
    RegistryValueGuard& operator=(const RegistryValueGuard&) = delete;

    void SetString(const std::wstring& value) const;
    void SetBytes(DWORD type, const void* data, DWORD size) const;
    void Remove() const;

private:
    HKEY root_;
    std::wstring path_;
    std::wstring name_;
    bool keyExisted_ = false;
    bool valueExisted_ = false;
    DWORD type_ = REG_NONE;
    std::vector<BYTE> data_;
};

inline std::wstring BuildPath(const std::wstring& relative) { return testenv::BuildFilePath(relative); }
// Where the plug-in looks for its companions.
std::wstring LocaleLibraryPath();       // printer-driver directory + "\\3\\ozdkrnlcl.dll"
std::wstring PeripheralInstallerPath();  // system directory + "\\ozdkrnpi.dll"

using PlacedFile = testenv::PlacedCompanion;

// The maker's installation folder ("KSDir") pointed at a fresh folder of the run, with
// the locale folder of the test driver inside it.
class MakerFolder {
public:
    MakerFolder();
    const std::wstring& path() const { return path_; }
    std::wstring LocaleFolder() const;  // <KSDir>\Quorl\Test Embosser\Locale
    // Writes the locale stand-in's table (UTF-16 with byte-order mark).
    void WriteLocaleTable(const std::wstring& text) const;
    // What the locale stand-in was asked, one entry per call.
    std::vector<std::wstring> LocaleRequests() const;

private:
    std::wstring path_;
    RegistryValueGuard ksDir_;
};

// Records the printer-data reads besides the writes, and on request withholds the
// printer's device mode or its paper names, or reports other form sizes.
class ConfigSpooler : public testenv::RecordingSpooler {
public:
    struct Read {
        std::wstring key;  // empty for top-level printer data
        std::wstring name;
    };
    std::vector<Read> reads;
    bool withholdDevMode = false;
    bool answerPaperNames = false;
    int paperNamesAnswer = 0;
    std::map<std::wstring, SIZEL> formSizes;  // form name -> size reported instead

    BOOL GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) override;
    DWORD GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                          DWORD* needed) override;
    DWORD GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                            DWORD size, DWORD* needed) override;
    BOOL GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                  DWORD* needed) override;
    int DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                            const DEVMODEW* devmode) override;

    const testenv::RecordedWrite* FindWrite(const wchar_t* key, const wchar_t* name) const;
};

// A printer-data value as stored, and writing one as a test's precondition.
void StoreConfigValue(HANDLE printer, const wchar_t* name, DWORD type, const void* data, DWORD size);
void StoreConfigDword(HANDLE printer, const wchar_t* name, DWORD value);
void StoreTopLevelValue(HANDLE printer, const wchar_t* name, DWORD type, const void* data, DWORD size);

}  // namespace configtest
