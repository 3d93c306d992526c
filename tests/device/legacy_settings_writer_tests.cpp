// Writing device settings back, checked on the raw jobs the test printer receives.
#include "device_test_support.h"

#include <compstui.h>

#include <vector>

#include "config/spooler.h"
#include "device/legacy_settings_writer.h"
#include "device/protocol/pjl_commands.h"

using devicetest::ConfigFor;
using testenv::TraceLog;

namespace {

std::string Default(const std::string& setting) { return "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n"; }
const std::string kServiceUpdate = "\x1b%-12345X@PJL SERVICE UPDATE\r\n";

// A device whose stored layout fits its page, so that no correction is sent.
void KnownFittingDevice(UIConfig& config) {
    config.LegacyParmCount = 23;
    config.EmbsrPaperWidth = 170;
    config.EmbsrPaperLength = 220;
    config.EmbsrLeftMargin = 7;
    config.EmbsrRightMargin = 5;
    config.EmbsrTopMargin = 10;
    config.EmbsrCharsWidth = 30;
    config.EmbsrLinesLength = 10;
    config.EmbsrLineSpacing = 0;
    config.EmbsrGraphicsMode = 0;
    config.EmbsrBrailleDots = 6;
    config.EmbsrQuality = 1;
    config.DryTime = 5;
    config.EmbsrMediaType = 12;
    wcscpy(config.EmbsrBrailleTable, L"EN_US");
}

// The device-settings items as the tree hands them to the callback: edit boxes carry
// their text, the other kinds a selection.
class ItemTree {
public:
    ItemTree() {
        edit_.cbSize = list_.cbSize = upDown_.cbSize = sizeof(OPTTYPE);
        edit_.Type = TVOT_EDITBOX;
        list_.Type = TVOT_LISTBOX;
        upDown_.Type = TVOT_UDARROW;
        items_.reserve(32);
        texts_.reserve(32);
    }
    void Edit(BYTE id, const wchar_t* text) {
        texts_.emplace_back();
        wcsncpy(texts_.back().text, text, kMeasureTextCapacity - 1);
        OPTITEM& item = Add(id, &edit_);
        item.pSel = texts_.back().text;
    }
    void List(BYTE id, LONG selection) { Add(id, &list_).Sel = selection; }
    void UpDown(BYTE id, LONG selection) { Add(id, &upDown_).Sel = selection; }
    void Untyped(BYTE id, LONG selection) { Add(id, nullptr).Sel = selection; }

    CPSUICBPARAM* Param() {
        param_ = CPSUICBPARAM{};
        param_.cbSize = sizeof(param_);
        param_.pOptItem = items_.data();
        param_.cOptItem = static_cast<WORD>(items_.size());
        return &param_;
    }
    const OPTITEM& operator[](size_t i) const { return items_[i]; }

private:
    struct Text {
        wchar_t text[kMeasureTextCapacity] = {};
    };
    OPTITEM& Add(BYTE id, OPTTYPE* type) {
        items_.emplace_back();
        OPTITEM& item = items_.back();
        item = OPTITEM{};
        item.cbSize = sizeof(OPTITEM);
        item.Level = 2;
        item.Flags = OPTIF_CALLBACK;
        item.UserItemID = id;
        item.pOptType = type;
        return item;
    }

    OPTTYPE edit_ = {};
    OPTTYPE list_ = {};
    OPTTYPE upDown_ = {};
    std::vector<OPTITEM> items_;
    std::vector<Text> texts_;
    CPSUICBPARAM param_ = {};
};

}  // namespace

