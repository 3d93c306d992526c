#include "printer_ui/printer_ui_callbacks.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "device/legacy_settings_writer.h"
#include "device/protocol/braille_tables.h"
#include "device/protocol/legacy_settings_table.h"
#include "base/module_state.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "printer_ui/extension_services.h"
#include "printer_ui/reading_notice.h"
#include "resources/resource_ids.h"

namespace {

UIConfig* ConfigOf(const OEMCUIPPARAM* param) {
    return param != nullptr ? static_cast<UIConfig*>(param->pOEMUserData) : nullptr;
}

UIConfig* ConfigOfCurrentItem(const CPSUICBPARAM* param) {
    return param != nullptr && param->pCurItem != nullptr ? reinterpret_cast<UIConfig*>(param->pCurItem->UserData)
                                                          : nullptr;
}

// The items of a callback block, as a range that tolerates a block without items.
struct ItemRange {
    OPTITEM* first;
    OPTITEM* last;
    OPTITEM* begin() const { return first; }
    OPTITEM* end() const { return last; }
};

ItemRange ItemsOf(const CPSUICBPARAM* param) {
    if (param == nullptr || param->pOptItem == nullptr) {
        return {nullptr, nullptr};
    }
    return {param->pOptItem, param->pOptItem + param->cOptItem};
}

void SetText(OPTITEM& item, const wchar_t* text) {
    if (item.pSel != nullptr) {
        CopyWide(item.pSel, kMeasureTextCapacity, text);
    }
}

// A length in 1/20 inch as the edit items show it: inches with two decimals.
void SetInches(OPTITEM& item, double twentieths) {
    if (item.pSel != nullptr) {
        FormatWide(item.pSel, kMeasureTextCapacity, L"%.02f", twentieths / 20.0);
    }
}

// Hundredths of an inch of a form size in micrometres, rounded up to the next tenth.
double FormSizeInches(uint32_t micrometres) { return ((9u + micrometres / 254u) / 10u) / 10.0; }

// The last entry of a form-size list whose form is about the device's paper size.
void SelectDeviceFormSize(const UIConfig& config, OPTITEM& item) {
    const OPTTYPE* type = item.pOptType;
    if (type == nullptr || type->pOptParam == nullptr) {
        return;
    }
    for (WORD i = 0; i < type->Count; ++i) {
        const wchar_t* name = type->pOptParam[i].pData;
        if (name != nullptr && name[0] != L'\0' && IsFormOfDeviceSize(GetFormSize(config.hPrinter, name), config)) {
            item.Sel = i;
        }
    }
}

LONG OnSetActive(PCPSUICBPARAM param, UIConfig& config) {
    ReadDeviceSettingsWithNotice(param->hDlg, config, L"OEMPrinterUICallBack");  // a failed read is not tried again
    if (config.LegacyRefresh == 0) {
        return CPSUICB_ACTION_NONE;
    }
    for (OPTITEM& item : ItemsOf(param)) {
        if (item.UserItemID == kLegacyHeadId) {
            item.Flags |= OPTIF_DISABLED;
            continue;
        }
        item.Flags &= ~static_cast<DWORD>(OPTIF_DISABLED);
        item.Flags |= OPTIF_CHANGED;
        UpdateCurrentOptionItem(&config, &item);
    }
    config.LegacyRefresh = 0;
    return CPSUICB_ACTION_OPTIF_CHANGED;
}

// A chosen form size fills width and length; "Custom" (the last entry) leaves them.
LONG OnFormSizeChosen(PCPSUICBPARAM param, UIConfig& config) {
    const OPTITEM& chosen = *param->pCurItem;
    const OPTTYPE* type = chosen.pOptType;
    if (type == nullptr || type->pOptParam == nullptr || chosen.Sel < 0 || chosen.Sel >= type->Count - 1) {
        return CPSUICB_ACTION_NONE;
    }
    const auto* size = reinterpret_cast<const uint32_t*>(type->pOptParam[chosen.Sel].lParam);
    if (size == nullptr) {
        return CPSUICB_ACTION_NONE;  // an entry without a name has no size
    }
    const uint32_t width = size[0];
    const uint32_t length = size[1];
    Trace(L"\thPrinter=%p (%lu, %lu)\n", config.hPrinter, static_cast<unsigned long>(width),
          static_cast<unsigned long>(length));
    LONG action = CPSUICB_ACTION_NONE;
    for (OPTITEM& item : ItemsOf(param)) {
        if (item.UserItemID != IDS_FORM_WIDTH && item.UserItemID != IDS_FORM_LENGTH) {
            continue;
        }
        if (item.pSel != nullptr) {
            FormatWide(item.pSel, kMeasureTextCapacity, L"%.02f",
                       FormSizeInches(item.UserItemID == IDS_FORM_WIDTH ? width : length));
        }
        item.Flags |= OPTIF_CHANGED;
        config.LegacyChanged = 1;
        action = CPSUICB_ACTION_OPTIF_CHANGED;
    }
    return action;
}

// Settings whose value is taken as it is; apply checks them (Top Margin and Form Size
// have their own rules below).
bool IsPlainSettingItem(BYTE id) {
    const LegacySetting* row = FindLegacySetting(id);
    return row != nullptr && row->kind != LegacyItemKind::Head && row->kind != LegacyItemKind::BrailleTablesButton &&
           row->kind != LegacyItemKind::ResetButton;
}

LONG OnSelectionChanged(PCPSUICBPARAM param, UIConfig& config) {
    OPTITEM* item = param->pCurItem;
    if (item == nullptr) {
        return CPSUICB_ACTION_NONE;
    }
    if (item->UserItemID == IDS_FORM_SIZE) {
        return OnFormSizeChosen(param, config);
    }
    LONG action = CPSUICB_ACTION_NONE;
    if (item->UserItemID == IDS_TOP_MARGIN) {
        const double inches = item->pSel != nullptr ? _wtof(item->pSel) : 0.0;
        // Negative once truncated to whole twentieths (compared as a double, so that no
        // text can overflow an integer).
        if (inches * 20.0 <= -1.0) {
            SetInches(*item, 0);
            item->Flags |= OPTIF_CHANGED;
            action = CPSUICB_ACTION_OPTIF_CHANGED;
        }
    } else if (!IsPlainSettingItem(item->UserItemID)) {
        return CPSUICB_ACTION_NONE;
    }
    config.LegacyChanged = 1;
    return action;
}

// Writes the items' values to the embosser: every item with an option type, an edit box
// by its text, any other by its selection. The extra line spacing's text comes back as
// the value kept.
void ApplyLegacyItems(PCPSUICBPARAM param, UIConfig& config) {
    std::vector<LegacyItemEdit> edits;
    std::vector<OPTITEM*> edited;
    for (OPTITEM& item : ItemsOf(param)) {
        if (item.pOptType == nullptr) {
            continue;  // without its option type an item's value cannot be told apart
        }
        const bool text = item.pOptType->Type == TVOT_EDITBOX;
        edits.push_back({item.UserItemID, text ? 0 : item.Sel, text ? item.pSel : nullptr, false, {}});
        edited.push_back(&item);
    }
    ApplyLegacyChanges(config, edits.data(), edits.size());
    for (size_t i = 0; i < edits.size(); ++i) {
        if (edits[i].rewritten) {
            CopyWide(edited[i]->pSel, kMeasureTextCapacity, edits[i].rewrittenText);
            edited[i]->Flags |= OPTIF_CHANGED;
        }
    }
}

LONG OnApplyNow(PCPSUICBPARAM param, UIConfig& config) {
    if (config.LegacyChanged == 0 || config.LegacyParmCount < 1) {
        return CPSUICB_ACTION_NONE;
    }
    ApplyLegacyItems(param, config);
    return CPSUICB_ACTION_ITEMS_APPLIED;
}

void SetResetDefault(OPTITEM& item) {
    const LegacySetting* row = FindLegacySetting(item.UserItemID);
    if (row != nullptr && row->resetText != nullptr) {
        SetText(item, row->resetText);
    } else if (row != nullptr && row->resetSelection >= 0) {
        item.Sel = row->resetSelection;
    }
}

// The question of the reset button, inside the module's activation context like every
// modal window of the module. The answer is given back for the trace only.
int AskToReset(HWND owner, const UIConfig& config) {
    const wchar_t* question = GetLocalString(&config, IDS_RESET_LEGACY_SETTINGS);
    const ModuleContextScope context;
    return MessageBoxW(owner, question, config.PrinterName, MB_YESNO);
}

}  // namespace

