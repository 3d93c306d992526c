#include "tools/host/option_tree_page.h"

#include <commctrl.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <cwctype>

namespace ozdkhost {

namespace {

// Layout in dialog units.
constexpr short kMargin = 7;
constexpr short kRowHeight = 15;
constexpr short kLabelWidth = 96;
constexpr short kIndentPerLevel = 8;
constexpr short kGap = 4;
constexpr short kControlWidth = 116;
constexpr short kEditWidth = 60;
constexpr short kNumberWidth = 40;
constexpr short kArrowsWidth = 10;
constexpr short kColumnGap = 14;
constexpr DWORD kRowsPerColumn = 12;
constexpr DWORD kMostColumns = 3;

constexpr WORD kFirstRowId = 1000;  // each row owns four identifiers from here on

// Edit buffers larger than this are not believed.
constexpr ULONG_PTR kLargestEditBuffer = 4096;

const wchar_t* ReasonName(WORD reason) {
    switch (reason) {
    case CPSUICB_REASON_SEL_CHANGED: return L"CPSUICB_REASON_SEL_CHANGED";
    case CPSUICB_REASON_PUSHBUTTON: return L"CPSUICB_REASON_PUSHBUTTON";
    case CPSUICB_REASON_APPLYNOW: return L"CPSUICB_REASON_APPLYNOW";
    case CPSUICB_REASON_SETACTIVE: return L"CPSUICB_REASON_SETACTIVE";
    case CPSUICB_REASON_KILLACTIVE: return L"CPSUICB_REASON_KILLACTIVE";
    default: return L"CPSUICB_REASON_?";
    }
}

const wchar_t* ActionName(LONG action) {
    switch (action) {
    case CPSUICB_ACTION_NONE: return L"CPSUICB_ACTION_NONE";
    case CPSUICB_ACTION_OPTIF_CHANGED: return L"CPSUICB_ACTION_OPTIF_CHANGED";
    case CPSUICB_ACTION_REINIT_ITEMS: return L"CPSUICB_ACTION_REINIT_ITEMS";
    case CPSUICB_ACTION_NO_APPLY_EXIT: return L"CPSUICB_ACTION_NO_APPLY_EXIT";
    case CPSUICB_ACTION_ITEMS_APPLIED: return L"CPSUICB_ACTION_ITEMS_APPLIED";
    default: return L"(unknown action)";
    }
}

const OPTPARAM* Param(const OPTITEM& item, WORD index) {
    const OPTTYPE* type = item.pOptType;
    if (type == nullptr || type->pOptParam == nullptr || index >= type->Count) {
        return nullptr;
    }
    return &type->pOptParam[index];
}

// The edit buffer's size in characters, terminator included: the IconID of parameter 1.
// 0 when the item does not say or says something unbelievable.
size_t EditCapacity(const OPTITEM& item) {
    const OPTPARAM* sizeParam = Param(item, 1);
    if (sizeParam == nullptr || sizeParam->IconID == 0 || sizeParam->IconID > kLargestEditBuffer) {
        return 0;
    }
    return static_cast<size_t>(sizeParam->IconID);
}

void NumberRange(const OPTITEM& item, LONG* low, LONG* high) {
    const OPTPARAM* range = Param(item, 1);
    *low = range != nullptr ? static_cast<LONG>(range->IconID) : 0;
    *high = range != nullptr ? static_cast<LONG>(range->lParam) : 32767;
    if (*high < *low) {
        std::swap(*low, *high);
    }
}

bool ParseNumber(const std::wstring& text, LONG* value) {
    if (text.empty()) {
        return false;
    }
    wchar_t* end = nullptr;
    errno = 0;
    const long number = std::wcstol(text.c_str(), &end, 10);
    while (end != nullptr && std::iswspace(*end)) {
        ++end;
    }
    if (end == text.c_str() || end == nullptr || *end != L'\0' || errno == ERANGE) {
        return false;
    }
    *value = static_cast<LONG>(number);
    return true;
}

}  // namespace

OptionTreePage::OptionTreePage(CollectedItems& items, HostLog* log, WORD callbackFlags)
    : items_(items), log_(log != nullptr ? log : &unloggedLines_), callbackFlags_(callbackFlags) {}

OptionTreePage::~OptionTreePage() {
    if (headingFont_ != nullptr) {
        DeleteObject(headingFont_);
    }
}

OPTITEM* OptionTreePage::Item(int index) const {
    if (items_.items == nullptr || index < 0 || static_cast<DWORD>(index) >= items_.count) {
        return nullptr;
    }
    return &items_.items[index];
}

std::wstring OptionTreePage::Text(const wchar_t* text) const {
    if (text == nullptr) {
        return std::wstring();
    }
    if (IS_INTRESOURCE(text)) {
        // A string-table number of the plug-in.
        const UINT id = static_cast<UINT>(reinterpret_cast<ULONG_PTR>(text));
        const wchar_t* resource = nullptr;
        const int length = LoadStringW(static_cast<HMODULE>(items_.param.hModule), id,
                                       reinterpret_cast<wchar_t*>(&resource), 0);
        return length > 0 && resource != nullptr ? std::wstring(resource, static_cast<size_t>(length))
                                                 : L"#" + std::to_wstring(id);
    }
    return std::wstring(text, wcsnlen(text, 4096));
}

std::wstring OptionTreePage::ItemName(int index) const {
    const OPTITEM* item = Item(index);
    return item != nullptr ? Text(item->pName) : std::wstring();
}

std::wstring OptionTreePage::WindowText(HWND window) const {
    if (window == nullptr) {
        return std::wstring();
    }
    const int length = GetWindowTextLengthW(window);
    std::wstring text(static_cast<size_t>(length > 0 ? length : 0) + 1, L'\0');
    const int copied = GetWindowTextW(window, &text[0], static_cast<int>(text.size()));
    text.resize(static_cast<size_t>(copied > 0 ? copied : 0));
    return text;
}

void OptionTreePage::SetTextIfDifferent(HWND window, const std::wstring& text) {
    if (window != nullptr && WindowText(window) != text) {
        SetWindowTextW(window, text.c_str());
    }
}

// --- the page's template ---

void OptionTreePage::BuildRows() {
    rows_.clear();
    const DWORD count = std::min(items_.items != nullptr ? items_.count : 0, kMostRows);
    if (items_.count > count) {
        log_->Add(L"host: %s shows the first %lu of %lu items", kTitle, count, items_.count);
    }
    for (DWORD i = 0; i < count; ++i) {
        const OPTITEM& item = items_.items[i];
        Row row;
        row.item = static_cast<int>(i);
        const WORD base = static_cast<WORD>(kFirstRowId + 4 * i);
        row.labelId = base;
        row.controlId = static_cast<WORD>(base + 1);
        row.arrowsId = static_cast<WORD>(base + 2);
        row.unitId = static_cast<WORD>(base + 3);
        if (item.pOptType == nullptr) {
            row.kind = RowKind::Heading;
        } else {
            switch (item.pOptType->Type) {
            case TVOT_LISTBOX:
            case TVOT_COMBOBOX:
                row.kind = RowKind::List;
                break;
            case TVOT_EDITBOX:
                row.kind = RowKind::Edit;
                break;
            case TVOT_UDARROW:
                row.kind = RowKind::UpDown;
                break;
            case TVOT_PUSHBUTTON:
                row.kind = RowKind::PushButton;
                break;
            default:
                row.kind = RowKind::Unsupported;
                break;
            }
        }
        rows_.push_back(row);
    }
}

HPROPSHEETPAGE OptionTreePage::CreatePage() {
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES | ICC_UPDOWN_CLASS};
    InitCommonControlsEx(&controls);
    BuildRows();

