// Creating, sharing and destroying the per-printer configuration record.
#pragma once

#include "config/ui_config.h"
#include "base/printer_oem_ui.h"

#include <compstui.h>

// Attaches the record to *ppConfig: builds it on the first call (from the printer's
// stored values and the public device mode of `pParam`), and on later calls through the
// same owner only raises its usage count. Returns the usage count (non-zero) on success,
// 0 when no record could be made. `pParam` may also be an OEMUIPSPARAM: the members
// used are laid out alike.
int CreateConfig(const OEMCUIPPARAM* pParam, UIConfig** ppConfig);

// PROPSHEETUI_REASON_INIT of a property-sheet entry: attaches the record through the
// OEMUIPSPARAM in info->lParamInit with CreateConfig and keeps it in info->UserData
// (traced as "<routine>(): pPSUIInfo->UserData=pConfig=..."). Null, with last error 87,
// when no record could be attached.
UIConfig* AttachSheetConfig(PROPSHEETUI_INFO* info, UIConfig** ppConfig, const wchar_t* routine);

// Tears the record down (whatever its usage count) and returns it to its heap.
void DestroyConfig(UIConfig* pConfig);

// Repairs a printer whose "Config" key is missing, through the peripheral installer.
int Config_restorePrinterKeys(UIConfig* pConfig);
