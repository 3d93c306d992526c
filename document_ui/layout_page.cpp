#include "document_ui/layout_page.h"

#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/printer_data.h"
#include "document_ui/device_mode_setters.h"
#include "document_ui/page_frame.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

void MarkLayoutChanged(HWND hDlg, PageState& page) {
    page.changed = true;
    MarkPageChanged(hDlg, page.config);
}

void RedrawPicture(HWND hDlg, int id) { InvalidateRect(GetDlgItem(hDlg, id), nullptr, TRUE); }

// "&Inverse" only makes sense for landscape.
void EnableInverse(HWND hDlg) {
    EnableControl(hDlg, IDC_INVERSE, IsChecked(hDlg, IDC_LANDSCAPE));
    RedrawPicture(hDlg, IDC_ORIENTATION_PICTURE);
}

// The binding edge and the empty page only apply to interpoint.
void EnableInterpointOptions(HWND hDlg) {
    const bool interpoint = IsChecked(hDlg, IDC_DOUBLE_SIDED);
    EnableControl(hDlg, IDC_INSERT_EMPTY_PAGE, interpoint);
    EnableControl(hDlg, IDC_OPEN_TO_LEFT, interpoint);
    EnableControl(hDlg, IDC_OPEN_TO_TOP, interpoint);
    RedrawPicture(hDlg, IDC_SIDES_PICTURE);
}

void InitLayoutPage(HWND hDlg, UIConfig* config) {
    const bool canManage = CanManagePrinter(config->PrinterName);

    EnableControl(hDlg, IDC_PORTRAIT, canManage);
    EnableControl(hDlg, IDC_LANDSCAPE, canManage);
    CheckRadio(hDlg, IDC_PORTRAIT, IDC_LANDSCAPE, config->Orientation == 2 ? IDC_LANDSCAPE : IDC_PORTRAIT);
    EnableControl(hDlg, IDC_INVERSE, canManage && IsChecked(hDlg, IDC_LANDSCAPE));
    CheckDlgButton(hDlg, IDC_INVERSE, config->LandscapeMode != 0 ? BST_CHECKED : BST_UNCHECKED);
    RedrawPicture(hDlg, IDC_ORIENTATION_PICTURE);

    EnableControl(hDlg, IDC_SINGLE_SIDED, canManage);
    EnableControl(hDlg, IDC_DOUBLE_SIDED, canManage);
    CheckRadio(hDlg, IDC_SINGLE_SIDED, IDC_DOUBLE_SIDED, config->InterPoint > 0 ? IDC_DOUBLE_SIDED : IDC_SINGLE_SIDED);
    CheckRadio(hDlg, IDC_FACE_UP, IDC_FACE_DOWN, config->OutputFace == 2 ? IDC_FACE_DOWN : IDC_FACE_UP);
    EnableControl(hDlg, IDC_FACE_UP, canManage);
    EnableControl(hDlg, IDC_FACE_DOWN, canManage);
    const bool interpointOptions = canManage && IsChecked(hDlg, IDC_DOUBLE_SIDED);
    EnableControl(hDlg, IDC_INSERT_EMPTY_PAGE, interpointOptions);
    EnableControl(hDlg, IDC_OPEN_TO_LEFT, interpointOptions);
    EnableControl(hDlg, IDC_OPEN_TO_TOP, interpointOptions);
    RedrawPicture(hDlg, IDC_SIDES_PICTURE);
    CheckRadio(hDlg, IDC_OPEN_TO_LEFT, IDC_OPEN_TO_TOP, config->BindingEdge == 2 ? IDC_OPEN_TO_LEFT : IDC_OPEN_TO_TOP);
    CheckDlgButton(hDlg, IDC_INSERT_EMPTY_PAGE, config->InsertEmptyPage != 0 ? BST_CHECKED : BST_UNCHECKED);

    const struct {
        int id;
        uint32_t on;
    } print[] = {{IDC_MAGAZINE_FOLD_LINE, config->MagazineFoldLine}, {IDC_PREVIEW, config->Preview},
                 {IDC_COLLATE, config->Collate}};
    for (const auto& box : print) {
        EnableControl(hDlg, box.id, canManage);
        CheckDlgButton(hDlg, box.id, box.on != 0 ? BST_CHECKED : BST_UNCHECKED);
    }
    EnableControl(hDlg, IDC_LAYOUT_LIST, canManage);
    EnableControl(hDlg, IDC_ADVANCED, canManage);

    TranslateDialog(config, hDlg);
    if (!canManage) {
        MessageBoxW(hDlg, GetLocalString(config, IDS_PRIVILEGE_WARNING), config->PrinterName,
                    MB_OK | MB_ICONWARNING);
    }
}

