#include "printer_ui/device_property_sheets.h"

#include "base/trace_log.h"

// This build carries no printer pages: every call fails without adding any.
HRESULT hrOEMDevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM /*lParam*/, UIConfig** /*ppUserData*/) {
    Trace(L"hrOEMDevicePropertySheets(): reason=%d, no printer pages in this build\n",
          pPSUIInfo != nullptr ? static_cast<int>(pPSUIInfo->Reason) : -1);
    SetLastError(ERROR_NOT_SUPPORTED);
    return E_NOTIMPL;
}
