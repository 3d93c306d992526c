#include "base/spooler.h"

namespace {
Spooler gWinspool;
Spooler* gCurrent = &gWinspool;

wchar_t* Mutable(const wchar_t* text) { return const_cast<wchar_t*>(text); }
}  // namespace

Spooler& Spool() { return *gCurrent; }

void SetSpoolerForTesting(Spooler* replacement) { gCurrent = replacement ? replacement : &gWinspool; }

HeapBuffer FetchPrinterInfo(HANDLE printer, DWORD level, PrinterInfoOutcome* outcome) {
    PrinterInfoOutcome ignored;
    if (outcome == nullptr) {
        outcome = &ignored;
    }
    DWORD needed = 0;
    Spool().GetPrinterW(printer, level, nullptr, 0, &needed);
    outcome->needed = needed;
    if (needed == 0) {
        outcome->error = GetLastError();
        return HeapBuffer();
    }
    HeapBuffer info(needed);
    if (!info) {
        outcome->noMemory = true;
        outcome->error = ERROR_NOT_ENOUGH_MEMORY;
        return HeapBuffer();
    }
    if (!Spool().GetPrinterW(printer, level, info.bytes(), needed, &needed)) {
        outcome->error = GetLastError();
        return HeapBuffer();
    }
    return info;
}

UniquePrinter OpenPrinterWithFullAccess(const wchar_t* name) {
    PRINTER_DEFAULTSW defaults = {Mutable(L"RAW"), nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    if (!Spool().OpenPrinterW(name, &printer, &defaults)) {
        return UniquePrinter();
    }
    return UniquePrinter(printer);
}

UniquePrinter ReopenPrinterWithFullAccess(HANDLE printer) {
    const PrinterName name(printer);
    if (name.get() == nullptr) {
        return UniquePrinter();
    }
    return OpenPrinterWithFullAccess(name.get());
}

BOOL Spooler::OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) {
    return ::OpenPrinterW(Mutable(name), printer, defaults);
}

BOOL Spooler::ClosePrinter(HANDLE printer) { return ::ClosePrinter(printer); }

BOOL Spooler::GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) {
    return ::GetPrinterW(printer, level, buffer, size, needed);
}

BOOL Spooler::SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command) {
    return ::SetPrinterW(printer, level, info, command);
}

DWORD Spooler::GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                               DWORD* needed) {
    return ::GetPrinterDataW(printer, Mutable(name), type, data, size, needed);
}

DWORD Spooler::SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) {
    return ::SetPrinterDataW(printer, Mutable(name), type, const_cast<BYTE*>(data), size);
}

DWORD Spooler::GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type,
                                 BYTE* data, DWORD size, DWORD* needed) {
    return ::GetPrinterDataExW(printer, key, name, type, data, size, needed);
}

DWORD Spooler::SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type,
                                 const BYTE* data, DWORD size) {
    return ::SetPrinterDataExW(printer, key, name, type, const_cast<BYTE*>(data), size);
}

DWORD Spooler::DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name) {
    return ::DeletePrinterDataExW(printer, key, name);
}

BOOL Spooler::GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                       DWORD* needed) {
    return ::GetFormW(printer, Mutable(form), level, buffer, size, needed);
}

BOOL Spooler::AddFormW(HANDLE printer, DWORD level, BYTE* form) { return ::AddFormW(printer, level, form); }

BOOL Spooler::DeleteFormW(HANDLE printer, const wchar_t* form) { return ::DeleteFormW(printer, Mutable(form)); }

int Spooler::DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                                 const DEVMODEW* devmode) {
    return ::DeviceCapabilitiesW(device, port, capability, output, devmode);
}

LONG Spooler::DocumentPropertiesW(HWND window, HANDLE printer, const wchar_t* device, DEVMODEW* output,
                                  DEVMODEW* input, DWORD mode) {
    return ::DocumentPropertiesW(window, printer, Mutable(device), output, input, mode);
}

DWORD Spooler::StartDocPrinterW(HANDLE printer, DWORD level, BYTE* docInfo) {
    return ::StartDocPrinterW(printer, level, docInfo);
}

BOOL Spooler::WritePrinter(HANDLE printer, const void* data, DWORD size, DWORD* written) {
    return ::WritePrinter(printer, const_cast<void*>(data), size, written);
}

BOOL Spooler::EndDocPrinter(HANDLE printer) { return ::EndDocPrinter(printer); }

BOOL Spooler::GetPrinterDriverW(HANDLE printer, const wchar_t* environment, DWORD level, BYTE* buffer,
                                DWORD size, DWORD* needed) {
    return ::GetPrinterDriverW(printer, Mutable(environment), level, buffer, size, needed);
}

BOOL Spooler::GetPrinterDriverDirectoryW(const wchar_t* server, const wchar_t* environment, DWORD level,
                                         BYTE* buffer, DWORD size, DWORD* needed) {
    return ::GetPrinterDriverDirectoryW(Mutable(server), Mutable(environment), level, buffer, size, needed);
}
