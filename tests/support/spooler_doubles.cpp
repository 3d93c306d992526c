#include "support/spooler_doubles.h"

#include <sddl.h>

namespace testenv {

DWORD RecordingSpooler::Record(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type, const BYTE* data,
                               DWORD size, DWORD status) {
    RecordedWrite write{printer, key ? key : L"", name, type, std::vector<BYTE>(data, data + size), status};
    writes.push_back(write);
    return status;
}

DWORD RecordingSpooler::SetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD type, const BYTE* data,
                                        DWORD size) {
    const DWORD status = printer == refuseWritesThrough ? ERROR_ACCESS_DENIED
                                                        : Spooler::SetPrinterDataW(printer, name, type, data, size);
    return Record(printer, nullptr, name, type, data, size, status);
}

DWORD RecordingSpooler::SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD type,
                                          const BYTE* data, DWORD size) {
    const DWORD status = printer == refuseWritesThrough
                             ? ERROR_ACCESS_DENIED
                             : Spooler::SetPrinterDataExW(printer, key, name, type, data, size);
    return Record(printer, key, name, type, data, size, status);
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
