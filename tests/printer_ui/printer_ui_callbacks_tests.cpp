// The behaviour of the "Legacy Settings" items, driven as the host drives them: the
// device is an embosser simulator on loopback behind the printer's Standard TCP/IP port,
// and what is sent back to it are the printer's raw jobs.
#include "legacy_tree_fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "config/ui_config.h"
#include "printer_ui/printer_ui_callbacks.h"

using printeruitest::Default;
using printeruitest::Embosser;
using printeruitest::kServiceUpdate;
using printeruitest::LegacyTree;
using testenv::TraceLog;

namespace {

int CountLinesStartingWith(const TraceLog& log, const std::string& prefix) {
    int count = 0;
    for (const auto& line : log.Lines()) count += line.compare(0, prefix.size(), prefix) == 0 ? 1 : 0;
    return count;
}

// A tree whose device settings were read from the simulator's sample device.
struct ActiveTree {
    explicit ActiveTree(const char* address, const std::string& reply = embosser_sim::SampleReply())
        : embosser(address, reply), tree(testenv::Widen(address).c_str()) {
        EXPECT_EQ(tree.Build(), S_OK);
        EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);
        EXPECT_EQ(tree.Config().LegacyParmCount, 23);
        tree.printer().ClearJobs();
    }
    Embosser embosser;
    LegacyTree tree;
};

}  // namespace

TEST(OEMPrinterUICallBack, ActivationReadsTheDeviceOnceAndShowsItsValues) {
    Embosser embosser("127.77.4.1", printeruitest::ReplyUnlikeTheDefaults());
    LegacyTree tree(L"127.77.4.1");
    ASSERT_EQ(tree.Build(), S_OK);
    TraceLog log;

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, 23);
    EXPECT_EQ(tree.Config().LegacyRefresh, 0u);
    EXPECT_TRUE(log.Contains("OEMPrinterUICallBack(): reason=10"));
    EXPECT_TRUE(log.Contains("OEMPrinterUICallBack(): 1=GetQuorlSettings()"));
    EXPECT_TRUE(tree.items()[0].Flags & OPTIF_DISABLED);
    for (size_t i = 1; i < tree.items().size(); ++i) {
        EXPECT_EQ(tree.items()[i].Flags, static_cast<DWORD>(OPTIF_CALLBACK | OPTIF_CHANGED)) << i;
    }
    const struct {
        BYTE id;
        LONG selection;
        const wchar_t* text;  // edit items
    } shown[] = {
        {52, 0, L"11.50"}, {53, 0, L"10.00"}, {40, 0, L"0.60"}, {41, 0, L"0.35"}, {76, 0, L"0.30"},
        {30, 0, L"0.20"},  {230, 38, nullptr}, {231, 27, nullptr}, {42, 1, nullptr}, {26, 1, nullptr},
        {228, 2, nullptr},  // microbraille (3) is shown as entry 2 after a read
        {45, 0, nullptr},  {57, 4, nullptr},  {60, 2, nullptr},  {61, 2, nullptr},  {232, 2, nullptr},
        {27, 2, nullptr},   // short edge (2) gives selection 2 after a read
        {99, 0, nullptr},
    };
    for (const auto& s : shown) {
        SCOPED_TRACE(static_cast<int>(s.id));
        const OPTITEM& item = tree.Item(s.id);
        if (s.text != nullptr) {
            ASSERT_NE(item.pSel, nullptr);
            EXPECT_STREQ(item.pSel, s.text);
        } else {
            EXPECT_EQ(item.Sel, s.selection);
        }
    }

    // The second activation neither reads again nor reloads the items.
    tree.Item(230).Sel = 33;
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Item(230).Sel, 33);
}

