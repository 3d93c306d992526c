#include "support/spooler_doubles.h"

#include <sddl.h>
#include <winspool.h>

#include <algorithm>

namespace testenv {

const RecordedWrite* TestSpooler::FindWrite(const wchar_t* key, const wchar_t* name) const {
    for (const auto& write : writes) {
        if (write.key == (key != nullptr ? key : L"") && write.name == name) return &write;
    }
    return nullptr;
}

BOOL TestSpooler::OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) {
    if (refuseFullAccess && defaults != nullptr && defaults->DesiredAccess == PRINTER_ALL_ACCESS) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return Spooler::OpenPrinterW(name, printer, defaults);
}

BOOL TestSpooler::GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) {
    const BOOL result = Spooler::GetPrinterW(printer, level, buffer, size, needed);
    if (result && withholdDevMode && level == 2 && buffer != nullptr) {
        reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pDevMode = nullptr;
    }
    return result;
}

DWORD TestSpooler::GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                                   DWORD* needed) {
    return GetPrinterDataExW(printer, nullptr, name, type, data, size, needed);
}

// `key` null: top-level printer data.
DWORD TestSpooler::GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                                     DWORD size, DWORD* needed) {
    reads.push_back(name);
    return key != nullptr ? Spooler::GetPrinterDataExW(printer, key, name, type, data, size, needed)
                          : Spooler::GetPrinterDataW(printer, name, type, data, size, needed);
}

DWORD TestSpooler::SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) {
    return SetPrinterDataExW(printer, nullptr, name, type, data, size);
}

DWORD TestSpooler::SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type,
                                     const BYTE* data, DWORD size) {
    const DWORD status = printer == refuseWritesThrough ? ERROR_ACCESS_DENIED
                         : key != nullptr ? Spooler::SetPrinterDataExW(printer, key, name, type, data, size)
                                          : Spooler::SetPrinterDataW(printer, name, type, data, size);
    writes.push_back({printer, key != nullptr ? key : L"", name, type, std::vector<BYTE>(data, data + size), status});
    return status;
}

DWORD TestSpooler::DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name) {
    deletions.push_back({printer, key, name, REG_NONE, {}, ERROR_SUCCESS});
    return ERROR_SUCCESS;
}

BOOL TestSpooler::GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                           DWORD* needed) {
    const BOOL result = Spooler::GetFormW(printer, form, level, buffer, size, needed);
    const auto replaced = formSizes.find(form != nullptr ? form : L"");
    if (result && buffer != nullptr && level == 2 && replaced != formSizes.end()) {
        reinterpret_cast<FORM_INFO_2W*>(buffer)->Size = replaced->second;
    }
    return result;
}

BOOL TestSpooler::SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command) {
    ++printerWrites;
    return Spooler::SetPrinterW(printer, level, info, command);
}

BOOL TestSpooler::AddFormW(HANDLE printer, DWORD, BYTE* form) {
    const wchar_t* name = reinterpret_cast<FORM_INFO_1W*>(form)->pName;
    DWORD needed = 0;
    Spooler::GetFormW(printer, name, 1, nullptr, 0, &needed);
    if (needed != 0 || std::find(addedForms.begin(), addedForms.end(), name) != addedForms.end()) {
        SetLastError(ERROR_FILE_EXISTS);
        return FALSE;
    }
    addedForms.push_back(name);
    return TRUE;
}

BOOL TestSpooler::DeleteFormW(HANDLE, const wchar_t* form) {
    deletedForms.push_back(form);
    return TRUE;
}

int TestSpooler::DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                                     const DEVMODEW* devmode) {
    if (paperNamesAnswer != -2 && capability == DC_PAPERNAMES) return paperNamesAnswer;
    return Spooler::DeviceCapabilitiesW(device, port, capability, output, devmode);
}

BOOL TestSpooler::GetPrinterDriverW(HANDLE printer, const wchar_t* environment, DWORD level, BYTE* buffer, DWORD size,
                                    DWORD* needed) {
    if (driverVersion == 0) return Spooler::GetPrinterDriverW(printer, environment, level, buffer, size, needed);
    *needed = sizeof(DRIVER_INFO_6W);
    if (level != 6 || buffer == nullptr || size < *needed) return SetLastError(ERROR_INSUFFICIENT_BUFFER), FALSE;
    *reinterpret_cast<DRIVER_INFO_6W*>(buffer) = DRIVER_INFO_6W{};
    reinterpret_cast<DRIVER_INFO_6W*>(buffer)->dwlDriverVersion = driverVersion;
    return TRUE;
}

namespace {
void ApplySddl(HKEY key, const wchar_t* sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor, nullptr)) {
        RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor);
        LocalFree(descriptor);
    }
}
}  // namespace

RegistryKeyAccess::RegistryKeyAccess(HKEY root, const std::wstring& path, const wchar_t* sddl) {
    if (RegOpenKeyExW(root, path.c_str(), 0, READ_CONTROL | WRITE_DAC, &key_) == ERROR_SUCCESS) {
        ApplySddl(key_, sddl);
    }
}

RegistryKeyAccess::~RegistryKeyAccess() {
    if (key_ != nullptr) {
        ApplySddl(key_, L"D:(A;;KA;;;WD)");
        RegCloseKey(key_);
    }
}

}  // namespace testenv
