// The document (printing preferences) pages of the plug-in: "Layout", "Paper/Media"
// and "Quorl".
#pragma once

#include <windows.h>
#include <compstui.h>

#include "config/ui_config.h"
#include "base/printer_oem_ui.h"

// Called by the plug-in object's DocumentPropertySheets for every reason the common
// property sheet UI sends, with the host's driver interface (may be null) and the
// address of the object's configuration pointer.
HRESULT hrOEMDocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam, IPrintOemDriverUI* driverUI,
                                    UIConfig** ppConfig);
