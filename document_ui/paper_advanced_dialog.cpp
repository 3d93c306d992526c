#include "document_ui/paper_advanced_dialog.h"

#include <commctrl.h>
#include <winspool.h>

#include <cwchar>
#include <initializer_list>

#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "config/printer_data.h"
#include "device/legacy_settings_writer.h"
#include "device/protocol/pjl_commands.h"
#include "document_ui/page_frame.h"
#include "document_ui/paper_page.h"
#include "resources/document_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

// The built-in entries of the media list; the printer's own types follow them.
constexpr int kBuiltInMediaEntries = kMediaTypeEntries - 1;
constexpr int kMaxFormMicrometres = 10000000;  // 10 m

// What the dialog was opened with, kept with its window.
PaperAdvancedParam& Param(HWND hDlg) {
    return *reinterpret_cast<PaperAdvancedParam*>(GetWindowLongPtrW(hDlg, DWLP_USER));
}

UIConfig* Config(HWND hDlg) { return Param(hDlg).config; }

LRESULT Send(HWND hDlg, int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendDlgItemMessageW(hDlg, id, message, wParam, lParam);
}

void EnableApply(HWND hDlg) { EnableControl(hDlg, ID_APPLY_NOW, true); }

void EnableRemove(HWND hDlg, int index) {
    EnableControl(hDlg, IDC_REMOVE_MEDIA_TYPE, Param(hDlg).canManage && index >= kBuiltInMediaEntries);
}

int MessageBoxOf(HWND hDlg, UINT textId, UINT captionId, UINT style) {
    return ShowLocalMessage(hDlg, Config(hDlg), textId, captionId, style);
}

// The built-in media and then the printer's own types, each with its media code.
void FillMediaCombo(HWND hDlg) {
    Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_RESETCONTENT);
    for (int i = 1; i <= kBuiltInMediaEntries; ++i) {
        const LRESULT entry = Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_ADDSTRING, 0,
                                   reinterpret_cast<LPARAM>(GetLocalString(Config(hDlg), MediaTypeStringId(i))));
        Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_SETITEMDATA, entry, MediaTypeCode(i));
    }
    DWORD bytes = 0;
    if (EnumConfigMediaTypes(Config(hDlg), nullptr, &bytes) < 1 || bytes == 0) {
        return;
    }
    HeapBuffer names(bytes);
    // A type added since the sizing call is left out, not written past the buffer.
    if (!names || EnumConfigMediaTypes(Config(hDlg), names.as<wchar_t>(), bytes, nullptr) < 1) {
        return;
    }
    const wchar_t* end = names.as<wchar_t>() + bytes / sizeof(wchar_t);
    for (const wchar_t* name = names.as<wchar_t>(); name < end && *name != L'\0'; name += wcslen(name) + 1) {
        const LRESULT entry = Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
        Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_SETITEMDATA, entry, kCustomMediaCode);
    }
}

int CustomMediaTypeCount(HWND hDlg) {
    const int count = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCOUNT));
    return count > kBuiltInMediaEntries ? count - kBuiltInMediaEntries : 0;
}

bool MediaEntryText(HWND hDlg, int index, wchar_t* text) {
    if (index < 0 || Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETLBTEXTLEN, index) >= kTextCapacity) {
        return false;
    }
    return Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text)) != CB_ERR;
}

void SelectMedia(HWND hDlg, int index) {
    Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_SETCURSEL, index);
    Param(hDlg).mediaIndex = index;
    EnableRemove(hDlg, index);
}

void OnMediaSelected(HWND hDlg) {
    const int index = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCURSEL));
    if (index < 0) {
        return;
    }
    SelectMedia(hDlg, index);
    Param(hDlg).mediaCode = static_cast<uint32_t>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETITEMDATA, index));
    if (index >= kBuiltInMediaEntries) {
        MediaEntryText(hDlg, index, Config(hDlg)->CustomMediaName);
    }
    Param(hDlg).flags |= kMediaSelectionChanged;
    EnableApply(hDlg);
}

