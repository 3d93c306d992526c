#include "printer_ui/device_property_sheets.h"

#include "base/module_pages.h"
#include "base/printer_oem_ui.h"
#include "base/trace_log.h"
#include "config/config_lifecycle.h"
#include "config/localisation.h"
#include "printer_ui/service_page.h"
#include "resources/device_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

const wchar_t* ReasonName(WORD reason) {
    switch (reason) {
    case PROPSHEETUI_REASON_INIT:
        return L"PROPSHEETUI_REASON_INIT";
    case PROPSHEETUI_REASON_GET_INFO_HEADER:
        return L"PROPSHEETUI_REASON_GET_INFO_HEADER";
    case PROPSHEETUI_REASON_DESTROY:
        return L"PROPSHEETUI_REASON_DESTROY";
    case PROPSHEETUI_REASON_SET_RESULT:
        return L"PROPSHEETUI_REASON_SET_RESULT";
    case PROPSHEETUI_REASON_GET_ICON:
        return L"PROPSHEETUI_REASON_GET_ICON";
    default:
        return L"other reason";
    }
}

// Adds the "Service" page; the add function's answer.
LONG_PTR AddServicePage(PROPSHEETUI_INFO* info, UIConfig* config, HANDLE oemHeap) {
    // The title lives as long as the sheet: the OEM heap is the sheet's.
    PROPSHEETPAGEW_V4_RECORD page =
        MakeModulePage(IDD_DEVICE_SERVICE, LoadLocalCaption(config, oemHeap, IDS_PAGE_SERVICE),
                       DeviceServicePropPageProc, DeviceServicePropPageCallback, reinterpret_cast<LPARAM>(config));
    return info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_ADD_PROPSHEETPAGEW, reinterpret_cast<LPARAM>(&page),
                                 0);
}

}  // namespace

HRESULT hrOEMDevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam, UIConfig** ppUserData) {
    if (pPSUIInfo == nullptr || pPSUIInfo->Version != PROPSHEETUI_INFO_VERSION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    Trace(L"hrOEMDevicePropertySheets(): %s\n", ReasonName(pPSUIInfo->Reason));
    switch (pPSUIInfo->Reason) {
    case PROPSHEETUI_REASON_INIT: {
        auto* param = reinterpret_cast<OEMUIPSPARAM*>(pPSUIInfo->lParamInit);
        UIConfig* config = AttachSheetConfig(pPSUIInfo, ppUserData, L"hrOEMDevicePropertySheets");
        if (config == nullptr) {
            return E_FAIL;
        }
        pPSUIInfo->Result = static_cast<ULONG_PTR>(AddServicePage(pPSUIInfo, config, param->hOEMHeap));
        break;
    }
    default:
        AnswerSheetReason(pPSUIInfo, lParam);
        break;
    }
    return S_OK;
}
