#include "document_ui/quorl_page.h"

#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/printer_data.h"
#include "document_ui/device_mode_setters.h"
#include "document_ui/page_frame.h"
#include "document_ui/quorl_advanced_dialog.h"
#include "document_ui/two_in_one_warning.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

constexpr int kEmbossGroup[] = {IDC_GRAPHICS_QUALITY_LABEL, IDC_BRAILLE_QUALITY_LABEL, IDC_DOT_HEIGHT_LABEL,
                                IDC_BRAILLE_STANDARD_LABEL, IDC_GRAPHICS_QUALITY_LIST,  IDC_BRAILLE_QUALITY_LIST,
                                IDC_DOT_HEIGHT_LIST,        IDC_BRAILLE_STANDARD_LIST,  IDC_EMBOSS_STANDARD_TEXT};
constexpr int kColorGroup[] = {IDC_GRAYSCALE,          IDC_COLOR,         IDC_PRINT_QUALITY_LABEL,
                               IDC_PRINT_QUALITY_LIST, IDC_COLOR_PICTURE, IDC_GRAYSCALE_PICTURE};

// The lists, in the order they are filled, with their entries' strings.
struct QuorlList {
    int id;
    UINT entries[5];
    int count;
};
constexpr QuorlList kLists[] = {
    {IDC_GRAPHICS_QUALITY_LIST, {IDS_DRAFT, IDS_STANDARD, IDS_BEST}, 3},
    {IDC_BRAILLE_QUALITY_LIST, {IDS_DRAFT, IDS_STANDARD, IDS_BEST}, 3},
    {IDC_DOT_HEIGHT_LIST, {IDS_HIGH, IDS_NORMAL, IDS_LOW}, 3},
    {IDC_PRINT_QUALITY_LIST, {IDS_DRAFT, IDS_NORMAL, IDS_BEST}, 3},
    {IDC_BRAILLE_STANDARD_LIST,
     {IDS_STANDARD_MARBURG, IDS_STANDARD_LIBRARY_OF_CONGRESS, IDS_STANDARD_NATIONAL_LIBRARY,
      IDS_STANDARD_MICROBRAILLE, IDS_STANDARD_KOREAN},
     5},
};

// The three-entry lists: 0 and 2 are their own entry, anything else the middle one.
int ThreeStepIndex(uint32_t value) { return value == 0 || value == 2 ? static_cast<int>(value) : 1; }
uint32_t ThreeStepValue(int index) { return index == 0 || index == 2 ? static_cast<uint32_t>(index) : 1; }
// The braille standard: 1 to 4 are their own entry, anything else "Marburg".
int BrailleStandardIndex(uint32_t value) { return value >= 1 && value <= 4 ? static_cast<int>(value) : 0; }
uint32_t BrailleStandardValue(int index) { return index >= 1 && index <= 4 ? static_cast<uint32_t>(index) : 0; }

int ListSelection(HWND hDlg, int id) {
    return static_cast<int>(SendDlgItemMessageW(hDlg, id, CB_GETCURSEL, 0, 0));
}

void SelectListEntry(HWND hDlg, int id, int index) { SendDlgItemMessageW(hDlg, id, CB_SETCURSEL, index, 0); }

void Check(HWND hDlg, int id, bool on) { CheckDlgButton(hDlg, id, on ? BST_CHECKED : BST_UNCHECKED); }

// Without the right to manage the printer the groups stay disabled, whatever is ticked.
void EnableEmbossGroup(HWND hDlg, const PageState& page, bool enable) {
    for (int id : kEmbossGroup) {
        EnableControl(hDlg, id, enable && page.canManage);
    }
}

void EnableColorGroup(HWND hDlg, const PageState& page, bool enable) {
    for (int id : kColorGroup) {
        EnableControl(hDlg, id, enable && page.canManage);
        ShowWindow(GetDlgItem(hDlg, id), SW_SHOW);
    }
}

// The Layout page keeps its current double-sided choice here, applied or not.
bool InterpointChosen(const PageState& page) { return page.config->LoadedInterPoint != 0; }

void EnableMergeInk(HWND hDlg, const PageState& page) {
    EnableControl(hDlg, IDC_MERGE_INK, IsChecked(hDlg, IDC_PRINT) && page.canManage && InterpointChosen(page));
}