void AddMediaType(HWND hDlg) {
    CustomMediaTypeParam media = {Config(hDlg), IDC_ADD_MEDIA_TYPE, TRUE, 8, 2, {}};
    FormatWide(media.name, kTextCapacity, L"%s %d", GetLocalString(Config(hDlg), IDS_CUSTOM_DEFINED),
               CustomMediaTypeCount(hDlg) + 1);
    if (ShowModalDialog(IDD_CUSTOM_MEDIA_TYPE, hDlg, CustomMediaTypeDlgProc, reinterpret_cast<LPARAM>(&media)) !=
        IDOK) {
        return;
    }
    SetConfigMediaType(Config(hDlg)->hPrinter, media.name, (media.highest << 8) | media.lowest);
    FillMediaCombo(hDlg);
    const int last = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCOUNT)) - 1;
    SelectMedia(hDlg, last);
    Param(hDlg).mediaCode = kCustomMediaCode;
    MediaEntryText(hDlg, last, Config(hDlg)->CustomMediaName);
    Param(hDlg).flags |= kMediaSelectionChanged;
    EnableApply(hDlg);
}

// The printer's own types can be changed; a built-in one is only shown.
void EditMediaType(HWND hDlg) {
    const int index = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCURSEL));
    CustomMediaTypeParam media = {Config(hDlg), IDC_EDIT_MEDIA_TYPE, FALSE, 8, 2, {}};
    if (!MediaEntryText(hDlg, index, media.name)) {
        return;
    }
    DWORD stored = 0;
    if (index >= kBuiltInMediaEntries && GetConfigMediaType(Config(hDlg)->hPrinter, media.name, &stored)) {
        media.changeable = Param(hDlg).canManage;
        media.highest = (stored >> 8) & 0xFF;
        media.lowest = stored & 0xFF;
    }
    if (ShowModalDialog(IDD_CUSTOM_MEDIA_TYPE, hDlg, CustomMediaTypeDlgProc, reinterpret_cast<LPARAM>(&media)) ==
            IDOK &&
        media.changeable) {
        SetConfigMediaType(Config(hDlg)->hPrinter, media.name, (media.highest << 8) | media.lowest);
        Param(hDlg).flags |= kMediaSelectionChanged;
        EnableApply(hDlg);
    }
}

void RemoveMediaType(HWND hDlg) {
    const int index = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCURSEL));
    if (index < kBuiltInMediaEntries) {
        MessageBoxOf(hDlg, IDS_MEDIA_TYPE_NOT_REMOVABLE, IDS_REMOVE_MEDIA_TYPE, MB_OK | MB_ICONINFORMATION);
        return;
    }
    if (MessageBoxOf(hDlg, IDS_REMOVE_MEDIA_TYPE_QUESTION, IDS_REMOVE_MEDIA_TYPE, MB_YESNO | MB_ICONQUESTION) !=
        IDYES) {
        return;
    }
    wchar_t name[kTextCapacity] = {};
    if (MediaEntryText(hDlg, index, name)) {
        RemoveConfigMediaType(name, Config(hDlg)->hPrinter);
    }
    const int previous = index - 1;
    if (previous >= kBuiltInMediaEntries) {
        Param(hDlg).mediaCode = kCustomMediaCode;
        MediaEntryText(hDlg, previous, Config(hDlg)->CustomMediaName);
    } else {
        Param(hDlg).mediaCode = MediaTypeCode(previous + 1);
    }
    FillMediaCombo(hDlg);
    SelectMedia(hDlg, previous);
    Param(hDlg).flags |= kMediaTypeRemoved;
    EnableApply(hDlg);
}

// --- forms ---

bool MetricShown(HWND hDlg) { return IsChecked(hDlg, IDC_METRIC); }

int SelectedForm(HWND hDlg, wchar_t* name) {
    const int index = static_cast<int>(Send(hDlg, IDC_FORMS_LIST, LB_GETCURSEL));
    if (index < 0 || Send(hDlg, IDC_FORMS_LIST, LB_GETTEXTLEN, index) >= kFormNameCapacity) {
        return -1;
    }
    Send(hDlg, IDC_FORMS_LIST, LB_GETTEXT, index, reinterpret_cast<LPARAM>(name));
    return index;
}

