#include "config/printer_data.h"

#include <cwchar>

#include "config/registry.h"
#include "base/spooler.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "base/unique_handle.h"

namespace {

// The writers' rule: one write through the caller's handle; only when it fails, the same
// write once more through a full-access reopen. A failed reopen keeps the first status.
template <typename Write>
DWORD WriteWithFullAccessRetry(HANDLE printer, Write write) {
    const DWORD status = write(printer);
    if (status == ERROR_SUCCESS) {
        return status;
    }
    UniquePrinter full = ReopenPrinterWithFullAccess(printer);
    if (!full) {
        return status;
    }
    return write(full.get());
}

const BYTE* AsBytes(const void* data) { return static_cast<const BYTE*>(data); }

bool ReadConfigDword(HANDLE printer, const wchar_t* name, uint32_t* value) {
    DWORD type = 0;
    DWORD needed = 0;
    uint32_t read = 0;
    const DWORD status = Spool().GetPrinterDataExW(printer, kConfigKey, name, &type, reinterpret_cast<BYTE*>(&read),
                                                   sizeof(read), &needed);
    if (status != ERROR_SUCCESS || needed != sizeof(read)) {
        return false;  // a 4-byte value of another type is read as it stands
    }
    *value = read;
    return true;
}

}  // namespace

DWORD SetPrinterDataInteger(HANDLE printer, const wchar_t* name, uint32_t value) {
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        const DWORD status =
            Spool().SetPrinterDataExW(target, kConfigKey, name, REG_DWORD, AsBytes(&value), sizeof(value));
        Trace(L"SetPrinterDataInteger(): %d=SetPrinterDataEx(), %s=%d\n", status, name, value);
        return status;
    });
}

DWORD SetPrinterDataInteger2(HANDLE printer, const wchar_t* name, uint32_t value) {
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        const DWORD status = Spool().SetPrinterDataW(target, name, REG_DWORD, AsBytes(&value), sizeof(value));
        Trace(L"SetPrinterDataInteger2(): %d=SetPrinterData(), %s=%d\n", status, name, value);
        return status;
    });
}

DWORD SetPrinterDataString(HANDLE printer, const wchar_t* name, const wchar_t* value, DWORD length) {
    const DWORD bytes = length * sizeof(wchar_t);
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        const DWORD status = Spool().SetPrinterDataExW(target, kConfigKey, name, REG_SZ, AsBytes(value), bytes);
        Trace(L"SetPrinterDataString(): %d=SetPrinterDataEx(), %s=%s\n", status, name, value);
        return status;
    });
}

DWORD SetPrinterDataPaperSize(HANDLE printer, const wchar_t* /*name*/, const PaperDimensions* size,
                              DWORD /*bytes*/) {
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        return Spool().SetPrinterDataExW(target, kConfigKey, L"PaperSize", REG_BINARY, AsBytes(size), 8);
    });
}

void GetPrinterDataInteger(HANDLE printer, const wchar_t* name, uint32_t* destination, uint32_t defaultValue) {
    if (ReadConfigDword(printer, name, destination)) {
        return;
    }
    *destination = defaultValue;
    SetPrinterDataInteger(printer, name, defaultValue);
}

void GetPrinterDataInteger(HANDLE printer, const wchar_t* name, int32_t* destination, int32_t defaultValue) {
    uint32_t value = 0;
    GetPrinterDataInteger(printer, name, &value, static_cast<uint32_t>(defaultValue));
    *destination = static_cast<int32_t>(value);
}

void GetPrinterDataString(HANDLE printer, const wchar_t* name, wchar_t* destination, const wchar_t* defaultValue,
                          DWORD capacityBytes) {
    constexpr DWORD kCapacity = kTextCapacity;
    if (capacityBytes > kCapacity * sizeof(wchar_t)) {
        capacityBytes = kCapacity * sizeof(wchar_t);
    }
    DWORD type = 0;
    DWORD needed = 0;
    const DWORD status = Spool().GetPrinterDataExW(printer, kConfigKey, name, &type,
                                                   reinterpret_cast<BYTE*>(destination), capacityBytes, &needed);
    if (status == ERROR_SUCCESS && type == REG_SZ) {
        TerminateReadString(destination, capacityBytes / sizeof(wchar_t), needed);
        return;
    }
    // Any failure, a value longer than the buffer included, takes the default.
    CopyWide(destination, kCapacity, defaultValue);
    SetPrinterDataString(printer, name, destination, static_cast<DWORD>(wcslen(destination)));
}

DWORD GetPrinterDataInteger2(HANDLE printer, const wchar_t* name, uint32_t* destination, uint32_t defaultValue) {
    DWORD type = 0;
    DWORD needed = 0;
    uint32_t read = 0;
    const DWORD status =
        Spool().GetPrinterDataW(printer, name, &type, reinterpret_cast<BYTE*>(&read), sizeof(read), &needed);
    Trace(L"GetPrinterDataInteger2(): %d=GetPrinterData(), %s=%d\n", status, name, read);
    if (status == ERROR_SUCCESS && needed == sizeof(read)) {
        *destination = read;  // whatever its type
        return 0;
    }
    *destination = defaultValue;
    return SetPrinterDataInteger2(printer, name, defaultValue);
}

DWORD GetPrinterDataInteger2(HANDLE printer, const wchar_t* name, int32_t* destination, int32_t defaultValue) {
    uint32_t value = static_cast<uint32_t>(*destination);
    const DWORD status = GetPrinterDataInteger2(printer, name, &value, static_cast<uint32_t>(defaultValue));
    *destination = static_cast<int32_t>(value);
    return status;
}

