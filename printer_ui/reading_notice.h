// What a person sees and can do while the embosser's stored settings are read. The read
// runs on a worker thread (up to about 9 s through the spooler, 10 s of silence per wait
// through the network); meanwhile the page's thread keeps answering messages, the sheet
// takes no input, the cursor takes the wait shape, and a small dialog over the sheet says
// "Reading embosser settings ..." with a "Cancel" button that holds the focus.
#pragma once

#include <windows.h>

#include "config/ui_config.h"

// The first read of the device by a page, as ReadQuorlSettingsOnce does it, with the
// notice shown over the sheet of `page` (its window, or any child of the sheet) while the
// read runs. Returns when the read has ended: done, failed, or cancelled (which counts as
// failed). When the device was read before, or a read of `config` is under way already,
// nothing is shown and nothing is read.
void ReadDeviceSettingsWithNotice(HWND page, UIConfig& config, const wchar_t* caller);
