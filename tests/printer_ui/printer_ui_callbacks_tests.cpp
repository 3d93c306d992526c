// The behaviour of the "Legacy Settings" items, driven as the host drives them: the
// device is an embosser simulator on loopback behind the printer's Standard TCP/IP port,
// and what is sent back to it are the printer's raw jobs.
#include "legacy_tree_fixture.h"

#include <cstdint>
#include <memory>
#include <string>

#include "printer_ui/printer_ui_callbacks.h"

using printeruitest::Default;
using printeruitest::kServiceUpdate;
using printeruitest::LegacyTree;
using printeruitest::StartEmbosser;
using testenv::TraceLog;

TEST(OEMPrinterUICallBack, ActivationReadsTheDeviceOnceAndShowsItsValues) {
    auto embosser = StartEmbosser("127.77.4.1", printeruitest::ReplyUnlikeTheDefaults());
    LegacyTree tree(L"127.77.4.1");
    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, 23);
    EXPECT_EQ(tree.Config().LegacyRefresh, 0u);
    EXPECT_TRUE(tree.items()[0].Flags & OPTIF_DISABLED);
    for (size_t i = 1; i < tree.items().size(); ++i) {
        EXPECT_EQ(tree.items()[i].Flags, static_cast<DWORD>(OPTIF_CALLBACK | OPTIF_CHANGED)) << i;
    }
    // Microbraille (3) is shown as entry 2 after a read, short edge (2) as selection 2.
    tree.ExpectShown({{52, 0, L"11.50"}, {53, 0, L"10.00"}, {40, 0, L"0.60"}, {41, 0, L"0.35"}, {76, 0, L"0.30"},
                      {30, 0, L"0.20"},  {230, 38, nullptr}, {231, 27, nullptr}, {42, 1, nullptr}, {26, 1, nullptr},
                      {228, 2, nullptr}, {45, 0, nullptr},  {57, 4, nullptr},  {60, 2, nullptr},  {61, 2, nullptr},
                      {232, 2, nullptr}, {27, 2, nullptr},  {99, 0, nullptr}});

    // The second activation neither reads again nor reloads the items.
    tree.Item(230).Sel = 33;
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Item(230).Sel, 33);
}

TEST(OEMPrinterUICallBack, AFailedReadLeavesTheSettingsDisabledAndIsNotTriedAgain) {
    std::string incomplete = embosser_sim::SampleLegacyBlock();  // its model line is missing
    incomplete.erase(incomplete.find("MODEL="));
    auto embosser = StartEmbosser("127.77.4.2", embosser_sim::HttpReply(incomplete));
    LegacyTree tree(L"127.77.4.2");
    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, -1);
    for (size_t i = 1; i < tree.items().size(); ++i) {
        EXPECT_EQ(tree.items()[i].Flags, static_cast<DWORD>(OPTIF_CALLBACK | OPTIF_DISABLED)) << i;
    }
    // Nothing can be sent to a device whose settings are unknown.
    tree.Choose(230, 40);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.printer().Jobs(), "");
}

