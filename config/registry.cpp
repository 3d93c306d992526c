#include "config/registry.h"

#include <shlobj.h>

#include "base/text_format.h"
#include "base/unique_handle.h"

void TerminateReadString(wchar_t* buffer, DWORD capacity, DWORD bytesRead) {
    if (capacity == 0) {
        return;
    }
    DWORD characters = bytesRead / sizeof(wchar_t);
    if (characters >= capacity) {
        characters = capacity - 1;
    }
    buffer[characters] = L'\0';
}

LONG ReadRegistryString(const wchar_t* name, wchar_t* destination, DWORD capacityBytes, HKEY key) {
    UniqueRegKey owned(key);
    const DWORD capacity = capacityBytes / sizeof(wchar_t);
    if (destination == nullptr || capacity == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD type = 0;
    DWORD size = capacity * sizeof(wchar_t);
    const LONG status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(destination), &size);
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        destination[0] = L'\0';
        return status;
    }
    TerminateReadString(destination, capacity, size);
    return ERROR_SUCCESS;
}

bool GetPatternFolder(wchar_t* folder, size_t count) {
    if (count == 0) {
        return false;
    }
    folder[0] = L'\0';
    wchar_t commonData[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, commonData))) {
        return false;
    }
    return FormatWide(folder, count, L"%s\\Kestrova\\Quorl\\Patterns", commonData) > 0;
}
