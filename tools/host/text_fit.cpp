#include "tools/host/text_fit.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>

namespace ozdkhost {

namespace {

// What the button control draws besides its text, in pixels, as Wine's comctl32 and
// user32 buttons do it. A check box's or radio button's glyph is 12 px at 96 dpi plus
// one, grown with the DPI, and half the width of the font's "0" lies between glyph and
// text. The text keeps 1 px free on each side. A push button's frame takes 2 px and the
// default button's black line 1 px more; any push button becomes the default one while
// it has the focus, so every push button keeps room for that line. A group box's caption
// starts 7 px in from each side.
constexpr LONG kTextMargin = 1;
constexpr LONG kPushFrame = 2 + 1;
constexpr LONG kGroupIndent = 7;

// Where the text size is kept (the DWORD LogPixels), read when a process starts.
constexpr wchar_t kDesktopKey[] = L"Control Panel\\Desktop";

// Common controls 6 name their classes with a version ("6.0.2600.2982!Button").
bool ClassIs(HWND control, const wchar_t* name) {
    wchar_t buffer[128] = {};
    GetClassNameW(control, buffer, 128);
    const wchar_t* bang = std::wcsrchr(buffer, L'!');
    return lstrcmpiW(bang != nullptr ? bang + 1 : buffer, name) == 0;
}

// The room a control gives its text and how the control draws it (DrawTextW flags);
// false for a control that shows no text.
bool RoomFor(HWND control, HDC dc, SIZE& room, UINT& format) {
    const DWORD style = GetWindowLongW(control, GWL_STYLE);
    RECT client = {};
    GetClientRect(control, &client);
    room = {client.right, client.bottom};
    if (ClassIs(control, L"Static")) {
        format = DT_EXPANDTABS | ((style & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0);
        switch (style & SS_TYPEMASK) {
            case SS_LEFT:
            case SS_CENTER:
            case SS_RIGHT: format |= DT_WORDBREAK; return true;
            case SS_LEFTNOWORDWRAP: return true;
            default: return false;
        }
    }
    if (!ClassIs(control, L"Button") || (style & (BS_ICON | BS_BITMAP)) != 0) return false;
    format = (style & BS_MULTILINE) != 0 ? DT_WORDBREAK : DT_SINGLELINE;
    const DWORD type = (style & BS_PUSHLIKE) != 0 ? BS_PUSHBUTTON : style & BS_TYPEMASK;
    switch (type) {
        case BS_PUSHBUTTON:
        case BS_DEFPUSHBUTTON:
            room.cx -= 2 * (kPushFrame + kTextMargin);
            room.cy -= 2 * kPushFrame;
            return true;
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
        case BS_3STATE:
        case BS_AUTO3STATE: {
            INT zero = 0;
            GetCharWidth32W(dc, L'0', L'0', &zero);
            room.cx -= 12 * GetDeviceCaps(dc, LOGPIXELSX) / 96 + 1 + zero / 2 + 2 * kTextMargin;
            const DWORD vertical = style & BS_VCENTER;
            if (vertical == BS_TOP || vertical == BS_BOTTOM) room.cy -= kTextMargin;
            return true;
        }
        case BS_GROUPBOX: room.cx -= 2 * (kGroupIndent + kTextMargin); return true;
        default: return false;
    }
}

std::string Narrow(const std::wstring& text) {
    std::string narrow(text.size() * 3, '\0');
    narrow.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), &narrow[0],
                                      static_cast<int>(narrow.size()), nullptr, nullptr));
    return narrow;
}

}  // namespace

double TextFit::share() const {
    const long side = severalLines ? available.cy : available.cx;
    return side > 0 ? static_cast<double>(slack()) / side : -1.0;
}

