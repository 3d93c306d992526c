// The behaviour of the "Legacy Settings" items: the item callback the host calls on page
// activation, selection changes and apply; the refresh of one item from the device's
// values; and the callbacks of the "Braille Tables" and "Reset To Default" buttons.
//
// Items are recognised by UserItemID only. None of these lets an exception out.
#pragma once

#include <windows.h>
#include <compstui.h>

#include "config/ui_config.h"
#include "base/printer_oem_ui.h"

// The item callback (OEMCUIPPARAM::OEMCUIPCallback). The UIConfig is pOEMUserData.
//  - CPSUICB_REASON_SETACTIVE: reads the device once (a failed read is not tried again),
//    then, after a successful read, enables the items and sets them from its values.
//  - CPSUICB_REASON_SEL_CHANGED: checks the top margin, fills width and length from a
//    chosen form size, and marks the settings changed.
//  - CPSUICB_REASON_APPLYNOW: sends the changes when there are any and the device's
//    settings are known.
// Returns a CPSUICB_ACTION_* value.
LONG APIENTRY OEMPrinterUICallBack(PCPSUICBPARAM pCallbackParam, POEMCUIPPARAM pOEMUIParam) noexcept;

// Sets one item (its selection, or its text of at most 16 characters) from the device's
// values in `pConfig`. Items of unknown UserItemID are left as they are.
void UpdateCurrentOptionItem(const UIConfig* pConfig, POPTITEM pItem);

// "Braille Tables" push button: asks the language-monitor extension library to show its
// braille-table dialog on the device's current table. The UIConfig is the current
// item's UserData. Returns 0.
LONG APIENTRY OEMBrailleTableUIPushButtonCallback(PCPSUICBPARAM pCallbackParam) noexcept;

// "Reset To Default" push button: asks (the answer is not looked at), sets every item to
// its default and sends the defaults to the embosser at once. The UIConfig is the
// current item's UserData. Returns CPSUICB_ACTION_OPTIF_CHANGED (CPSUICB_ACTION_NONE,
// asking nothing, when the item carries no UIConfig).
LONG APIENTRY OEMResetToDefaultPushButtonCallback(PCPSUICBPARAM pCallbackParam) noexcept;
