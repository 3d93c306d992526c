// The version text the pages show.
#pragma once

#include "config/ui_config.h"

// "major.minor.build.revision" of the driver (level 6) or of this module's version
// resource; one shared buffer, overwritten by every call.
const WideChar* GetFileVersionString(const UIConfig* pConfig);