TEST(ApplyLegacyChanges, SendsEachChangedSettingAsItsOwnCommandThenCommits) {
    struct Case {
        const char* what;
        void (*build)(ItemTree&);
        std::string command;
        void (*check)(const UIConfig&, const ItemTree&);
    };
    const Case cases[] = {
        {"left margin 0.1 is raised to 5", [](ItemTree& t) { t.Edit(41, L"0.1"); }, Default("LEFTMARGIN=5"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrLeftMargin, 5); }},
        {"left margin 0.5 is 10", [](ItemTree& t) { t.Edit(41, L"0.5"); }, Default("LEFTMARGIN=10"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrLeftMargin, 10); }},
        {"paper width 8.5 goes in 1/720 inch", [](ItemTree& t) { t.Edit(52, L"8.25"), t.Edit(52, L"8.5"); },
         Default("PAPERWIDTH=5940") + Default("PAPERWIDTH=6120"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrPaperWidth, 170); }},
        {"extra line space 0.35 is 7", [](ItemTree& t) { t.Edit(30, L"0.35"); }, Default("EXTRALINESPACE=7"),
         [](const UIConfig& c, const ItemTree& t) {
             EXPECT_EQ(c.EmbsrLineSpacing, 7);
             EXPECT_STREQ(t[0].pSel, L"0.35");
         }},
        {"dry time 0 becomes 8", [](ItemTree& t) { t.Edit(175, L"0"); }, Default("DRYTIME=8"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.DryTime, 8); }},
        {"dry time 17 becomes 8", [](ItemTree& t) { t.Edit(175, L"17"); }, Default("DRYTIME=8"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.DryTime, 8); }},
        {"dry time 16 is kept", [](ItemTree& t) { t.Edit(175, L" 16"); }, Default("DRYTIME=16"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.DryTime, 16); }},
        {"graphics goes as ON", [](ItemTree& t) { t.List(42, 1); }, Default("GRAPHICS=ON"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrGraphicsMode, 1u); }},
        {"automatic loading goes as a number", [](ItemTree& t) { t.List(178, 0); }, Default("AUTOLOAD=1"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.AutoLoadPaper, 1u); }},
        {"paper source is always 7", [](ItemTree& t) { t.List(58, 3); }, Default("PAPERSOURCE=7"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.PaperSourceCode, 7u); }},
        {"media selection 7 is the word CUSTOM8", [](ItemTree& t) { t.List(57, 7); }, Default("MEDIATYPE=CUSTOM8"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrMediaType, 31u); }},
        {"braille table by its name", [](ItemTree& t) { t.List(60, 2); }, Default("BRAILLETABLE=DE_DE"),
         [](const UIConfig& c, const ItemTree&) { EXPECT_STREQ(c.EmbsrBrailleTable, L"DE_DE"); }},
        {"up-down items are read from their selection", [](ItemTree& t) { t.UpDown(230, 28); },
         Default("CHARSWIDTH=28"), [](const UIConfig& c, const ItemTree&) { EXPECT_EQ(c.EmbsrCharsWidth, 28); }},
        {"unknown and untyped items are passed over; the rest go in list order",
         [](ItemTree& t) {
             t.List(50, 3);
             t.Untyped(26, 1);
             t.List(26, 1);
             t.List(232, 2);
         },
         Default("BRAILLEDOTS=8") + Default("QUALITY=BEST"),
         [](const UIConfig& c, const ItemTree&) {
             EXPECT_EQ(c.EmbsrBrailleDots, 8u);
             EXPECT_EQ(c.EmbsrQuality, 2u);
         }},
    };
    testenv::TestPrinter printer;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        printer.ClearJobs();
        auto config = ConfigFor(printer);
        KnownFittingDevice(*config);
        config->LegacyChanged = 1;
        ItemTree tree;
        c.build(tree);

        EXPECT_TRUE(ApplyLegacyChanges(tree.Param(), *config));

        EXPECT_EQ(printer.Jobs(), c.command + kServiceUpdate);
        EXPECT_EQ(config->LegacyChanged, 0u);
        c.check(*config, tree);
    }
}

TEST(ApplyLegacyChanges, ClampsExtraLineSpaceAndRewritesItsText) {
    // 20 and -1 inches both become 12.50: 250 in 1/20 inch. The page then holds no line
    // of that height, which the commit corrects.
    for (const wchar_t* typed : {L"20", L"-1"}) {
        SCOPED_TRACE(testenv::Narrow(typed));
        testenv::TestPrinter printer;
        auto config = ConfigFor(printer);
        KnownFittingDevice(*config);
        ItemTree tree;
        tree.Edit(30, typed);

        ApplyLegacyChanges(tree.Param(), *config);

        EXPECT_EQ(config->EmbsrLineSpacing, 250);
        EXPECT_STREQ(tree[0].pSel, L"12.50");
        EXPECT_NE(tree[0].Flags & OPTIF_CHANGED, 0u);
        EXPECT_EQ(printer.Jobs(), Default("EXTRALINESPACE=250") + Default("LINESLENGTH=0") + kServiceUpdate);
    }
}