void ShowFormSize(HWND hDlg) {
    wchar_t name[kFormNameCapacity] = {};
    if (SelectedForm(hDlg, name) < 0) {
        SetDlgItemTextW(hDlg, IDC_FORM_SIZE_TEXT, L"");
        return;
    }
    const PaperDimensions size = GetFormSize(Config(hDlg)->hPrinter, name);
    const bool metric = MetricShown(hDlg);
    const double divisor = metric ? 10000.0 : 25400.0;
    wchar_t unit[kTextCapacity] = {};
    CopyWide(unit, kTextCapacity, GetLocalString(Config(hDlg), metric ? IDS_CENTIMETERS : IDS_INCHES));
    wchar_t text[2 * kTextCapacity] = {};
    FormatWide(text, 2 * kTextCapacity, L"%.02f %ws\r\n%.02f %ws", size.cx / divisor, unit, size.cy / divisor, unit);
    SetDlgItemTextW(hDlg, IDC_FORM_SIZE_TEXT, text);
}

void OnFormSelected(HWND hDlg) {
    ShowFormSize(hDlg);
    wchar_t name[kFormNameCapacity] = {};
    const bool own = SelectedForm(hDlg, name) >= 0 && IsConfigForm(Config(hDlg)->hPrinter, name);
    EnableControl(hDlg, IDC_DELETE_FORM, Param(hDlg).canManage && own);
}

void FillFormsList(HWND hDlg) {
    int count = 0;
    HeapBuffer names = FetchPrinterPaperNames(Config(hDlg)->hPrinter, &count);
    for (int i = 0; i < count; ++i) {
        wchar_t name[kFormNameCapacity] = {};
        CopyPaperName(names.as<wchar_t>(), i, name, kFormNameCapacity);
        Send(hDlg, IDC_FORMS_LIST, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    }
    const bool listed = count > 0;
    for (int id : {IDC_FORMS_LIST, IDC_METRIC, IDC_ENGLISH}) {
        EnableControl(hDlg, id, listed);
    }
    EnableControl(hDlg, IDC_ADD_CUSTOM_FORM, listed && Param(hDlg).canManage);
    EnableControl(hDlg, IDC_DELETE_FORM, false);  // until one of this printer's forms is chosen
}

// Adds a form to the print server through a full-access handle; `*error` the spooler's
// error when it fails.
BOOL AddAdvancedForm(const wchar_t* printerName, const FORM_INFO_1W& form, DWORD* error) {
    const UniquePrinter printer = OpenPrinterWithFullAccess(printerName);
    if (!printer) {
        *error = GetLastError();
        return FALSE;
    }
    const BOOL added = Spool().AddFormW(printer.get(), 1, reinterpret_cast<BYTE*>(const_cast<FORM_INFO_1W*>(&form)));
    *error = added ? ERROR_SUCCESS : GetLastError();
    return added;
}

bool DeleteAdvancedForm(const wchar_t* printerName, const wchar_t* name) {
    const UniquePrinter printer = OpenPrinterWithFullAccess(printerName);
    if (!printer) {
        return false;
    }
    const BOOL deleted = Spool().DeleteFormW(printer.get(), name);
    Trace(L"DeleteAdvancedForm(): %u=DeleteForm(), %ws\n", deleted, name);
    return deleted != FALSE;
}

void AddCustomForm(HWND hDlg) {
    CustomFormParam param = {Config(hDlg), MetricShown(hDlg), {}, {}};
    if (ShowModalDialog(IDD_CUSTOM_FORM, hDlg, CustomFormDlgProc, reinterpret_cast<LPARAM>(&param)) != IDOK) {
        return;
    }
    FORM_INFO_1W form = {};
    form.Flags = FORM_USER;
    form.pName = param.name;
    form.Size = param.size;
    form.ImageableArea = {0, 0, param.size.cx, param.size.cy};
    DWORD error = ERROR_SUCCESS;
    const BOOL added = AddAdvancedForm(Config(hDlg)->PrinterName, form, &error);
    if (added && error == ERROR_SUCCESS) {
        SetConfigForm(Config(hDlg)->hPrinter, &form);
        Send(hDlg, IDC_FORMS_LIST, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(param.name));
        Param(hDlg).flags |= kFormAdded;
        EnableApply(hDlg);
    } else if (error == ERROR_FILE_EXISTS) {
        MessageBoxOf(hDlg, IDS_FORM_NAME_EXISTS, IDS_ADD_FORM, MB_OK | MB_ICONINFORMATION);
    } else {
        Trace(L"DocumentPaperAdvancedDlgProc(): %u=AddAdvancedForm( %u, %u ), err=%u\n", static_cast<unsigned>(added),
              static_cast<unsigned>(param.size.cx), static_cast<unsigned>(param.size.cy), error);
    }
}

void DeleteForm(HWND hDlg) {
    wchar_t name[kFormNameCapacity] = {};
    const int index = SelectedForm(hDlg, name);
    if (index < 0 || !IsConfigForm(Config(hDlg)->hPrinter, name)) {
        return;  // only this printer's own forms
    }
    if (MessageBoxOf(hDlg, IDS_DELETE_FORM_QUESTION, IDS_DELETE_FORM, MB_YESNO | MB_ICONQUESTION) != IDYES) {
        return;
    }
    if (DeleteAdvancedForm(Config(hDlg)->PrinterName, name)) {
        RemoveConfigForm(Config(hDlg)->hPrinter, name);
        Send(hDlg, IDC_FORMS_LIST, LB_DELETESTRING, index);
        EnableControl(hDlg, IDC_DELETE_FORM, false);
        SetDlgItemTextW(hDlg, IDC_FORM_SIZE_TEXT, L"");
        Param(hDlg).flags |= kFormDeleted;
        EnableApply(hDlg);
    }
}

void UpdatePaperAdvancedConfig(HWND hDlg) {
    Trace(L"UpdatePaperAdvancedConfig(hDlg): updating\n");
    const int index = static_cast<int>(Send(hDlg, IDC_MEDIA_TYPE_LIST, CB_GETCURSEL));
    if (index >= kBuiltInMediaEntries) {
        MediaEntryText(hDlg, index, Config(hDlg)->CustomMediaName);
    }
}

void InitPaperAdvanced(HWND hDlg) {
    PaperAdvancedParam& param = Param(hDlg);
    param.canManage = CanManagePrinter(param.config->PrinterName);
    FillMediaCombo(hDlg);
    SelectMedia(hDlg, param.mediaIndex);
    EnableControl(hDlg, IDC_ADD_MEDIA_TYPE, param.canManage);
    EnableControl(hDlg, IDC_EDIT_MEDIA_TYPE, param.canManage);
    CheckRadio(hDlg, IDC_METRIC, IDC_ENGLISH, IDC_METRIC);
    FillFormsList(hDlg);
    SetAdvancedTitle(hDlg, Config(hDlg));
    EnableControl(hDlg, ID_APPLY_NOW, false);
    TranslateDialog(Config(hDlg), hDlg);
}

}  // namespace

