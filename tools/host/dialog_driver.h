// Driving a dialog the way a person does, for the end-to-end tests and the demo: a
// click, a choice in a list, typed text, each arriving at the dialog with the
// notification the control itself would send. Works on any dialog window (a page of a
// property sheet, a modal dialog, a message box), from the dialog's own thread or from
// another thread of the process (the messages are then sent across threads and handled
// by the dialog's thread while it waits for messages).
//
// Every action first checks that a person could do it: the control exists, is visible
// and enabled. Actions answer false, and queries an empty or false answer, when not.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace ozdkhost {

// BM_CLICK on a button, check box or radio button; returns when the dialog has handled
// the click. A click that opens a modal dialog or a message box only returns when that
// closes: post it instead when the same thread must act on what opens.
bool Click(HWND dialog, int id);
// The same click, posted: handled when the dialog's thread next reads its messages.
bool PostClick(HWND dialog, int id);

// Selects an entry of a combo box or a list box (CB_SETCURSEL / LB_SETCURSEL) and tells
// the dialog as the control does when a person picks it: CBN_SELCHANGE, and
// LBN_SELCHANGE for a list box with LBS_NOTIFY (one without it tells nothing). By
// position, or by the entry's exact text.
bool ChooseEntry(HWND dialog, int id, int index);
bool ChooseEntry(HWND dialog, int id, const std::wstring& text);

// Replaces the text of an edit box (or of a combo box's edit field) with `text`, the
// control having the focus, and the dialog hears EN_CHANGE (CBN_EDITCHANGE) once.
// False for a read-only edit box.
bool Type(HWND dialog, int id, const std::wstring& text);

std::wstring Text(HWND dialog, int id);  // the control's window text
bool Checked(HWND dialog, int id);       // BST_CHECKED
bool Enabled(HWND dialog, int id);
bool Visible(HWND dialog, int id);       // the control and every window it sits in
// The entries of a combo box or list box, in order; the selected one's position, -1
// when none is selected or the control is neither.
std::vector<std::wstring> Entries(HWND dialog, int id);
int Selection(HWND dialog, int id);

// The first visible top-level dialog (class "#32770") with this caption (a caption ending
// in '*' stands for every caption that starts with the rest), other than `skip`, waited
// for up to `milliseconds` (checked every 20 ms; the calling thread's messages are
// dispatched meanwhile). Null when none appeared in time.
HWND WaitForWindow(const std::wstring& caption, DWORD milliseconds, HWND skip = nullptr);
// The same for a dialog that may or may not open: null as soon as `settled` answers
// true, which tells that what would have opened it is over without it (asked after
// each look for the dialog, from the calling thread).
HWND WaitForWindowUnless(const std::wstring& caption, const std::function<bool()>& settled, DWORD milliseconds,
                         HWND skip = nullptr);

// Whether the keyboard focus of the dialog's thread reaches control `id` within
// `milliseconds`, checked and waited for as WaitForWindow does.
bool WaitForFocus(HWND dialog, int id, DWORD milliseconds);

// The text of a message box (its static texts, joined by line breaks), and the person's
// answer to it: a posted click on the button IDOK, IDCANCEL, IDYES, IDNO, ...
std::wstring MessageBoxText(HWND box);
bool Answer(HWND box, int buttonId);

// Acts on a modal dialog from a second thread. Started before the dialog opens, the
// script waits for a top-level dialog with `caption` to show, then runs `actions` on it
// with the functions above.
//
// While the script runs, the dialog's thread must be inside the dialog's modal loop: it
// clicked the button that opens the dialog (Click, or PostClick followed by
// PropertySheetHost::PumpMessages) and waits there until the dialog ends. The actions'
// messages are handled by that loop. A click of the script that opens a further modal
// dialog or a message box must be posted (PostClick, Answer), since a sent one would
// only return once that closes; the actions may then wait for it (WaitForWindow) and
// act on it in turn.
//
// The dialog should end through the actions. One still open shortly after them is
// cancelled (WM_CLOSE), so that a failed script does not leave the caller's thread
// waiting for ever; the script then does not count as done.
class DialogScript {
public:
    DialogScript(std::wstring caption, std::function<void(HWND dialog)> actions, DWORD milliseconds = 10000);
    ~DialogScript();  // stops waiting, and waits for the actions to end
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    // Waits for the script to end. True when the dialog appeared, the actions ran and the
    // dialog then ended by itself.
    bool Finish();
    // For a dialog that must not open: once the call that would have opened it has
    // returned (a sent click returns only after the dialog it opened has closed), one
    // not found by then does not come. Stops waiting, then as Finish.
    bool FinishNow();
    // The dialog the script found, null before or when none appeared.
    HWND dialog() const { return dialog_; }

private:
    void Run(std::wstring caption, std::function<void(HWND)> actions, DWORD milliseconds);

    std::atomic<bool> stop_{false};
    std::atomic<bool> done_{false};
    std::atomic<HWND> dialog_{nullptr};
    std::thread thread_;
};

}  // namespace ozdkhost