    const DWORD count = static_cast<DWORD>(rows_.size());
    DWORD columns = (count + kRowsPerColumn - 1) / kRowsPerColumn;
    columns = std::max<DWORD>(1, std::min(columns, kMostColumns));
    const DWORD rowsPerColumn = std::max<DWORD>(1, (count + columns - 1) / columns);
    const short columnWidth = kLabelWidth + kGap + kControlWidth;
    const short width = static_cast<short>(2 * kMargin + columns * columnWidth + (columns - 1) * kColumnGap);
    const short height =
        static_cast<short>(std::max<int>(60, 2 * kMargin + static_cast<int>(rowsPerColumn) * kRowHeight));

    auto dialog = std::make_unique<DialogTemplate>(kTitle, width, height);
    for (DWORD i = 0; i < count; ++i) {
        const Row& row = rows_[i];
        const OPTITEM& item = items_.items[row.item];
        const short columnX = static_cast<short>(kMargin + (i / rowsPerColumn) * (columnWidth + kColumnGap));
        const short y = static_cast<short>(kMargin + (i % rowsPerColumn) * kRowHeight);
        const int level = std::min<int>(std::max<int>(item.Level, 1), 4);
        const short indent = static_cast<short>((level - 1) * kIndentPerLevel);
        const short labelX = static_cast<short>(columnX + indent);
        const short labelWidth = static_cast<short>(kLabelWidth - indent);
        const short controlX = static_cast<short>(columnX + kLabelWidth + kGap);
        // Labels come right before their control: screen readers name a control by the
        // text before it. Generated rows carry no access keys.
        const DWORD labelStyle = SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS;
        const DWORD controlStyle = WS_TABSTOP | WS_GROUP;
        switch (row.kind) {
        case RowKind::Heading:
            dialog->AddControl(L"STATIC", L"", row.labelId, labelX, static_cast<short>(y + 2),
                               static_cast<short>(columnWidth - indent), 9, labelStyle);
            break;
        case RowKind::List: {
            const WORD entries = item.pOptType->Count;
            const short dropped = static_cast<short>(std::min<int>(12 + 10 * std::max<int>(entries, 1), 140));
            dialog->AddControl(L"STATIC", L"", row.labelId, labelX, static_cast<short>(y + 2), labelWidth, 9,
                               labelStyle);
            dialog->AddControl(L"COMBOBOX", L"", row.controlId, controlX, y, kControlWidth, dropped,
                               CBS_DROPDOWNLIST | WS_VSCROLL | controlStyle);
            break;
        }
        case RowKind::Edit:
            dialog->AddControl(L"STATIC", L"", row.labelId, labelX, static_cast<short>(y + 2), labelWidth, 9,
                               labelStyle);
            dialog->AddControl(L"EDIT", L"", row.controlId, controlX, y, kEditWidth, 12,
                               ES_AUTOHSCROLL | WS_BORDER | controlStyle);
            dialog->AddControl(L"STATIC", L"", row.unitId, static_cast<short>(controlX + kEditWidth + kGap),
                               static_cast<short>(y + 2), static_cast<short>(kControlWidth - kEditWidth - kGap), 9,
                               labelStyle);
            break;
        case RowKind::UpDown: {
            LONG low = 0;
            LONG high = 0;
            NumberRange(item, &low, &high);
            dialog->AddControl(L"STATIC", L"", row.labelId, labelX, static_cast<short>(y + 2), labelWidth, 9,
                               labelStyle);
            dialog->AddControl(L"EDIT", L"", row.controlId, controlX, y, kNumberWidth, 12,
                               ES_AUTOHSCROLL | WS_BORDER | (low >= 0 ? ES_NUMBER : 0) | controlStyle);
            dialog->AddControl(UPDOWN_CLASSW, L"", row.arrowsId, static_cast<short>(controlX + kNumberWidth), y,
                               kArrowsWidth, 12,
                               UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS | UDS_AUTOBUDDY | UDS_NOTHOUSANDS);
            dialog->AddControl(L"STATIC", L"", row.unitId, static_cast<short>(controlX + kNumberWidth + kGap),
                               static_cast<short>(y + 2), static_cast<short>(kControlWidth - kNumberWidth - kGap),
                               9, labelStyle);
            break;
        }
        case RowKind::PushButton:
            dialog->AddControl(L"BUTTON", L"", row.controlId, labelX, static_cast<short>(y - 1),
                               static_cast<short>(kLabelWidth - indent), 14, BS_PUSHBUTTON | controlStyle);
            break;
        case RowKind::Unsupported:
            dialog->AddControl(L"STATIC", L"", row.labelId, labelX, static_cast<short>(y + 2), labelWidth, 9,
                               labelStyle);
            dialog->AddControl(L"STATIC", L"(not shown by this host)", row.unitId, controlX,
                               static_cast<short>(y + 2), kControlWidth, 9, labelStyle);
            break;
        }
    }

    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof(page);
    page.dwFlags = PSP_DLGINDIRECT | PSP_USETITLE;
    page.pResource = dialog->get();
    page.pszTitle = kTitle;
    page.pfnDlgProc = &OptionTreePage::DialogProc;
    page.lParam = reinterpret_cast<LPARAM>(this);
    templates_.push_back(std::move(dialog));
    HPROPSHEETPAGE handle = CreatePropertySheetPageW(&page);
    log_->Add(L"host: page \"%s\" with %u row(s) for %lu item(s)%s", kTitle, count, items_.count,
              handle == nullptr ? L" could not be created" : L"");
    return handle;
}

