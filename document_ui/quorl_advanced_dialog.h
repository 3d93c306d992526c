// The Quorl page's "More Options ..." dialog: how images are turned into ink (inverted
// colours, contrast, brightness, thin lines, colour patterns, bitmap output). It writes
// its own values with its OK and Apply buttons.
#pragma once

#include <windows.h>

#include "config/ui_config.h"

struct QuorlAdvancedParam {
    UIConfig* config;
};

INT_PTR CALLBACK DocumentQuorlAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

// True when the machine's list of installed programs holds a "Quorl Software Suite" of
// version 8 or later: only that suite brings the colour patterns.
bool IsQuorlSuiteInstalled();
