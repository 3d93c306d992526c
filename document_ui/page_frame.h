// What every document page shares: signalling a change to the sheet, the printer-rights
// probe, modal dialogs inside the module's activation context, the pictures, and the
// standard page callback.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include "config/ui_config.h"

// Enables the sheet's Apply button for this page and sets config->PageChanged.
void MarkPageChanged(HWND hDlg, UIConfig* config);

// True when the printer opens with full access (the user may manage it).
bool CanManagePrinter(const wchar_t* printerName);

// DialogBoxParamW of a template of this module inside the module's activation context;
// the dialog's end code, or -1 when the context cannot be activated.
INT_PTR ShowModalDialog(UINT templateId, HWND owner, DLGPROC dialogProc, LPARAM param);

// Draws bitmap `bitmapId` of this module at the top left of an owner-drawn control,
// leaving the transparent colour out, as large as the text and in the colours of a
// high-contrast theme when one is on (DrawModuleBitmap).
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

// The state kept with a page's window; null when it has none.
PageState* PageStateOf(HWND hDlg);

// How one document page differs from the others; RunPageProc does what they share.
struct PageBehaviour {
    const wchar_t* routine;                                              // the page procedure, as traced
    void (*init)(HWND hDlg, PageState& page);                            // WM_INITDIALOG
    INT_PTR (*command)(HWND hDlg, PageState& page, WORD id, WORD code);  // WM_COMMAND: the answer
    UINT (*picture)(HWND hDlg, int control);  // bitmap of an owner-drawn control; 0 or null: none
    void (*apply)(HWND hDlg, PageState& page);         // PSN_APPLY when it has changes
    bool (*hasChanges)(const PageState& page);         // null: the page's own `changed`
    void (*activate)(HWND hDlg, PageState& page);  // PSN_SETACTIVE, or null
    bool traceUserMessage;                         // WM_USER + 1 is traced
};

// The dialog procedure of a document page. WM_INITDIALOG keeps a new state with the
// window (traced as "<routine>(): hDlg=..., page index=..."), unless the page record
// carries no configuration; the page's hooks then run with that state, WM_NCDESTROY
// frees it. PSN_APPLY runs `apply` when the page has changes (and clears `changed`),
// traces either way and never refuses.
INT_PTR RunPageProc(const PageBehaviour& page, HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

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
