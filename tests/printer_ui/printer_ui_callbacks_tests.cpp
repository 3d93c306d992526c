// The behaviour of the "Legacy Settings" items and their two push buttons, driven as the
// host drives them: the device is an embosser simulator on loopback behind the printer's
// Standard TCP/IP port, and what is sent back to it are the printer's raw jobs. The
// "Reset To Default" message box is answered from a second thread as a user would answer
// it; "Braille Tables" hands over to the language-monitor extension stand-in.
#include "legacy_tree_fixture.h"

#include <map>

#include "standins/language_monitor_extension/language_monitor_extension_record.h"
#include "tools/host/dialog_driver.h"

using devicetest::Default;
using devicetest::kServiceUpdate;
using printeruitest::LegacyTree;
using testenv::TraceLog;

namespace {

void ExpectSettingFlags(LegacyTree& tree, DWORD flags) {
    for (size_t i = 1; i < tree.items.size(); ++i) EXPECT_EQ(tree.items[i].Flags, flags) << "item " << i;
}

}  // namespace

TEST(OEMPrinterUICallBack, ReadOnceApplyEditsAndResetToDefaultWhicheverButtonIsPressed) {
    auto embosser = devicetest::StartSimulator(
        devicetest::Simulating("127.77.4.1", embosser_sim::Behaviour::Answer, printeruitest::ReplyUnlikeTheDefaults()));
    LegacyTree tree;
    tree.printer.MakeNetworkPort(L"127.77.4.1", L"");
    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_TRUE(tree.items[0].Flags & OPTIF_DISABLED);
    ExpectSettingFlags(tree, OPTIF_CALLBACK | OPTIF_CHANGED);
    // Microbraille (3) is shown as entry 2 after a read, short edge (2) as selection 2.
    tree.ExpectShown({{52, L"11.50"}, {53, L"10.00"}, {40, L"0.60"}, {41, L"0.35"}, {76, L"0.30"}, {30, L"0.20"},
                      {230, L"38"}, {231, L"27"}, {42, L"Graphics"}, {26, L"8"},
                      {228, L"American National Library of the Blind"}, {45, L"On"},
                      {57, L"Default 5 (Card Stock)"}, {60, L"German"}, {61, L"Low"}, {232, L"Best"}, {27, L"#2"},
                      {99, L"Face Up"}});

    // The second activation neither reads again nor reloads the items.
    tree.Item(230).Sel = 33;
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Item(230).Sel, 33);

    // Apply sends nothing without an edit, then the edits (the writer leaves out values the
    // device has), once: the record no longer counts as changed.
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    tree.Type(40, L"1.00");
    tree.Choose(230, 30);
    tree.Choose(57, 1);  // light braille paper
    tree.Choose(228, 3);  // the device's Microbraille again, which the read showed as entry 2
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_ITEMS_APPLIED);

    EXPECT_EQ(tree.printer.Jobs(),
              Default("TOPMARGIN=20") + Default("CHARSWIDTH=30") + Default("MEDIATYPE=LIGHTBRAILLE") + kServiceUpdate);
    EXPECT_EQ(tree.Config().LegacyChanged, 0u);

    // Built again now that the device has answered: enabled, with the device's values
    // (the inch texts are the record's own).
    ASSERT_EQ(tree.Build(), S_OK);
    ExpectSettingFlags(tree, OPTIF_CALLBACK);
    tree.ExpectShown({{52, L"8.50"}, {53, L"11.00"}, {40, L"0.25"}, {30, L"0.00"}, {230, L"30"}, {231, L"27"},
                      {42, L"Graphics"}, {26, L"8"}, {228, L"Japanese Standard (Microbraille)"}, {45, L"On"},
                      {57, L"Default 2 (Light Braille Paper)"}, {61, L"Low"}, {232, L"Best"}, {76, L"0.25"},
                      {27, L"Double Sided (Interpoint)"}, {99, L"Face Up"}, {50, L"Custom"}});

    // "Reset To Default": "No" first, on a device whose every setting differs from the
    // defaults; then "Yes" after the device's characters per line changed again. Either
    // way every item is reset and marked changed (the flags are checked after "No").
    const HWND page = CreateWindowExW(0, L"STATIC", L"page", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    const struct { int answer; std::string jobs; } cases[] = {
        {IDNO, Default("PAPERWIDTH=6120") + Default("PAPERLENGTH=7920") + Default("TOPMARGIN=10") +
                   Default("LEFTMARGIN=5") + Default("RIGHTMARGIN=5") + Default("CHARSWIDTH=32") +
                   Default("LINESLENGTH=25") + Default("GRAPHICS=OFF") + Default("BRAILLEDOTS=6") +
                   Default("SPACING=MARBURG") + Default("AUTOCR=OFF") + Default("EXTRALINESPACE=0") +
                   Default("MEDIATYPE=BRAILLE") + Default("BRAILLETABLE=EN_US") + Default("BRAILLEFORCE=NORMAL") +
                   Default("QUALITY=STANDARD") + Default("DUPLEXMODE=SIMPLEX") + Default("OUTPUTFACE=2") +
                   kServiceUpdate},
        {IDYES, Default("CHARSWIDTH=32") + kServiceUpdate},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer == IDYES ? "Yes" : "No");
        tree.Config().EmbsrCharsWidth = 40;
        tree.printer.ClearJobs();
        TraceLog log;

        HWND owner = nullptr;
        std::vector<std::wstring> texts;  // of the box's controls
        ozdkhost::DialogScript box(tree.printer.name(), [&](HWND shown) {
            owner = GetWindow(shown, GW_OWNER);
            for (HWND child = GetWindow(shown, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
                wchar_t text[512] = {};
                GetWindowTextW(child, text, 512);
                texts.push_back(text);
            }
            ozdkhost::Answer(shown, c.answer);
        });
        EXPECT_EQ(tree.Press(32, page), CPSUICB_ACTION_OPTIF_CHANGED);
        EXPECT_TRUE(box.FinishNow()) << "the box was shown and answered";

        EXPECT_EQ(owner, page);
        EXPECT_EQ(texts, (std::vector<std::wstring>{L"", L"&Yes", L"&No", L"Click on Yes to reset all Legacy "
                                                                               L"Settings to their default values."}));
        EXPECT_TRUE(log.Contains("OEMResetToDefaultPushButtonCallback(): " + std::to_string(c.answer) +
                                 "=MessageBox()"));
        EXPECT_EQ(tree.printer.Jobs(), c.jobs);
        EXPECT_TRUE(tree.items[0].Flags & OPTIF_CHANGED);
        ExpectSettingFlags(tree, OPTIF_CALLBACK | OPTIF_CHANGED);
        EXPECT_EQ(tree.Shown(50), L"Letter");  // its first entry
    }
    DestroyWindow(page);
}

