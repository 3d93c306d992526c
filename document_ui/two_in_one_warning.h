// The warning shown before "2 In 1" mode is switched on: what the mode does to the
// output, with "&Yes" / "&No" and "Do not show this message again.".
#pragma once

#include <windows.h>

#include <cstdint>

#include "config/ui_config.h"

struct TwoInOneWarningParam {
    UIConfig* config;
    int checkBoxShow;            // show command of "Do not show this message again."
    uint32_t dontShowAgain;      // the box's state when the dialog ended
    wchar_t text[kTextCapacity]; // the message
};

// Ends with 1 for "&Yes" (also Escape and the close box: "&Yes" is the Cancel button)
// and 2 for "&No".
INT_PTR CALLBACK TwoInOneWarningDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
