#include "config/registry.h"

#include "base/heap_memory.h"
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

void CopyCutString(wchar_t* destination, DWORD capacity, const BYTE* value, DWORD bytes) {
    if (capacity == 0) {
        return;
    }
    const DWORD room = (capacity - 1) * sizeof(wchar_t);
    const DWORD keep = bytes < room ? bytes : room;
    CopyMemory(destination, value, keep);
    TerminateReadString(destination, capacity, keep);
}

namespace {

bool IsStringType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ; }

// A value longer than the buffer: read it whole once more and keep what fits.
LONG ReadCut(HKEY key, const wchar_t* name, wchar_t* destination, DWORD capacity) {
    DWORD type = 0;
    DWORD size = 0;
    LONG status = RegQueryValueExW(key, name, nullptr, &type, nullptr, &size);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    if (!IsStringType(type)) {
        return ERROR_INVALID_DATA;
    }
    HeapBuffer whole(size + sizeof(wchar_t));
    if (!whole) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    status = RegQueryValueExW(key, name, nullptr, &type, whole.bytes(), &size);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    CopyCutString(destination, capacity, whole.bytes(), size);
    return ERROR_SUCCESS;
}

}  // namespace

LONG ReadRegistryString(const wchar_t* name, wchar_t* destination, DWORD capacityBytes, HKEY key) {
    UniqueRegKey owned(key);
    const DWORD capacity = capacityBytes / sizeof(wchar_t);
    if (destination == nullptr || capacity == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD type = 0;
    DWORD size = capacity * sizeof(wchar_t);
    LONG status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(destination), &size);
    if (status == ERROR_MORE_DATA) {
        return ReadCut(key, name, destination, capacity);
    }
    if (status != ERROR_SUCCESS) {
        destination[0] = L'\0';
        return status;
    }
    if (!IsStringType(type)) {
        destination[0] = L'\0';
        return ERROR_INVALID_DATA;
    }
    TerminateReadString(destination, capacity, size);
    return ERROR_SUCCESS;
}
