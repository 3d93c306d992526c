// The spooler the tests install in place of the real one: it forwards every call to
// winspool, records what the plug-in wrote and read, and on request produces what Wine's
// spooler cannot (refused writes and reopens, deletions, a driver version) or what a test
// needs of a printer (no device mode, no paper names, other form sizes).
#pragma once

#include <windows.h>

#include <map>
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

class TestSpooler : public Spooler {
public:
    // What to produce.
    HANDLE refuseWritesThrough = nullptr;  // writes through this handle fail with 5, as without rights
    bool refuseFullAccess = false;         // opening a printer with full access fails with 5
    bool withholdDevMode = false;          // level 2 comes without its device mode
    int paperNamesAnswer = -2;             // other than -2: the answer to DC_PAPERNAMES
    std::map<std::wstring, SIZEL> formSizes;  // form name -> size reported instead
    DWORDLONG driverVersion = 0;           // non-zero: level-6 driver information with this version

    // What the plug-in did. Deletions are recorded, never made.
    std::vector<RecordedWrite> writes;
    std::vector<std::wstring> reads;  // value names
    std::vector<RecordedWrite> deletions;
    int printerWrites = 0;                 // SetPrinterW calls
    std::vector<std::wstring> addedForms;  // a form the server has already fails with 80
    std::vector<std::wstring> deletedForms;
    const RecordedWrite* FindWrite(const wchar_t* key, const wchar_t* name) const;  // key null: top level

    BOOL OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) override;
    BOOL GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) override;
    DWORD GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                          DWORD* needed) override;
    DWORD GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                            DWORD size, DWORD* needed) override;
    DWORD SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) override;
    DWORD SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type, const BYTE* data,
                            DWORD size) override;
    DWORD DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name) override;
    BOOL GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                  DWORD* needed) override;
    BOOL SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command) override;
    BOOL AddFormW(HANDLE printer, DWORD level, BYTE* form) override;
    BOOL DeleteFormW(HANDLE printer, const wchar_t* form) override;
    int DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                            const DEVMODEW* devmode) override;
    BOOL GetPrinterDriverW(HANDLE printer, const wchar_t* environment, DWORD level, BYTE* buffer, DWORD size,
                           DWORD* needed) override;
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
