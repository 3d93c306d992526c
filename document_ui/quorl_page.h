// The "Quorl" page: how a document is produced (embossed, printed or both), with the
// braille and ink qualities, grayscale or colour ink and the "2 In 1" mode.
#pragma once

#include <windows.h>
#include <prsht.h>

#include "config/ui_config.h"

INT_PTR CALLBACK DocumentQuorlPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
UINT CALLBACK DocumentQuorlPropPageCallback(HWND hwnd, UINT msg, PROPSHEETPAGEW* page);

// Takes the page's controls into the page's configuration, writes the colour choice
// through to the device modes and stores the page's values.
void ApplyQuorlChanges(HWND hDlg);
// Stores the page's values as printer data and clears PageChanged.
void UpdateQuorlConfig(UIConfig* config);
