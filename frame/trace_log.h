// The one trace function of the plug-in, and the version text the pages show.
//
// Formats follow the Windows wide-printf conventions: %s and %ws take wide strings,
// %S takes an 8-bit string, %p prints a pointer. Every line begins with the routine's
// own name and "(): " and ends with "\n"; the caller writes both.
#pragma once

#include "config/ui_config.h"

void Trace(const WideChar* format, ...);

// "major.minor.build.revision" of the driver (level 6) or of this module's version
// resource; one shared buffer, overwritten by every call.
const WideChar* GetFileVersionString(const UIConfig* pConfig);