void UpdateCurrentOptionItem(const UIConfig* pConfig, POPTITEM pItem) {
    if (pConfig == nullptr || pItem == nullptr) {
        return;
    }
    const UIConfig& c = *pConfig;
    OPTITEM& item = *pItem;
    Trace(L"UpdateCurrentOptionItem(): %d\n", item.UserItemID);
    const LegacySetting* row = FindLegacySetting(item.UserItemID);
    if (row == nullptr) {
        return;
    }
    switch (row->kind) {
        case LegacyItemKind::FormSize:
            SelectDeviceFormSize(c, item);
            break;
        case LegacyItemKind::Inches:
            SetInches(item, static_cast<int32_t>(LegacyFieldOf(*row, c)));
            break;
        case LegacyItemKind::Seconds:
            if (item.pSel != nullptr) {
                FormatWide(item.pSel, kMeasureTextCapacity, L"%u", static_cast<unsigned>(LegacyFieldOf(*row, c)));
            }
            break;
        case LegacyItemKind::List:
        case LegacyItemKind::UpDown:
            item.Sel = LegacySelectionOf(*row, c, LegacyMoment::Refresh);
            break;
        default:
            break;
    }
}

LONG APIENTRY OEMPrinterUICallBack(PCPSUICBPARAM pCallbackParam, POEMCUIPPARAM pOEMUIParam) noexcept {
    try {
        if (pCallbackParam == nullptr) {
            Trace(L"OEMPrinterUICallBack(): no callback block\n");
            return CPSUICB_ACTION_NONE;
        }
        UIConfig* config = ConfigOf(pOEMUIParam);
        Trace(L"OEMPrinterUICallBack(): reason=%d\n", pCallbackParam->Reason);
        Trace(L"OEMPrinterUICallBack(): pOEMUserData=0x%p\n", static_cast<void*>(config));
        switch (pCallbackParam->Reason) {
            case CPSUICB_REASON_SETACTIVE:
                return config != nullptr ? OnSetActive(pCallbackParam, *config) : CPSUICB_ACTION_NONE;
            case CPSUICB_REASON_SEL_CHANGED:
                return config != nullptr ? OnSelectionChanged(pCallbackParam, *config) : CPSUICB_ACTION_NONE;
            case CPSUICB_REASON_APPLYNOW:
                return config != nullptr ? OnApplyNow(pCallbackParam, *config) : CPSUICB_ACTION_NONE;
            case CPSUICB_REASON_KILLACTIVE:
                Trace(L"OEMPrinterUICallBack(): CPSUICB_REASON_KILLACTIVE\n");
                return CPSUICB_ACTION_NONE;
            default:
                Trace(L"OEMPrinterUICallBack(): other reason, lReturn=%d\n", CPSUICB_ACTION_NONE);
                return CPSUICB_ACTION_NONE;
        }
    } catch (...) {
        Trace(L"OEMPrinterUICallBack(): failed\n");
        return CPSUICB_ACTION_NONE;
    }
}

