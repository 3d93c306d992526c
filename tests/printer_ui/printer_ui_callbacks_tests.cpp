// The behaviour of the "Legacy Settings" items and their two push buttons, driven as the
// host drives them: the device is an embosser simulator on loopback behind the printer's
// Standard TCP/IP port, and what is sent back to it are the printer's raw jobs. The
// "Reset To Default" message box is answered from a second thread as a user would answer
// it; "Braille Tables" hands over to the language-monitor extension stand-in.
#include "legacy_tree_fixture.h"

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "printer_ui/printer_ui_callbacks.h"
#include "standins/language_monitor_extension/language_monitor_extension_record.h"

using devicetest::Default;
using devicetest::kServiceUpdate;
using printeruitest::LegacyTree;
using testenv::TraceLog;

namespace {

void ExpectSettingFlags(LegacyTree& tree, DWORD flags) {
    for (size_t i = 1; i < tree.items.size(); ++i) EXPECT_EQ(tree.items[i].Flags, flags) << "item " << i;
}

struct AnsweredBox {
    HWND owner = nullptr;
    std::vector<std::wstring> texts;  // of the box's controls; empty when no box came
};

// Waits for the message box captioned `caption`, notes its owner and texts, and presses
// button `answer` (IDYES or IDNO).
void AnswerMessageBox(std::wstring caption, int answer, AnsweredBox* seen) {
    HWND box = nullptr;
    for (int tries = 0; box == nullptr && tries < 500; ++tries) {
        box = FindWindowW(L"#32770", caption.c_str());
        if (box == nullptr) Sleep(20);
    }
    if (box == nullptr) return;
    seen->owner = GetWindow(box, GW_OWNER);
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t text[512] = {};
        GetWindowTextW(child, text, 512);
        seen->texts.push_back(text);
    }
    PostMessageW(box, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(box, answer)));
}

}  // namespace

