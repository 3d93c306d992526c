#include "document_ui/two_in_one_warning.h"

#include "config/localisation.h"
#include "resources/document_dialog_ids.h"

namespace {

void EndWithAnswer(HWND hDlg, INT_PTR answer) {
    auto* param = reinterpret_cast<TwoInOneWarningParam*>(GetWindowLongPtrW(hDlg, DWLP_USER));
    if (param != nullptr) {
        param->dontShowAgain = IsDlgButtonChecked(hDlg, IDC_DONT_SHOW_AGAIN) == BST_CHECKED ? 1 : 0;
    }
    EndDialog(hDlg, answer);
}

}  // namespace

INT_PTR CALLBACK TwoInOneWarningDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG: {
        auto* param = reinterpret_cast<TwoInOneWarningParam*>(lParam);
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        if (param == nullptr) {
            EndDialog(hDlg, -1);
            return TRUE;
        }
        SetDlgItemTextW(hDlg, IDC_WARNING_TEXT, param->text);
        EnableWindow(GetDlgItem(hDlg, IDC_WARNING_NO), TRUE);
        SetDlgItemTextW(hDlg, IDCANCEL, L"&Yes");
        SetDlgItemTextW(hDlg, IDC_WARNING_NO, L"&No");
        ShowWindow(GetDlgItem(hDlg, IDC_DONT_SHOW_AGAIN), param->checkBoxShow);
        ShowWindow(GetDlgItem(hDlg, IDOK), param->checkBoxShow > SW_SHOW ? SW_SHOW : SW_HIDE);
        if (param->config != nullptr) {
            TranslateDialog(param->config, hDlg);
        }
        return TRUE;
    }
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case IDCANCEL:
        case IDOK:  // shown only on request; it agrees as well
            EndWithAnswer(hDlg, 1);
            return TRUE;
        case IDC_WARNING_NO:
            EndWithAnswer(hDlg, 2);
            return TRUE;
        default:
            return FALSE;
        }
    default:
        return FALSE;
    }
}