LONG APIENTRY OEMBrailleTableUIPushButtonCallback(PCPSUICBPARAM pCallbackParam) noexcept {
    try {
        UIConfig* config = ConfigOfCurrentItem(pCallbackParam);
        Trace(L"OEMBrailleTableUIPushButtonCallback(): reason=%d, pConfig=0x%p\n",
              pCallbackParam != nullptr ? pCallbackParam->Reason : -1, static_cast<void*>(config));
        if (config == nullptr) {
            return 0;
        }
        auto service = reinterpret_cast<PrinterServiceFunction>(ExtDllLoadFunction(*config, kPrinterServiceExport));
        if (service == nullptr) {
            return 0;
        }
        PrinterServiceRecord request = {};
        request.brailleTable = {kServiceBrailleTable, BrailleTableStringToInt(config->EmbsrBrailleTable)};
        const DWORD result = service(nullptr, config->PrinterName, &request);
        Trace(L"OEMBrailleTableUIPushButtonCallback(): %u=DllExportPrinterService(%u, %u)\n",
              static_cast<unsigned>(result), request.brailleTable.service, request.brailleTable.tableIndex);
    } catch (...) {
        Trace(L"OEMBrailleTableUIPushButtonCallback(): failed\n");
    }
    return 0;
}

LONG APIENTRY OEMResetToDefaultPushButtonCallback(PCPSUICBPARAM pCallbackParam) noexcept {
    try {
        UIConfig* config = ConfigOfCurrentItem(pCallbackParam);
        Trace(L"OEMResetToDefaultPushButtonCallback(): reason=%d, pConfig=0x%p\n",
              pCallbackParam != nullptr ? pCallbackParam->Reason : -1, static_cast<void*>(config));
        if (config == nullptr) {
            return CPSUICB_ACTION_NONE;
        }
        // The reset is carried out whichever button is pressed.
        const int answer = AskToReset(pCallbackParam->hDlg, *config);
        Trace(L"OEMResetToDefaultPushButtonCallback(): %d=MessageBox()\n", answer);
        for (OPTITEM& item : ItemsOf(pCallbackParam)) {
            item.Flags |= OPTIF_CHANGED;
            SetResetDefault(item);
        }
        ApplyLegacyItems(pCallbackParam, *config);
    } catch (...) {
        Trace(L"OEMResetToDefaultPushButtonCallback(): failed\n");
    }
    return CPSUICB_ACTION_OPTIF_CHANGED;
}
