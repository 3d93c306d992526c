#include "document_ui/quorl_advanced_dialog.h"

#include <commctrl.h>
#include <commdlg.h>

#include <atomic>
#include <cwchar>
#include <string>

#include "base/text_format.h"
#include "base/trace_log.h"
#include "base/unique_handle.h"
#include "config/localisation.h"
#include "config/printer_data.h"
#include "config/registry.h"
#include "document_ui/page_frame.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

constexpr const wchar_t* kUninstallKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr wchar_t kSuiteName[] = L"Quorl Software Suite";
constexpr size_t kSuiteNameLength = sizeof(kSuiteName) / sizeof(kSuiteName[0]) - 1;
constexpr long kFirstSuiteWithPatterns = 8;

constexpr int kNumberBoxCapacity = 64;
constexpr DWORD kFileBufferCapacity = 4096;
constexpr DWORD kPatternFileOptions = OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST;

// The pattern list: "Browse ...", the chosen file, "Automatic Pattern".
constexpr int kBrowseEntry = 0;
constexpr int kAutomaticEntry = 2;

// A slider with a number box, or without one (0).
struct Slider {
    int id;
    int numberBox;
    int minimum;
    int maximum;
    int pageSize;
};
constexpr Slider kContrast = {IDC_CONTRAST, IDC_CONTRAST_NUMBER, -100, 100, 20};
constexpr Slider kBrightness = {IDC_BRIGHTNESS, IDC_BRIGHTNESS_NUMBER, -100, 100, 20};
constexpr Slider kThinLines = {IDC_THIN_LINE_INTENSITY, 0, 0, 6, 1};
constexpr const Slider* kSliders[] = {&kContrast, &kBrightness, &kThinLines};

BOOL SystemFileDialog(OPENFILENAMEW* open) { return GetOpenFileNameW(open); }
std::atomic<PatternFileDialog> gPatternFileDialog{SystemFileDialog};

QuorlAdvancedParam* DialogParam(HWND hDlg) {
    return reinterpret_cast<QuorlAdvancedParam*>(GetWindowLongPtrW(hDlg, DWLP_USER));
}

LRESULT Send(HWND hDlg, int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendDlgItemMessageW(hDlg, id, message, wParam, lParam);
}

void EnableApply(HWND hDlg, bool enable) { EnableControl(hDlg, IDC_QUORL_APPLY, enable); }

int SliderPosition(HWND hDlg, int id) { return static_cast<int>(Send(hDlg, id, TBM_GETPOS)); }

void ShowPosition(HWND hDlg, const Slider& slider) {
    if (slider.numberBox != 0) {
        wchar_t number[16] = {};
        FormatWide(number, 16, L"%d", SliderPosition(hDlg, slider.id));
        SetDlgItemTextW(hDlg, slider.numberBox, number);
    }
}

void SetSlider(HWND hDlg, const Slider& slider, int position) {
    Send(hDlg, slider.id, TBM_SETRANGEMIN, TRUE, slider.minimum);
    Send(hDlg, slider.id, TBM_SETRANGEMAX, TRUE, slider.maximum);
    Send(hDlg, slider.id, TBM_SETPAGESIZE, 0, slider.pageSize);
    // Some trackbars only place the thumb anew when the position changes, not when the
    // range does: pass through another position first.
    Send(hDlg, slider.id, TBM_SETPOS, FALSE, position == slider.minimum ? slider.maximum : slider.minimum);
    Send(hDlg, slider.id, TBM_SETPOS, TRUE, position);
    ShowPosition(hDlg, slider);
}

const Slider* SliderOf(HWND hDlg, HWND control) {
    const int id = GetDlgCtrlID(control);
    for (const Slider* slider : kSliders) {
        if (slider->id == id && GetDlgItem(hDlg, id) == control) {
            return slider;
        }
    }
    return nullptr;
}

// A typed number moves its slider, which keeps it within its range. True when the
// slider moved.
bool FollowNumberBox(HWND hDlg, const Slider& slider) {
    wchar_t text[kNumberBoxCapacity + 1] = {};
    GetDlgItemTextW(hDlg, slider.numberBox, text, kNumberBoxCapacity + 1);
    const int typed = static_cast<int>(wcstol(text, nullptr, 10));
    const int before = SliderPosition(hDlg, slider.id);
    Send(hDlg, slider.id, TBM_SETPOS, TRUE, typed);
    return SliderPosition(hDlg, slider.id) != before;
}