UINT LayoutPicture(HWND hDlg, int control) {
    switch (control) {
    case IDC_ORIENTATION_PICTURE:
        return IsChecked(hDlg, IDC_PORTRAIT)  ? IDB_PORTRAIT
               : IsChecked(hDlg, IDC_INVERSE) ? IDB_LANDSCAPE_INVERSE
                                              : IDB_LANDSCAPE;
    case IDC_SIDES_PICTURE:
        return IsChecked(hDlg, IDC_SINGLE_SIDED)        ? IDB_SINGLE_SIDED
               : IsChecked(hDlg, IDC_INSERT_EMPTY_PAGE) ? IDB_DOUBLE_SIDED_EMPTY_PAGE
                                                        : IDB_DOUBLE_SIDED;
    case IDC_COLLATION_PICTURE:
        return IsChecked(hDlg, IDC_COLLATE) ? IDB_COLLATED : IDB_UNCOLLATED;
    case IDC_FOLD_LINE_PICTURE:
        return IsChecked(hDlg, IDC_MAGAZINE_FOLD_LINE) ? IDB_FOLD_LINE : IDB_NO_FOLD_LINE;
    case IDC_LOGO_PICTURE:
        return IDB_LOGO;
    default:
        return 0;
    }
}

void OnLayoutClick(HWND hDlg, PageState& page, int id) {
    switch (id) {
    case IDC_OPEN_TO_LEFT:
    case IDC_OPEN_TO_TOP:
        CheckRadio(hDlg, IDC_OPEN_TO_LEFT, IDC_OPEN_TO_TOP, id);
        break;
    case IDC_PORTRAIT:
    case IDC_LANDSCAPE:
        CheckRadio(hDlg, IDC_PORTRAIT, IDC_LANDSCAPE, id);
        EnableInverse(hDlg);
        break;
    case IDC_INVERSE:
        EnableInverse(hDlg);
        break;
    case IDC_SINGLE_SIDED:
    case IDC_DOUBLE_SIDED:
        CheckRadio(hDlg, IDC_SINGLE_SIDED, IDC_DOUBLE_SIDED, id);
        EnableInterpointOptions(hDlg);
        page.config->LoadedInterPoint = id == IDC_DOUBLE_SIDED ? 1 : 0;
        break;
    case IDC_INSERT_EMPTY_PAGE:
        EnableInterpointOptions(hDlg);
        break;
    case IDC_FACE_UP:
    case IDC_FACE_DOWN:
        CheckRadio(hDlg, IDC_FACE_UP, IDC_FACE_DOWN, id);
        break;
    case IDC_COLLATE:
        RedrawPicture(hDlg, IDC_COLLATION_PICTURE);
        break;
    case IDC_MAGAZINE_FOLD_LINE:
        RedrawPicture(hDlg, IDC_FOLD_LINE_PICTURE);
        break;
    case IDC_PREVIEW:
        break;
    case IDC_ADVANCED:
        ShowModalDialog(IDD_LAYOUT_ADVANCED, hDlg, DocumentLayoutAdvancedDlgProc,
                        reinterpret_cast<LPARAM>(page.config));
        return;  // the dialog writes its own values
    default:
        return;
    }
    MarkLayoutChanged(hDlg, page);
}

INT_PTR OnLayoutCommand(HWND hDlg, PageState& page, WORD id, WORD code) {
    if (code == BN_CLICKED) {
        OnLayoutClick(hDlg, page, id);
    } else if (id == IDC_LAYOUT_LIST && code == CBN_SELCHANGE) {
        MarkLayoutChanged(hDlg, page);
    }
    return TRUE;
}

const PageBehaviour kLayoutPage = {
    L"DocumentLayoutPropPageProc",
    [](HWND hDlg, PageState& page) { InitLayoutPage(hDlg, page.config); },
    OnLayoutCommand,
    LayoutPicture,
    [](HWND hDlg, PageState& page) { ApplyLayoutChanges(hDlg, page.config); },
    nullptr,
    nullptr,
    true,
};

}  // namespace

UINT CALLBACK DocumentLayoutPropPageCallback(HWND, UINT msg, PROPSHEETPAGEW* page) {
    return HandlePageCallback(L"DocumentLayoutPropPageCallback", msg, page);
}

INT_PTR CALLBACK DocumentLayoutPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    return RunPageProc(kLayoutPage, hDlg, message, wParam, lParam);
}