INT_PTR CALLBACK DocumentPaperAdvancedDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const auto* param = reinterpret_cast<const PaperAdvancedParam*>(lParam);
        if (param == nullptr || param->config == nullptr) {
            EndDialog(hDlg, IDCANCEL);
            return TRUE;
        }
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        InitPaperAdvanced(hDlg);
        return TRUE;
    }
    if (message != WM_COMMAND || GetWindowLongPtrW(hDlg, DWLP_USER) == 0) {
        return FALSE;
    }
    const int id = LOWORD(wParam);
    const int code = HIWORD(wParam);
    switch (id) {
    case IDC_MEDIA_TYPE_LIST:
        if (code == CBN_SELCHANGE) {
            OnMediaSelected(hDlg);
        }
        return TRUE;
    case IDC_FORMS_LIST:
        if (code == LBN_SELCHANGE) {
            OnFormSelected(hDlg);
        }
        return TRUE;
    case IDC_METRIC:
    case IDC_ENGLISH:
        CheckRadio(hDlg, IDC_METRIC, IDC_ENGLISH, id);
        ShowFormSize(hDlg);
        return TRUE;
    case IDC_ADD_MEDIA_TYPE:
        AddMediaType(hDlg);
        return TRUE;
    case IDC_EDIT_MEDIA_TYPE:
        EditMediaType(hDlg);
        return TRUE;
    case IDC_REMOVE_MEDIA_TYPE:
        RemoveMediaType(hDlg);
        return TRUE;
    case IDC_ADD_CUSTOM_FORM:
        AddCustomForm(hDlg);
        return TRUE;
    case IDC_DELETE_FORM:
        DeleteForm(hDlg);
        return TRUE;
    case IDOK:
        if (IsWindowEnabled(GetDlgItem(hDlg, ID_APPLY_NOW))) {
            UpdatePaperAdvancedConfig(hDlg);
        }
        EndDialog(hDlg, IDOK);
        return TRUE;
    case IDCANCEL:
        EndDialog(hDlg, IDCANCEL);
        return TRUE;
    case ID_APPLY_NOW:
        UpdatePaperAdvancedConfig(hDlg);
        EnableControl(hDlg, ID_APPLY_NOW, false);
        SendMessageW(hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(hDlg, IDOK)), TRUE);
        return TRUE;
    default:
        return FALSE;
    }
}

