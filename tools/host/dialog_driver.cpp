#include "tools/host/dialog_driver.h"

#include <cwchar>
#include <utility>

namespace ozdkhost {

namespace {

enum class ControlKind { None, Combo, List, Edit };

HWND Control(HWND dialog, int id) {
    return dialog != nullptr ? GetDlgItem(dialog, id) : nullptr;
}

// The control as a person finds it: there, shown and enabled; null otherwise.
HWND UsableControl(HWND dialog, int id) {
    const HWND control = Control(dialog, id);
    return control != nullptr && IsWindowVisible(control) && IsWindowEnabled(control) ? control : nullptr;
}

ControlKind KindOf(HWND control) {
    wchar_t name[32] = {};
    if (control == nullptr || GetClassNameW(control, name, 32) == 0) {
        return ControlKind::None;
    }
    if (_wcsicmp(name, L"ComboBox") == 0) {
        return ControlKind::Combo;
    }
    if (_wcsicmp(name, L"ListBox") == 0) {
        return ControlKind::List;
    }
    return _wcsicmp(name, L"Edit") == 0 ? ControlKind::Edit : ControlKind::None;
}

bool IsList(ControlKind kind) {
    return kind == ControlKind::Combo || kind == ControlKind::List;
}

// A control's notification to its dialog, as the control sends it.
void Notify(HWND control, WORD code) {
    SendMessageW(GetParent(control), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), code),
                 reinterpret_cast<LPARAM>(control));
}

// Moves the focus to the control through its dialog, which works from any thread of the
// process (SetFocus only on the dialog's own).
void Focus(HWND control) {
    SendMessageW(GetParent(control), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

std::wstring WindowText(HWND window) {
    const int length = window != nullptr ? GetWindowTextLengthW(window) : 0;
    if (length <= 0) {
        return std::wstring();
    }
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, &text[0], length + 1)));
    return text;
}

HWND FindShown(const std::wstring& caption, HWND skip) {
    const bool prefix = !caption.empty() && caption.back() == L'*';
    const std::wstring start = prefix ? caption.substr(0, caption.size() - 1) : caption;
    const wchar_t* exact = prefix ? nullptr : caption.c_str();
    for (HWND window = FindWindowExW(nullptr, nullptr, L"#32770", exact); window != nullptr;
         window = FindWindowExW(nullptr, window, L"#32770", exact)) {
        if (window != skip && IsWindowVisible(window) && (!prefix || WindowText(window).compare(0, start.size(), start) == 0)) {
            return window;
        }
    }
    return nullptr;
}

// Waits up to 20 ms for a message of the calling thread and dispatches what came.
void PumpAWhile() {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Looks for the dialog until it shows, `milliseconds` have passed or `settled` answers
// true; `settled` is asked before each look, so that a dialog shown before it answered
// is still found.
HWND WaitFor(const std::wstring& caption, DWORD milliseconds, HWND skip, const std::function<bool()>& settled) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        const bool over = settled && settled();
        const HWND window = FindShown(caption, skip);
        if (window != nullptr || over || GetTickCount64() >= end) {
            return window;
        }
        PumpAWhile();
    }
}

BOOL CALLBACK CollectStaticText(HWND child, LPARAM lParam) {
    wchar_t name[16] = {};
    const LONG style = GetWindowLongW(child, GWL_STYLE);
    const LONG kind = style & SS_TYPEMASK;
    if (GetClassNameW(child, name, 16) != 0 && _wcsicmp(name, L"Static") == 0 && kind != SS_ICON &&
        kind != SS_BITMAP) {
        const std::wstring text = WindowText(child);
        auto* joined = reinterpret_cast<std::wstring*>(lParam);
        if (!text.empty()) {
            *joined += (joined->empty() ? L"" : L"\n") + text;
        }
    }
    return TRUE;
}

}  // namespace

bool Click(HWND dialog, int id) {
    const HWND control = UsableControl(dialog, id);
    if (control == nullptr) {
        return false;
    }
    SendMessageW(control, BM_CLICK, 0, 0);
    // A click that ended a modal dialog from another thread only sets the dialog's end
    // flag; its loop looks at the flag when a message arrives, so wake it.
    if (GetWindowThreadProcessId(dialog, nullptr) != GetCurrentThreadId()) {
        PostThreadMessageW(GetWindowThreadProcessId(dialog, nullptr), WM_NULL, 0, 0);
    }
    return true;
}

bool PostClick(HWND dialog, int id) {
    const HWND control = UsableControl(dialog, id);
    return control != nullptr && PostMessageW(control, BM_CLICK, 0, 0) != FALSE;
}

bool ChooseEntry(HWND dialog, int id, int index) {
    const HWND control = UsableControl(dialog, id);
    const ControlKind kind = KindOf(control);
    if (!IsList(kind) || index < 0) {
        return false;
    }
    Focus(control);
    if (kind == ControlKind::Combo) {
        if (SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(index), 0) == CB_ERR) {
            return false;
        }
        Notify(control, CBN_SELCHANGE);
        return true;
    }
    if (SendMessageW(control, LB_SETCURSEL, static_cast<WPARAM>(index), 0) == LB_ERR) {
        return false;
    }
    if ((GetWindowLongW(control, GWL_STYLE) & LBS_NOTIFY) != 0) {
        Notify(control, LBN_SELCHANGE);
    }
    return true;
}

