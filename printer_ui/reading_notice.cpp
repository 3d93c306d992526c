#include "printer_ui/reading_notice.h"

#include "base/module_state.h"
#include "config/localisation.h"
#include "device/device_settings_store.h"
#include "resources/resource_ids.h"

namespace {

constexpr int kMarginX = 24;  // pixels around the text
constexpr int kMarginY = 16;

// The wait cursor and the notice window for the life of the object. The window is a
// framed static text owned by the sheet; it is painted before the constructor
// returns, since the read that follows lets no message through.
class ReadingNotice {
public:
    ReadingNotice(HWND page, const UIConfig& config) {
        previousCursor_ = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        const HWND sheet = page != nullptr ? GetAncestor(page, GA_ROOT) : nullptr;
        const wchar_t* text = GetLocalString(&config, IDS_READING_EMBOSSER);
        window_ = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_DLGMODALFRAME, L"Static", text,
                                  WS_POPUP | SS_CENTER | SS_CENTERIMAGE | SS_NOPREFIX, 0, 0, 0, 0, sheet, nullptr,
                                  ghInstance, nullptr);
        if (window_ == nullptr) {
            return;
        }
        const HFONT font = page != nullptr ? reinterpret_cast<HFONT>(SendMessageW(page, WM_GETFONT, 0, 0)) : nullptr;
        SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        PlaceOver(sheet, text, font);
        ShowWindow(window_, SW_SHOWNOACTIVATE);
        UpdateWindow(window_);
        // Screen readers announce an alert; the focus stays where it is.
        NotifyWinEvent(EVENT_SYSTEM_ALERT, window_, OBJID_CLIENT, CHILDID_SELF);
    }
    ~ReadingNotice() {
        if (window_ != nullptr) {
            DestroyWindow(window_);
        }
        SetCursor(previousCursor_ != nullptr ? previousCursor_ : LoadCursorW(nullptr, IDC_ARROW));
    }
    ReadingNotice(const ReadingNotice&) = delete;
    ReadingNotice& operator=(const ReadingNotice&) = delete;

private:
    // Sized to the text and centred over the sheet, or over the screen while the sheet
    // has no size yet.
    void PlaceOver(HWND sheet, const wchar_t* text, HFONT font) {
        SIZE extent = {200, 16};
        if (HDC dc = GetDC(window_)) {
            const HGDIOBJ previous = font != nullptr ? SelectObject(dc, font) : nullptr;
            GetTextExtentPoint32W(dc, text, lstrlenW(text), &extent);
            if (previous != nullptr) {
                SelectObject(dc, previous);
            }
            ReleaseDC(window_, dc);
        }
        RECT frame = {0, 0, extent.cx + 2 * kMarginX, extent.cy + 2 * kMarginY};
        AdjustWindowRectEx(&frame, WS_POPUP, FALSE, WS_EX_TOOLWINDOW | WS_EX_DLGMODALFRAME);
        const int width = frame.right - frame.left;
        const int height = frame.bottom - frame.top;
        RECT over = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
        RECT sheetRect;
        if (sheet != nullptr && GetWindowRect(sheet, &sheetRect) && sheetRect.right - sheetRect.left > width) {
            over = sheetRect;
        }
        SetWindowPos(window_, HWND_TOP, (over.left + over.right - width) / 2, (over.top + over.bottom - height) / 2,
                     width, height, SWP_NOACTIVATE);
    }

    HWND window_ = nullptr;
    HCURSOR previousCursor_ = nullptr;
};

}  // namespace

void ReadDeviceSettingsWithNotice(HWND page, UIConfig& config, const wchar_t* caller) {
    if (!IsDeviceReadPending(config)) {
        return;
    }
    ReadingNotice notice(page, config);
    ReadQuorlSettingsOnce(config, caller);
}
