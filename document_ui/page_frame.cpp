#include "document_ui/page_frame.h"

#include <prsht.h>

#include <new>

#include "base/module_pages.h"
#include "base/module_pictures.h"
#include "base/module_state.h"
#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

void MarkPageChanged(HWND hDlg, UIConfig* config) {
    SendMessageW(GetParent(hDlg), PSM_CHANGED, reinterpret_cast<WPARAM>(hDlg), 0);
    if (config != nullptr) {
        config->PageChanged = 1;
    }
}

bool CanManagePrinter(const wchar_t* printerName) { return static_cast<bool>(OpenPrinterWithFullAccess(printerName)); }

INT_PTR ShowModalDialog(UINT templateId, HWND owner, DLGPROC dialogProc, LPARAM param) {
    const ModuleContextScope context;
    if (!context.active()) {
        Trace(L"ShowModalDialog(): no activation context for dialog %u\n", templateId);
        return -1;
    }
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_UPDOWN_CLASS | ICC_BAR_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    return DialogBoxParamW(ghInstance, MAKEINTRESOURCEW(templateId), owner, dialogProc, param);
}

void DrawPicture(const DRAWITEMSTRUCT* item, UINT bitmapId) {
    DrawModuleBitmap(item, bitmapId, PICTURE_TRANSPARENT_COLOR);
}

int GetPageIndex(HWND hDlg) {
    return static_cast<int>(SendMessageW(GetParent(hDlg), PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(hDlg), 0));
}

PageState* PageStateOf(HWND hDlg) { return reinterpret_cast<PageState*>(GetWindowLongPtrW(hDlg, DWLP_USER)); }

INT_PTR RunPageProc(const PageBehaviour& behaviour, HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    PageState* page = PageStateOf(hDlg);
    switch (message) {
    case WM_INITDIALOG: {
        auto* config = reinterpret_cast<UIConfig*>(reinterpret_cast<const PROPSHEETPAGEW*>(lParam)->lParam);
        Trace(L"%s(): hDlg=%p, page index=%d\n", behaviour.routine, static_cast<void*>(hDlg), GetPageIndex(hDlg));
        page = config != nullptr ? new (std::nothrow) PageState{config, false, false} : nullptr;
        SetWindowLongPtrW(hDlg, DWLP_USER, reinterpret_cast<LONG_PTR>(page));
        if (page != nullptr) {
            behaviour.init(hDlg, *page);
        }
        return TRUE;
    }
    case WM_COMMAND:
        return page != nullptr ? behaviour.command(hDlg, *page, LOWORD(wParam), HIWORD(wParam)) : FALSE;
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        const UINT bitmap = behaviour.picture != nullptr ? behaviour.picture(hDlg, static_cast<int>(item->CtlID)) : 0;
        if (bitmap == 0) {
            return FALSE;
        }
        DrawPicture(item, bitmap);
        return TRUE;
    }
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->code == PSN_SETACTIVE && page != nullptr && behaviour.activate != nullptr) {
            behaviour.activate(hDlg, *page);
            SetWindowLongPtrW(hDlg, DWLP_MSGRESULT, 0);
            return TRUE;
        }
        if (header->code != PSN_APPLY) {
            return FALSE;
        }
        if (page != nullptr && (behaviour.hasChanges != nullptr ? behaviour.hasChanges(*page) : page->changed)) {
            behaviour.apply(hDlg, *page);
            page->changed = false;
            Trace(L"%s(): PSN_APPLY, %d\n", behaviour.routine, static_cast<int>(header->idFrom));
        } else {
            Trace(L"%s(): PSN_APPLY, but no changes\n", behaviour.routine);
        }
        SetWindowLongPtrW(hDlg, DWLP_MSGRESULT, PSNRET_NOERROR);
        return TRUE;
    }
    case WM_USER + 1:
        if (behaviour.traceUserMessage) {
            Trace(L"%s(): WM_USER + 1\n", behaviour.routine);
        }
        return FALSE;
    case WM_NCDESTROY:
        delete page;
        SetWindowLongPtrW(hDlg, DWLP_USER, 0);
        return FALSE;
    default:
        return FALSE;
    }
}

UINT HandlePageCallback(const wchar_t* routine, UINT msg, PROPSHEETPAGEW* page) {
    switch (msg) {
    case PSPCB_CREATE:
        Trace(L"%s(): PSPCB_CREATE\n", routine);
        return page != nullptr && page->lParam != 0 ? 1 : 0;
    case PSPCB_RELEASE:
        Trace(L"%s(): PSPCB_RELEASE\n", routine);
        return 0;
    default:
        return 0;
    }
}

int ShowLocalMessage(HWND owner, const UIConfig* config, UINT textId, UINT captionId, UINT style) {
    // The loader's buffer is shared: copy the first text before loading the second.
    wchar_t caption[kTextCapacity] = {};
    CopyWide(caption, kTextCapacity, GetLocalString(config, captionId));
    wchar_t text[1024] = {};
    CopyWide(text, 1024, GetLocalString(config, textId));
    return MessageBoxW(owner, text, caption, style);
}

void SetAdvancedTitle(HWND hDlg, const UIConfig* config) {
    wchar_t advanced[kTextCapacity] = {};
    CopyWide(advanced, kTextCapacity, GetLocalString(config, IDS_ADVANCED));
    wchar_t title[2 * kTextCapacity] = {};
    FormatWide(title, 2 * kTextCapacity, L"%s - %s", advanced, config->PrinterName);
    SetWindowTextW(hDlg, title);
}

void CheckRadio(HWND hDlg, int first, int last, int id) { CheckRadioButton(hDlg, first, last, id); }

bool IsChecked(HWND hDlg, int id) { return IsDlgButtonChecked(hDlg, id) == BST_CHECKED; }

void EnableControl(HWND hDlg, int id, bool enable) { EnableWindow(GetDlgItem(hDlg, id), enable ? TRUE : FALSE); }