void FillPatternList(HWND hDlg, const UIConfig* config) {
    const int shown = config->ColorPattern == 2 ? kAutomaticEntry : 1;
    Send(hDlg, IDC_PATTERN_LIST, CB_RESETCONTENT);
    Send(hDlg, IDC_PATTERN_LIST, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(GetLocalString(config, IDS_BROWSE)));
    Send(hDlg, IDC_PATTERN_LIST, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(config->PatternFileChoice));
    Send(hDlg, IDC_PATTERN_LIST, CB_ADDSTRING, 0,
         reinterpret_cast<LPARAM>(GetLocalString(config, IDS_AUTOMATIC_PATTERN)));
    Send(hDlg, IDC_PATTERN_LIST, CB_SETCURSEL, shown);
    DialogParam(hDlg)->patternEntry = shown;
    EnableControl(hDlg, IDC_PATTERN_LIST, config->ColorPattern >= 1);
}

void SetAdvancedControls(HWND hDlg, UIConfig* config) {
    CheckDlgButton(hDlg, IDC_INVERT_COLORS, config->InvertColor != 0 ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(hDlg, IDC_OUTPUT_BITMAP, config->OutputBitmap != 0 ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(hDlg, IDC_APPLY_PATTERNS, config->ColorPattern >= 1 ? BST_CHECKED : BST_UNCHECKED);
    SetSlider(hDlg, kContrast, config->Contrast);
    SetSlider(hDlg, kBrightness, config->Brightness);
    SetSlider(hDlg, kThinLines, static_cast<int>(config->ThinLineIntensity));
    FillPatternList(hDlg, config);
    if (!IsQuorlSuiteInstalled()) {
        // Without the suite there are no patterns: nothing hidden may switch them on.
        ShowWindow(GetDlgItem(hDlg, IDC_APPLY_PATTERNS), SW_HIDE);
        ShowWindow(GetDlgItem(hDlg, IDC_PATTERN_LIST), SW_HIDE);
        CheckDlgButton(hDlg, IDC_APPLY_PATTERNS, BST_UNCHECKED);
        config->ColorPattern = 0;
    }
}

// The file-open dialog's filter: "Pattern Files (*.dat)" and "All Files (*.*)".
std::wstring PatternFilter(const UIConfig* config) {
    std::wstring filter = GetLocalString(config, IDS_PATTERN_FILES);
    filter += L" (*.dat)";
    filter += L'\0';
    filter += L"*.DAT";
    filter += L'\0';
    filter += GetLocalString(config, IDS_ALL_FILES);
    filter += L" (*.*)";
    filter += L'\0';
    filter += L"*.*";
    filter += L'\0';
    return filter;  // the string's own terminator ends the list
}

// "Browse ...": a chosen file becomes the pattern and the list shows it. Cancelled, or a
// path longer than the stored name can hold, the list shows what it showed before.
void BrowseForPattern(HWND hDlg, UIConfig* config) {
    const std::wstring filter = PatternFilter(config);
    wchar_t folder[MAX_PATH] = {};
    GetPatternFolder(folder, MAX_PATH);
    std::wstring file(kFileBufferCapacity, L'\0');
    OPENFILENAMEW open = {};
    open.lStructSize = sizeof(open);
    open.hwndOwner = hDlg;
    open.lpstrFilter = filter.c_str();
    open.nFilterIndex = 1;
    open.lpstrFile = &file[0];
    open.nMaxFile = kFileBufferCapacity;
    open.lpstrInitialDir = folder[0] != L'\0' ? folder : nullptr;
    open.Flags = kPatternFileOptions;
    const bool chosen = gPatternFileDialog.load()(&open) != FALSE;
    const bool fits = chosen && wcslen(file.c_str()) < kTextCapacity;
    if (chosen && !fits) {
        ShowLocalMessage(hDlg, config, IDS_PATTERN_PATH_TOO_LONG, IDS_PATTERN_FILES, MB_OK | MB_ICONINFORMATION);
    }
    if (!fits) {
        Send(hDlg, IDC_PATTERN_LIST, CB_SETCURSEL, DialogParam(hDlg)->patternEntry);
        return;
    }
    CopyWide(config->PatternFileChoice, kTextCapacity, file.c_str());
    config->ColorPattern = 1;
    FillPatternList(hDlg, config);
}

void ResetAdvancedDefaults(HWND hDlg, UIConfig* config) {
    if (ShowLocalMessage(hDlg, config, IDS_RESET_QUESTION, IDS_RESET_TO_DEFAULT, MB_YESNO | MB_ICONQUESTION) != IDYES) {
        return;
    }
    config->InvertColor = 0;
    config->Brightness = 0;
    config->Contrast = 0;
    config->ThinLineIntensity = 1;
    config->ColorPattern = 0;
    config->OutputBitmap = 0;
    config->Magnification = 8;  // the image scale the driver starts from
    SetAdvancedControls(hDlg, config);
    EnableApply(hDlg, true);
}

// The last part of a path: the file's own name.
const wchar_t* FileNamePart(const wchar_t* path) {
    const wchar_t* name = path;
    for (const wchar_t* c = path; *c != L'\0'; ++c) {
        if (*c == L'\\' || *c == L'/') {
            name = c + 1;
        }
    }
    return name;
}

void UpdateAdvancedConfig(const UIConfig* config) {
    Trace(L"UpdateAdvancedConfig(): updating\n");
    HANDLE printer = config->hPrinter;
    SetPrinterDataInteger(printer, L"InvertColor", config->InvertColor);
    SetPrinterDataInteger(printer, L"Brightness", static_cast<uint32_t>(config->Brightness));
    SetPrinterDataInteger(printer, L"Contrast", static_cast<uint32_t>(config->Contrast));
    SetPrinterDataInteger(printer, L"ThinLineIntensity", config->ThinLineIntensity);
    SetPrinterDataInteger(printer, L"RenderingDensity", config->RenderingDensity);
    SetPrinterDataInteger(printer, L"ColorPattern", config->ColorPattern);
    SetPrinterDataString(printer, L"CustomPatternFileName", config->CustomPatternFileName,
                         static_cast<DWORD>(wcsnlen(config->CustomPatternFileName, kTextCapacity)));
    SetPrinterDataInteger(printer, L"OutputBitmap", config->OutputBitmap);

    HKEY created = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kUserPatternsKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &created,
                        nullptr) != ERROR_SUCCESS) {
        return;
    }
    UniqueRegKey key(created);
    const wchar_t* name = FileNamePart(config->CustomPatternFileName);
    RegSetValueExW(key.get(), L"CurrentPattern", 0, REG_SZ, reinterpret_cast<const BYTE*>(name),
                   static_cast<DWORD>((wcslen(name) + 1) * sizeof(wchar_t)));
}

