#include "tools/host/dialog_photographs.h"

#include <vector>

#include "resources/document_dialog_ids.h"
#include "tools/host/dialog_driver.h"

namespace ozdkhost {

namespace {

// A dialog a button opens: the button, the dialog's caption (followed by " - " and the
// printer's name when `namesPrinter`), the file-name part of its photograph, the button
// that closes it without a change, and the dialogs it opens.
struct DialogShot {
    int button;
    const wchar_t* caption;
    bool namesPrinter;
    const wchar_t* name;
    int closeWith;
    std::vector<DialogShot> nested;
};

struct PageDialogs {
    const wchar_t* title;
    std::vector<DialogShot> dialogs;
};

const std::vector<PageDialogs>& Walk() {
    static const std::vector<PageDialogs> walk = {
        {L"Layout", {{IDC_ADVANCED, L"Advanced", false, L"advanced", IDCANCEL, {}}}},
        {L"Paper/Media",
         {{IDC_ADVANCED,
           L"Advanced",
           true,
           L"advanced",
           IDCANCEL,
           {{IDC_ADD_MEDIA_TYPE, L"Add ...", false, L"custom-media-type", IDCANCEL, {}},
            {IDC_ADD_CUSTOM_FORM, L"Add Form ...", false, L"add-form", IDCANCEL, {}}}}}},
        {L"Quorl",
         {{IDC_ADVANCED, L"Advanced", true, L"advanced", IDCANCEL, {}},
          {IDC_TWO_IN_ONE, L"2 In 1", false, L"2-in-1", IDC_WARNING_NO, {}}}},
    };
    return walk;
}

// On the script's thread, while the owner's thread runs the dialog's modal loop.
// The dialog is first moved clear of its owner, into the screen's upper or else lower
// right corner: under Wine without a window manager, a dialog that lies wholly within
// its owner shows black on the root window that the screenshot reads.
void MoveClearOfOwner(HWND dialog) {
    RECT bounds = {};
    RECT owner = {};
    GetWindowRect(dialog, &bounds);
    GetWindowRect(GetWindow(dialog, GW_OWNER), &owner);
    const int width = bounds.right - bounds.left;
    const int height = bounds.bottom - bounds.top;
    RECT place = {GetSystemMetrics(SM_CXSCREEN) - width, 0, GetSystemMetrics(SM_CXSCREEN), height};
    RECT overlap;
    if (IntersectRect(&overlap, &place, &owner)) {
        OffsetRect(&place, 0, GetSystemMetrics(SM_CYSCREEN) - height);
    }
    SetWindowPos(dialog, nullptr, place.left, place.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    Sleep(400);  // moved and painted
}

void PhotographAndClose(HWND dialog, const DialogShot& shot, const std::wstring& path, HostLog& log) {
    MoveClearOfOwner(dialog);
    SaveScreenshot(path, &log, dialog);
    for (const DialogShot& inner : shot.nested) {
        if (!PostClick(dialog, inner.button)) {
            log.Add(L"host: button %d of \"%s\" cannot be clicked", inner.button, shot.caption);
            continue;
        }
        const HWND opened = WaitForWindow(inner.caption, 5000, dialog);  // none of them names the printer
        if (opened == nullptr) {
            log.Add(L"host: \"%s\" did not open", inner.caption);
            continue;
        }
        PhotographAndClose(opened, inner, ScreenshotPathFor(path, inner.name), log);
        for (int wait = 0; wait < 100 && IsWindow(opened); ++wait) Sleep(20);
    }
    Answer(dialog, shot.closeWith);
}

constexpr int kPatienceMs = 1000;

}  // namespace

void PhotographReadingNoticeAndCancel(HWND notice, const std::wstring& path, HostLog& log) {
    // The notice shows for every read; one that answers is over before a person would
    // give up on it, and is left alone.
    for (int wait = 0; wait < kPatienceMs / 20; ++wait) {
        if (!IsWindow(notice)) return;
        Sleep(20);
    }
    MoveClearOfOwner(notice);
    SaveScreenshot(path, &log, notice);
    PostClick(notice, IDCANCEL);
}

void PhotographPageDialogs(PropertySheetHost& sheet, HWND page, const std::wstring& title,
                           const std::wstring& pagePath, HostLog& log) {
    for (const PageDialogs& each : Walk()) {
        if (title != each.title) {
            continue;
        }
        for (const DialogShot& shot : each.dialogs) {
            const std::wstring caption =
                shot.namesPrinter ? std::wstring(shot.caption) + L" - " + sheet.printer().name() : shot.caption;
            DialogScript script(caption, [&](HWND dialog) {
                PhotographAndClose(dialog, shot, ScreenshotPathFor(pagePath, shot.name), log);
            });
            if (!PostClick(page, shot.button)) {
                log.Add(L"host: button %d of \"%s\" cannot be clicked", shot.button, each.title);
                continue;  // the script gives up waiting
            }
            sheet.PumpMessages(200);  // the click's dialog runs its modal loop in here
            if (!script.Finish()) {
                log.Add(L"host: \"%s\" of \"%s\" was not photographed", shot.caption, each.title);
            }
        }
    }
}

}  // namespace ozdkhost
