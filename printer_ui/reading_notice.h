// What a person sees while the embosser's stored settings are read. The read blocks the
// page's thread (up to about 9 s through the spooler, 10 s of silence per wait through
// the network), so for its length the cursor takes the wait shape and a small window
// over the sheet says "Reading embosser settings ...".
#pragma once

#include <windows.h>

#include "config/ui_config.h"

// The first read of the device by a page, as ReadQuorlSettingsOnce does it, with the
// notice shown over the sheet of `page` (its window, or any child of the sheet) while the
// read runs. When the device was read before, nothing is shown and nothing is read.
void ReadDeviceSettingsWithNotice(HWND page, UIConfig& config, const wchar_t* caller);