TEST(OEMPrinterUICallBack, AFailedReadLeavesTheSettingsDisabledAndIsNotTriedAgain) {
    Embosser embosser("127.77.4.2", printeruitest::IncompleteReply());
    LegacyTree tree(L"127.77.4.2");
    ASSERT_EQ(tree.Build(), S_OK);
    TraceLog log;

    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_NONE);

    EXPECT_EQ(embosser->RequestCount(), 1);
    EXPECT_EQ(tree.Config().LegacyParmCount, -1);
    EXPECT_EQ(CountLinesStartingWith(log, "OEMPrinterUICallBack(): 0=GetQuorlSettings()"), 1);
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
        {L"Legal", CPSUICB_ACTION_OPTIF_CHANGED, L"8.50", L"14.00"},   // 215 900 x 355 600
        {L"Custom", CPSUICB_ACTION_NONE, L"9.99", L"12.34"},           // left as they were
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    const OPTITEM& sizes = tree.Item(50);
    ASSERT_NE(sizes.pOptType, nullptr);
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.paper));
        wcscpy(tree.Item(52).pSel, L"9.99");
        wcscpy(tree.Item(53).pSel, L"12.34");
        tree.Item(52).Flags = tree.Item(53).Flags = OPTIF_CALLBACK;
        tree.Config().LegacyChanged = 0;
        LONG index = -1;
        for (WORD i = 0; i < sizes.pOptType->Count; ++i) {
            if (tree.EntryText(50, i) == c.paper) index = i;
        }
        ASSERT_GE(index, 0);

        EXPECT_EQ(tree.Choose(50, index), c.action);

        EXPECT_STREQ(tree.Item(52).pSel, c.width);
        EXPECT_STREQ(tree.Item(53).pSel, c.length);
        const bool changed = c.action == CPSUICB_ACTION_OPTIF_CHANGED;
        EXPECT_EQ((tree.Item(52).Flags & OPTIF_CHANGED) != 0, changed);
        EXPECT_EQ((tree.Item(53).Flags & OPTIF_CHANGED) != 0, changed);
        EXPECT_EQ(tree.Config().LegacyChanged != 0, changed);
    }
}

TEST(OEMPrinterUICallBack, SelectionChangesMarkOnlyDeviceSettingsAsChangedAndKeepTheTopMarginPositive) {
    const struct {
        const char* what;
        BYTE id;
        const wchar_t* text;  // typed into an edit item, else a selection is made
        LONG action;
        bool marksChanged;
        const wchar_t* textAfter;
    } cases[] = {
        {"negative top margin becomes 0.00", 40, L"-0.5", CPSUICB_ACTION_OPTIF_CHANGED, true, L"0.00"},
        {"top margin above -0.05 is not negative in 1/20 inch", 40, L"-0.04", CPSUICB_ACTION_NONE, true, L"-0.04"},
        {"positive top margin stays", 40, L"0.75", CPSUICB_ACTION_NONE, true, L"0.75"},
        {"left margin is not checked", 41, L"-3", CPSUICB_ACTION_NONE, true, L"-3"},
        {"width text is not checked", 52, L"abc", CPSUICB_ACTION_NONE, true, L"abc"},
        {"chars per line", 230, nullptr, CPSUICB_ACTION_NONE, true, nullptr},
        {"braille table", 60, nullptr, CPSUICB_ACTION_NONE, true, nullptr},
        {"output face", 99, nullptr, CPSUICB_ACTION_NONE, true, nullptr},
        {"braille tables button is no setting", 74, nullptr, CPSUICB_ACTION_NONE, false, nullptr},
        {"reset button is no setting", 32, nullptr, CPSUICB_ACTION_NONE, false, nullptr},
        {"the head is no setting", 0, nullptr, CPSUICB_ACTION_NONE, false, nullptr},
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        tree.Config().LegacyChanged = 0;
        OPTITEM& item = tree.Item(c.id);
        item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        const LONG action = c.text != nullptr ? tree.Type(c.id, c.text) : tree.Choose(c.id, 1);
        EXPECT_EQ(action, c.action);
        EXPECT_EQ(tree.Config().LegacyChanged != 0, c.marksChanged);
        EXPECT_EQ((item.Flags & OPTIF_CHANGED) != 0, c.action == CPSUICB_ACTION_OPTIF_CHANGED);
        if (c.textAfter != nullptr) {
            EXPECT_STREQ(item.pSel, c.textAfter);
        }
    }
}

TEST(OEMPrinterUICallBack, ApplySendsExactlyTheEditedSettingsThenCommits) {
    ActiveTree active("127.77.4.3");
    LegacyTree& tree = active.tree;

    tree.Type(40, L"1.00");
    tree.Choose(230, 30);
    tree.Choose(57, 1);  // light braille paper
    tree.Choose(60, 3);  // French
    TraceLog log;
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_ITEMS_APPLIED);

    EXPECT_EQ(tree.printer().Jobs(), Default("TOPMARGIN=20") + Default("CHARSWIDTH=30") +
                                         Default("MEDIATYPE=LIGHTBRAILLE") + Default("BRAILLETABLE=FR_FR") +
                                         kServiceUpdate);
    EXPECT_EQ(tree.Config().LegacyChanged, 0u);
    EXPECT_EQ(tree.Config().EmbsrTopMargin, 20);
    EXPECT_EQ(active.embosser->RequestCount(), 1);

    // Applied once: a second apply without an edit sends nothing more.
    tree.printer().ClearJobs();
    EXPECT_EQ(tree.Callback(CPSUICB_REASON_APPLYNOW), CPSUICB_ACTION_NONE);
    EXPECT_EQ(tree.printer().Jobs(), "");
}

