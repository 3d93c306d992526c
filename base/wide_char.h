// The 16-bit character of stored values, resources and the user interface. The embosser
// protocol core is also built natively on Linux, where wchar_t has 32 bits.
#pragma once

#if defined(_WIN32)
using WideChar = wchar_t;
#define W16(s) L##s
#else
using WideChar = char16_t;
#define W16(s) u##s
#endif

static_assert(sizeof(WideChar) == 2, "stored values and resources use 16-bit characters");
