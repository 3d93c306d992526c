// Formatted printing into a caller's buffer with the Windows printf conventions
// (in wide formats %s is a wide string and %S an 8-bit one; in 8-bit formats the
// reverse). The result is always terminated within `count` characters; the return
// value is the number of characters written, or -1 when the text was cut.
#pragma once

#include <cstdarg>
#include <cstddef>

int FormatWide(wchar_t* buffer, size_t count, const wchar_t* format, ...);
int FormatWideV(wchar_t* buffer, size_t count, const wchar_t* format, va_list args);
int FormatNarrow(char* buffer, size_t count, const char* format, ...);

// Bounded copy: copies at most count - 1 characters and always terminates.
// Returns false when the source had to be cut.
bool CopyWide(wchar_t* destination, size_t count, const wchar_t* source);