TEST(OEMPrinterUICallBack, ApplySendsNothingWithoutARealEdit) {
    const struct {
        const char* what;
        void (*edit)(LegacyTree&);
        LONG action;
    } cases[] = {
        {"no edit at all", [](LegacyTree&) {}, CPSUICB_ACTION_NONE},
        {"a selection made again", [](LegacyTree& t) { t.Choose(230, t.Item(230).Sel); }, CPSUICB_ACTION_ITEMS_APPLIED},
        {"a text typed again", [](LegacyTree& t) { t.Type(41, L"0.25"); }, CPSUICB_ACTION_ITEMS_APPLIED},
        {"a push on the braille tables button's item", [](LegacyTree& t) { t.Choose(74, 0); }, CPSUICB_ACTION_NONE},
    };
    ActiveTree active("127.77.4.4");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TraceLog log;
        active.tree.Config().LegacyChanged = 0;  // an apply that sent nothing leaves the flag set
        c.edit(active.tree);
        EXPECT_EQ(active.tree.Callback(CPSUICB_REASON_APPLYNOW), c.action);
        EXPECT_EQ(active.tree.printer().Jobs(), "");
        EXPECT_FALSE(log.Contains("UpdateNvRamData(): validate"));
    }
}

TEST(OEMPrinterUICallBack, OtherReasonsChangeNothing) {
    const struct {
        WORD reason;
        const char* line;
    } cases[] = {
        {CPSUICB_REASON_KILLACTIVE, "OEMPrinterUICallBack(): CPSUICB_REASON_KILLACTIVE"},
        {CPSUICB_REASON_PUSHBUTTON, "OEMPrinterUICallBack(): other reason, lReturn=0"},
        {CPSUICB_REASON_ITEMS_REVERTED, "OEMPrinterUICallBack(): other reason, lReturn=0"},
    };
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    tree.Config().LegacyParmCount = 23;
    tree.Config().LegacyChanged = 1;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        TraceLog log;
        EXPECT_EQ(tree.Callback(c.reason, &tree.Item(230)), CPSUICB_ACTION_NONE);
        EXPECT_TRUE(log.Contains(c.line));
        EXPECT_EQ(tree.Config().LegacyChanged, 1u);
    }
    EXPECT_EQ(tree.printer().Jobs(), "");

    // Without a record attached, no reason does anything.
    tree.param().pOEMUserData = nullptr;
    for (WORD reason : {CPSUICB_REASON_SETACTIVE, CPSUICB_REASON_SEL_CHANGED, CPSUICB_REASON_APPLYNOW}) {
        EXPECT_EQ(tree.Callback(reason, &tree.Item(40)), CPSUICB_ACTION_NONE) << reason;
    }
    EXPECT_EQ(tree.printer().Jobs(), "");
}

