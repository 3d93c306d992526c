// Spoolers for the few things Wine's spooler cannot do. Each forwards every call to the
// real spooler except the ones it exists for, and records what the plug-in handed over.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "base/spooler.h"

namespace testenv {

struct RecordedWrite {
    HANDLE printer;
    std::wstring key;  // empty for top-level printer data
    std::wstring name;
    DWORD type;
    std::vector<BYTE> data;
    DWORD status;
};

// Records every printer-data write; optionally refuses writes through one handle, as the
// spooler does for a handle opened without administrative rights.
class RecordingSpooler : public Spooler {
public:
    HANDLE refuseWritesThrough = nullptr;
    std::vector<RecordedWrite> writes;

    DWORD SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) override;
    DWORD SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type, const BYTE* data,
                            DWORD size) override;

private:
    DWORD Record(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type, const BYTE* data, DWORD size,
                 DWORD status);
};

// Installs a spooler for the life of the object.
class SpoolerSwap {
public:
    explicit SpoolerSwap(Spooler* spooler) { SetSpoolerForTesting(spooler); }
    ~SpoolerSwap() { SetSpoolerForTesting(nullptr); }
    SpoolerSwap(const SpoolerSwap&) = delete;
    SpoolerSwap& operator=(const SpoolerSwap&) = delete;
};

// Replaces a registry key's access rules (SDDL) for the life of the object.
class RegistryKeyAccess {
public:
    RegistryKeyAccess(HKEY root, const std::wstring& path, const wchar_t* sddl);
    ~RegistryKeyAccess();

private:
    HKEY key_ = nullptr;
};

}  // namespace testenv