void ApplyAdvancedChanges(HWND hDlg, UIConfig* config) {
    Trace(L"ApplyAdvancedChanges(): hDlg=%p, LPUIConfig=%p\n", static_cast<void*>(hDlg), static_cast<void*>(config));
    if (!IsChecked(hDlg, IDC_APPLY_PATTERNS)) {
        config->ColorPattern = 0;
    } else {
        config->ColorPattern = Send(hDlg, IDC_PATTERN_LIST, CB_GETCURSEL) == kAutomaticEntry ? 2 : 1;
    }
    CopyWide(config->CustomPatternFileName, kTextCapacity, config->PatternFileChoice);
    config->InvertColor = IsChecked(hDlg, IDC_INVERT_COLORS) ? 1 : 0;
    config->Contrast = SliderPosition(hDlg, IDC_CONTRAST);
    config->Brightness = SliderPosition(hDlg, IDC_BRIGHTNESS);
    config->ThinLineIntensity = static_cast<uint32_t>(SliderPosition(hDlg, IDC_THIN_LINE_INTENSITY));
    config->OutputBitmap = IsChecked(hDlg, IDC_OUTPUT_BITMAP) ? 1 : 0;
    UpdateAdvancedConfig(config);
}

void InitAdvancedDialog(HWND hDlg, UIConfig* config) {
    CopyWide(config->PatternFileChoice, kTextCapacity, config->CustomPatternFileName);
    SetAdvancedControls(hDlg, config);
    SetAdvancedTitle(hDlg, config);
    EnableApply(hDlg, false);
    TranslateDialog(config, hDlg);
}

