#include "document_ui/document_property_sheets.h"

#include "base/trace_log.h"

// This build carries no document pages: every call fails without adding any.
HRESULT hrOEMDocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM /*lParam*/, IPrintOemDriverUI* /*driverUI*/,
                                    UIConfig** /*ppConfig*/) {
    Trace(L"hrOEMDocumentPropertySheets(): reason=%d, no document pages in this build\n",
          pPSUIInfo != nullptr ? static_cast<int>(pPSUIInfo->Reason) : -1);
    SetLastError(ERROR_NOT_SUPPORTED);
    return E_NOTIMPL;
}
