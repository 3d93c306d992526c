// The "Legacy Settings" branch of the printer-properties item tree: the embosser's own
// stored settings as common-property-sheet items.
#pragma once

#include <windows.h>

#include "config/ui_config.h"
#include "base/printer_oem_ui.h"

// Called by the plug-in object's CommonUIProp for OEMCUIP_PRNPROP: first with
// pOEMOptItems null to learn the item count (22), then to build the items. `ppUserData`
// is the address of the object's configuration pointer.
//
// The building call attaches the UIConfig, keeps it in pOEMUserData and registers
// OEMPrinterUICallBack. Every string, option type, parameter array and value block is
// taken from the host's heap hOEMHeap and is the host's to free. Items 1 to 21 are
// disabled until the device's settings have been read. Returns S_OK, or E_FAIL with
// last error 87 when no UIConfig can be had.
HRESULT hrPrinterPropertyPage(DWORD dwMode, POEMCUIPPARAM pOEMUIParam, UIConfig** ppUserData);
