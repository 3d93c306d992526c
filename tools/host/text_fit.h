// Whether the texts of a dialog fit their controls at the system's text size: every
// static text, button, check box, radio button and group box is measured with its own
// font, less what the control draws besides its text. Large text (LogPixels 144 or 192)
// is read when a process starts, so TextSizeScope and RunProgram start a program at a
// chosen size.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace ozdkhost {

// One text and the room its control gives it, in pixels. Text broken into lines at the
// control's width is limited by the control's height, any other by its width: slack()
// is measured along that side, share() is slack() as a part of it.
struct TextFit {
    std::wstring dialog;
    int id = 0;
    std::wstring caption;
    SIZE needed = {};
    SIZE available = {};
    bool severalLines = false;

    bool fits() const { return needed.cx <= available.cx && needed.cy <= available.cy; }
    long slack() const { return severalLines ? available.cy - needed.cy : available.cx - needed.cx; }
    double share() const;
};

// Every child control of `dialog` that shows a text, hidden ones too, in creation order.
// Controls with an empty text are left out.
std::vector<TextFit> MeasureTexts(HWND dialog, const std::wstring& dialogName);

// The same for dialog template `templateId` of `module` (null: the program itself), made
// with a procedure that does nothing (a page's template as the child of a hidden window)
// and handed to `change` first.
std::vector<TextFit> MeasureDialog(HMODULE module, int templateId, const std::wstring& dialogName,
                                   const std::function<void(HWND dialog)>& change = nullptr);

// The fit with the smallest share(), or null for none.
const TextFit* Tightest(const std::vector<TextFit>& fits);

// IDD_X 1015 "&Collate": needs 52x13, has 137x16, slack 85 px (62%)
std::string Describe(const TextFit& fit);

// Sets HKCU\Control Panel\Desktop LogPixels for programs started from now on, and puts
// back what was there (or takes the value away again) when the object ends.
class TextSizeScope {
public:
    explicit TextSizeScope(DWORD logPixels);
    ~TextSizeScope();
    TextSizeScope(const TextSizeScope&) = delete;
    TextSizeScope& operator=(const TextSizeScope&) = delete;

    bool set() const { return set_; }

private:
    DWORD old_ = 0;
    bool hadOld_ = false;
    bool set_ = false;
};

// Starts `commandLine` with the environment variable `name` set to `value` and waits up
// to `milliseconds` for it; `output` receives what it wrote to its standard output and
// error. The program's exit code, or -1 when it could not be started or did not end in
// time (it is then ended).
long RunProgram(const std::wstring& commandLine, const wchar_t* name, const std::wstring& value, DWORD milliseconds,
                std::string& output);

}  // namespace ozdkhost
