// The "Quorl" page and its "More Options ..." dialog as a person uses them, through the
// host on the real dialogs: the emboss and print choices, "2 In 1" with its warning, what
// an apply writes, and the image options with the colour patterns.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <dlgs.h>
#include <shlobj.h>

#include <fstream>

#include "config/config_fixtures.h"
#include "document_ui/preferences_fixture.h"
#include "document_ui/quorl_advanced_dialog.h"
#include "resources/document_dialog_ids.h"

using namespace ozdkhost;
using configtest::RegistryValue;
using docui::Preferences;

namespace {

constexpr const wchar_t* kUninstallKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OzdkTestSuite";

// A program in the machine's list of installed programs, for the life of the object.
struct InstalledProgram {
    InstalledProgram(const wchar_t* name, const wchar_t* version) {
        displayName.SetString(name);
        displayVersion.SetString(version);
    }
    RegistryValue displayName{HKEY_LOCAL_MACHINE, kUninstallKey, L"DisplayName"};
    RegistryValue displayVersion{HKEY_LOCAL_MACHINE, kUninstallKey, L"DisplayVersion"};
};

// What Wine's file-open dialog cannot answer: a path longer than MAX_PATH.
const std::wstring kTooLongPath = L"C:\\" + std::wstring(300, L'x') + L".dat";
BOOL ChooseTooLongPath(OPENFILENAMEW* open) {
    return wcscpy_s(open->lpstrFile, open->nMaxFile, kTooLongPath.c_str()) == 0;
}

bool SheetApplyEnabled(HWND page) { return Enabled(GetParent(page), ID_APPLY_NOW); }

std::wstring Chosen(HWND dialog, int list) {
    const auto entries = Entries(dialog, list);
    const int index = Selection(dialog, list);
    return index >= 0 && index < static_cast<int>(entries.size()) ? entries[index] : L"";
}

}  // namespace

// One of "&Emboss" and "&Print" stays on; "2 In 1" asks first, a refusal leaves it off,
// agreeing (Escape) switches both on and "do not show again" is kept; "&Print" off ends
// "2 In 1"; "&Defaults ..." resets the page after its question.
TEST(QuorlPage, KeepsEmbossOrPrintOnAndSwitchesBothOnForTwoInOneAfterTheWarning) {
    Preferences p;
    p.Store(L"Config", L"InkMode", 0);
    ASSERT_TRUE(p.Open());
    HWND quorl = p.sheet->ShowPluginPage(2);
    ASSERT_TRUE(Checked(quorl, IDC_EMBOSS) && !Checked(quorl, IDC_PRINT));
    EXPECT_TRUE(Visible(quorl, IDC_COLOR) && !Enabled(quorl, IDC_COLOR)) << "shown, off with the ink";
    const bool applyBefore = SheetApplyEnabled(quorl);
    EXPECT_TRUE(Click(quorl, IDC_EMBOSS));
    EXPECT_TRUE(Checked(quorl, IDC_EMBOSS) && Enabled(quorl, IDC_BRAILLE_QUALITY_LIST));
    EXPECT_EQ(SheetApplyEnabled(quorl), applyBefore);

    std::wstring warning;
    DialogScript refuse(L"2 In 1", [&](HWND box) {
        warning = Text(box, IDC_WARNING_TEXT);
        Answer(box, IDC_WARNING_NO);
    });
    EXPECT_TRUE(Click(quorl, IDC_TWO_IN_ONE));
    EXPECT_TRUE(refuse.Finish());
    EXPECT_EQ(warning.substr(0, 51), L"Enabling this option will change your print output.");
    EXPECT_FALSE(Checked(quorl, IDC_TWO_IN_ONE) || Checked(quorl, IDC_PRINT));

    DialogScript escape(L"2 In 1", [](HWND box) {
        Click(box, IDC_DONT_SHOW_AGAIN);
        Answer(box, IDCANCEL);
    });
    EXPECT_TRUE(Click(quorl, IDC_TWO_IN_ONE));
    EXPECT_TRUE(escape.Finish());
    EXPECT_TRUE(Checked(quorl, IDC_TWO_IN_ONE) && Checked(quorl, IDC_EMBOSS) && Checked(quorl, IDC_PRINT));
    EXPECT_TRUE(Enabled(quorl, IDC_COLOR) && Enabled(quorl, IDC_PRINT_QUALITY_LIST));
    EXPECT_EQ(testenv::ReadPrinterData(p.printer.handle(), nullptr, L"Show2In1Warning").AsDword(), 0u);
    EXPECT_TRUE(SheetApplyEnabled(quorl));

    EXPECT_TRUE(Click(quorl, IDC_TWO_IN_ONE));
    DialogScript none(L"2 In 1", [](HWND box) { Answer(box, IDC_WARNING_NO); });
    EXPECT_TRUE(Click(quorl, IDC_TWO_IN_ONE));
    EXPECT_FALSE(none.FinishNow());
    EXPECT_EQ(none.dialog(), nullptr) << "not asked again";
    EXPECT_TRUE(Checked(quorl, IDC_TWO_IN_ONE));

    EXPECT_TRUE(Click(quorl, IDC_PRINT));
    EXPECT_FALSE(Checked(quorl, IDC_TWO_IN_ONE) || Enabled(quorl, IDC_COLOR));

    ASSERT_TRUE(ChooseEntry(quorl, IDC_GRAPHICS_QUALITY_LIST, 0));
    DialogScript reset(L"Reset To Default", [](HWND box) { Answer(box, IDYES); });
    EXPECT_TRUE(Click(quorl, IDC_DEFAULTS));
    EXPECT_TRUE(reset.Finish());
    EXPECT_TRUE(Checked(quorl, IDC_PRINT) && Checked(quorl, IDC_COLOR) && Enabled(quorl, IDC_COLOR));
    EXPECT_EQ(Selection(quorl, IDC_GRAPHICS_QUALITY_LIST), 2);
}

