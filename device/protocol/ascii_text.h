// Small helpers for the ASCII text the embosser speaks and for the 16-bit texts of the
// user interface. Letters are folded in the ASCII range only; every other character
// compares as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "config/ui_config.h"

namespace ozdk {

// Space, tab, line feed, vertical tab, form feed and carriage return.
constexpr bool IsAsciiBlank(uint32_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsAsciiDigit(uint32_t c) { return c >= '0' && c <= '9'; }
constexpr uint32_t ToAsciiUpper(uint32_t c) { return (c >= 'a' && c <= 'z') ? c - ('a' - 'A') : c; }

// True when the first `count` characters agree ignoring case; comparison ends early, with
// true, where both texts end together. A null text counts as empty.
bool EqualPrefixIgnoringAsciiCase(const WideChar* a, const WideChar* b, size_t count);

// True when `text` begins with `prefix`, ignoring case.
bool StartsWithIgnoringAsciiCase(const char* text, const char* prefix);

// 8-bit copy of a 16-bit text: characters below 0x80 as they are, any other as '?'.
// Stops after `maxChars` characters. A null text gives an empty string.
std::string NarrowAscii(const WideChar* text, size_t maxChars = SIZE_MAX);

// Copies `source` into `target` of `capacity` characters, cut so that the terminator fits.
void CopyWideText(WideChar* target, size_t capacity, const WideChar* source);

}  // namespace ozdk