bool ChooseEntry(HWND dialog, int id, const std::wstring& text) {
    const std::vector<std::wstring> entries = Entries(dialog, id);
    for (size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] == text) {
            return ChooseEntry(dialog, id, static_cast<int>(i));
        }
    }
    return false;
}

bool Type(HWND dialog, int id, const std::wstring& text) {
    const HWND control = UsableControl(dialog, id);
    const ControlKind kind = KindOf(control);
    const LONG style = control != nullptr ? GetWindowLongW(control, GWL_STYLE) : 0;
    const bool combo = kind == ControlKind::Combo;
    if ((kind != ControlKind::Edit && !combo) || (combo && (style & 3) == CBS_DROPDOWNLIST) ||
        (!combo && (style & ES_READONLY) != 0)) {
        return false;
    }
    Focus(control);
    SendMessageW(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    // A single-line edit box reports the new text itself; a multi-line one and a combo
    // box's edit field do not.
    if (combo) {
        Notify(control, CBN_EDITCHANGE);
    } else if ((style & ES_MULTILINE) != 0) {
        Notify(control, EN_CHANGE);
    }
    return true;
}

std::wstring Text(HWND dialog, int id) {
    return WindowText(Control(dialog, id));
}

bool Checked(HWND dialog, int id) {
    const HWND control = Control(dialog, id);
    return control != nullptr && SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool Enabled(HWND dialog, int id) {
    const HWND control = Control(dialog, id);
    return control != nullptr && IsWindowEnabled(control);
}

bool Visible(HWND dialog, int id) {
    const HWND control = Control(dialog, id);
    return control != nullptr && IsWindowVisible(control);
}

std::vector<std::wstring> Entries(HWND dialog, int id) {
    std::vector<std::wstring> entries;
    const HWND control = Control(dialog, id);
    const ControlKind kind = KindOf(control);
    if (!IsList(kind)) {
        return entries;
    }
    const bool combo = kind == ControlKind::Combo;
    const LRESULT count = SendMessageW(control, combo ? CB_GETCOUNT : LB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        const LRESULT length = SendMessageW(control, combo ? CB_GETLBTEXTLEN : LB_GETTEXTLEN, i, 0);
        std::wstring text(length > 0 ? static_cast<size_t>(length) + 1 : 1, L'\0');
        const UINT getText = combo ? CB_GETLBTEXT : LB_GETTEXT;
        const LRESULT copied = length > 0 ? SendMessageW(control, getText, i, reinterpret_cast<LPARAM>(&text[0])) : 0;
        text.resize(copied > 0 ? static_cast<size_t>(copied) : 0);
        entries.push_back(std::move(text));
    }
    return entries;
}

int Selection(HWND dialog, int id) {
    const HWND control = Control(dialog, id);
    const ControlKind kind = KindOf(control);
    if (!IsList(kind)) {
        return -1;
    }
    const UINT getSelection = kind == ControlKind::Combo ? CB_GETCURSEL : LB_GETCURSEL;
    const LRESULT selection = SendMessageW(control, getSelection, 0, 0);
    return selection < 0 ? -1 : static_cast<int>(selection);
}

HWND WaitForWindow(const std::wstring& caption, DWORD milliseconds, HWND skip) {
    return WaitFor(caption, milliseconds, skip, nullptr);
}

HWND WaitForWindowUnless(const std::wstring& caption, const std::function<bool()>& settled, DWORD milliseconds,
                         HWND skip) {
    return WaitFor(caption, milliseconds, skip, settled);
}

bool WaitForFocus(HWND dialog, int id, DWORD milliseconds) {
    const HWND control = Control(dialog, id);
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        GUITHREADINFO info = {sizeof(info)};
        if (control != nullptr && GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &info) &&
            info.hwndFocus == control) {
            return true;
        }
        if (GetTickCount64() >= end) {
            return false;
        }
        PumpAWhile();
    }
}

std::wstring MessageBoxText(HWND box) {
    std::wstring text;
    if (box != nullptr) {
        EnumChildWindows(box, &CollectStaticText, reinterpret_cast<LPARAM>(&text));
    }
    return text;
}

bool Answer(HWND box, int buttonId) {
    return PostClick(box, buttonId);
}

// --- DialogScript ---

DialogScript::DialogScript(std::wstring caption, std::function<void(HWND)> actions, DWORD milliseconds)
    : thread_(&DialogScript::Run, this, std::move(caption), std::move(actions), milliseconds) {}

DialogScript::~DialogScript() {
    stop_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool DialogScript::FinishNow() {
    stop_ = true;
    return Finish();
}

bool DialogScript::Finish() {
    if (thread_.joinable()) {
        thread_.join();
    }
    return done_;
}

void DialogScript::Run(std::wstring caption, std::function<void(HWND)> actions, DWORD milliseconds) {
    const HWND dialog = WaitFor(caption, milliseconds, nullptr, [this] { return stop_.load(); });
    if (dialog == nullptr) {
        return;
    }
    dialog_ = dialog;
    if (actions) {
        actions(dialog);
    }
    // The dialog ends on its thread once the actions' last message has been handled.
    for (int wait = 0; wait < 100 && IsWindow(dialog) && IsWindowVisible(dialog); ++wait) {
        Sleep(20);
    }
    if (IsWindow(dialog) && IsWindowVisible(dialog)) {
        PostMessageW(dialog, WM_CLOSE, 0, 0);
        return;
    }
    done_ = true;
}

}  // namespace ozdkhost