// --- the dialog ---

INT_PTR CALLBACK OptionTreePage::DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    try {
        OptionTreePage* self = nullptr;
        if (message == WM_INITDIALOG) {
            const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
            self = page != nullptr ? reinterpret_cast<OptionTreePage*>(page->lParam) : nullptr;
            SetWindowLongPtrW(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(self));
            if (self != nullptr) {
                self->dialog_ = dialog;
            }
        } else {
            self = reinterpret_cast<OptionTreePage*>(GetWindowLongPtrW(dialog, DWLP_USER));
        }
        return self != nullptr ? self->OnMessage(message, wParam, lParam) : FALSE;
    } catch (...) {
        return FALSE;
    }
}

INT_PTR OptionTreePage::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        Populate();
        return TRUE;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        return TRUE;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header == nullptr || header->hwndFrom != GetParent(dialog_)) {
            return FALSE;
        }
        SetWindowLongPtrW(dialog_, DWLP_MSGRESULT, OnNotify(*header));
        return TRUE;
    }
    case WM_DESTROY:
        dialog_ = nullptr;
        if (headingFont_ != nullptr) {
            DeleteObject(headingFont_);
            headingFont_ = nullptr;
        }
        return FALSE;
    default:
        return FALSE;
    }
}

void OptionTreePage::Populate() {
    ++updating_;
    const HFONT dialogFont = reinterpret_cast<HFONT>(SendMessageW(dialog_, WM_GETFONT, 0, 0));
    LOGFONTW bold = {};
    if (headingFont_ == nullptr && dialogFont != nullptr && GetObjectW(dialogFont, sizeof(bold), &bold) != 0) {
        bold.lfWeight = FW_BOLD;
        headingFont_ = CreateFontIndirectW(&bold);
    }
    for (const Row& row : rows_) {
        const OPTITEM& item = items_.items[row.item];
        const HWND control = GetDlgItem(dialog_, row.controlId);
        switch (row.kind) {
        case RowKind::Heading:
            if (headingFont_ != nullptr) {
                SendMessageW(GetDlgItem(dialog_, row.labelId), WM_SETFONT, reinterpret_cast<WPARAM>(headingFont_),
                             FALSE);
            }
            break;
        case RowKind::List: {
            // Entries keep their parameter's index: hidden parameters are left out.
            const HDC dc = GetDC(control);
            const HGDIOBJ previous = dc != nullptr && dialogFont != nullptr ? SelectObject(dc, dialogFont) : nullptr;
            LONG widest = 0;
            for (WORD p = 0; p < item.pOptType->Count && item.pOptType->pOptParam != nullptr; ++p) {
                const OPTPARAM& param = item.pOptType->pOptParam[p];
                if ((param.Flags & OPTPF_HIDE) != 0) {
                    continue;
                }
                const std::wstring text = Text(param.pData);
                const LRESULT entry = SendMessageW(control, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
                if (entry >= 0) {
                    SendMessageW(control, CB_SETITEMDATA, static_cast<WPARAM>(entry), p);
                }
                SIZE size = {};
                if (dc != nullptr && GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size)) {
                    widest = std::max(widest, size.cx);
                }
            }
            if (dc != nullptr) {
                if (previous != nullptr) {
                    SelectObject(dc, previous);
                }
                ReleaseDC(control, dc);
            }
            RECT bounds = {};
            GetWindowRect(control, &bounds);
            const LONG wanted = widest + 2 * GetSystemMetrics(SM_CXVSCROLL);
            if (wanted > bounds.right - bounds.left) {
                SendMessageW(control, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(wanted), 0);
            }
            break;
        }
        case RowKind::Edit: {
            const size_t capacity = EditCapacity(item);
            if (capacity == 0 || item.pSel == nullptr) {
                // Nowhere to put a change safely: shown, not editable.
                SendMessageW(control, EM_SETREADONLY, TRUE, 0);
                log_->Add(L"host: \"%s\" has no edit buffer of known size, shown read-only", ItemName(row.item).c_str());
            } else {
                SendMessageW(control, EM_SETLIMITTEXT, capacity - 1, 0);
            }
            const OPTPARAM* unit = Param(item, 0);
            SetDlgItemTextW(dialog_, row.unitId, unit != nullptr ? Text(unit->pData).c_str() : L"");
            break;
        }
        case RowKind::UpDown: {
            LONG low = 0;
            LONG high = 0;
            NumberRange(item, &low, &high);
            const HWND arrows = GetDlgItem(dialog_, row.arrowsId);
            SendMessageW(arrows, UDM_SETBUDDY, reinterpret_cast<WPARAM>(control), 0);
            SendMessageW(arrows, UDM_SETRANGE32, static_cast<WPARAM>(low), static_cast<LPARAM>(high));
            const OPTPARAM* unit = Param(item, 0);
            SetDlgItemTextW(dialog_, row.unitId, unit != nullptr ? Text(unit->pData).c_str() : L"");
            break;
        }
        case RowKind::PushButton:
        case RowKind::Unsupported:
            break;
        }
    }
    --updating_;
    ShowItems(true, false);
}

