// What every document page shares: signalling a change to the sheet, the printer-rights
// probe, modal dialogs inside the module's activation context, the pictures, and the
// standard page callback.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <functional>

#include "config/ui_config.h"

// Enables the sheet's Apply button for this page and sets config->PageChanged.
void MarkPageChanged(HWND hDlg, UIConfig* config);

// True when the printer opens with full access (the user may manage it).
bool CanManagePrinter(const wchar_t* printerName);

// DialogBoxParamW of a template of this module inside the module's activation context;
// the dialog's end code, or -1 when the context cannot be activated.
INT_PTR ShowModalDialog(UINT templateId, HWND owner, DLGPROC dialogProc, LPARAM param);

// Draws bitmap `bitmapId` of this module at the top left of an owner-drawn control in
// its own size, leaving the transparent colour out.
void DrawPicture(const DRAWITEMSTRUCT* item, UINT bitmapId);

// The page index the sheet reports for a page window (PSM_HWNDTOINDEX).
int GetPageIndex(HWND hDlg);

// What a page keeps with its window (DWLP_USER), from WM_INITDIALOG to WM_NCDESTROY, so
// that pages of two sheets open at once never see each other's state.
struct PageState {
    UIConfig* config;  // the page record's configuration, never null
    bool changed;      // the page has something to apply
    bool canManage;    // the user may manage the printer
};

// WM_INITDIALOG of a page: the configuration its page record carries, traced as
// "<routine>(): hDlg=..., page index=...", in a new state kept with the page's window.
// Null (and nothing kept) when the record carries no configuration.
PageState* TakePageState(HWND hDlg, LPARAM lParam, const wchar_t* routine);
// The state kept with a page's window; null when it has none.
PageState* PageStateOf(HWND hDlg);
// WM_NCDESTROY of a page: frees the state kept with its window.
void DropPageState(HWND hDlg);

// PSN_APPLY of a page: runs `apply` when the page has changes, traces either way and
// never refuses. The answer for the dialog procedure.
INT_PTR AnswerApply(HWND hDlg, const NMHDR* header, const wchar_t* routine, bool changed,
                    const std::function<void()>& apply);

// The creation callback of a document page: refuses a page without configuration.
// `routine` names the page's callback in the trace.
UINT HandlePageCallback(const wchar_t* routine, UINT msg, PROPSHEETPAGEW* page);

// A message box whose text and caption are resource strings, translated.
int ShowLocalMessage(HWND owner, const UIConfig* config, UINT textId, UINT captionId, UINT style);

// Captions an "Advanced" dialog "Advanced - <printer name>".
void SetAdvancedTitle(HWND hDlg, const UIConfig* config);

// Checks `id` and the other buttons of its radio pair (first..last).
void CheckRadio(HWND hDlg, int first, int last, int id);
bool IsChecked(HWND hDlg, int id);
void EnableControl(HWND hDlg, int id, bool enable);