// --- the custom media type dialog ---

namespace {

void SetUpDotValue(HWND hDlg, int spinId, int editId, int low, int high, DWORD value, bool changeable) {
    HWND spin = GetDlgItem(hDlg, spinId);
    SendMessageW(spin, UDM_SETBUDDY, reinterpret_cast<WPARAM>(GetDlgItem(hDlg, editId)), 0);
    SendMessageW(spin, UDM_SETRANGE32, low, high);
    SendMessageW(spin, UDM_SETBASE, 10, 0);
    UDACCEL acceleration = {1, 1};
    SendMessageW(spin, UDM_SETACCEL, 1, reinterpret_cast<LPARAM>(&acceleration));
    SendMessageW(spin, UDM_SETPOS32, 0, static_cast<LPARAM>(value));
    SetDlgItemInt(hDlg, editId, value, FALSE);
    if (!changeable) {
        Send(hDlg, editId, EM_SETREADONLY, TRUE);
        EnableWindow(spin, FALSE);
    }
}

// The number typed, taken modulo 256.
DWORD DotValue(HWND hDlg, int editId) { return GetDlgItemInt(hDlg, editId, nullptr, FALSE) % 256; }

// A new type needs a name of its own: an empty one would be the key's default value, an
// existing one would lose its dot values. 0 when the name will do, else the message why not.
UINT RefusedNameMessage(const CustomMediaTypeParam& media, const wchar_t* name) {
    DWORD stored = 0;
    if (media.openedBy != IDC_ADD_MEDIA_TYPE) {
        return 0;  // "Edit ..." keeps the name it was opened with
    }
    if (name[0] == L'\0') {
        return IDS_MEDIA_TYPE_NAME_MISSING;
    }
    return GetConfigMediaType(media.config->hPrinter, name, &stored) ? IDS_MEDIA_TYPE_NAME_EXISTS : 0;
}

}  // namespace

INT_PTR CALLBACK CustomMediaTypeDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* media = reinterpret_cast<CustomMediaTypeParam*>(GetWindowLongPtrW(hDlg, DWLP_USER));
    if (message == WM_INITDIALOG) {
        media = reinterpret_cast<CustomMediaTypeParam*>(lParam);
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        const bool adding = media->openedBy == IDC_ADD_MEDIA_TYPE;
        const bool changeable = adding || media->changeable;
        SetWindowTextW(hDlg, GetLocalString(media->config, adding ? IDS_ADD_TITLE : IDS_EDIT_TITLE));
        SendDlgItemMessageW(hDlg, IDC_MEDIA_NAME, EM_LIMITTEXT, kTextCapacity - 1, 0);
        SetDlgItemTextW(hDlg, IDC_MEDIA_NAME, media->name);
        if (!adding) {
            SendDlgItemMessageW(hDlg, IDC_MEDIA_NAME, EM_SETREADONLY, TRUE, 0);
        }
        SetUpDotValue(hDlg, IDC_HIGHEST_DOT_SPIN, IDC_HIGHEST_DOT, 2, 26, media->highest, changeable);
        SetUpDotValue(hDlg, IDC_LOWEST_DOT_SPIN, IDC_LOWEST_DOT, 0, 24, media->lowest, changeable);
        TranslateDialog(media->config, hDlg);
        return TRUE;
    }
    if (message != WM_COMMAND || media == nullptr) {
        return FALSE;
    }
    switch (LOWORD(wParam)) {
    case IDOK: {
        const DWORD highest = DotValue(hDlg, IDC_HIGHEST_DOT);
        if (highest < 2 || highest > 26) {
            return TRUE;  // stays open
        }
        const DWORD lowest = DotValue(hDlg, IDC_LOWEST_DOT);
        if (lowest > 24 || static_cast<int>(highest) - static_cast<int>(lowest) < 2) {
            return TRUE;
        }
        wchar_t name[kTextCapacity] = {};
        GetDlgItemTextW(hDlg, IDC_MEDIA_NAME, name, kTextCapacity);
        if (const UINT refusal = RefusedNameMessage(*media, name)) {
            // The focus the message box gives back when it closes: the name.
            SendMessageW(hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(hDlg, IDC_MEDIA_NAME)), TRUE);
            ShowLocalMessage(hDlg, media->config, refusal, IDS_ADD_TITLE, MB_OK | MB_ICONINFORMATION);
            return TRUE;  // stays open on the name
        }
        media->highest = highest;
        media->lowest = lowest;
        CopyWide(media->name, kTextCapacity, name);
        EndDialog(hDlg, IDOK);
        return TRUE;
    }
    case IDCANCEL:
        EndDialog(hDlg, IDCANCEL);
        return TRUE;
    case IDC_TEST_PATTERN:
        SendPrinterCommand(media->config->PrinterName, kPjlMediaForceCommand, kPjlMediaForceCommandLength);
        return TRUE;
    default:
        return FALSE;
    }
}