void FillLists(HWND hDlg, const UIConfig* config) {
    for (const QuorlList& list : kLists) {
        SendDlgItemMessageW(hDlg, list.id, CB_RESETCONTENT, 0, 0);
        for (int i = 0; i < list.count; ++i) {
            SendDlgItemMessageW(hDlg, list.id, CB_ADDSTRING, 0,
                                reinterpret_cast<LPARAM>(GetLocalString(config, list.entries[i])));
        }
    }
}

void ShowColorChoice(HWND hDlg, bool color) {
    CheckRadio(hDlg, IDC_GRAYSCALE, IDC_COLOR, color ? IDC_COLOR : IDC_GRAYSCALE);
}

void SetQuorlControls(HWND hDlg, const PageState& page) {
    const UIConfig* config = page.config;
    Check(hDlg, IDC_FRONT_INK_ONLY, config->TwoPassPrint > 0);
    Check(hDlg, IDC_MERGE_INK, config->TwoPassPrint == 0);
    EnableControl(hDlg, IDC_MERGE_INK, page.canManage);

    EnableControl(hDlg, IDC_EMBOSS_STANDARD_TEXT, page.canManage);
    EnableControl(hDlg, IDC_ADVANCED, page.canManage);
    EnableControl(hDlg, IDC_DEFAULTS, page.canManage);
    Check(hDlg, IDC_EMBOSS_STANDARD_TEXT, config->EmbossStandardTexts != 0);

    ShowWindow(GetDlgItem(hDlg, IDC_EMBOSS), SW_SHOW);
    EnableEmbossGroup(hDlg, page, config->EmbossMode == 1);
    EnableColorGroup(hDlg, page, config->InkMode == 1);
    Check(hDlg, IDC_EMBOSS, config->EmbossMode == 1);
    Check(hDlg, IDC_PRINT, config->InkMode == 1);
    Check(hDlg, IDC_TWO_IN_ONE, config->TwoInOne != 0);
    ShowColorChoice(hDlg, config->RenderMode != 1);

    SelectListEntry(hDlg, IDC_GRAPHICS_QUALITY_LIST, ThreeStepIndex(config->DotQuality));
    SelectListEntry(hDlg, IDC_BRAILLE_QUALITY_LIST, ThreeStepIndex(config->BrailleQuality));
    SelectListEntry(hDlg, IDC_DOT_HEIGHT_LIST, ThreeStepIndex(config->DotHeight));
    SelectListEntry(hDlg, IDC_PRINT_QUALITY_LIST, ThreeStepIndex(config->Quality));
    SelectListEntry(hDlg, IDC_BRAILLE_STANDARD_LIST, BrailleStandardIndex(config->BrailleStandard));
}

void InitQuorlPage(HWND hDlg, PageState& page) {
    page.canManage = CanManagePrinter(page.config->PrinterName);
    FillLists(hDlg, page.config);
    EnableControl(hDlg, IDC_PRINT, true);
    ShowWindow(GetDlgItem(hDlg, IDC_PRINT), SW_SHOW);
    SetQuorlControls(hDlg, page);
    TranslateDialog(page.config, hDlg);
}

void ShowColorPicture(HWND hDlg, bool color) {
    ShowWindow(GetDlgItem(hDlg, IDC_COLOR_PICTURE), color ? SW_SHOW : SW_HIDE);
    ShowWindow(GetDlgItem(hDlg, IDC_GRAYSCALE_PICTURE), color ? SW_HIDE : SW_SHOW);
}

// One of "&Emboss" and "&Print" always stays on. False when the click was undone.
bool OnEmbossClick(HWND hDlg, const PageState& page) {
    if (!IsChecked(hDlg, IDC_PRINT)) {
        Check(hDlg, IDC_EMBOSS, true);
        EnableEmbossGroup(hDlg, page, true);
        return false;
    }
    const bool emboss = IsChecked(hDlg, IDC_EMBOSS);
    if (!emboss) {
        Check(hDlg, IDC_TWO_IN_ONE, false);
    }
    EnableEmbossGroup(hDlg, page, emboss);
    return true;
}

