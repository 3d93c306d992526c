// Reading decimal numbers from the embosser's 8-bit reply and from the 16-bit texts of
// the device-settings items, with no undefined behaviour on any input.
//
// Common rule: leading blanks (space, tab, CR, LF, VT, FF) and one sign are allowed,
// reading stops at the first character that does not fit, and no digits give 0.
// Integers that do not fit in 32 bits saturate at the limits of the result type's
// signed range (as the Windows atoi does); the "%u" reader wraps modulo 2^32 (as
// unsigned arithmetic does). Only ASCII digits count.
#pragma once

#include <cstdint>

#include "config/ui_config.h"

namespace ozdk {

// Signed decimal integer, saturating at INT32_MIN / INT32_MAX.
int32_t ReadInteger(const char* text);
int32_t ReadInteger(const WideChar* text);

// Decimal number with an optional fraction ("12", "-0.5", ".25", "3."); no exponent.
// Correctly rounded to the nearest double; a value too large gives +/-infinity.
double ReadDecimal(const WideChar* text);

// Truncates toward zero and saturates at the int32 limits (NaN gives INT32_MIN).
int32_t TruncateToInt32(double value);

// One "%u" field as the C scanf family reads it: blanks, an optional sign, at least one
// digit; a minus sign negates modulo 2^32. On success advances `cursor` past the digits
// and returns true; without digits returns false and leaves `value` alone.
bool ReadUnsignedField(const char*& cursor, uint32_t& value);

// Up to `count` "%u" fields separated by single dots, as "%u.%u.%u" reads them (a
// firmware version, a dotted address). Returns how many were read; the others are left.
int ReadDottedNumbers(const char* text, uint32_t* numbers, int count);

}  // namespace ozdk