// Shows one item in its row: name, value, enabled and hidden state.
void OptionTreePage::ShowItem(const Row& row) {
    const OPTITEM* item = Item(row.item);
    if (item == nullptr || dialog_ == nullptr) {
        return;
    }
    const HWND label = GetDlgItem(dialog_, row.labelId);
    const HWND control = GetDlgItem(dialog_, row.controlId);
    std::wstring name = Text(item->pName);
    switch (row.kind) {
    case RowKind::Heading:
    case RowKind::Unsupported:
        SetTextIfDifferent(label, name);
        break;
    case RowKind::List: {
        SetTextIfDifferent(label, name);
        LRESULT wanted = CB_ERR;
        const LRESULT entries = SendMessageW(control, CB_GETCOUNT, 0, 0);
        for (LRESULT entry = 0; entry < entries; ++entry) {
            if (SendMessageW(control, CB_GETITEMDATA, static_cast<WPARAM>(entry), 0) == item->Sel) {
                wanted = entry;
                break;
            }
        }
        if (SendMessageW(control, CB_GETCURSEL, 0, 0) != wanted) {
            SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(wanted), 0);
        }
        break;
    }
    case RowKind::Edit: {
        SetTextIfDifferent(label, name);
        const size_t capacity = EditCapacity(*item);
        const wchar_t* text = item->pSel;
        SetTextIfDifferent(control, text != nullptr ? std::wstring(text, wcsnlen(text, capacity != 0 ? capacity
                                                                                            : kLargestEditBuffer))
                                                    : std::wstring());
        break;
    }
    case RowKind::UpDown:
        SetTextIfDifferent(label, name);
        SetTextIfDifferent(control, std::to_wstring(item->Sel));
        break;
    case RowKind::PushButton:
        if ((item->pOptType->Style & OTS_PUSH_NO_DOT_DOT_DOT) == 0) {
            name += L"...";
        }
        SetTextIfDifferent(control, name);
        break;
    }

    const bool hidden = (item->Flags & OPTIF_HIDE) != 0;
    const bool disabled = (item->Flags & OPTIF_DISABLED) != 0 ||
                          (item->pOptType != nullptr && (item->pOptType->Flags & OPTTF_TYPE_DISABLED) != 0);
    for (WORD id : {row.labelId, row.controlId, row.arrowsId, row.unitId}) {
        const HWND window = GetDlgItem(dialog_, id);
        if (window == nullptr) {
            continue;
        }
        if (row.kind != RowKind::Heading) {
            EnableWindow(window, disabled ? FALSE : TRUE);
        }
        ShowWindow(window, hidden ? SW_HIDE : SW_SHOWNA);
    }
}

