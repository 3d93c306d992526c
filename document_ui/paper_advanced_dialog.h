// The Paper/Media page's "Advanced" dialog: the printer's custom media types and the
// print server's custom forms, with the dialogs that name a media type and a form.
#pragma once

#include <windows.h>

#include <cstdint>

#include "config/ui_config.h"

// What the dialog changed, in PaperAdvancedParam::flags. A removed media type or a
// deleted form also asks the page to apply its choices at once.
inline constexpr DWORD kMediaSelectionChanged = 1;
inline constexpr DWORD kFormAdded = 2;
inline constexpr DWORD kMediaTypeRemoved = 4;
inline constexpr DWORD kFormDeleted = 8;

// Handed in by the Paper/Media page and filled on the way out; the dialog keeps it with
// its window while it is open.
struct PaperAdvancedParam {
    UIConfig* config;
    DWORD flags;
    int mediaIndex;  // in the dialog's media list: the page's index minus one
    uint32_t mediaCode;
    bool canManage;  // the dialog's: the user may manage the printer
};

INT_PTR CALLBACK DocumentPaperAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

// The custom media type dialog, opened by "&Add ..." or "&Edit ...".
struct CustomMediaTypeParam {
    UIConfig* config;
    int openedBy;     // the button's identifier
    BOOL changeable;  // the dot values may be changed
    DWORD highest;    // dot values
    DWORD lowest;
    wchar_t name[kTextCapacity];
};
INT_PTR CALLBACK CustomMediaTypeDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

// The custom form dialog: a name and a size typed in the chosen unit.
struct CustomFormParam {
    const UIConfig* config;  // whose translation the dialog shows
    bool metric;
    wchar_t name[kFormNameCapacity];
    SIZEL size;  // micrometres
};
INT_PTR CALLBACK CustomFormDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);