// An unknown braille standard shows "Marburg" and is written as 0; an apply writes the
// page's twelve values in their order with "Quality" as stored, never from the list; the
// colour already set touches no device mode, grayscale reaches both; nothing changed
// writes nothing even after "More Options ..."; "Merge B&ack and Front Ink" follows the
// Layout page's interpoint choice; the colour "&Defaults ..." shows reaches both.
TEST(QuorlPage, AppliesItsValuesInOrderAndWritesTheColourThroughOnlyWhenItChanges) {
    Preferences p;
    p.Store(L"Config", L"BrailleStandard", 7);
    p.Store(L"Config", L"Quality", 0);
    ASSERT_TRUE(p.Open([](DEVMODEW& dm) {
        dm.dmFields |= DM_COLOR;
        dm.dmColor = DMCOLOR_COLOR;
    }));
    HWND quorl = p.sheet->ShowPluginPage(2);
    EXPECT_EQ(Chosen(quorl, IDC_BRAILLE_STANDARD_LIST), L"Marburg");
    EXPECT_EQ(Entries(quorl, IDC_PRINT_QUALITY_LIST), (std::vector<std::wstring>{L"Draft", L"Normal", L"Best"}));
    EXPECT_EQ(Selection(quorl, IDC_PRINT_QUALITY_LIST), 0);
    ASSERT_TRUE(Checked(quorl, IDC_COLOR));

    p.TakeWrites();
    DialogScript unchanged(L"Advanced - " + p.printer.name(), [](HWND dialog) { Click(dialog, IDOK); });
    EXPECT_TRUE(Click(quorl, IDC_ADVANCED));
    EXPECT_TRUE(unchanged.Finish());
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_TRUE(p.TakeWrites().empty());

    ASSERT_TRUE(ChooseEntry(quorl, IDC_PRINT_QUALITY_LIST, L"Best"));
    ASSERT_TRUE(ChooseEntry(quorl, IDC_BRAILLE_QUALITY_LIST, L"Best"));
    EXPECT_TRUE(Click(quorl, IDC_EMBOSS_STANDARD_TEXT));
    const int printerWrites = p.spooler.printerWrites;
    testenv::TraceLog trace;
    ASSERT_TRUE(p.sheet->Apply());
    const std::vector<std::pair<std::wstring, DWORD>> expected = {
        {L"EmbossMode", 1}, {L"RenderingDensity", 6},    {L"DotQuality", 1}, {L"BrailleQuality", 2},
        {L"BrailleStandard", 0}, {L"DotHeight", 1},      {L"InkMode", 1},    {L"Quality", 0},
        {L"EmbossStandardTexts", 1}, {L"TwoInOne", 0},   {L"RenderMode", 2}, {L"TwoPassPrint", 0}};
    std::vector<std::string> expectedTrace, traced;
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(p.Stored(name.c_str()), value) << testenv::Narrow(name);
        expectedTrace.push_back("SetPrinterDataInteger(): 0=SetPrinterDataEx(), " + testenv::Narrow(name) + "=" +
                                std::to_string(value));
    }
    for (const std::string& line : trace.Lines()) {
        if (line.rfind("SetPrinterDataInteger(", 0) == 0) traced.push_back(line);
    }
    EXPECT_EQ(traced, expectedTrace);
    EXPECT_TRUE(trace.Contains("UpdateQuorlConfig(): updating"));
    EXPECT_EQ(p.spooler.printerWrites, printerWrites) << "the colour was already set";
    EXPECT_EQ(p.broadcasts.count(), 0);

    EXPECT_TRUE(Click(quorl, IDC_GRAYSCALE));
    EXPECT_TRUE(Visible(quorl, IDC_GRAYSCALE_PICTURE) && !Visible(quorl, IDC_COLOR_PICTURE));
    ASSERT_TRUE(p.sheet->Apply());
    for (const DEVMODEW& dm : {*p.hostPrinter.publicDevMode(), p.PrinterDevMode()}) {
        EXPECT_EQ(dm.dmColor, DMCOLOR_MONOCHROME);
    }
    EXPECT_TRUE(p.PrinterDevMode().dmFields & DM_COLOR);
    EXPECT_EQ(p.Stored(L"RenderMode"), 1u);
    EXPECT_EQ(p.broadcasts.count(), 1);

    EXPECT_FALSE(Enabled(quorl, IDC_MERGE_INK)) << "single sided";
    EXPECT_TRUE(Click(p.sheet->ShowPluginPage(0), IDC_DOUBLE_SIDED));
    EXPECT_TRUE(Enabled(p.sheet->ShowPluginPage(2), IDC_MERGE_INK));
    DialogScript reset(L"Reset To Default", [](HWND box) { Answer(box, IDYES); });
    EXPECT_TRUE(Click(quorl, IDC_DEFAULTS) && reset.Finish());
    ASSERT_TRUE(p.sheet->Apply());
    for (const DEVMODEW& dm : {*p.hostPrinter.publicDevMode(), p.PrinterDevMode()}) {
        EXPECT_EQ(dm.dmColor, DMCOLOR_COLOR);
    }
}

