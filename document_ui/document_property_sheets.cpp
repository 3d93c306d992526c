#include "document_ui/document_property_sheets.h"

#include "base/module_pages.h"
#include "base/trace_log.h"
#include "config/config_lifecycle.h"
#include "config/localisation.h"
#include "document_ui/layout_page.h"
#include "document_ui/paper_page.h"
#include "document_ui/quorl_page.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

struct DocumentPage {
    UINT templateId;
    UINT titleId;
    DLGPROC dialogProc;
    LPFNPSPCALLBACKW callback;
};

// In the order the sheet shows them.
const DocumentPage kDocumentPages[] = {
    {IDD_LAYOUT_PAGE, IDS_PAGE_LAYOUT, DocumentLayoutPropPageProc, DocumentLayoutPropPageCallback},
    {IDD_PAPER_PAGE, IDS_PAGE_PAPER_MEDIA, DocumentPaperPropPageProc, DocumentPaperPropPageCallback},
    {IDD_QUORL_PAGE, IDS_PAGE_QUORL, DocumentQuorlPropPageProc, DocumentQuorlPropPageCallback},
};

// Adds the three pages; the handle of the last one added.
LONG_PTR AddDocumentPages(PROPSHEETUI_INFO* info, UIConfig* config, HANDLE oemHeap) {
    LONG_PTR handle = 0;
    for (const DocumentPage& entry : kDocumentPages) {
        // The title lives as long as the sheet: the OEM heap is the sheet's.
        PROPSHEETPAGEW_V4_RECORD page =
            MakeModulePage(entry.templateId, LoadLocalCaption(config, oemHeap, entry.titleId), entry.dialogProc,
                           entry.callback, reinterpret_cast<LPARAM>(config));
        handle = info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_ADD_PROPSHEETPAGEW,
                                       reinterpret_cast<LPARAM>(&page), 0);
        if (entry.templateId == IDD_LAYOUT_PAGE) {
            // 10000 selects among the pages rather than the tree view: the sheet opens on Layout.
            info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_SET_HSTARTPAGE, handle, 10000);
        }
    }
    return handle;
}

}  // namespace

HRESULT hrOEMDocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam, IPrintOemDriverUI* /*driverUI*/,
                                    UIConfig** ppConfig) {
    if (pPSUIInfo == nullptr || pPSUIInfo->Version != PROPSHEETUI_INFO_VERSION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    switch (pPSUIInfo->Reason) {
    case PROPSHEETUI_REASON_INIT: {
        auto* param = reinterpret_cast<OEMUIPSPARAM*>(pPSUIInfo->lParamInit);
        Trace(L"hrOEMDocumentPropertySheets(): PROPSHEETUI_REASON_INIT\n");
        Trace(L"hrOEMDocumentPropertySheets(): pPSUIInfo->UserData=0x%p\n",
              reinterpret_cast<void*>(pPSUIInfo->UserData));
        Trace(L"hrOEMDocumentPropertySheets(): pOEMUIParam->pOEMUserData=0x%p\n",
              param != nullptr ? param->pOEMUserData : nullptr);
        Trace(L"hrOEMDocumentPropertySheets(): lParam=0x%p\n", reinterpret_cast<void*>(lParam));
        UIConfig* config = AttachSheetConfig(pPSUIInfo, ppConfig, L"hrOEMDocumentPropertySheets");
        if (config == nullptr) {
            return E_FAIL;
        }
        pPSUIInfo->Result = static_cast<ULONG_PTR>(AddDocumentPages(pPSUIInfo, config, param->hOEMHeap));
        break;
    }
    case PROPSHEETUI_REASON_DESTROY:
        Trace(L"hrOEMDocumentPropertySheets(): PROPSHEETUI_REASON_DESTROY\n");
        Trace(L"hrOEMDocumentPropertySheets(): pPSUIInfo->UserData=0x%p\n",
              reinterpret_cast<void*>(pPSUIInfo->UserData));
        AnswerSheetReason(pPSUIInfo, lParam);
        break;
    default:
        AnswerSheetReason(pPSUIInfo, lParam);
        break;
    }
    return S_OK;
}