// --- the custom form dialog ---

namespace {

// A length typed in the dialog's unit, in micrometres; 0 when it is not a usable length.
int32_t FormLength(HWND hDlg, int editId, bool metric) {
    wchar_t text[32] = {};
    GetDlgItemTextW(hDlg, editId, text, 32);
    wchar_t* end = nullptr;
    const double value = wcstod(text, &end);
    if (end == text || value <= 0.0) {
        return 0;
    }
    const double micrometres = value * (metric ? 10000.0 : 25400.0);
    return micrometres >= 1.0 && micrometres <= kMaxFormMicrometres ? static_cast<int32_t>(micrometres) : 0;
}

}  // namespace

INT_PTR CALLBACK CustomFormDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* form = reinterpret_cast<CustomFormParam*>(GetWindowLongPtrW(hDlg, DWLP_USER));
    if (message == WM_INITDIALOG) {
        form = reinterpret_cast<CustomFormParam*>(lParam);
        SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
        SendDlgItemMessageW(hDlg, IDC_FORM_NAME, EM_LIMITTEXT, kFormNameCapacity - 1, 0);
        CheckRadio(hDlg, IDC_METRIC, IDC_ENGLISH, form->metric ? IDC_METRIC : IDC_ENGLISH);
        if (form->config != nullptr) {
            TranslateDialog(form->config, hDlg);
        }
        return TRUE;
    }
    if (message != WM_COMMAND || form == nullptr) {
        return FALSE;
    }
    switch (LOWORD(wParam)) {
    case IDC_METRIC:
    case IDC_ENGLISH:
        CheckRadio(hDlg, IDC_METRIC, IDC_ENGLISH, LOWORD(wParam));
        return TRUE;
    case IDOK: {
        const bool metric = IsChecked(hDlg, IDC_METRIC);
        GetDlgItemTextW(hDlg, IDC_FORM_NAME, form->name, kFormNameCapacity);
        const int32_t width = FormLength(hDlg, IDC_FORM_WIDTH, metric);
        const int32_t height = FormLength(hDlg, IDC_FORM_HEIGHT, metric);
        const int invalid = form->name[0] == L'\0' ? IDC_FORM_NAME
                            : width == 0           ? IDC_FORM_WIDTH
                            : height == 0          ? IDC_FORM_HEIGHT
                                                   : 0;
        if (invalid != 0) {
            MessageBeep(MB_ICONWARNING);
            SendMessageW(hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(hDlg, invalid)), TRUE);
            return TRUE;  // stays open on the field to correct
        }
        form->metric = metric;
        form->size = {width, height};
        EndDialog(hDlg, IDOK);
        return TRUE;
    }
    case IDCANCEL:
        EndDialog(hDlg, IDCANCEL);
        return TRUE;
    default:
        return FALSE;
    }
}
