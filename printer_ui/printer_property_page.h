// The "Legacy Settings" branch of the printer-properties item tree: the embosser's own
// stored settings as common-property-sheet items.
#pragma once

#include <windows.h>

#include "config/ui_config.h"
#include "frame/printer_oem_ui.h"

// Called by the plug-in object's CommonUIProp for OEMCUIP_PRNPROP: first with
// pOEMOptItems null to learn the item count, then to build the items. `ppUserData` is
// the address of the object's configuration pointer.
HRESULT hrPrinterPropertyPage(DWORD dwMode, POEMCUIPPARAM pOEMUIParam, UIConfig** ppUserData);