// Shows every item again, or only those the plug-in marked OPTIF_CHANGED; with
// `clearChanged` the marks are taken off afterwards.
void OptionTreePage::ShowItems(bool everyItem, bool clearChanged) {
    if (dialog_ == nullptr) {
        return;
    }
    ++updating_;
    unsigned shown = 0;
    unsigned marked = 0;
    for (const Row& row : rows_) {
        OPTITEM* item = Item(row.item);
        if (item == nullptr) {
            continue;
        }
        const bool changed = (item->Flags & OPTIF_CHANGED) != 0;
        marked += changed ? 1 : 0;
        if (everyItem || changed) {
            ShowItem(row);
            ++shown;
        }
    }
    if (clearChanged) {
        for (DWORD i = 0; i < items_.count; ++i) {
            items_.items[i].Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        }
        if (shown != 0) {
            log_->Add(L"host: %s shows %u item(s) again, %u marked OPTIF_CHANGED", kTitle, shown, marked);
        }
    }
    --updating_;
}

// --- what the person does ---

const OptionTreePage::Row* OptionTreePage::RowOfControl(WORD id) const {
    if (id < kFirstRowId) {
        return nullptr;
    }
    const size_t index = (id - kFirstRowId) / 4;
    return index < rows_.size() ? &rows_[index] : nullptr;
}

void OptionTreePage::OnCommand(WORD id, WORD code, HWND) {
    const Row* row = RowOfControl(id);
    if (row == nullptr || updating_ != 0 || inCallback_ != 0 || id != row->controlId) {
        return;
    }
    switch (row->kind) {
    case RowKind::List:
        if (code == CBN_SELCHANGE) {
            OnListChanged(*row);
        }
        break;
    case RowKind::Edit:
        if (code == EN_CHANGE) {
            OnTextChanged(*row);
        }
        break;
    case RowKind::UpDown:
        if (code == EN_CHANGE) {
            OnNumberChanged(*row);
        } else if (code == EN_KILLFOCUS) {
            // A number left half typed or out of range goes back to the item's value.
            ++updating_;
            ShowItem(*row);
            --updating_;
        }
        break;
    case RowKind::PushButton:
        if (code == BN_CLICKED) {
            OnPushButton(*row);
        }
        break;
    default:
        break;
    }
}

