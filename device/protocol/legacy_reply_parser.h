// The embosser's reply to the legacy settings query: an "@PJL INFO LEGACY [23" block
// of KEY=VALUE lines (CR LF) carrying its stored settings, firmware and identity.
#pragma once

#include <cstddef>

#include "config/ui_config.h"

inline constexpr int kLegacyParmTotal = 23;          // items of a complete reply
inline constexpr size_t kLegacyReplyCapacity = 4096;  // the receive buffer, terminator included

// Fills the legacy settings of `config` from `reply` (8-bit, NUL-terminated, any length)
// and returns kLegacyParmTotal when every item was found, else 0; the caller keeps the
// result in LegacyParmCount. Without the "@PJL INFO LEGACY [23" prefix nothing changes.
// Otherwise each key is taken from its first occurrence after the prefix as a plain
// substring, and every field the parser owns is written (0, empty or the default code
// when the key is absent), also when the result is 0.
// Numbers saturate at the int32 limits; firmware numbers wrap modulo 2^32; texts are cut
// at kTextCapacity - 1 characters; bytes of 0x80 and above widen as unsigned bytes.
// Traces "ParseInfoLegacySettings(): %S\n" with the whole reply.
int ParseInfoLegacySettings(UIConfig& config, const char* reply);