void OnPrintClick(HWND hDlg, const PageState& page) {
    const bool print = IsChecked(hDlg, IDC_PRINT);
    if (!print && !IsChecked(hDlg, IDC_EMBOSS)) {
        Check(hDlg, IDC_EMBOSS, true);
        EnableEmbossGroup(hDlg, page, true);
    }
    if (!print) {
        Check(hDlg, IDC_TWO_IN_ONE, false);
    }
    EnableColorGroup(hDlg, page, print);
    EnableMergeInk(hDlg, page);
}

// Asks before "2 In 1" is switched on, unless the user asked not to be asked again.
bool ConfirmTwoInOne(HWND hDlg, UIConfig* config) {
    uint32_t show = 1;
    GetPrinterDataInteger2(config->hPrinter, L"Show2In1Warning", &show, 1);
    if (show != 1) {
        return true;
    }
    TwoInOneWarningParam warning = {config, SW_SHOW, 0, {}};
    CopyWide(warning.text, kTextCapacity, GetLocalString(config, IDS_TWO_IN_ONE_WARNING));
    const INT_PTR answer = ShowModalDialog(IDD_TWO_IN_ONE_WARNING, GetDlgItem(hDlg, IDC_TWO_IN_ONE),
                                           TwoInOneWarningDlgProc, reinterpret_cast<LPARAM>(&warning));
    if (answer != 1) {
        return false;
    }
    if (warning.dontShowAgain != 0) {
        SetPrinterDataInteger2(config->hPrinter, L"Show2In1Warning", 0);
    }
    return true;
}

// "2 In 1" embosses and prints, so both are switched on; unchecking it while one of them
// is off switches both on as well. False when the warning was refused.
bool OnTwoInOneClick(HWND hDlg, const PageState& page) {
    if (IsChecked(hDlg, IDC_TWO_IN_ONE) && !ConfirmTwoInOne(hDlg, page.config)) {
        Check(hDlg, IDC_TWO_IN_ONE, false);
        return false;
    }
    if (IsChecked(hDlg, IDC_EMBOSS) && IsChecked(hDlg, IDC_PRINT)) {
        return true;
    }
    Check(hDlg, IDC_EMBOSS, true);
    Check(hDlg, IDC_PRINT, true);
    EnableEmbossGroup(hDlg, page, true);
    EnableColorGroup(hDlg, page, true);
    EnableMergeInk(hDlg, page);
    return true;
}

bool ResetToDefaults(HWND hDlg, PageState& page) {
    UIConfig* config = page.config;
    if (ShowLocalMessage(hDlg, config, IDS_RESET_QUESTION, IDS_RESET_TO_DEFAULT, MB_YESNO | MB_ICONQUESTION) !=
        IDYES) {
        return false;
    }
    config->EmbossMode = 1;
    config->InkMode = 1;
    config->DotHeight = 1;
    config->Quality = 1;
    config->DotQuality = 2;
    config->BrailleQuality = 2;
    config->RenderingDensity = 6;
    config->BrailleStandard = 0;
    config->EmbossStandardTexts = 0;
    config->TwoInOne = 0;
    page.canManage = CanManagePrinter(config->PrinterName);
    SetQuorlControls(hDlg, page);
    // Colour is shown, and "RenderMode" left as the device modes have it: the apply
    // writes the colour through only when it differs from the record's.
    ShowColorChoice(hDlg, true);
    return true;
}

// True when the click is a change to be written.
bool OnQuorlClick(HWND hDlg, PageState& page, int id) {
    switch (id) {
    case IDC_EMBOSS_STANDARD_TEXT:
    case IDC_MERGE_INK:
        return true;
    case IDC_GRAYSCALE:
    case IDC_COLOR:
        CheckRadio(hDlg, IDC_GRAYSCALE, IDC_COLOR, id);
        ShowColorPicture(hDlg, id == IDC_COLOR);
        return true;
    case IDC_EMBOSS:
        return OnEmbossClick(hDlg, page);
    case IDC_PRINT:
        OnPrintClick(hDlg, page);
        return true;
    case IDC_TWO_IN_ONE:
        return OnTwoInOneClick(hDlg, page);
    case IDC_ADVANCED: {
        QuorlAdvancedParam param = {page.config, 0};
        ShowModalDialog(IDD_QUORL_ADVANCED, hDlg, DocumentQuorlAdvancedDlgProc, reinterpret_cast<LPARAM>(&param));
        return false;  // the dialog writes its own values
    }
    case IDC_DEFAULTS:
        return ResetToDefaults(hDlg, page);
    default:
        return false;
    }
}