bool GetPrinterDataPaperSize(HANDLE printer, PaperDimensions* size) {
    DWORD type = 0;
    DWORD needed = 0;
    PaperDimensions read = {};
    const DWORD status = Spool().GetPrinterDataExW(printer, kConfigKey, L"PaperSize", &type,
                                                   reinterpret_cast<BYTE*>(&read), sizeof(read), &needed);
    if (status != ERROR_SUCCESS || type != REG_BINARY || needed != sizeof(read)) {
        return false;
    }
    *size = read;
    return true;
}

DWORD SetConfigMediaType(HANDLE printer, const wchar_t* name, DWORD number) {
    if (printer == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        return Spool().SetPrinterDataExW(target, kMediaTypesKey, name, REG_DWORD, AsBytes(&number), sizeof(number));
    });
}

bool GetConfigMediaType(HANDLE printer, const wchar_t* name, DWORD* number) {
    DWORD type = 0;
    DWORD needed = 0;
    DWORD value = 0;
    if (Spool().GetPrinterDataExW(printer, kMediaTypesKey, name, &type, reinterpret_cast<BYTE*>(&value),
                                  sizeof(value), &needed) != ERROR_SUCCESS ||
        needed != sizeof(value)) {
        return false;
    }
    *number = value;
    return true;
}

DWORD RemoveConfigMediaType(const wchar_t* name, HANDLE printer) {
    const PrinterName printerName(printer);
    Trace(L"RemoveConfigMediaType(): reopening printer %ws\n", printerName.get() != nullptr ? printerName.get() : L"");
    UniquePrinter full = ReopenPrinterWithFullAccess(printer);
    DWORD status = ERROR_ACCESS_DENIED;
    if (full) {
        status = Spool().DeletePrinterDataExW(full.get(), kMediaTypesKey, name);
    } else if (GetLastError() != ERROR_SUCCESS) {
        status = GetLastError();
    }
    Trace(L"RemoveConfigMediaType(): removing %s %d\n", name, status);
    return status;
}

DWORD EnumConfigMediaTypes(const UIConfig* config, wchar_t* buffer, DWORD* byteCount) {
    return EnumConfigMediaTypes(config, buffer, MAXDWORD, byteCount);
}

DWORD EnumConfigMediaTypes(const UIConfig* config, wchar_t* buffer, DWORD capacityBytes, DWORD* byteCount) {
    if (byteCount != nullptr) {
        *byteCount = 0;
    }
    if (buffer != nullptr && capacityBytes < sizeof(wchar_t)) {
        return 0;  // not even the closing terminator fits
    }
    wchar_t path[1024] = {};
    FormatWide(path, 1024, L"%s\\%s\\%s", L"SYSTEM\\CurrentControlSet\\Control\\Print\\Printers",
               config->PrinterName, kMediaTypesKey);
    UniqueRegKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        Trace(L"EnumConfigMediaTypes(): cbReturned=%d\n", 0);
        return 0;
    }
    constexpr DWORD kNameCapacity = 8192;
    HeapBuffer name(kNameCapacity * sizeof(wchar_t));
    DWORD count = 0;
    wchar_t* out = buffer;
    // Characters left for names, the closing terminator kept apart.
    size_t room = buffer != nullptr ? capacityBytes / sizeof(wchar_t) - 1 : 0;
    for (DWORD index = 0; name; ++index) {
        DWORD length = kNameCapacity;
        if (RegEnumValueW(key.get(), index, name.as<wchar_t>(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            break;
        }
        if (out != nullptr && length + 1 > room) {
            Trace(L"EnumConfigMediaTypes(): %s left out, the buffer is full\n", name.as<wchar_t>());
            continue;
        }
        if (out != nullptr) {
            CopyMemory(out, name.as<wchar_t>(), (length + 1) * sizeof(wchar_t));
            out += length + 1;
            room -= length + 1;
        }
        count += (length + 1) * sizeof(wchar_t);
        Trace(L"EnumConfigMediaTypes(): %s\n", name.as<wchar_t>());
    }
    if (out != nullptr) {
        *out = L'\0';
    }
    count += sizeof(wchar_t);
    if (byteCount != nullptr) {
        *byteCount = count;
    }
    Trace(L"EnumConfigMediaTypes(): cbReturned=%d\n", count);
    return count;
}

DWORD SetConfigForm(HANDLE printer, const FORM_INFO_1W* form) {
    return WriteWithFullAccessRetry(printer, [&](HANDLE target) {
        return Spool().SetPrinterDataExW(target, kFormsKey, form->pName, REG_BINARY, AsBytes(form), sizeof(*form));
    });
}

bool IsConfigForm(HANDLE printer, const wchar_t* name) {
    FORM_INFO_1W form = {};
    DWORD type = 0;
    DWORD needed = 0;
    const DWORD status = Spool().GetPrinterDataExW(printer, kFormsKey, name, &type, reinterpret_cast<BYTE*>(&form),
                                                   sizeof(form), &needed);
    return status == ERROR_SUCCESS || status == ERROR_MORE_DATA;
}

DWORD RemoveConfigForm(HANDLE printer, const wchar_t* name) {
    return WriteWithFullAccessRetry(
        printer, [&](HANDLE target) { return Spool().DeletePrinterDataExW(target, kFormsKey, name); });
}

BOOL SetPrinterAsAdmin(HANDLE printer, DWORD level, PRINTER_INFO_2W* info) {
    BOOL result = FALSE;
    DWORD error = 0;
    if (UniquePrinter full = ReopenPrinterWithFullAccess(printer)) {
        result = Spool().SetPrinterW(full.get(), level, reinterpret_cast<BYTE*>(info), 0);
        error = GetLastError();
    }
    Trace(L"SetPrinterAsAdmin(): %u=SetPrinter( %u )\n", result, error);
    return result;
}
