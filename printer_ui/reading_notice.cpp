#include "printer_ui/reading_notice.h"

#include "base/module_state.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "device/device_read_worker.h"
#include "device/device_settings_store.h"
#include "resources/device_dialog_ids.h"
#include "resources/resource_ids.h"

namespace {

// The notice's dialog procedure; its user slot holds the worker that "Cancel" stops
// (none when the read runs on the page's own thread). Esc, Alt+F4 and the close box all
// come here as Cancel.
INT_PTR CALLBACK ReadingNoticeDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        SetWindowLongPtrW(dialog, DWLP_USER, lParam);
        return TRUE;  // the focus goes to "Cancel", the only control that takes it
    case WM_COMMAND:
        if (LOWORD(wParam) != IDCANCEL) {
            return FALSE;
        }
        [[fallthrough]];
    case WM_CLOSE:
        if (auto* worker = reinterpret_cast<DeviceReadWorker*>(GetWindowLongPtrW(dialog, DWLP_USER))) {
            worker->Cancel();
        }
        return TRUE;
    case WM_SETCURSOR:
        SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
        return TRUE;
    default:
        return FALSE;
    }
}

// The wait cursor, the disabled sheet and the notice dialog for the life of the object.
class ReadingNotice {
public:
    ReadingNotice(HWND page, const UIConfig& config, DeviceReadWorker* worker) {
        previousCursor_ = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        sheet_ = page != nullptr ? GetAncestor(page, GA_ROOT) : nullptr;
        // EnableWindow answers whether the window was disabled before.
        sheetDisabledHere_ = sheet_ != nullptr && !EnableWindow(sheet_, FALSE);

        {
            const ModuleContextScope context;
            window_ = CreateDialogParamW(ghInstance, MAKEINTRESOURCEW(IDD_READING_NOTICE), sheet_,
                                         ReadingNoticeDlgProc, reinterpret_cast<LPARAM>(worker));
        }
        if (window_ == nullptr) {
            Trace(L"ReadDeviceSettingsWithNotice(): %d=CreateDialogParam()\n", static_cast<int>(GetLastError()));
            return;
        }
        SetWindowTextW(window_, config.PrinterName);
        SetDlgItemTextW(window_, IDC_READING_TEXT, GetLocalString(&config, IDS_READING_EMBOSSER));
        SetDlgItemTextW(window_, IDCANCEL, GetLocalString(&config, IDS_CANCEL_READING));
        PlaceOverSheet();
        ShowWindow(window_, SW_SHOW);
        SetActiveWindow(window_);
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(window_, IDCANCEL)), TRUE);
        UpdateWindow(window_);
        NotifyWinEvent(EVENT_SYSTEM_ALERT, window_, OBJID_CLIENT, CHILDID_SELF);
    }
    ~ReadingNotice() {
        // The sheet first, so that it takes the activation back from the notice.
        if (sheetDisabledHere_ && IsWindow(sheet_)) {
            EnableWindow(sheet_, TRUE);
        }
        if (window_ != nullptr) {
            DestroyWindow(window_);
        }
        SetCursor(previousCursor_ != nullptr ? previousCursor_ : LoadCursorW(nullptr, IDC_ARROW));
    }
    ReadingNotice(const ReadingNotice&) = delete;
    ReadingNotice& operator=(const ReadingNotice&) = delete;

    // Dispatches the thread's messages, the notice's keys through its dialog manager,
    // until the worker has ended, the way a modal dialog waits. A quit message or a sheet
    // destroyed meanwhile cancels the read; the quit message is posted again afterwards.
    void AnswerUntilDone(DeviceReadWorker& worker) {
        const HANDLE thread = worker.thread();
        bool quit = false;
        WPARAM quitCode = 0;
        while (!quit) {
            const DWORD woke = MsgWaitForMultipleObjectsEx(1, &thread, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            if (woke != WAIT_OBJECT_0 + 1) {
                break;  // the worker ended (or the wait itself failed: Join then waits)
            }
            MSG message;
            while (!quit && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                if (message.message == WM_QUIT) {
                    quit = true;
                    quitCode = message.wParam;
                } else if (window_ == nullptr || !IsDialogMessageW(window_, &message)) {
                    TranslateMessage(&message);
                    DispatchMessageW(&message);
                }
            }
            if (quit || (sheet_ != nullptr && !IsWindow(sheet_))) {
                worker.Cancel();
            }
        }
        worker.Join();
        if (quit) {
            PostQuitMessage(static_cast<int>(quitCode));
        }
    }

private:
    // Centred over the sheet, or over the screen while the sheet has no size yet.
    void PlaceOverSheet() {
        RECT own;
        GetWindowRect(window_, &own);
        const int width = own.right - own.left;
        const int height = own.bottom - own.top;
        RECT over = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
        RECT sheetRect;
        if (sheet_ != nullptr && IsWindowVisible(sheet_) && GetWindowRect(sheet_, &sheetRect) &&
            sheetRect.right - sheetRect.left > width) {
            over = sheetRect;
        }
        SetWindowPos(window_, HWND_TOP, (over.left + over.right - width) / 2, (over.top + over.bottom - height) / 2, 0,
                     0, SWP_NOSIZE | SWP_NOACTIVATE);
    }

    HWND window_ = nullptr;
    HWND sheet_ = nullptr;
    bool sheetDisabledHere_ = false;
    HCURSOR previousCursor_ = nullptr;
};

}  // namespace

void ReadDeviceSettingsWithNotice(HWND page, UIConfig& config, const wchar_t* caller) {
    if (!IsDeviceReadPending(config) || config.DeviceReadRunning != 0) {
        return;
    }
    config.DeviceReadRunning = 1;
    {
        DeviceReadWorker worker;
        const bool started = worker.Start(config);
        ReadingNotice notice(page, config, started ? &worker : nullptr);
        if (started) {
            notice.AnswerUntilDone(worker);
            worker.Finish(config, caller);
        } else {
            ReadQuorlSettingsOnce(config, caller);  // no worker to be had: the read blocks as it must
        }
    }
    config.DeviceReadRunning = 0;
}
