#include "printer_ui/printer_ui_callbacks.h"

#include <cstdint>
#include <cstdlib>

#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "device/device_settings_store.h"
#include "device/legacy_settings_writer.h"
#include "device/legacy_transports.h"
#include "device/protocol/braille_tables.h"
#include "base/module_state.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "printer_ui/extension_services.h"
#include "printer_ui/legacy_items.h"
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
        CopyWide(item.pSel, kLegacyEditCapacity, text);
    }
}

// A length in 1/20 inch as the edit items show it: inches with two decimals.
void SetInches(OPTITEM& item, double twentieths) {
    if (item.pSel != nullptr) {
        FormatWide(item.pSel, kLegacyEditCapacity, L"%.02f", twentieths / 20.0);
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
    const PaperDimensions device = {config.EmbsrPaperWidth, config.EmbsrPaperLength};
    for (WORD i = 0; i < type->Count; ++i) {
        const wchar_t* name = type->pOptParam[i].pData;
        if (name == nullptr || name[0] == L'\0') {
            continue;
        }
        const PaperDimensions form = GetFormSize(config.hPrinter, name);
        const PaperDimensions twentieths = {form.cx / static_cast<int32_t>(kFormSizeDivisor),
                                            form.cy / static_cast<int32_t>(kFormSizeDivisor)};
        if (IsFormAboutSize(twentieths, device)) {
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
        if (item.UserItemID == 0) {
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
            FormatWide(item.pSel, kLegacyEditCapacity, L"%.02f",
                       FormSizeInches(item.UserItemID == IDS_FORM_WIDTH ? width : length));
        }
        item.Flags |= OPTIF_CHANGED;
        config.LegacyChanged = 1;
        action = CPSUICB_ACTION_OPTIF_CHANGED;
    }
    return action;
}

// Settings whose value is taken as it is; apply checks them (Top Margin and Form Size
// have their own rules above).
bool IsPlainSettingItem(BYTE id) {
    switch (id) {
        case 26: case 27: case 30: case 41: case 42: case 45: case 52: case 53:
        case 55: case 56: case 57: case 58: case 60: case 61: case 76: case 77:
        case 82: case 99: case 175: case 178: case 228: case 230: case 231: case 232:
            return true;
        default:
            return false;
    }
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

LONG OnApplyNow(PCPSUICBPARAM param, UIConfig& config) {
    if (config.LegacyChanged == 0 || config.LegacyParmCount < 1) {
        return CPSUICB_ACTION_NONE;
    }
    ApplyLegacyChanges(param, config);
    return CPSUICB_ACTION_ITEMS_APPLIED;
}

// Reset defaults by UserItemID: a selection, or a text for the edit items.
struct ResetDefault {
    BYTE id;
    LONG selection;
    const wchar_t* text;
};
const ResetDefault kResetDefaults[] = {
    {IDS_DOTS_PER_CHARACTER, 0, nullptr},  {IDS_DUPLEX, 0, nullptr},
    {IDS_EXTRA_LINE_SPACING, 0, L"0.00"},  {IDS_TOP_MARGIN, 0, L"0.50"},
    {IDS_LEFT_MARGIN, 0, L"0.25"},         {IDS_TEXT_GRAPHICS_MODE, 0, nullptr},
    {IDS_AUTOMATIC_TEXT_WRAPPING, 1, nullptr}, {IDS_FORM_SIZE, 0, nullptr},
    {IDS_FORM_WIDTH, 0, L"8.50"},          {IDS_FORM_LENGTH, 0, L"11.00"},
    {IDS_MEDIA_TYPE, 0, nullptr},          {IDS_BRAILLE_TABLE, 1, nullptr},
    {IDS_BRAILLE_DOT_HEIGHT, 1, nullptr},  {IDS_RIGHT_MARGIN, 0, L"0.25"},
    {IDS_OUTPUT_FACE, 1, nullptr},         {IDS_BRAILLE_STANDARD, 0, nullptr},
    {IDS_CHARS_PER_LINE, 32, nullptr},     {IDS_LINES_PER_PAGE, 25, nullptr},
    {IDS_BRAILLE_QUALITY, 1, nullptr},
};

void SetResetDefault(OPTITEM& item) {
    for (const ResetDefault& d : kResetDefaults) {
        if (d.id != item.UserItemID) {
            continue;
        }
        if (d.text != nullptr) {
            SetText(item, d.text);
        } else {
            item.Sel = d.selection;
        }
        return;
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
    switch (item.UserItemID) {
        case 26:
            item.Sel = c.EmbsrBrailleDots == 8 ? 1 : 0;
            break;
        case 27:
            item.Sel = c.EmbsrDuplex == 2 ? 2 : (c.EmbsrDuplex == 1 ? 1 : 0);
            break;
        case 30:
            SetInches(item, c.EmbsrLineSpacing);
            break;
        case 40:
            SetInches(item, c.EmbsrTopMargin);
            break;
        case 41:
            SetInches(item, c.EmbsrLeftMargin);
            break;
        case 76:
            SetInches(item, c.EmbsrRightMargin);
            break;
        case 42:
            item.Sel = c.EmbsrGraphicsMode == 1 ? 1 : 0;
            break;
        case 45:
            item.Sel = c.EmbsrAutoCr == 0 ? 1 : 0;
            break;
        case 50:
            SelectDeviceFormSize(c, item);
            break;
        case 52:
            SetInches(item, c.EmbsrPaperWidth);
            break;
        case 53:
            SetInches(item, c.EmbsrPaperLength);
            break;
        case 55:
            item.Sel = static_cast<LONG>(c.EmbsrCustomMediaMin);
            break;
        case 56:
            item.Sel = static_cast<LONG>(c.EmbsrCustomMediaMax);
            break;
        case 57:
            item.Sel = MediaTypeSelection(c.EmbsrMediaType);
            break;
        case 58:
            switch (c.PaperSourceCode) {
                case 4: item.Sel = 5; break;
                case 8: item.Sel = 1; break;
                case 9: item.Sel = 2; break;
                case 10: item.Sel = 3; break;
                case 11: item.Sel = 4; break;
                default: item.Sel = 0; break;
            }
            break;
        case 60:
            item.Sel = static_cast<LONG>(BrailleTableStringToInt(c.EmbsrBrailleTable));
            break;
        case 61:
            item.Sel = static_cast<LONG>(c.EmbsrBrailleForce);
            break;
        case 99:
            item.Sel = c.EmbsrOutputFace == 2 ? 1 : 0;
            break;
        case 175:
            if (item.pSel != nullptr) {
                FormatWide(item.pSel, kLegacyEditCapacity, L"%u", static_cast<unsigned>(c.DryTime));
            }
            break;
        case 178:
            item.Sel = c.AutoLoadPaper == 0 ? 1 : 0;
            break;
        case 228:
            switch (c.EmbsrBrailleStandard) {
                case 1: item.Sel = 1; break;
                case 2:
                case 3: item.Sel = 2; break;
                case 4: item.Sel = 4; break;
                case 5: item.Sel = 5; break;
                default: item.Sel = 0; break;
            }
            break;
        case 230:
            item.Sel = c.EmbsrCharsWidth;
            break;
        case 231:
            item.Sel = c.EmbsrLinesLength;
            break;
        case 232:
            item.Sel = c.EmbsrQuality == 2 ? 2 : (c.EmbsrQuality != 0 ? 1 : 0);
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
        BrailleTableServiceRequest request = {kServiceBrailleTable, BrailleTableStringToInt(config->EmbsrBrailleTable)};
        const DWORD result = service(nullptr, config->PrinterName, &request);
        Trace(L"OEMBrailleTableUIPushButtonCallback(): %u=DllExportPrinterService(%u, %u)\n",
              static_cast<unsigned>(result), request.service, request.tableIndex);
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
        ApplyLegacyChanges(pCallbackParam, *config);
    } catch (...) {
        Trace(L"OEMResetToDefaultPushButtonCallback(): failed\n");
    }
    return CPSUICB_ACTION_OPTIF_CHANGED;
}