void ApplyLayoutChanges(HWND hDlg, UIConfig* config) {
    Trace(L"ApplyLayoutChanges(): hDlg=%p, LPUIConfig=%p\n", static_cast<void*>(hDlg), static_cast<void*>(config));
    SetPrinterOrientation(config, IsChecked(hDlg, IDC_PORTRAIT) ? 1 : 2);
    config->LandscapeMode = IsChecked(hDlg, IDC_INVERSE) ? 1 : 0;
    config->InsertEmptyPage = IsChecked(hDlg, IDC_INSERT_EMPTY_PAGE) ? 1 : 0;
    config->OutputFace = IsChecked(hDlg, IDC_FACE_DOWN) ? 2 : 1;
    config->LayoutListIndex = static_cast<int32_t>(SendDlgItemMessageW(hDlg, IDC_LAYOUT_LIST, CB_GETCURSEL, 0, 0));
    SetPrinterInterpoint(config, IsChecked(hDlg, IDC_DOUBLE_SIDED) ? 1 : 0, IsChecked(hDlg, IDC_OPEN_TO_LEFT) ? 2 : 3);
    SetPrinterCollate(config, IsChecked(hDlg, IDC_COLLATE) ? 1 : 0);
    config->Preview = IsChecked(hDlg, IDC_PREVIEW) ? 1 : 0;
    config->MagazineFoldLine = IsChecked(hDlg, IDC_MAGAZINE_FOLD_LINE) ? 1 : 0;
    UpdateLayoutConfig(config);
}

void UpdateLayoutConfig(UIConfig* config) {
    Trace(L"UpdateLayoutConfig(): updating\n");
    SetPrinterDataInteger(config->hPrinter, L"InterPoint", config->InterPoint);
    SetPrinterDataInteger(config->hPrinter, L"InsertEmptyPage", config->InsertEmptyPage);
    SetPrinterDataInteger(config->hPrinter, L"LandscapeMode", config->LandscapeMode);
    SetPrinterDataInteger(config->hPrinter, L"BindingEdge", config->BindingEdge);
    SetPrinterDataInteger(config->hPrinter, L"OutputFace", config->OutputFace == 2 ? 2 : 1);
    SetPrinterDataInteger(config->hPrinter, L"Preview", config->Preview);
}

// --- the Advanced dialog ---

namespace {

void ApplyAdvancedChanges(HWND hDlg, UIConfig* config) {
    config->LandscapeMode = IsChecked(hDlg, IDC_ROTATED_LANDSCAPE) ? 1 : 0;
    config->HorizontalShift = IsChecked(hDlg, IDC_HORIZONTAL_SHIFT) ? 1 : 0;
    Trace(L"UpdateLayoutAdvancedConfig(): updating\n");
    SetPrinterDataInteger(config->hPrinter, L"LandscapeMode", config->LandscapeMode);
}

}  // namespace

INT_PTR CALLBACK DocumentLayoutAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* config = reinterpret_cast<UIConfig*>(GetWindowLongPtrW(hDlg, DWLP_USER));
    switch (message) {
    case WM_INITDIALOG:
        config = reinterpret_cast<UIConfig*>(lParam);
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        if (config != nullptr) {
            CheckDlgButton(hDlg, IDC_ROTATED_LANDSCAPE, config->LandscapeMode != 0 ? BST_CHECKED : BST_UNCHECKED);
            CheckDlgButton(hDlg, IDC_HORIZONTAL_SHIFT, config->HorizontalShift != 0 ? BST_CHECKED : BST_UNCHECKED);
            TranslateDialog(config, hDlg);
        }
        EnableControl(hDlg, ID_APPLY_NOW, false);  // until something changes
        return TRUE;
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case IDC_ROTATED_LANDSCAPE:
        case IDC_HORIZONTAL_SHIFT:
            EnableControl(hDlg, ID_APPLY_NOW, true);
            return TRUE;
        case IDOK:
            Trace(L"DocumentLayoutAdvancedDlgProc(): IDOK\n");
            if (config != nullptr) {
                ApplyAdvancedChanges(hDlg, config);
            }
            EndDialog(hDlg, IDOK);
            return TRUE;
        case IDCANCEL:
            Trace(L"DocumentLayoutAdvancedDlgProc(): IDCANCEL\n");
            EndDialog(hDlg, IDCANCEL);
            return TRUE;
        case ID_APPLY_NOW:
            Trace(L"DocumentLayoutAdvancedDlgProc(): ID_APPLY_NOW");
            if (config != nullptr) {
                ApplyAdvancedChanges(hDlg, config);
            }
            EnableControl(hDlg, ID_APPLY_NOW, false);
            return TRUE;
        default:
            return FALSE;
        }
    default:
        return FALSE;
    }
}
