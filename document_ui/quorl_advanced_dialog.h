// The Quorl page's "More Options ..." dialog: how images are turned into ink (inverted
// colours, contrast, brightness, thin lines, colour patterns, bitmap output). It writes
// its own values with its OK and Apply buttons.
#pragma once

#include <windows.h>
#include <commdlg.h>

#include "config/ui_config.h"

struct QuorlAdvancedParam {
    UIConfig* config;
    int patternEntry;  // the dialog's: the pattern list's entry before "Browse ..." was chosen
};

INT_PTR CALLBACK DocumentQuorlAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

// Test seam: the file-open dialog "Browse ..." shows (Wine's never answers a path longer
// than MAX_PATH); null restores the system's.
using PatternFileDialog = BOOL (*)(OPENFILENAMEW* open);
void SetPatternFileDialogForTesting(PatternFileDialog dialog);

// True when the machine's list of installed programs holds a "Quorl Software Suite" of
// version 8 or later: only that suite brings the colour patterns.
bool IsQuorlSuiteInstalled();
