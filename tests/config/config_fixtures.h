// What the configuration tests share: registry values of a test, the companion stand-in
// libraries' places and the maker's folder.
#pragma once

#include <fstream>
#include <iterator>

#include "support/host_fixtures.h"
#include "support/spooler_doubles.h"

namespace configtest {

inline constexpr const wchar_t* kMakerKey = L"SOFTWARE\\Kestrova";
inline constexpr const wchar_t* kSetupKey = L"SOFTWARE\\Kestrova\\QuorlSetup";
inline constexpr const wchar_t* kPatternsKey = L"SOFTWARE\\Kestrova\\Patterns";

using testenv::HostHeap;
using testenv::MakeParam;
using PlacedFile = testenv::PlacedCompanion;

inline std::wstring StandIn(const std::wstring& relative) {
    return testenv::BuildFilePath(L"tests\\standins\\" + relative);
}
inline std::wstring LocaleLibraryPath() { return testenv::PrinterDriverDirectory() + L"\\3\\ozdkrnlcl.dll"; }
inline std::wstring PeripheralInstallerPath() {
    wchar_t directory[MAX_PATH] = {};
    GetSystemDirectoryW(directory, MAX_PATH);
    return std::wstring(directory) + L"\\ozdkrnpi.dll";
}

// Stores a printer-data value as a test's precondition; `key` null: top-level data.
inline void StoreValue(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type, const void* data,
                       DWORD size) {
    BYTE* bytes = static_cast<BYTE*>(const_cast<void*>(data));
    key != nullptr ? SetPrinterDataExW(printer, key, name, type, bytes, size)
                   : SetPrinterDataW(printer, const_cast<wchar_t*>(name), type, bytes, size);
}
inline void StoreConfigDword(HANDLE printer, const wchar_t* name, DWORD value) {
    StoreValue(printer, L"Config", name, REG_DWORD, &value, sizeof(value));
}

// One registry value a test sets; removed before and after (the throwaway prefix of the
// run holds none of the maker's values).
class RegistryValue {
public:
    RegistryValue(HKEY root, std::wstring path, const wchar_t* name) : root_(root), path_(path), name_(name) {
        Remove();
    }
    ~RegistryValue() { Remove(); }
    void SetString(const std::wstring& value) const { testenv::WriteRegString(root_, path_, name_, value); }
    void SetBytes(DWORD type, const void* data, DWORD size) const {
        testenv::WriteRegBytes(root_, path_, name_, type, data, size);
    }
    void Remove() const { RegDeleteKeyValueW(root_, path_.c_str(), name_); }

private:
    HKEY root_;
    std::wstring path_;
    const wchar_t* name_;
};

// The maker's installation folder ("KSDir") pointed at a fresh folder of the run, with
// the locale folder of the test driver inside it.
class MakerFolder {
public:
    MakerFolder() {
        for (const wchar_t* folder : {L"", L"\\Quorl", L"\\Quorl\\Test Embosser", L"\\Quorl\\Test Embosser\\Locale"}) {
            CreateDirectoryW((path_ + folder).c_str(), nullptr);
        }
        ksDir_.SetString(path_);
    }
    const std::wstring& path() const { return path_; }
    std::wstring LocaleFolder() const { return path_ + L"\\Quorl\\Test Embosser\\Locale"; }

    // True when the locale stand-in logged exactly `request` (ASCII) as one of its calls.
    bool WasAsked(const std::wstring& request) const {
        std::ifstream file((LocaleFolder() + L"\\requests.log").c_str(), std::ios::binary);
        const std::string log((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        return ("\n" + log).find("\n" + testenv::Narrow(request) + "\n") != std::string::npos;
    }

private:
    std::wstring path_ = testenv::WorkDirectory() + L"\\" + testenv::UniqueName(L"maker");
    RegistryValue ksDir_{HKEY_LOCAL_MACHINE, kMakerKey, L"KSDir"};
};

using ConfigSpooler = testenv::TestSpooler;

}  // namespace configtest