bool IsQuorlList(int id) {
    for (const QuorlList& list : kLists) {
        if (list.id == id) {
            return true;
        }
    }
    return false;
}

INT_PTR OnQuorlCommand(HWND hDlg, PageState& page, WORD id, WORD code) {
    const bool changed = code == BN_CLICKED ? OnQuorlClick(hDlg, page, id) : code == CBN_SELCHANGE && IsQuorlList(id);
    if (changed) {
        MarkPageChanged(hDlg, page.config);
    }
    return TRUE;
}

// The page applies when any page of the sheet has marked the record changed.
const PageBehaviour kQuorlPage = {
    L"DocumentQuorlPropPageProc",
    InitQuorlPage,
    OnQuorlCommand,
    nullptr,
    [](HWND hDlg, PageState&) { ApplyQuorlChanges(hDlg); },
    [](const PageState& page) { return page.config->PageChanged != 0; },
    [](HWND hDlg, PageState& page) { EnableMergeInk(hDlg, page); },
    false,
};

}  // namespace

UINT CALLBACK DocumentQuorlPropPageCallback(HWND, UINT msg, PROPSHEETPAGEW* page) {
    return HandlePageCallback(L"DocumentQuorlPropPageCallback", msg, page);
}

INT_PTR CALLBACK DocumentQuorlPropPageProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    return RunPageProc(kQuorlPage, hDlg, message, wParam, lParam);
}

void ApplyQuorlChanges(HWND hDlg) {
    UIConfig* config = PageStateOf(hDlg)->config;
    Trace(L"ApplyQuorlChanges(): hDlg=%p, LPUIConfig=%p\n", static_cast<void*>(hDlg), static_cast<void*>(config));
    config->EmbossStandardTexts = IsChecked(hDlg, IDC_EMBOSS_STANDARD_TEXT) ? 1 : 0;
    config->TwoInOne = IsChecked(hDlg, IDC_TWO_IN_ONE) ? 1 : 0;
    config->TwoPassPrint = IsChecked(hDlg, IDC_MERGE_INK) ? 0 : 1;
    config->DotQuality = ThreeStepValue(ListSelection(hDlg, IDC_GRAPHICS_QUALITY_LIST));
    config->BrailleQuality = ThreeStepValue(ListSelection(hDlg, IDC_BRAILLE_QUALITY_LIST));
    config->BrailleStandard = BrailleStandardValue(ListSelection(hDlg, IDC_BRAILLE_STANDARD_LIST));
    config->DotHeight = ThreeStepValue(ListSelection(hDlg, IDC_DOT_HEIGHT_LIST));
    config->EmbossMode = IsChecked(hDlg, IDC_EMBOSS) ? 1 : 0;
    config->InkMode = IsChecked(hDlg, IDC_PRINT) ? 1 : 0;
    // The print quality shown is not taken: "Quality" keeps what was stored or reset.
    ListSelection(hDlg, IDC_PRINT_QUALITY_LIST);
    SetPrinterColor(config, IsChecked(hDlg, IDC_COLOR) ? DMCOLOR_COLOR : DMCOLOR_MONOCHROME);
    UpdateQuorlConfig(config);
}

void UpdateQuorlConfig(UIConfig* config) {
    Trace(L"UpdateQuorlConfig(): updating\n");
    const struct {
        const wchar_t* name;
        uint32_t value;
    } values[] = {{L"EmbossMode", config->EmbossMode},
                  {L"RenderingDensity", config->RenderingDensity},
                  {L"DotQuality", config->DotQuality},
                  {L"BrailleQuality", config->BrailleQuality},
                  {L"BrailleStandard", config->BrailleStandard},
                  {L"DotHeight", config->DotHeight},
                  {L"InkMode", config->InkMode},
                  {L"Quality", config->Quality},
                  {L"EmbossStandardTexts", config->EmbossStandardTexts},
                  {L"TwoInOne", config->TwoInOne},
                  {L"RenderMode", config->RenderMode},
                  {L"TwoPassPrint", config->TwoPassPrint}};
    for (const auto& value : values) {
        SetPrinterDataInteger(config->hPrinter, value.name, value.value);
    }
    config->PageChanged = 0;
}
