// The pages the plug-in adds to the printer's properties (the "Service" page).
#pragma once

#include <windows.h>
#include <compstui.h>

#include "config/ui_config.h"

// Called by the plug-in object's DevicePropertySheets for every reason the common
// property sheet UI sends. `ppUserData` is the address of the object's configuration
// pointer.
HRESULT hrOEMDevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam, UIConfig** ppUserData);
