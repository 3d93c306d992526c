// The "Quorl" page: how a document is produced (embossed, printed or both).
#pragma once

#include <windows.h>
#include <prsht.h>

INT_PTR CALLBACK DocumentQuorlPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
UINT CALLBACK DocumentQuorlPropPageCallback(HWND hwnd, UINT msg, PROPSHEETPAGEW* page);
