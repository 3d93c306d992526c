// The dialog templates as keyboard and screen-reader users meet them: the checker's rules
// on resources/*.rc, the checker on broken templates, and Tab walked through every
// dialog made from the linked resources.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "support/wine_environment.h"
#include "tools/dialog_lint/dialog_lint.h"

namespace {

using Lines = std::vector<std::string>;

// The dialogs of every resource script of the source tree, by name.
std::vector<ozdklint::Dialog> OurDialogs() {
    const std::wstring folder = testenv::WindowsPath(OZDK_SOURCE_DIR "/resources");
    const ozdklint::Script scripts = ozdklint::ReadFolder(testenv::Narrow(folder));
    EXPECT_EQ(scripts.errors, Lines());
    return scripts.dialogs;
}

Lines Findings(const ozdklint::Dialog& dialog) {
    Lines found = ozdklint::CheckDialog(dialog);
    for (const std::string& line : ozdklint::MnemonicCollisions(dialog)) found.push_back(line);
    return found;
}

INT_PTR CALLBACK PlainDialogProc(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

bool TakesInput(HWND control) {
    wchar_t name[64] = {};
    GetClassNameW(control, name, 64);
    if (lstrcmpiW(name, L"Button") == 0) return (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) != BS_GROUPBOX;
    for (const wchar_t* input : {L"Edit", L"ComboBox", L"ListBox", TRACKBAR_CLASSW}) {
        if (lstrcmpiW(name, input) == 0) return true;
    }
    return false;
}

}  // namespace

// The captions are as the product has them; these access keys are shared by visible controls.
TEST(DialogTemplates, NameTheirControlsKeepTabOrderAndShareOnlyKnownAccessKeys) {
    Lines names, found;
    for (const ozdklint::Dialog& dialog : OurDialogs()) {
        names.push_back(dialog.name);
        for (const std::string& line : Findings(dialog)) found.push_back(line);
    }
    EXPECT_EQ(names, (Lines{"IDD_CUSTOM_FORM", "IDD_CUSTOM_MEDIA_TYPE", "IDD_DEVICE_SERVICE", "IDD_LAYOUT_ADVANCED",
                            "IDD_LAYOUT_PAGE", "IDD_PAPER_ADVANCED", "IDD_PAPER_PAGE", "IDD_QUORL_ADVANCED",
                            "IDD_QUORL_PAGE", "IDD_READING_NOTICE", "IDD_TWO_IN_ONE_WARNING"}));
    EXPECT_EQ(found, (Lines{"IDD_PAPER_ADVANCED &A: &Add ... | &Add Custom Form ... | &Apply",
                            "IDD_PAPER_ADVANCED &E: &Edit ... | &English"}));
}

TEST(DialogTemplates, CheckerReportsEachBrokenRule) {
    const Lines sound = {
        "AUTOCHECKBOX \"&Round\", 9, 7, 7, 80, 10, WS_GROUP | WS_TABSTOP",
        "LTEXT \"&Width:\", -1, 7, 22, 40, 8",
        "EDITTEXT 10, 50, 20, 40, 12, ES_NUMBER",
        "CONTROL \"\", 11, \"msctls_updown32\", UDS_ALIGNRIGHT, 90, 20, 10, 12",
        "CONTROL \"Width\", 12, \"msctls_trackbar32\", TBS_HORZ | WS_TABSTOP, 7, 36, 100, 14",
        "GROUPBOX \"Units\", -1, 7, 54, 120, 26",
        "AUTORADIOBUTTON \"&Metric\", 13, 15, 64, 40, 10, WS_GROUP | WS_TABSTOP",
        "AUTORADIOBUTTON \"&English\", 14, 60, 64, 40, 10",
        "CONTROL \"\", 15, \"Static\", SS_BITMAP | WS_GROUP, 130, 7, 20, 20",
        "DEFPUSHBUTTON \"&OK\", IDOK, 77, 86, 50, 14, WS_GROUP",
        "GROUPBOX \"Paper\", -1, 170, 7, 100, 40, WS_GROUP",
        "LTEXT \"&Size:\", -1, 178, 18, 80, 8",
        "COMBOBOX 16, 178, 28, 80, 60, CBS_DROPDOWNLIST | WS_TABSTOP",
    };
    const struct {
        size_t line;
        size_t moveTo;            // or, when the line stays,
        const char* replacement;  // its new text
        const char* reported;
    } cases[] = {
        {2, 1, nullptr, "Edit (10) does not follow the label that names it"},
        {3, 2, nullptr, "msctls_updown32 (11) does not follow its number box"},
        {9, 0, nullptr, "\"&Round\" (9) comes after \"&OK\" (1) in the tab order but not on screen"},
        {5, 6, nullptr, "\"&Metric\" (13) lies in group box \"Units\" (-1) but does not follow"},
        {8, 8, "CONTROL \"\", 15, \"Static\", SS_BITMAP | WS_GROUP | WS_TABSTOP, 130, 7, 20, 20",
         "Static (15) is a tab stop but takes no input"},
        {8, 8, "CONTROL \"\", 15, \"Static\", SS_BITMAP, 130, 7, 20, 20", "(15) follows a radio group without WS_GROUP"},
        {6, 6, "AUTORADIOBUTTON \"&Metric\", 13, 15, 64, 40, 10, WS_TABSTOP", "(13) starts a radio group without"},
        {9, 9, "DEFPUSHBUTTON \"&OK\", IDOK, 77, 86, 50, 14, WS_GROUP | NOT WS_TABSTOP", "(1) is not a tab stop"},
        {7, 7, "AUTORADIOBUTTON \"&Miles\", 14, 60, 64, 40, 10", "100 &M: &Metric | &Miles"},
        {12, 11, nullptr, "ComboBox (16) does not follow the label that names it"},
        {11, 10, nullptr, "\"&Size:\" (-1) names ComboBox (16) on screen but does not come right before it"},
    };
    const auto findings = [](Lines lines) {
        std::string text = "100 DIALOGEX 0, 0, 160, 110\nBEGIN\n";
        for (const std::string& line : lines) text += "    " + line + "\n";
        const ozdklint::Script script = ozdklint::ParseScript(text + "END\n", "");
        EXPECT_EQ(script.errors, Lines());
        return script.dialogs.size() == 1 ? Findings(script.dialogs[0]) : Lines{"no dialog"};
    };
    EXPECT_EQ(findings(sound), Lines());
    for (const auto& c : cases) {
        Lines broken = sound;
        const std::string line = c.replacement != nullptr ? c.replacement : broken[c.line];
        broken.erase(broken.begin() + c.line);
        broken.insert(broken.begin() + c.moveTo, line);
        const Lines found = findings(broken);
        std::string all;
        for (const std::string& f : found) all += f + "\n";
        EXPECT_NE(all.find(c.reported), std::string::npos) << c.reported << "\nnot in:\n" << all;
    }
}

// Each dialog is made from the linked resources as the script was read, and Tab goes
// round every enabled, visible control that takes input exactly once.
TEST(DialogTemplates, TabReachesEveryControlOnce) {
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_BAR_CLASSES | ICC_UPDOWN_CLASS | ICC_STANDARD_CLASSES};
    ASSERT_TRUE(InitCommonControlsEx(&classes));
    HWND owner = CreateWindowExW(0, L"Static", L"", WS_POPUP | WS_VISIBLE, 0, 0, 600, 500, nullptr, nullptr,
                                 nullptr, nullptr);
    for (const ozdklint::Dialog& dialog : OurDialogs()) {
        HWND box = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(dialog.id), owner, PlainDialogProc, 0);
        ASSERT_NE(box, nullptr) << dialog.name;
        ShowWindow(box, SW_SHOWNOACTIVATE);
        std::vector<HWND> expected;
        size_t index = 0;
        for (HWND c = GetWindow(box, GW_CHILD); c != nullptr; c = GetWindow(c, GW_HWNDNEXT), ++index) {
            const DWORD style = GetWindowLongW(c, GWL_STYLE);
            const DWORD bits = WS_TABSTOP | WS_GROUP | WS_VISIBLE | WS_DISABLED;
            ASSERT_LT(index, dialog.controls.size()) << dialog.name;
            EXPECT_EQ(static_cast<WORD>(GetDlgCtrlID(c)), static_cast<WORD>(dialog.controls[index].id)) << dialog.name;
            EXPECT_EQ(style & bits, dialog.controls[index].style & bits) << dialog.name << " control " << index;
            const bool laterRadio = dialog.controls[index].kind == ozdklint::Kind::Radio && !(style & WS_GROUP);
            if (TakesInput(c) && (style & (bits & ~WS_GROUP)) == (WS_VISIBLE | WS_TABSTOP)) {
                expected.push_back(c);
            } else if (TakesInput(c) && (style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE && !laterRadio) {
                ADD_FAILURE() << dialog.name << " control " << index << " cannot be reached with Tab";
            }
        }
        EXPECT_EQ(index, dialog.controls.size()) << dialog.name;
        std::vector<HWND> reached;
        HWND first = GetNextDlgTabItem(box, nullptr, FALSE);
        for (HWND c = first; c != nullptr && reached.size() < 64;) {
            reached.push_back(c);
            if ((c = GetNextDlgTabItem(box, c, FALSE)) == first) break;
        }
        EXPECT_EQ(reached, expected) << dialog.name;
        DestroyWindow(box);
    }
    DestroyWindow(owner);
}
