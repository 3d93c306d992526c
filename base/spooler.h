// Every call the plug-in makes to the print spooler goes through this one interface.
// Its methods forward to winspool; the product always uses this implementation.
// A test may install a subclass that overrides a few calls to produce what the spooler
// at hand cannot (access rights, deletions, a form table), and forwards the rest.
#pragma once

#include <windows.h>
#include <winspool.h>

#include "base/heap_memory.h"
#include "base/unique_handle.h"

class Spooler {
public:
    virtual ~Spooler() = default;

    virtual BOOL OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults);
    virtual BOOL ClosePrinter(HANDLE printer);
    virtual BOOL GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed);
    virtual BOOL SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command);
    virtual DWORD GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data,
                                  DWORD size, DWORD* needed);
    virtual DWORD SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data,
                                  DWORD size);
    virtual DWORD GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type,
                                    BYTE* data, DWORD size, DWORD* needed);
    virtual DWORD SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type,
                                    const BYTE* data, DWORD size);
    virtual DWORD DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name);
    virtual BOOL GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                          DWORD* needed);
    virtual BOOL AddFormW(HANDLE printer, DWORD level, BYTE* form);
    virtual BOOL DeleteFormW(HANDLE printer, const wchar_t* form);
    virtual int DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability,
                                    wchar_t* output, const DEVMODEW* devmode);
    virtual LONG DocumentPropertiesW(HWND window, HANDLE printer, const wchar_t* device, DEVMODEW* output,
                                     DEVMODEW* input, DWORD mode);
    virtual DWORD StartDocPrinterW(HANDLE printer, DWORD level, BYTE* docInfo);
    virtual BOOL WritePrinter(HANDLE printer, const void* data, DWORD size, DWORD* written);
    virtual BOOL EndDocPrinter(HANDLE printer);
    virtual BOOL GetPrinterDriverW(HANDLE printer, const wchar_t* environment, DWORD level, BYTE* buffer,
                                   DWORD size, DWORD* needed);
    virtual BOOL GetPrinterDriverDirectoryW(const wchar_t* server, const wchar_t* environment, DWORD level,
                                            BYTE* buffer, DWORD size, DWORD* needed);
};

// The spooler the plug-in talks to.
Spooler& Spool();

// Test seam: installs a replacement for this process; null restores the real one.
void SetSpoolerForTesting(Spooler* replacement);

namespace spooler_detail {
inline void ClosePrinterThroughSpooler(HANDLE printer) { Spool().ClosePrinter(printer); }
}  // namespace spooler_detail

using UniquePrinter = UniqueHandle<HANDLE, spooler_detail::ClosePrinterThroughSpooler, nullptr>;

// What FetchPrinterInfo met on its way: the size, and why it came back empty.
struct PrinterInfoOutcome {
    DWORD needed = 0;             // the size the spooler asked for; 0 when it named none
    bool noMemory = false;        // no buffer of that size could be had
    DWORD error = ERROR_SUCCESS;  // GetLastError() of the call that failed; ERROR_NOT_ENOUGH_MEMORY with noMemory
};

// The printer's information at `level` (GetPrinterW: size, allocate, fetch); the buffer
// is as large as the spooler asked for. An empty buffer when it cannot be had; `outcome`,
// when given, then says why.
HeapBuffer FetchPrinterInfo(HANDLE printer, DWORD level, PrinterInfoOutcome* outcome = nullptr);

// The printer's name as its level-1 information reports it.
class PrinterName {
public:
    explicit PrinterName(HANDLE printer) : info_(FetchPrinterInfo(printer, 1)) {}
    // Null when it cannot be had.
    const wchar_t* get() const { return info_ ? info_.as<PRINTER_INFO_1W>()->pName : nullptr; }

private:
    HeapBuffer info_;
};

// Opens the printer `name` with full access (data type "RAW"). Empty when that cannot be
// done; GetLastError() then holds the spooler's error.
UniquePrinter OpenPrinterWithFullAccess(const wchar_t* name);

// Opens the printer of `printer` again, by the name its level-1 information reports,
// with full access. Empty when that cannot be done.
UniquePrinter ReopenPrinterWithFullAccess(HANDLE printer);