void OptionTreePage::OnListChanged(const Row& row) {
    OPTITEM* item = Item(row.item);
    const HWND control = GetDlgItem(dialog_, row.controlId);
    const LRESULT entry = SendMessageW(control, CB_GETCURSEL, 0, 0);
    if (item == nullptr || entry == CB_ERR) {
        return;
    }
    const LONG selection = static_cast<LONG>(SendMessageW(control, CB_GETITEMDATA, static_cast<WPARAM>(entry), 0));
    if (selection == item->Sel) {
        return;
    }
    const LONG old = item->Sel;
    item->Sel = selection;
    PropSheet_Changed(GetParent(dialog_), dialog_);
    if ((item->Flags & OPTIF_CALLBACK) != 0) {
        CallItemCallback(CPSUICB_REASON_SEL_CHANGED, row.item, old, nullptr);
    } else {
        log_->Add(L"host: \"%s\" set to entry %ld (the item asks for no callback)", ItemName(row.item).c_str(),
                  static_cast<long>(selection));
    }
}

void OptionTreePage::OnTextChanged(const Row& row) {
    OPTITEM* item = Item(row.item);
    if (item == nullptr || item->pSel == nullptr) {
        return;
    }
    const size_t capacity = EditCapacity(*item);
    if (capacity == 0) {
        return;
    }
    std::wstring text = WindowText(GetDlgItem(dialog_, row.controlId));
    if (text.size() > capacity - 1) {
        text.resize(capacity - 1);
    }
    const std::wstring old(item->pSel, wcsnlen(item->pSel, capacity));
    if (text == old) {
        return;
    }
    std::copy(text.begin(), text.end(), item->pSel);
    item->pSel[text.size()] = L'\0';
    PropSheet_Changed(GetParent(dialog_), dialog_);
    if ((item->Flags & OPTIF_CALLBACK) != 0) {
        CallItemCallback(CPSUICB_REASON_SEL_CHANGED, row.item, 0, old.c_str());
    } else {
        log_->Add(L"host: \"%s\" set to \"%s\" (the item asks for no callback)", ItemName(row.item).c_str(),
                  text.c_str());
    }
}

void OptionTreePage::OnNumberChanged(const Row& row) {
    OPTITEM* item = Item(row.item);
    if (item == nullptr) {
        return;
    }
    LONG low = 0;
    LONG high = 0;
    NumberRange(*item, &low, &high);
    LONG number = 0;
    if (!ParseNumber(WindowText(GetDlgItem(dialog_, row.controlId)), &number) || number < low || number > high ||
        number == item->Sel) {
        return;  // half typed, out of range or unchanged: nothing to report yet
    }
    const LONG old = item->Sel;
    item->Sel = number;
    PropSheet_Changed(GetParent(dialog_), dialog_);
    if ((item->Flags & OPTIF_CALLBACK) != 0) {
        CallItemCallback(CPSUICB_REASON_SEL_CHANGED, row.item, old, nullptr);
    } else {
        log_->Add(L"host: \"%s\" set to %ld (the item asks for no callback)", ItemName(row.item).c_str(),
                  static_cast<long>(number));
    }
}

void OptionTreePage::OnPushButton(const Row& row) {
    OPTITEM* item = Item(row.item);
    const OPTPARAM* param = item != nullptr ? Param(*item, 0) : nullptr;
    if (param == nullptr) {
        log_->Add(L"host: push button \"%s\" has no parameter", ItemName(row.item).c_str());
        return;
    }
    if (param->Style != PUSHBUTTON_TYPE_CALLBACK || param->pData == nullptr) {
        log_->Add(L"host: push button \"%s\" of kind %u is not offered by this host", ItemName(row.item).c_str(),
                  static_cast<unsigned>(param->Style));
        return;
    }
    const auto callback = reinterpret_cast<_CPSUICALLBACK>(reinterpret_cast<void*>(param->pData));
    CPSUICBPARAM block = {};
    block.cbSize = sizeof(block);
    block.Reason = CPSUICB_REASON_PUSHBUTTON;
    block.hDlg = dialog_;
    block.pOptItem = items_.items;
    block.cOptItem = static_cast<WORD>(std::min<DWORD>(items_.count, 0xFFFF));
    block.Flags = callbackFlags_;
    block.pCurItem = item;
    block.OldSel = item->Sel;
    block.UserData = item->UserData != 0 ? item->UserData : reinterpret_cast<ULONG_PTR>(items_.param.pOEMUserData);
    ++inCallback_;
    const LONG answer = callback(&block);
    --inCallback_;
    log_->Add(L"plug-in: push button \"%s\" callback(%s) = %ld %s", ItemName(row.item).c_str(),
              ReasonName(block.Reason), static_cast<long>(answer), ActionName(answer));
    callbacks_.push_back(ItemCallbackRecord{block.Reason, row.item, true, answer});
    ActOnAnswer(answer);
}