INT_PTR OnAdvancedCommand(HWND hDlg, UIConfig* config, int id, int code) {
    switch (id) {
    case IDC_INVERT_COLORS:
    case IDC_CHESSBOARD_PATTERN:
    case IDC_OUTPUT_BITMAP:
        EnableApply(hDlg, true);
        return TRUE;
    case IDC_APPLY_PATTERNS:
        EnableApply(hDlg, true);
        EnableControl(hDlg, IDC_PATTERN_LIST, IsChecked(hDlg, IDC_APPLY_PATTERNS));
        return TRUE;
    case IDC_PATTERN_LIST:
        if (code == CBN_SELCHANGE) {
            const int entry = static_cast<int>(Send(hDlg, IDC_PATTERN_LIST, CB_GETCURSEL));
            EnableApply(hDlg, true);
            if (entry == kBrowseEntry) {
                BrowseForPattern(hDlg, config);  // a cancel leaves the list as it was
            } else {
                DialogParam(hDlg)->patternEntry = entry;
            }
        }
        return TRUE;
    case IDC_CONTRAST_NUMBER:
    case IDC_BRIGHTNESS_NUMBER:
        // A typed number that moves the slider is a change like a moved slider.
        if (code == EN_CHANGE && FollowNumberBox(hDlg, id == IDC_CONTRAST_NUMBER ? kContrast : kBrightness)) {
            EnableApply(hDlg, true);
        }
        return TRUE;
    case IDC_DEFAULTS:
        ResetAdvancedDefaults(hDlg, config);
        return TRUE;
    case IDOK:
        Trace(L"DocumentQuorlAdvancedDlgProc(): IDOK\n");
        if (IsWindowEnabled(GetDlgItem(hDlg, IDC_QUORL_APPLY))) {
            ApplyAdvancedChanges(hDlg, config);
        }
        EndDialog(hDlg, 1);
        return TRUE;
    case IDCANCEL:
        Trace(L"DocumentQuorlAdvancedDlgProc(): IDCANCEL\n");
        EndDialog(hDlg, 2);
        return TRUE;
    case IDC_QUORL_APPLY:
        ApplyAdvancedChanges(hDlg, config);
        SendMessageW(hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(hDlg, IDOK)), TRUE);
        EnableApply(hDlg, false);
        Trace(L"DocumentQuorlAdvancedDlgProc(): ID_APPLY_NOW");
        return TRUE;
    default:
        return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK DocumentQuorlAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const auto* param = reinterpret_cast<const QuorlAdvancedParam*>(lParam);
        if (param == nullptr || param->config == nullptr) {
            EndDialog(hDlg, 2);
            return TRUE;
        }
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        InitAdvancedDialog(hDlg, param->config);
        return TRUE;
    }
    const QuorlAdvancedParam* param = DialogParam(hDlg);
    if (param == nullptr) {
        return FALSE;
    }
    UIConfig* config = param->config;
    switch (message) {
    case WM_COMMAND:
        return OnAdvancedCommand(hDlg, config, LOWORD(wParam), HIWORD(wParam));
    case WM_HSCROLL:
        // Moved by mouse or keyboard: the number box follows, and it is a change.
        if (const Slider* slider = SliderOf(hDlg, reinterpret_cast<HWND>(lParam))) {
            ShowPosition(hDlg, *slider);
            EnableApply(hDlg, true);
            return TRUE;
        }
        return FALSE;
    case WM_NOTIFY: {
        // A slider let go.
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        const Slider* slider = header->code == NM_RELEASEDCAPTURE ? SliderOf(hDlg, header->hwndFrom) : nullptr;
        if (slider == nullptr) {
            return FALSE;
        }
        ShowPosition(hDlg, *slider);
        EnableApply(hDlg, true);
        return TRUE;
    }
    default:
        return FALSE;
    }
}

void SetPatternFileDialogForTesting(PatternFileDialog dialog) {
    gPatternFileDialog = dialog != nullptr ? dialog : SystemFileDialog;
}

bool IsQuorlSuiteInstalled() {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kUninstallKey, 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return false;
    }
    UniqueRegKey programs(opened);
    wchar_t subkey[256];
    for (DWORD index = 0;; ++index) {
        DWORD length = 256;
        const LONG status = RegEnumKeyExW(programs.get(), index, subkey, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_MORE_DATA) {
            continue;  // a name longer than any program's: not the suite
        }
        if (status != ERROR_SUCCESS) {
            return false;
        }
        // The reader closes the key it is given, so each value gets its own opening.
        HKEY program = nullptr;
        wchar_t name[kTextCapacity] = {};
        if (RegOpenKeyExW(programs.get(), subkey, 0, KEY_READ, &program) != ERROR_SUCCESS ||
            ReadRegistryString(L"DisplayName", name, sizeof(name), program) != ERROR_SUCCESS ||
            CompareStringOrdinal(name, static_cast<int>(wcsnlen(name, kSuiteNameLength)), kSuiteName,
                                 static_cast<int>(kSuiteNameLength), TRUE) != CSTR_EQUAL) {
            continue;
        }
        wchar_t version[kTextCapacity] = {};
        if (RegOpenKeyExW(programs.get(), subkey, 0, KEY_READ, &program) == ERROR_SUCCESS &&
            ReadRegistryString(L"DisplayVersion", version, sizeof(version), program) == ERROR_SUCCESS &&
            wcstol(version, nullptr, 10) >= kFirstSuiteWithPatterns) {
            return true;
        }
    }
}
