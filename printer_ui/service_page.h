// The printer's "Service" page (dialog 108): the embosser's status and identity, status
// monitoring, the service requests handed to the language-monitor extension library and
// the launch of the maker's ink toolbox.
//
// While the page is in front and the device's settings are known, the status text is
// rebuilt every 3.33 seconds by a window timer of the page. The page keeps its UIConfig
// with its window, so the Service pages of several sheets can be open at once.
#pragma once

#include <windows.h>
#include <prsht.h>

#include "config/ui_config.h"

inline constexpr UINT_PTR kServiceStatusTimer = 13369;
inline constexpr UINT kServiceStatusPeriod = 3330;  // milliseconds

// The page's dialog procedure; the page record's lParam is the UIConfig.
INT_PTR CALLBACK DeviceServicePropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

// The page's callback: refuses a page without a UIConfig at PSPCB_CREATE.
UINT CALLBACK DeviceServicePropPageCallback(HWND hwnd, UINT msg, PROPSHEETPAGEW* page);

// The status timer (kServiceStatusTimer) of page `hwnd`: stops it, rebuilds the status
// text and starts it again only while the device's settings are known. Other timers and
// messages are only traced.
void CALLBACK DeviceServiceTimerProc(HWND hwnd, UINT msg, UINT_PTR idEvent, DWORD time);

// Puts the status text into the page's edit box (at most 4096 characters): the printer's
// error text and code when status monitoring is on and the extension library tells them,
// the driver's version, and the device's serial number, firmware and model when its
// settings are known. Nonzero when they are known. The extension library is loaded into
// the record on first use.
int UpdatePrinterStatusString(HWND hDlg, UIConfig* pConfig);