// Without a suite of version 8 the pattern controls are hidden and "ColorPattern" becomes
// 0; a typed number beyond the range moves the slider to its end. With one, a cancelled
// file-open dialog and a path too long to keep leave the list as it was; a file chosen
// (the dialog's filter and start folder as set) is stored with its path and the user's
// "CurrentPattern" holds its name.
TEST(QuorlAdvancedDialog, OffersPatternsOnlyWithTheSuiteAndKeepsTheChosenFile) {
    for (const auto& [name, version, accepted] :
         {std::tuple<const wchar_t*, const wchar_t*, bool>{L"Quorl Software Suite", L"7.9", false},
          {L"QUORL SOFTWARE SUITE 2026", L"8.0.1", true},
          {L"Quorl Software", L"12", false}}) {
        InstalledProgram program(name, version);
        EXPECT_EQ(IsQuorlSuiteInstalled(), accepted) << testenv::Narrow(name);
    }

    Preferences p;
    p.Store(L"Config", L"ColorPattern", 2);
    ASSERT_TRUE(p.Open());
    HWND quorl = p.sheet->ShowPluginPage(2);
    const std::wstring caption = L"Advanced - " + p.printer.name();
    bool patternsShown = true;
    int contrast = 0;
    DialogScript withoutSuite(caption, [&](HWND dialog) {
        patternsShown = Visible(dialog, IDC_APPLY_PATTERNS) || Visible(dialog, IDC_PATTERN_LIST);
        Type(dialog, IDC_CONTRAST_NUMBER, L"150");
        contrast = static_cast<int>(SendDlgItemMessageW(dialog, IDC_CONTRAST, TBM_GETPOS, 0, 0));
        Type(dialog, IDC_BRIGHTNESS_NUMBER, L"-20 points");
        Click(dialog, IDOK);
    });
    EXPECT_TRUE(Click(quorl, IDC_ADVANCED));
    EXPECT_TRUE(withoutSuite.Finish());
    EXPECT_FALSE(patternsShown);
    EXPECT_EQ(contrast, 100);
    EXPECT_EQ(p.Stored(L"ColorPattern"), 0u);
    EXPECT_EQ(p.Stored(L"Contrast"), 100u);
    EXPECT_EQ(static_cast<int32_t>(p.Stored(L"Brightness")), -20);

    InstalledProgram suite(L"Quorl Software Suite", L"8.2");
    RegistryValue currentPattern(HKEY_CURRENT_USER, configtest::kPatternsKey, L"CurrentPattern");
    wchar_t common[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common);
    const std::wstring folder = std::wstring(common) + L"\\Kestrova\\Quorl\\Patterns";
    const std::wstring file = folder + L"\\Ozdk Stripes.dat";
    SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
    std::ofstream(file.c_str()) << "pattern";
    std::vector<std::wstring> filters, shown;
    wchar_t startFolder[MAX_PATH] = {};
    DialogScript withSuite(caption, [&](HWND dialog) {
        Click(dialog, IDC_APPLY_PATTERNS);
        ChooseEntry(dialog, IDC_PATTERN_LIST, 2);
        for (const std::wstring& typed : {std::wstring(), kTooLongPath, file}) {  // cancelled, refused, chosen
            SetPatternFileDialogForTesting(typed == kTooLongPath ? ChooseTooLongPath : nullptr);
            // "Browse ...", posted: it opens a dialog
            SendDlgItemMessageW(dialog, IDC_PATTERN_LIST, CB_SETCURSEL, 0, 0);
            PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_PATTERN_LIST, CBN_SELCHANGE),
                         reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDC_PATTERN_LIST)));
            if (HWND box = typed == kTooLongPath ? WaitForWindow(L"Pattern Files", 5000) : nullptr) {
                shown.push_back(MessageBoxText(box));
                Answer(box, IDOK);
            } else if (HWND open = WaitForWindow(L"Open", 5000)) {
                filters = Entries(open, cmb1);
                SendMessageW(open, CDM_GETFOLDERPATH, MAX_PATH, reinterpret_cast<LPARAM>(startFolder));
                HWND name = GetDlgItem(open, cmb13);  // a ComboBoxEx32 with an edit field
                SendMessageW(reinterpret_cast<HWND>(SendMessageW(name, CBEM_GETEDITCONTROL, 0, 0)), WM_SETTEXT, 0,
                             reinterpret_cast<LPARAM>(typed.c_str()));
                PostClick(open, typed.empty() ? IDCANCEL : IDOK);
            }
            for (int wait = 0; wait < 250 && Selection(dialog, IDC_PATTERN_LIST) == 0; ++wait) Sleep(20);
            shown.push_back(Enabled(dialog, IDC_PATTERN_LIST) ? Chosen(dialog, IDC_PATTERN_LIST) : L"(disabled)");
        }
        Click(dialog, IDOK);
    });
    EXPECT_TRUE(Click(quorl, IDC_ADVANCED));
    EXPECT_TRUE(withSuite.Finish());
    DeleteFileW(file.c_str());
    EXPECT_EQ(filters, (std::vector<std::wstring>{L"Pattern Files (*.dat)", L"All Files (*.*)"}));
    EXPECT_EQ(std::wstring(startFolder), folder);
    EXPECT_EQ(shown, (std::vector<std::wstring>{
                         L"Automatic Pattern",
                         L"The path of this pattern file is too long. Please choose a file with a shorter path.",
                         L"Automatic Pattern", file}));
    EXPECT_EQ(p.Stored(L"ColorPattern"), 1u);
    EXPECT_EQ(testenv::ReadPrinterData(p.printer.handle(), L"Config", L"CustomPatternFileName").AsString(), file);
    wchar_t stored[MAX_PATH] = {};
    DWORD size = sizeof(stored);
    RegGetValueW(HKEY_CURRENT_USER, configtest::kPatternsKey, L"CurrentPattern", RRF_RT_REG_SZ, nullptr, stored,
                 &size);
    EXPECT_EQ(std::wstring(stored), L"Ozdk Stripes.dat");
}
