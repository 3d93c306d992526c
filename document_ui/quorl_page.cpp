#include "document_ui/quorl_page.h"

#include "base/trace_log.h"
#include "config/localisation.h"
#include "document_ui/page_frame.h"

namespace {
// One Quorl page at a time per process.
UIConfig* gQuorlConfig = nullptr;
}  // namespace

UINT CALLBACK DocumentQuorlPropPageCallback(HWND, UINT msg, PROPSHEETPAGEW* page) {
    if (msg == PSPCB_CREATE && page != nullptr) {
        gQuorlConfig = reinterpret_cast<UIConfig*>(page->lParam);
    }
    return HandlePageCallback(L"DocumentQuorlPropPageCallback", msg, page);
}

INT_PTR CALLBACK DocumentQuorlPropPageProc(HWND hDlg, UINT message, WPARAM /*wParam*/, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        gQuorlConfig = TakePageConfig(hDlg, lParam, L"DocumentQuorlPropPageProc");
        if (gQuorlConfig != nullptr) {
            TranslateDialog(gQuorlConfig, hDlg);
        }
        return TRUE;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->code != PSN_APPLY) {
            return FALSE;
        }
        return AnswerApply(hDlg, header, L"DocumentQuorlPropPageProc",
                           gQuorlConfig != nullptr && gQuorlConfig->PageChanged != 0,
                           [] { gQuorlConfig->PageChanged = 0; });
    }
    default:
        return FALSE;
    }
}