TEST(OEMPrinterUICallBack, ChoosingAFormSizeWritesItsWidthAndLengthInInches) {
    const struct {
        const wchar_t* paper;
        LONG action;
        const wchar_t* width;
        const wchar_t* length;
    } cases[] = {
        {L"Letter", CPSUICB_ACTION_OPTIF_CHANGED, L"8.50", L"11.00"},  // 215 900 x 279 400
        {L"A4", CPSUICB_ACTION_OPTIF_CHANGED, L"8.30", L"11.70"},      // 210 000 x 297 000
        {L"Custom", CPSUICB_ACTION_NONE, L"9.99", L"12.34"},           // left as they were
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    OPTITEM& width = tree.Item(52);
    OPTITEM& length = tree.Item(53);
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.paper));
        wcscpy(width.pSel, L"9.99");
        wcscpy(length.pSel, L"12.34");
        width.Flags = length.Flags = OPTIF_CALLBACK;
        tree.Config().LegacyChanged = 0;
        LONG index = -1;
        for (WORD i = 0; i < tree.Item(50).pOptType->Count; ++i) {
            if (tree.EntryText(50, i) == c.paper) index = i;
        }
        ASSERT_GE(index, 0);

        EXPECT_EQ(tree.Choose(50, index), c.action);

        EXPECT_STREQ(width.pSel, c.width);
        EXPECT_STREQ(length.pSel, c.length);
        const bool changed = c.action == CPSUICB_ACTION_OPTIF_CHANGED;
        EXPECT_EQ((width.Flags & OPTIF_CHANGED) != 0, changed);
        EXPECT_EQ((length.Flags & OPTIF_CHANGED) != 0, changed);
        EXPECT_EQ(tree.Config().LegacyChanged != 0, changed);
    }
}

TEST(OEMPrinterUICallBack, SelectionChangesMarkOnlyDeviceSettingsAsChangedAndKeepTheTopMarginPositive) {
    const struct {
        const char* what;
        BYTE id;
        const wchar_t* text;  // typed into an edit item, else a selection is made
        bool marksChanged;
        const wchar_t* textAfter;
    } cases[] = {
        {"negative top margin becomes 0.00", 40, L"-0.5", true, L"0.00"},
        {"top margin above -0.05 is not negative in 1/20 inch", 40, L"-0.04", true, L"-0.04"},
        {"left margin is not checked", 41, L"-3", true, L"-3"},
        {"chars per line", 230, nullptr, true, nullptr},
        {"braille tables button is no setting", 74, nullptr, false, nullptr},
        {"the head is no setting", 0, nullptr, false, nullptr},
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        tree.Config().LegacyChanged = 0;
        OPTITEM& item = tree.Item(c.id);
        item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        const bool corrected = c.textAfter != nullptr && wcscmp(c.text, c.textAfter) != 0;

        EXPECT_EQ(c.text != nullptr ? tree.Type(c.id, c.text) : tree.Choose(c.id, 1),
                  corrected ? CPSUICB_ACTION_OPTIF_CHANGED : CPSUICB_ACTION_NONE);

        EXPECT_EQ(tree.Config().LegacyChanged != 0, c.marksChanged);
        EXPECT_EQ((item.Flags & OPTIF_CHANGED) != 0, corrected);
        EXPECT_STREQ(c.textAfter != nullptr ? item.pSel : nullptr, c.textAfter);
    }
}

TEST(OEMPrinterUICallBack, ApplySendsExactlyTheEditedSettingsOnceAndNothingWithoutARealEdit) {
    auto embosser = StartEmbosser("127.77.4.3", embosser_sim::SampleReply());
    LegacyTree tree(L"127.77.4.3");
    ASSERT_EQ(tree.Build(), S_OK);
    ASSERT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);
    tree.printer().ClearJobs();
    const struct {
        const char* what;
        void (*edit)(LegacyTree&);
        LONG action;
    } unchanged[] = {
        {"no edit at all", [](LegacyTree&) {}, CPSUICB_ACTION_NONE},
        {"a selection made again", [](LegacyTree& t) { t.Choose(230, t.Item(230).Sel); }, CPSUICB_ACTION_ITEMS_APPLIED},
        {"a text typed again", [](LegacyTree& t) { t.Type(41, L"0.25"); }, CPSUICB_ACTION_ITEMS_APPLIED},
        {"a push on the braille tables button's item", [](LegacyTree& t) { t.Choose(74, 0); }, CPSUICB_ACTION_NONE},
    };
    for (const auto& c : unchanged) {
        SCOPED_TRACE(c.what);
        TraceLog log;
        tree.Config().LegacyChanged = 0;  // an apply that sent nothing leaves the flag set
        c.edit(tree);
        EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), c.action);
        EXPECT_EQ(tree.printer().Jobs(), "");
        EXPECT_FALSE(log.Contains("UpdateNvRamData(): validate"));
    }

    tree.Type(40, L"1.00");
    tree.Choose(230, 30);
    tree.Choose(57, 1);  // light braille paper
    tree.Choose(60, 3);  // French
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_ITEMS_APPLIED);

    EXPECT_EQ(tree.printer().Jobs(), Default("TOPMARGIN=20") + Default("CHARSWIDTH=30") +
                                         Default("MEDIATYPE=LIGHTBRAILLE") + Default("BRAILLETABLE=FR_FR") +
                                         kServiceUpdate);
    EXPECT_EQ(tree.Config().LegacyChanged, 0u);
    EXPECT_EQ(tree.Config().EmbsrTopMargin, 20);
    EXPECT_EQ(embosser->RequestCount(), 1);

    // Applied once: a second apply without an edit sends nothing more.
    tree.printer().ClearJobs();
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.printer().Jobs(), "");
}

