#include "base/module_pages.h"

#include "base/module_state.h"

PROPSHEETPAGEW_V4_RECORD MakeModulePage(UINT templateId, const wchar_t* title, DLGPROC dialogProc,
                                        LPFNPSPCALLBACKW callback, LPARAM lParam) {
    PROPSHEETPAGEW_V4_RECORD page = {};
    page.dwSize = sizeof(page);
    page.dwFlags = PSP_USETITLE | PSP_USECALLBACK;
    HANDLE context = GetModuleActivationContext();
    if (IsActivationContextValid(context)) {
        page.dwFlags |= PSP_USEFUSIONCONTEXT;
        page.hActCtx = context;
    }
    page.hInstance = ghInstance;
    page.pszTemplate = MAKEINTRESOURCEW(templateId);
    page.pszTitle = title;
    page.pfnDlgProc = dialogProc;
    page.lParam = lParam;
    page.pfnCallback = callback;
    return page;
}

void AnswerSheetReason(PROPSHEETUI_INFO* info, LPARAM lParam) {
    switch (info->Reason) {
    case PROPSHEETUI_REASON_GET_INFO_HEADER: {
        auto* header = reinterpret_cast<PROPSHEETUI_INFO_HEADER*>(lParam);
        if (header != nullptr) {
            header->pTitle = const_cast<wchar_t*>(L"OEM UI Page");
        }
        info->Result = 1;
        break;
    }
    case PROPSHEETUI_REASON_DESTROY:
        info->Result = 1;
        break;
    case PROPSHEETUI_REASON_SET_RESULT: {
        auto* result = reinterpret_cast<SETRESULT_INFO*>(lParam);
        info->Result = result != nullptr ? result->Result : 0;
        break;
    }
    default:
        info->Result = 0;
        break;
    }
}