LONG OptionTreePage::CallItemCallback(WORD reason, int index, LONG oldSel, const wchar_t* oldText) {
    OPTITEM* item = Item(index);
    if (items_.param.OEMCUIPCallback == nullptr || item == nullptr) {
        log_->Add(L"host: no item callback for %s", ReasonName(reason));
        return CPSUICB_ACTION_NONE;
    }
    CPSUICBPARAM block = {};
    block.cbSize = sizeof(block);
    block.Reason = reason;
    block.hDlg = dialog_;
    block.pOptItem = items_.items;
    block.cOptItem = static_cast<WORD>(std::min<DWORD>(items_.count, 0xFFFF));
    block.Flags = callbackFlags_;
    block.pCurItem = item;
    if (oldText != nullptr) {
        block.pOldSel = const_cast<wchar_t*>(oldText);
    } else {
        block.OldSel = oldSel;
    }
    block.UserData = item->UserData != 0 ? item->UserData : reinterpret_cast<ULONG_PTR>(items_.param.pOEMUserData);

    std::wstring what;
    if (reason == CPSUICB_REASON_SEL_CHANGED) {
        what = L", item " + std::to_wstring(item->UserItemID) + L" \"" + ItemName(index) + L"\" ";
        if (oldText != nullptr) {
            const size_t capacity = EditCapacity(*item);
            what += L"\"" + std::wstring(oldText) + L"\" -> \"" +
                    std::wstring(item->pSel, wcsnlen(item->pSel, capacity != 0 ? capacity : kLargestEditBuffer)) +
                    L"\"";
        } else {
            what += std::to_wstring(oldSel) + L" -> " + std::to_wstring(item->Sel);
        }
    }
    ++inCallback_;
    const LONG answer = items_.param.OEMCUIPCallback(&block, &items_.param);
    --inCallback_;
    log_->Add(L"plug-in: OEMCUIPCallback(%s%s) = %ld %s", ReasonName(reason), what.c_str(), static_cast<long>(answer),
              ActionName(answer));
    callbacks_.push_back(ItemCallbackRecord{reason, index, false, answer});
    ActOnAnswer(answer);
    return answer;
}

void OptionTreePage::ActOnAnswer(LONG answer) {
    switch (answer) {
    case CPSUICB_ACTION_OPTIF_CHANGED:
    case CPSUICB_ACTION_REINIT_ITEMS:
        ShowItems(true, true);
        break;
    case CPSUICB_ACTION_ITEMS_APPLIED:
        log_->Add(L"host: the plug-in applied its items");
        ShowItems(false, true);
        break;
    default:
        ShowItems(false, true);
        break;
    }
}

LRESULT OptionTreePage::OnNotify(const NMHDR& header) {
    switch (header.code) {
    case PSN_SETACTIVE:
        CallItemCallback(CPSUICB_REASON_SETACTIVE, 0, 0, nullptr);
        return 0;
    case PSN_KILLACTIVE:
        CallItemCallback(CPSUICB_REASON_KILLACTIVE, 0, 0, nullptr);
        return FALSE;
    case PSN_APPLY: {
        // All valid changes are to be applied now: OldSel -1.
        const LONG answer = CallItemCallback(CPSUICB_REASON_APPLYNOW, 0, -1, nullptr);
        return answer == CPSUICB_ACTION_NO_APPLY_EXIT ? PSNRET_INVALID_NOCHANGEPAGE : PSNRET_NOERROR;
    }
    default:
        return 0;
    }
}

// --- driving the page ---

