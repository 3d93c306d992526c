// The "Layout" page: sides, binding edge, output face, collation, preview and
// orientation, each shown as a picture; its "Advanced" dialog sets rotated landscape and
// the horizontal shift.
#pragma once

#include <windows.h>
#include <prsht.h>

#include "config/ui_config.h"

INT_PTR CALLBACK DocumentLayoutPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
UINT CALLBACK DocumentLayoutPropPageCallback(HWND hwnd, UINT msg, PROPSHEETPAGEW* page);

// Collects the page's controls into the record, the device modes and "Config".
void ApplyLayoutChanges(HWND hDlg, UIConfig* config);
void UpdateLayoutConfig(UIConfig* config);

INT_PTR CALLBACK DocumentLayoutAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