TEST(OEMPrinterUICallBack, OtherReasonsAndCallsWithoutARecordChangeNothing) {
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    tree.Config().LegacyParmCount = 23;
    tree.Config().LegacyChanged = 1;
    for (WORD reason : {CPSUICB_REASON_KILLACTIVE, CPSUICB_REASON_PUSHBUTTON, CPSUICB_REASON_ITEMS_REVERTED}) {
        EXPECT_EQ(tree.Callback(reason, &tree.Item(230)), CPSUICB_ACTION_NONE) << reason;
        EXPECT_EQ(tree.Config().LegacyChanged, 1u) << reason;
    }
    tree.param().pOEMUserData = nullptr;
    for (WORD reason : {CPSUICB_REASON_SETACTIVE, CPSUICB_REASON_SEL_CHANGED, CPSUICB_REASON_APPLYNOW}) {
        EXPECT_EQ(tree.Callback(reason, &tree.Item(40)), CPSUICB_ACTION_NONE) << reason;
    }
    EXPECT_EQ(tree.printer().Jobs(), "");
}

TEST(UpdateCurrentOptionItem, FindsTheDeviceFormSizeAndTableAndShowsOddValues) {
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    UIConfig& config = tree.Config();
    const struct {
        int32_t width, length;
        const wchar_t* selected;  // null: left as it was
    } forms[] = {
        {170, 220, L"Letter Small"},  // Letter and Letter Small: the later
        {233, 166, L"A4"},            // turned
        {100, 100, nullptr},
    };
    for (const auto& f : forms) {
        SCOPED_TRACE(testing::Message() << f.width << " x " << f.length);
        config.EmbsrPaperWidth = f.width;
        config.EmbsrPaperLength = f.length;
        tree.Item(50).Sel = 77;
        UpdateCurrentOptionItem(&config, &tree.Item(50));
        if (f.selected != nullptr) {
            EXPECT_EQ(tree.SelectedText(50), f.selected);
        } else {
            EXPECT_EQ(tree.Item(50).Sel, 77);
        }
    }

    config.BrailleTableIndex = 9;  // the table goes by its name
    for (const wchar_t* table : {L"de_de", L"KLINGON"}) {
        wcscpy(config.EmbsrBrailleTable, table);
        UpdateCurrentOptionItem(&config, &tree.Item(60));
        EXPECT_EQ(tree.Item(60).Sel, table[0] == L'd' ? 2 : 0) << testenv::Narrow(table);
    }

    config.EmbsrRightMargin = -5;
    config.EmbsrDuplex = 5;
    tree.Item(0).Sel = 77;
    for (BYTE id : {76, 27, 0}) UpdateCurrentOptionItem(&config, &tree.Item(id));
    tree.ExpectShown({{76, 0, L"-0.25"}, {27, 0, nullptr}, {0, 77, nullptr}});
}