TEST(UpdateCurrentOptionItem, SetsEachItemFromTheDeviceValues) {
    struct Case {
        const char* what;
        BYTE id;
        void (*set)(UIConfig&);
        LONG selection;         // expected selection (items without text)
        const wchar_t* text;    // expected text (edit items)
    };
    const LONG kUnchanged = 77;
    const Case cases[] = {
        {"8 dots", 26, [](UIConfig& c) { c.EmbsrBrailleDots = 8; }, 1, nullptr},
        {"short edge", 27, [](UIConfig& c) { c.EmbsrDuplex = 2; }, 2, nullptr},
        {"duplex 5", 27, [](UIConfig& c) { c.EmbsrDuplex = 5; }, 0, nullptr},
        {"line spacing", 30, [](UIConfig& c) { c.EmbsrLineSpacing = 4; }, 0, L"0.20"},
        {"right margin", 76, [](UIConfig& c) { c.EmbsrRightMargin = -5; }, 0, L"-0.25"},
        {"wrapping off", 45, [](UIConfig& c) { c.EmbsrAutoCr = 0; }, 1, nullptr},
        {"paper width", 52, [](UIConfig& c) { c.EmbsrPaperWidth = 171; }, 0, L"8.55"},
        {"custom media min", 55, [](UIConfig& c) { c.EmbsrCustomMediaMin = 17; }, 17, nullptr},
        {"media 0x0D", 57, [](UIConfig& c) { c.EmbsrMediaType = 0x0D; }, 1, nullptr},
        {"media 0x20", 57, [](UIConfig& c) { c.EmbsrMediaType = 0x20; }, 8, nullptr},
        {"paper source 4", 58, [](UIConfig& c) { c.PaperSourceCode = 4; }, 5, nullptr},
        {"paper source 11", 58, [](UIConfig& c) { c.PaperSourceCode = 11; }, 4, nullptr},
        {"paper source 7", 58, [](UIConfig& c) { c.PaperSourceCode = 7; }, 0, nullptr},
        {"table by name", 60,
         [](UIConfig& c) {
             wcscpy(c.EmbsrBrailleTable, L"de_de");
             c.BrailleTableIndex = 9;
         },
         2, nullptr},
        {"unknown table", 60, [](UIConfig& c) { wcscpy(c.EmbsrBrailleTable, L"KLINGON"); }, 0, nullptr},
        {"face down", 99, [](UIConfig& c) { c.EmbsrOutputFace = 2; }, 1, nullptr},
        {"dry time", 175, [](UIConfig& c) { c.DryTime = 12; }, 0, L"12"},
        {"auto load off", 178, [](UIConfig& c) { c.AutoLoadPaper = 0; }, 1, nullptr},
        {"standard 3 shows as 2", 228, [](UIConfig& c) { c.EmbsrBrailleStandard = 3; }, 2, nullptr},
        {"standard 6", 228, [](UIConfig& c) { c.EmbsrBrailleStandard = 6; }, 0, nullptr},
        {"chars per line", 230, [](UIConfig& c) { c.EmbsrCharsWidth = 38; }, 38, nullptr},
        {"quality 7", 232, [](UIConfig& c) { c.EmbsrQuality = 7; }, 1, nullptr},
        {"braille tables button", 74, [](UIConfig& c) { c.BrailleTableIndex = 3; }, kUnchanged, nullptr},
        {"head", 0, [](UIConfig&) {}, kUnchanged, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto config = std::make_unique<UIConfig>();
        std::memset(config.get(), 0, sizeof(UIConfig));
        c.set(*config);
        wchar_t text[16] = L"old";
        OPTITEM item = {};
        item.cbSize = sizeof(item);
        item.UserItemID = c.id;
        if (c.text != nullptr) {
            item.pSel = text;
        } else {
            item.Sel = kUnchanged;
        }
        UpdateCurrentOptionItem(config.get(), &item);
        if (c.text != nullptr) {
            EXPECT_STREQ(text, c.text);
        } else {
            EXPECT_EQ(item.Sel, c.selection);
        }
    }
}

TEST(UpdateCurrentOptionItem, SelectsTheLastFormSizeAboutTheDevicePaper) {
    const struct {
        int32_t width, length;
        LONG selection;
    } cases[] = {
        {170, 220, 1},   // Letter and Letter Small: the later
        {233, 166, 2},   // A4, turned
        {100, 100, 77},  // nothing matches: left as it was
    };
    testenv::TestPrinter printer(L"Ozdk Forms");
    wchar_t names[][16] = {L"Letter", L"Letter Small", L"A4", L""};
    OPTPARAM entries[5] = {};
    for (int i = 0; i < 4; ++i) {
        entries[i].cbSize = sizeof(OPTPARAM);
        entries[i].pData = names[i];
    }
    wchar_t custom[] = L"Custom";
    entries[4].cbSize = sizeof(OPTPARAM);
    entries[4].pData = custom;
    OPTTYPE type = {};
    type.cbSize = sizeof(type);
    type.Type = TVOT_LISTBOX;
    type.Count = 5;
    type.pOptParam = entries;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.length);
        auto config = std::make_unique<UIConfig>();
        std::memset(config.get(), 0, sizeof(UIConfig));
        config->hPrinter = printer.handle();
        config->EmbsrPaperWidth = c.width;
        config->EmbsrPaperLength = c.length;
        OPTITEM item = {};
        item.cbSize = sizeof(item);
        item.UserItemID = 50;
        item.pOptType = &type;
        item.Sel = 77;
        UpdateCurrentOptionItem(config.get(), &item);
        EXPECT_EQ(item.Sel, c.selection);
    }
}
