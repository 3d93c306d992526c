// The one trace function of the plug-in.
//
// Formats follow the Windows wide-printf conventions: %s and %ws take wide strings,
// %S takes an 8-bit string, %p prints a pointer. Every line begins with the routine's
// own name and "(): " and ends with "\n"; the caller writes both.
#pragma once

#include "base/wide_char.h"

void Trace(const WideChar* format, ...);