TEST(OEMPrinterUICallBack, ReadOnceApplyEditsAndResetToDefaultWhicheverButtonIsPressed) {
    auto embosser = devicetest::StartSimulator(
        devicetest::Simulating("127.77.4.1", embosser_sim::Behaviour::Answer, printeruitest::ReplyUnlikeTheDefaults()));
    LegacyTree tree(L"127.77.4.1");
    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, 23);
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

    // Apply sends nothing without an edit, nor after the device's values chosen or typed
    // again.
    tree.printer.ClearJobs();
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    tree.Choose(230, 38);
    tree.Choose(228, 3);  // Microbraille
    tree.Type(41, L"0.35");
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_ITEMS_APPLIED);
    EXPECT_EQ(tree.printer.Jobs(), "");

    tree.Type(40, L"1.00");
    tree.Choose(230, 30);
    tree.Choose(57, 1);  // light braille paper
    tree.Choose(60, 3);  // French
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_ITEMS_APPLIED);

    EXPECT_EQ(tree.printer.Jobs(), Default("TOPMARGIN=20") + Default("CHARSWIDTH=30") +
                                         Default("MEDIATYPE=LIGHTBRAILLE") + Default("BRAILLETABLE=FR_FR") +
                                         kServiceUpdate);
    EXPECT_EQ(tree.Config().LegacyChanged, 0u);
    EXPECT_EQ(embosser->RequestCount(), 1);

    // Applied once: a second apply without an edit sends nothing more.
    tree.printer.ClearJobs();
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.printer.Jobs(), "");

    // Built again now that the device has answered: enabled, with the device's values
    // (the inch texts are the record's own).
    ASSERT_EQ(tree.Build(), S_OK);
    ExpectSettingFlags(tree, OPTIF_CALLBACK);
    tree.ExpectShown({{52, L"8.50"}, {53, L"11.00"}, {40, L"0.25"}, {30, L"0.00"}, {230, L"30"}, {231, L"27"},
                      {42, L"Graphics"}, {26, L"8"}, {228, L"Japanese Standard (Microbraille)"}, {45, L"On"},
                      {57, L"Default 2 (Light Braille Paper)"}, {61, L"Low"}, {232, L"Best"},
                      {27, L"Double Sided (Interpoint)"}, {99, L"Face Up"}, {50, L"Custom"}});

    // "Reset To Default": "No" first, on a device whose every setting differs from the
    // defaults; then "Yes" after the device's characters per line changed again.
    const HWND page = CreateWindowExW(0, L"STATIC", L"page", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    const struct {
        int answer;
        std::string jobs;
    } cases[] = {
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
        for (auto& item : tree.items) item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        tree.Item(230).Sel = 40;
        tree.Config().EmbsrCharsWidth = 40;
        tree.printer.ClearJobs();
        TraceLog log;

        AnsweredBox box;
        std::thread answerer(AnswerMessageBox, tree.printer.name(), c.answer, &box);
        const LONG action = tree.Press(32, page);
        answerer.join();

        EXPECT_EQ(action, CPSUICB_ACTION_OPTIF_CHANGED);
        EXPECT_EQ(box.owner, page);
        EXPECT_EQ(box.texts, (std::vector<std::wstring>{L"", L"&Yes", L"&No", L"Click on Yes to reset all Legacy "
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

TEST(OEMPrinterUICallBack, AFailedReadLeavesTheSettingsDisabledAndIsNotTriedAgain) {
    std::string incomplete = embosser_sim::SampleLegacyBlock();  // its model line is missing
    incomplete.erase(incomplete.find("MODEL="));
    auto embosser = devicetest::StartSimulator(
        devicetest::Simulating("127.77.4.2", embosser_sim::Behaviour::Answer, embosser_sim::HttpReply(incomplete)));
    LegacyTree tree(L"127.77.4.2");
    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, -1);
    ExpectSettingFlags(tree, OPTIF_CALLBACK | OPTIF_DISABLED);
    ASSERT_EQ(tree.Build(), S_OK);
    ExpectSettingFlags(tree, OPTIF_CALLBACK | OPTIF_DISABLED);
    // Nothing can be sent to a device whose settings are unknown.
    tree.Choose(230, 40);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.printer.Jobs(), "");
}

TEST(OEMPrinterUICallBack, SelectionChangesMarkSettingsChangedAndFillOrCorrectItemsOtherReasonsDoNothing) {
    const struct {
        const char* what;
        BYTE id;
        const wchar_t* input;  // typed into an edit item, or the list entry chosen; null: entry 1
        LONG action;
        bool marksChanged;
        std::vector<std::pair<BYTE, const wchar_t*>> rewritten;  // marked changed, showing this
    } cases[] = {
        {"Letter fills width and length", 50, L"Letter", CPSUICB_ACTION_OPTIF_CHANGED, true,
         {{52, L"8.50"}, {53, L"11.00"}}},  // 215 900 x 279 400
        {"A4's are rounded up to tenths", 50, L"A4", CPSUICB_ACTION_OPTIF_CHANGED, true,
         {{52, L"8.30"}, {53, L"11.70"}}},  // 210 000 x 297 000
        {"Custom leaves them", 50, L"Custom", CPSUICB_ACTION_NONE, false, {}},
        {"negative top margin becomes 0.00", 40, L"-0.5", CPSUICB_ACTION_OPTIF_CHANGED, true, {{40, L"0.00"}}},
        {"top margin above -0.05 is not negative in 1/20 inch", 40, L"-0.04", CPSUICB_ACTION_NONE, true, {}},
        {"left margin is not checked", 41, L"-3", CPSUICB_ACTION_NONE, true, {}},
        {"chars per line", 230, nullptr, CPSUICB_ACTION_NONE, true, {}},
        {"braille tables button is no setting", 74, nullptr, CPSUICB_ACTION_NONE, false, {}},
        {"the head is no setting", 0, nullptr, CPSUICB_ACTION_NONE, false, {}},
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        wcscpy(tree.Item(52).pSel, L"9.99");
        wcscpy(tree.Item(53).pSel, L"12.34");
        std::vector<std::wstring> before;
        for (OPTITEM& item : tree.items) {
            item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
            before.push_back(LegacyTree::Shown(item));
        }
        tree.Config().LegacyChanged = 0;
        const OPTITEM& chosen = tree.Item(c.id);
        const bool edit = chosen.pOptType != nullptr && chosen.pOptType->Type == TVOT_EDITBOX;

        EXPECT_EQ(edit ? tree.Type(c.id, c.input) : tree.Choose(c.id, c.input ? tree.FindEntry(c.id, c.input) : 1),
                  c.action);

        EXPECT_EQ(tree.Config().LegacyChanged != 0, c.marksChanged);
        for (size_t i = 0; i < tree.items.size(); ++i) {
            const OPTITEM& item = tree.items[i];
            // The chosen item shows what was typed or chosen, the others what they showed.
            std::wstring expected = &item != &chosen ? before[i] : edit ? c.input : LegacyTree::Shown(item);
            bool changed = false;
            for (const auto& [id, text] : c.rewritten) {
                if (id == item.UserItemID) changed = true, expected = text;
            }
            EXPECT_EQ((item.Flags & OPTIF_CHANGED) != 0, changed) << "item " << i;
            EXPECT_EQ(LegacyTree::Shown(item), expected) << "item " << i;
        }
    }

    // Other reasons change nothing, and without a record no reason does anything.
    tree.Config().LegacyParmCount = 23;
    tree.Config().LegacyChanged = 1;
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

TEST(BrailleTablesButton, AsksTheExtensionForTheBrailleTableServiceWithTheDeviceTable) {
    const struct {
        const wchar_t* library;  // placed as the extension; null: none
        const wchar_t* table;
        const wchar_t* call;  // the service and table index the extension records; null: no call
    } cases[] = {
        {L"ozdkrnlmex.dll", L"FR_FR", L"14 3"},
        {L"ozdkrnlmex.dll", L"ja_jp", L"14 19"},
        {L"ozdkrnlmex.dll", L"", L"14 0"},
        {L"ozdkrnlmex_noservice.dll", L"EN_US", nullptr},
        {nullptr, L"EN_US", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.library ? testenv::Narrow(c.library) : "no library") << " "
                                        << testenv::Narrow(c.table));
        testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY);
        const std::wstring folder = L"tests\\standins\\language_monitor_extension\\";
        testenv::PlacedCompanion extension(c.library ? testenv::BuildFilePath(folder + c.library) : std::wstring(),
                                           testenv::ExtensionLibraryPath());
        ASSERT_EQ(extension.placed(), c.library != nullptr);
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, c.table);
        TraceLog log;

        EXPECT_EQ(tree.Press(74), 0);

        wchar_t recorded[512] = {};
        DWORD size = sizeof(recorded);
        RegGetValueW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, L"Calls", RRF_RT_REG_SZ, nullptr, recorded, &size);
        EXPECT_EQ(std::wstring(recorded), c.call ? L"0 " + tree.printer.name() + L" " + c.call + L"\n" : L"");
        EXPECT_EQ(log.Contains("ExtDllLoadFunction(): function DllExportPrinterService not exported"),
                  c.library != nullptr && c.call == nullptr);
    }
}
