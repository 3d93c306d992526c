// The module's own pages in the host's property sheets: a page made from one of its dialog
// templates, and the answers every sheet entry gives alike.
#pragma once

#include <windows.h>
#include <prsht.h>
#include <compstui.h>

#include "base/printer_oem_ui.h"

// A page record for CPSFUNC_ADD_PROPSHEETPAGEW: template `templateId` of this module,
// the title given (PSP_USETITLE), the page callback (PSP_USECALLBACK) and, when the
// module's activation context could be made, that context (PSP_USEFUSIONCONTEXT), so
// that the page's controls are the common controls of the module's manifest.
PROPSHEETPAGEW_V4_RECORD MakeModulePage(UINT templateId, const wchar_t* title, DLGPROC dialogProc,
                                        LPFNPSPCALLBACKW callback, LPARAM lParam);

// What a sheet entry of the plug-in answers for every reason but PROPSHEETUI_REASON_INIT:
// the header's title "OEM UI Page" (Result 1); nothing to free at
// PROPSHEETUI_REASON_DESTROY (Result 1: the plug-in object releases the configuration);
// the set result copied from the SETRESULT_INFO in `lParam`; else Result 0.
void AnswerSheetReason(PROPSHEETUI_INFO* info, LPARAM lParam);