std::vector<TextFit> MeasureTexts(HWND dialog, const std::wstring& dialogName) {
    std::vector<TextFit> fits;
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr; control = GetWindow(control, GW_HWNDNEXT)) {
        std::wstring text(GetWindowTextLengthW(control) + 1, L'\0');
        text.resize(GetWindowTextW(control, &text[0], static_cast<int>(text.size())));
        if (text.empty()) continue;
        HDC dc = GetDC(control);
        const HGDIOBJ font = reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0));
        const HGDIOBJ before = font != nullptr ? SelectObject(dc, font) : nullptr;
        TextFit fit;
        UINT format = 0;
        if (RoomFor(control, dc, fit.available, format)) {
            // Wrapped text is broken at the room's width; a word longer than that widens it.
            RECT needed = {0, 0, std::max(fit.available.cx, 1L), 0};
            DrawTextW(dc, text.c_str(), -1, &needed, format | DT_CALCRECT);
            TEXTMETRICW metrics = {};
            GetTextMetricsW(dc, &metrics);
            fit.dialog = dialogName;
            fit.id = GetDlgCtrlID(control);
            fit.caption = text;
            fit.needed = {needed.right - needed.left, needed.bottom - needed.top};
            fit.severalLines = (format & DT_WORDBREAK) != 0 && fit.needed.cy > metrics.tmHeight;
            fits.push_back(fit);
        }
        if (before != nullptr) SelectObject(dc, before);
        ReleaseDC(control, dc);
    }
    return fits;
}

std::vector<TextFit> MeasureDialog(HMODULE module, int templateId, const std::wstring& dialogName,
                                   const std::function<void(HWND dialog)>& change) {
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_BAR_CLASSES | ICC_UPDOWN_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
    HWND owner = CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    const DLGPROC plain = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
    HWND dialog = CreateDialogParamW(module, MAKEINTRESOURCEW(templateId), owner, plain, 0);
    std::vector<TextFit> fits;
    if (dialog != nullptr) {
        if (change) change(dialog);
        fits = MeasureTexts(dialog, dialogName);
    }
    DestroyWindow(owner);  // and the dialog with it
    return fits;
}

const TextFit* Tightest(const std::vector<TextFit>& fits) {
    const auto tightest = std::min_element(fits.begin(), fits.end(),
                                           [](const TextFit& a, const TextFit& b) { return a.share() < b.share(); });
    return tightest != fits.end() ? &*tightest : nullptr;
}

std::string Describe(const TextFit& fit) {
    char figures[160];
    std::snprintf(figures, sizeof(figures), " %d \"%s\": needs %ldx%ld, has %ldx%ld, slack %ld px (%.0f%% of its %s)",
                  fit.id, Narrow(fit.caption).c_str(), fit.needed.cx, fit.needed.cy, fit.available.cx,
                  fit.available.cy, fit.slack(), fit.share() * 100, fit.severalLines ? "height" : "width");
    return Narrow(fit.dialog) + figures;
}

TextSizeScope::TextSizeScope(DWORD logPixels) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kDesktopKey, 0, nullptr, 0, KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr,
                        &key, nullptr) != ERROR_SUCCESS) {
        return;
    }
    DWORD type = 0;
    DWORD size = sizeof(old_);
    hadOld_ = RegQueryValueExW(key, L"LogPixels", nullptr, &type, reinterpret_cast<BYTE*>(&old_), &size) ==
                  ERROR_SUCCESS &&
              type == REG_DWORD;
    set_ = RegSetValueExW(key, L"LogPixels", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&logPixels),
                          sizeof(logPixels)) == ERROR_SUCCESS;
    RegCloseKey(key);
}

TextSizeScope::~TextSizeScope() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kDesktopKey, 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) return;
    if (hadOld_) {
        RegSetValueExW(key, L"LogPixels", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&old_), sizeof(old_));
    } else {
        RegDeleteValueW(key, L"LogPixels");
    }
    RegCloseKey(key);
}

long RunProgram(const std::wstring& commandLine, const wchar_t* name, const std::wstring& value, DWORD milliseconds,
                std::string& output) {
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"run", 0, path) == 0) return -1;
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return -1;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = file;
    PROCESS_INFORMATION process = {};
    std::wstring line = commandLine;
    SetEnvironmentVariableW(name, value.c_str());
    const BOOL started =
        CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
    SetEnvironmentVariableW(name, nullptr);
    DWORD code = static_cast<DWORD>(-1);
    if (started) {
        if (WaitForSingleObject(process.hProcess, milliseconds) != WAIT_OBJECT_0) {
            TerminateProcess(process.hProcess, code);
            WaitForSingleObject(process.hProcess, 5000);
        } else {
            GetExitCodeProcess(process.hProcess, &code);
        }
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    // The program wrote through its own handle; read from the start through ours.
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    char buffer[4096];
    DWORD read = 0;
    output.clear();
    while (ReadFile(file, buffer, sizeof(buffer), &read, nullptr) && read > 0) output.append(buffer, read);
    CloseHandle(file);
    return started ? static_cast<long>(code) : -1;
}

}  // namespace ozdkhost