int OptionTreePage::FindItem(BYTE userItemId) const {
    for (DWORD i = 0; items_.items != nullptr && i < items_.count; ++i) {
        if (items_.items[i].UserItemID == userItemId && items_.items[i].pOptType != nullptr) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

const OptionTreePage::Row* OptionTreePage::RowOfItem(BYTE userItemId) const {
    const int index = FindItem(userItemId);
    for (const Row& row : rows_) {
        if (row.item == index) {
            return &row;
        }
    }
    return nullptr;
}

HWND OptionTreePage::Control(BYTE userItemId) const {
    const Row* row = RowOfItem(userItemId);
    return row != nullptr && dialog_ != nullptr ? GetDlgItem(dialog_, row->controlId) : nullptr;
}

HWND OptionTreePage::Label(BYTE userItemId) const {
    const Row* row = RowOfItem(userItemId);
    return row != nullptr && dialog_ != nullptr ? GetDlgItem(dialog_, row->labelId) : nullptr;
}

std::wstring OptionTreePage::ControlText(BYTE userItemId) const {
    const Row* row = RowOfItem(userItemId);
    const HWND control = Control(userItemId);
    if (row == nullptr || control == nullptr) {
        return std::wstring();
    }
    if (row->kind == RowKind::List) {
        const LRESULT entry = SendMessageW(control, CB_GETCURSEL, 0, 0);
        if (entry == CB_ERR) {
            return std::wstring();
        }
        const LRESULT length = SendMessageW(control, CB_GETLBTEXTLEN, static_cast<WPARAM>(entry), 0);
        std::wstring text(static_cast<size_t>(length > 0 ? length : 0) + 1, L'\0');
        SendMessageW(control, CB_GETLBTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(&text[0]));
        text.resize(wcslen(text.c_str()));
        return text;
    }
    return WindowText(control);
}

bool OptionTreePage::ControlUsable(BYTE userItemId) const {
    const HWND control = Control(userItemId);
    return control != nullptr && IsWindowEnabled(control) && IsWindowVisible(control);
}

LONG OptionTreePage::FindEntry(BYTE userItemId, const std::wstring& text) const {
    const Row* row = RowOfItem(userItemId);
    const HWND control = Control(userItemId);
    if (row == nullptr || row->kind != RowKind::List || control == nullptr) {
        return -1;
    }
    const LRESULT entry =
        SendMessageW(control, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text.c_str()));
    return entry == CB_ERR ? -1
                           : static_cast<LONG>(SendMessageW(control, CB_GETITEMDATA, static_cast<WPARAM>(entry), 0));
}

int OptionTreePage::CountCallbacks(WORD reason) const {
    return static_cast<int>(std::count_if(callbacks_.begin(), callbacks_.end(),
                                          [reason](const ItemCallbackRecord& r) { return r.reason == reason; }));
}

bool OptionTreePage::Choose(BYTE userItemId, LONG selection) {
    const Row* row = RowOfItem(userItemId);
    if (row == nullptr || !ControlUsable(userItemId)) {
        return false;
    }
    const HWND control = GetDlgItem(dialog_, row->controlId);
    if (row->kind == RowKind::List) {
        const LRESULT entries = SendMessageW(control, CB_GETCOUNT, 0, 0);
        for (LRESULT entry = 0; entry < entries; ++entry) {
            if (SendMessageW(control, CB_GETITEMDATA, static_cast<WPARAM>(entry), 0) == selection) {
                SetFocus(control);
                SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
                SendMessageW(dialog_, WM_COMMAND, MAKEWPARAM(row->controlId, CBN_SELCHANGE),
                             reinterpret_cast<LPARAM>(control));
                return true;
            }
        }
        return false;
    }
    if (row->kind == RowKind::UpDown) {
        LONG low = 0;
        LONG high = 0;
        NumberRange(*Item(row->item), &low, &high);
        if (selection < low || selection > high) {
            return false;
        }
        SetFocus(control);
        // The arrows write the number into their buddy, which reports the change.
        SendMessageW(GetDlgItem(dialog_, row->arrowsId), UDM_SETPOS32, 0, selection);
        return true;
    }
    return false;
}

bool OptionTreePage::Type(BYTE userItemId, const std::wstring& text) {
    const Row* row = RowOfItem(userItemId);
    if (row == nullptr || (row->kind != RowKind::Edit && row->kind != RowKind::UpDown) ||
        !ControlUsable(userItemId)) {
        return false;
    }
    const HWND control = GetDlgItem(dialog_, row->controlId);
    if ((GetWindowLongW(control, GWL_STYLE) & ES_READONLY) != 0) {
        return false;
    }
    SetFocus(control);
    SetWindowTextW(control, text.c_str());  // the edit box reports EN_CHANGE
    return true;
}

bool OptionTreePage::ChooseOrType(BYTE userItemId, const std::wstring& value) {
    const LONG entry = FindEntry(userItemId, value);
    return entry >= 0 ? Choose(userItemId, entry) : Type(userItemId, value);
}

bool OptionTreePage::Press(BYTE userItemId) {
    const Row* row = RowOfItem(userItemId);
    if (row == nullptr || row->kind != RowKind::PushButton || !ControlUsable(userItemId)) {
        return false;
    }
    SendMessageW(GetDlgItem(dialog_, row->controlId), BM_CLICK, 0, 0);
    return true;
}

}  // namespace ozdkhost