TEST(ApplyLegacyChanges, CorrectsCharactersAndLinesThatDoNotFitBeforeCommitting) {
    testenv::TestPrinter printer;
    auto config = ConfigFor(printer);
    KnownFittingDevice(*config);
    // 8.5 x 10 inches, margins 5 and 5, 40 characters, 25 lines, text mode.
    config->EmbsrPaperWidth = 170;
    config->EmbsrPaperLength = 200;
    config->EmbsrLeftMargin = 5;
    config->EmbsrRightMargin = 5;
    config->EmbsrTopMargin = 10;
    config->EmbsrCharsWidth = 40;
    config->EmbsrLinesLength = 25;
    TraceLog log;
    ItemTree tree;
    tree.List(232, 2);

    ApplyLegacyChanges(tree.Param(), *config);

    EXPECT_EQ(printer.Jobs(),
              Default("QUALITY=BEST") + Default("CHARSWIDTH=32") + Default("LINESLENGTH=23") + kServiceUpdate);
    EXPECT_EQ(config->EmbsrCharsWidth, 40);  // sent, not kept
    EXPECT_EQ(config->EmbsrLinesLength, 25);
    EXPECT_TRUE(log.Contains("UpdateNvRamData(): widthgood=-40, heightgood=-10"));
}

TEST(ApplyLegacyChanges, SendsNothingWhenNoItemDiffers) {
    testenv::TestPrinter printer;
    auto config = ConfigFor(printer);
    KnownFittingDevice(*config);
    ItemTree same;
    same.Edit(41, L"0.35");  // 7
    same.Edit(52, L"8.50");
    same.List(26, 0);
    same.UpDown(230, 30);
    same.List(60, 1);
    same.Edit(175, L"5");
    ItemTree empty;

    for (ItemTree* tree : {&same, &empty}) {
        TraceLog log;
        EXPECT_FALSE(ApplyLegacyChanges(tree->Param(), *config));
        EXPECT_TRUE(log.Contains("ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()"));
        EXPECT_FALSE(log.Contains("UpdateNvRamData(): validate"));
    }
    TraceLog log;
    EXPECT_FALSE(ApplyLegacyChanges(nullptr, *config));
    EXPECT_TRUE(log.Contains("ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()"));
    EXPECT_EQ(printer.Jobs(), "");
}

TEST(ApplyLegacyChanges, UpdatesTheFieldsButSendsNothingWhileTheDeviceSettingsAreUnknown) {
    for (int32_t count : {0, -1}) {
        testenv::TestPrinter printer;
        auto config = ConfigFor(printer);
        KnownFittingDevice(*config);
        config->LegacyParmCount = count;
        config->EmbsrCharsWidth = 40;  // would need a correction
        ItemTree tree;
        tree.Edit(41, L"0.5");
        tree.List(42, 1);

        EXPECT_TRUE(ApplyLegacyChanges(tree.Param(), *config));

        EXPECT_EQ(config->EmbsrLeftMargin, 10);
        EXPECT_EQ(config->EmbsrGraphicsMode, 1u);
        EXPECT_EQ(printer.Jobs(), "");
    }
}

TEST(UpdateLegacyConfig, OpensThePrinterByNameWhenNoJobStartsOnTheHandle) {
    testenv::TestPrinter printer;
    auto config = ConfigFor(printer);
    KnownFittingDevice(*config);
    config->PrinterHandle = nullptr;
    TraceLog log;

    UpdateLegacyConfig(*config, L"TOPMARGIN", 12);
    UpdateLegacyConfigBool(*config, L"AUTOCR", false);
    UpdateLegacyConfigString(*config, L"SPACING", "MARBURG");
    UpdateNvRamData(*config);

    EXPECT_EQ(printer.Jobs(),
              Default("TOPMARGIN=12") + Default("AUTOCR=OFF") + Default("SPACING=MARBURG") + kServiceUpdate);
    const std::string updating = "updating " + testenv::Narrow(printer.name());
    EXPECT_TRUE(log.Contains("UpdateLegacyConfig(): " + updating));
    EXPECT_TRUE(log.Contains("UpdateLegacyConfig(): @PJL DEFAULT TOPMARGIN=12"));
    EXPECT_TRUE(log.Contains("UpdateLegacyConfigString(): " + updating));
    EXPECT_TRUE(log.Contains("UpdateLegacyConfigString(): @PJL DEFAULT SPACING=MARBURG"));
}

TEST(SendPrinterCommand, SendsTheMediaForceBytesAsOneJob) {
    testenv::TestPrinter printer;
    EXPECT_EQ(SendPrinterCommand(printer.name().c_str(), kPjlMediaForceCommand, kPjlMediaForceCommandLength), 0u);
    EXPECT_EQ(printer.Jobs(), std::string("\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n"));
    EXPECT_EQ(printer.Jobs().size(), 34u);

    EXPECT_EQ(SendPrinterCommand(L"No Such Embosser", kPjlMediaForceCommand, kPjlMediaForceCommandLength),
              static_cast<DWORD>(ERROR_INVALID_PRINTER_NAME));
}
