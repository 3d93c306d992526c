#include "base/text_format.h"

#include <cstdio>
#include <cwchar>

int FormatWideV(wchar_t* buffer, size_t count, const wchar_t* format, va_list args) {
    if (buffer == nullptr || count == 0) {
        return -1;
    }
    // The Microsoft runtime's own formatter keeps the Windows meaning of %s and %S.
    const int written = _vsnwprintf(buffer, count, format, args);
    if (written < 0 || static_cast<size_t>(written) >= count) {
        buffer[count - 1] = L'\0';
        return -1;
    }
    return written;
}

int FormatWide(wchar_t* buffer, size_t count, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int written = FormatWideV(buffer, count, format, args);
    va_end(args);
    return written;
}

int FormatNarrow(char* buffer, size_t count, const char* format, ...) {
    if (buffer == nullptr || count == 0) {
        return -1;
    }
    va_list args;
    va_start(args, format);
    const int written = _vsnprintf(buffer, count, format, args);
    va_end(args);
    if (written < 0 || static_cast<size_t>(written) >= count) {
        buffer[count - 1] = '\0';
        return -1;
    }
    return written;
}

bool CopyWide(wchar_t* destination, size_t count, const wchar_t* source) {
    if (destination == nullptr || count == 0) {
        return false;
    }
    size_t i = 0;
    if (source != nullptr) {
        for (; i + 1 < count && source[i] != L'\0'; ++i) {
            destination[i] = source[i];
        }
    }
    destination[i] = L'\0';
    return source == nullptr || source[i] == L'\0';
}
