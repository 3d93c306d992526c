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
        gQuorlConfig = reinterpret_cast<UIConfig*>(reinterpret_cast<PROPSHEETPAGEW*>(lParam)->lParam);
        Trace(L"DocumentQuorlPropPageProc(): hDlg=%p, page index=%d\n", static_cast<void*>(hDlg),
              GetPageIndex(hDlg));
        if (gQuorlConfig != nullptr) {
            TranslateDialog(gQuorlConfig, hDlg);
        }
        return TRUE;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->code != PSN_APPLY) {
            return FALSE;
        }
        if (gQuorlConfig != nullptr && gQuorlConfig->PageChanged != 0) {
            gQuorlConfig->PageChanged = 0;
            Trace(L"DocumentQuorlPropPageProc(): PSN_APPLY, %d\n", static_cast<int>(header->idFrom));
        } else {
            Trace(L"DocumentQuorlPropPageProc(): PSN_APPLY, but no changes\n");
        }
        SetWindowLongPtrW(hDlg, DWLP_MSGRESULT, PSNRET_NOERROR);
        return TRUE;
    }
    default:
        return FALSE;
    }
}