// On a device whose settings could not be read: the items stay disabled, the read is not
// tried again, and nothing is ever sent; selection changes are handled all the same.
TEST(OEMPrinterUICallBack, AfterAFailedReadSelectionChangesMarkSettingsChangedAndFillOrCorrectItems) {
    auto embosser = devicetest::StartSimulator(
        devicetest::Simulating("127.77.4.2", embosser_sim::Behaviour::Answer, embosser_sim::HttpReply("")));
    LegacyTree tree;
    tree.printer.MakeNetworkPort(L"127.77.4.2", L"");
    ASSERT_EQ(tree.Build(), S_OK);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, -1);
    ASSERT_EQ(tree.Build(), S_OK);
    ExpectSettingFlags(tree, OPTIF_CALLBACK | OPTIF_DISABLED);

    const struct {
        const char* what;
        BYTE id;
        const wchar_t* input;  // typed into an edit item, or the list entry chosen; null: entry 1
        LONG action;
        bool marksChanged;
        std::map<BYTE, const wchar_t*> rewritten;  // marked changed, showing this
    } cases[] = {
        {"A4 fills width and length, rounded up to tenths", 50, L"A4", CPSUICB_ACTION_OPTIF_CHANGED, true,
         {{52, L"8.30"}, {53, L"11.70"}}},  // 210 000 x 297 000
        {"Custom leaves them", 50, L"Custom", CPSUICB_ACTION_NONE, false, {}},
        {"negative top margin becomes 0.00", 40, L"-0.5", CPSUICB_ACTION_OPTIF_CHANGED, true, {{40, L"0.00"}}},
        {"top margin above -0.05 is not negative in 1/20 inch", 40, L"-0.04", CPSUICB_ACTION_NONE, true, {}},
        {"left margin is not checked", 41, L"-3", CPSUICB_ACTION_NONE, true, {}},
        {"chars per line", 230, nullptr, CPSUICB_ACTION_NONE, true, {}},
        {"braille tables button is no setting", 74, nullptr, CPSUICB_ACTION_NONE, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        wcscpy(tree.Item(52).pSel, L"9.99");
        wcscpy(tree.Item(53).pSel, L"12.34");
        for (OPTITEM& item : tree.items) item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        tree.Config().LegacyChanged = 0;
        const bool edit = tree.Item(c.id).pOptType->Type == TVOT_EDITBOX;

        EXPECT_EQ(edit ? tree.Type(c.id, c.input) : tree.Choose(c.id, c.input ? tree.FindEntry(c.id, c.input) : 1),
                  c.action);

        EXPECT_EQ(tree.Config().LegacyChanged != 0, c.marksChanged);
        // A typed text stays unless it is corrected, width and length unless they are filled.
        auto shown = c.rewritten;
        shown.insert({{52, L"9.99"}, {53, L"12.34"}});
        if (edit) shown.insert({c.id, c.input});
        for (const auto& [id, text] : shown) EXPECT_EQ(tree.Shown(id), text) << "item " << static_cast<int>(id);
        for (const OPTITEM& item : tree.items) {
            EXPECT_EQ((item.Flags & OPTIF_CHANGED) != 0, c.rewritten.count(item.UserItemID) == 1) << item.pName;
        }
    }

    // Other reasons change nothing, and without a record no reason does anything.
    tree.Config().LegacyChanged = 1;
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    tree.Config().LegacyParmCount = 23;
    for (WORD reason : {CPSUICB_REASON_KILLACTIVE, CPSUICB_REASON_PUSHBUTTON, CPSUICB_REASON_ITEMS_REVERTED}) {
        EXPECT_EQ(tree.Callback(reason, &tree.Item(230)), CPSUICB_ACTION_NONE) << reason;
    }
    EXPECT_EQ(tree.Config().LegacyChanged, 1u);
    tree.param.pOEMUserData = nullptr;
    for (WORD reason : {CPSUICB_REASON_SETACTIVE, CPSUICB_REASON_SEL_CHANGED, CPSUICB_REASON_APPLYNOW}) {
        EXPECT_EQ(tree.Callback(reason, &tree.Item(40)), CPSUICB_ACTION_NONE) << reason;
    }
    EXPECT_EQ(tree.printer.Jobs(), "");
}

// The table asked for is the device's, taken from its name.
TEST(BrailleTablesButton, AsksTheExtensionForTheBrailleTableServiceWithTheDeviceTable) {
    for (const std::wstring library : {L"ozdkrnlmex_noservice.dll", L"ozdkrnlmex.dll"}) {
        SCOPED_TRACE(testenv::Narrow(library));
        SetEnvironmentVariableW(OZDK_EXTENSION_CALLS, nullptr);
        testenv::PlacedCompanion extension(
            testenv::BuildFilePath(L"tests\\standins\\language_monitor_extension\\" + library),
            testenv::ExtensionLibraryPath());
        ASSERT_TRUE(extension.placed());
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, L"ja_jp");
        TraceLog log;

        EXPECT_EQ(tree.Press(74), 0);

        const bool service = library == L"ozdkrnlmex.dll";
        wchar_t calls[512] = {};
        GetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls, 512);
        EXPECT_EQ(std::wstring(calls), service ? L"0 " + tree.printer.name() + L" 14 19 0\n" : L"");
        EXPECT_EQ(log.Contains("ExtDllLoadFunction(): function DllExportPrinterService not exported"), !service);
    }
}
