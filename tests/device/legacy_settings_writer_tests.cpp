// Writing device settings back, checked on the raw jobs the test printer receives.
#include "support/embosser_fixtures.h"

#include <compstui.h>

#include <array>
#include <deque>
#include <vector>

#include "device/legacy_settings_writer.h"
#include "device/protocol/pjl_commands.h"

using devicetest::ConfigFor;
using testenv::TraceLog;

namespace {

#define FIELD(name) [](const UIConfig& c) { return static_cast<int64_t>(c.name); }

std::string Default(const std::string& setting) { return "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n"; }
const std::string kServiceUpdate = "\x1b%-12345X@PJL SERVICE UPDATE\r\n";

OPTTYPE gEdit = {sizeof(OPTTYPE), TVOT_EDITBOX};
OPTTYPE gList = {sizeof(OPTTYPE), TVOT_LISTBOX};
OPTTYPE gUpDown = {sizeof(OPTTYPE), TVOT_UDARROW};

// The device-settings items as the tree hands them to the callback: edit boxes carry
// their text, the other kinds a selection.
class ItemTree {
public:
    ItemTree() { items_.reserve(32); }
    void Edit(BYTE id, const wchar_t* text) {
        texts_.emplace_back();
        wcsncpy(texts_.back().data(), text, kMeasureTextCapacity - 1);
        Add(id, &gEdit, 0).pSel = texts_.back().data();
    }
    OPTITEM& Add(BYTE id, OPTTYPE* type, LONG selection) {
        items_.push_back(OPTITEM{sizeof(OPTITEM), 2});
        OPTITEM& item = items_.back();
        item.Flags = OPTIF_CALLBACK;
        item.UserItemID = id;
        item.pOptType = type;
        item.Sel = selection;
        return item;
    }
    CPSUICBPARAM* Param() {
        param_ = CPSUICBPARAM{sizeof(CPSUICBPARAM)};
        param_.pOptItem = items_.data();
        param_.cOptItem = static_cast<WORD>(items_.size());
        return &param_;
    }
    const OPTITEM& operator[](size_t i) const { return items_[i]; }

private:
    std::vector<OPTITEM> items_;
    std::deque<std::array<wchar_t, kMeasureTextCapacity>> texts_;
    CPSUICBPARAM param_ = {};
};

// A test printer and a known device whose stored layout fits its page, so that no
// correction is sent.
class LegacyWriter : public ::testing::Test {
protected:
    LegacyWriter() : config(ConfigFor(printer)) {
        config->LegacyParmCount = 23;
        config->EmbsrPaperWidth = 170;
        config->EmbsrPaperLength = 220;
        config->EmbsrLeftMargin = 7;
        config->EmbsrRightMargin = 5;
        config->EmbsrTopMargin = 10;
        config->EmbsrCharsWidth = 30;
        config->EmbsrLinesLength = 10;
        config->EmbsrQuality = 1;
        config->EmbsrBrailleDots = 6;
        config->DryTime = 5;
        wcscpy(config->EmbsrBrailleTable, L"EN_US");
    }
    testenv::TestPrinter printer;
    std::unique_ptr<UIConfig> config;
};

}  // namespace

TEST_F(LegacyWriter, ApplySendsEachChangedSettingAsItsOwnCommandThenCommits) {
    const struct {
        const char* what;
        void (*build)(ItemTree&);
        std::string command;
        int64_t (*field)(const UIConfig&);
        int64_t stored;
        const wchar_t* rewritten;  // the first item's text afterwards, marked changed; null: left alone
    } cases[] = {
        {"left margin 0.1 is raised to 5", [](ItemTree& t) { t.Edit(41, L"0.1"); }, Default("LEFTMARGIN=5"),
         FIELD(EmbsrLeftMargin), 5, nullptr},
        {"paper width 8.5 goes in 1/720 inch", [](ItemTree& t) { t.Edit(52, L"8.25"), t.Edit(52, L"8.5"); },
         Default("PAPERWIDTH=5940") + Default("PAPERWIDTH=6120"), FIELD(EmbsrPaperWidth), 170, nullptr},
        {"dry time 0 becomes 8", [](ItemTree& t) { t.Edit(175, L"0"); }, Default("DRYTIME=8"), FIELD(DryTime), 8,
         nullptr},
        {"dry time 17 becomes 8", [](ItemTree& t) { t.Edit(175, L"17"); }, Default("DRYTIME=8"), FIELD(DryTime), 8,
         nullptr},
        // 20 and -1 inches both become 12.50: 250 in 1/20 inch. The page then holds no line
        // of that height, which the commit corrects.
        {"extra line space 20 is 12.50", [](ItemTree& t) { t.Edit(30, L"20"); },
         Default("EXTRALINESPACE=250") + Default("LINESLENGTH=0"), FIELD(EmbsrLineSpacing), 250, L"12.50"},
        {"extra line space -1 is 12.50", [](ItemTree& t) { t.Edit(30, L"-1"); },
         Default("EXTRALINESPACE=250") + Default("LINESLENGTH=0"), FIELD(EmbsrLineSpacing), 250, L"12.50"},
        {"up-down items are read from their selection", [](ItemTree& t) { t.Add(230, &gUpDown, 28); },
         Default("CHARSWIDTH=28"), FIELD(EmbsrCharsWidth), 28, nullptr},
        {"unknown and untyped items are passed over; the rest go in list order",
         [](ItemTree& t) {
             t.Add(50, &gList, 3);
             t.Add(26, nullptr, 1);
             t.Add(26, &gList, 1);
             t.Add(232, &gList, 2);
         },
         Default("BRAILLEDOTS=8") + Default("QUALITY=BEST"), FIELD(EmbsrQuality), 2, nullptr},
    };
    const auto known = std::make_unique<UIConfig>(*config);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        printer.ClearJobs();
        *config = *known;
        config->LegacyChanged = 1;
        ItemTree tree;
        c.build(tree);

        EXPECT_TRUE(ApplyLegacyChanges(tree.Param(), *config));

        EXPECT_EQ(printer.Jobs(), c.command + kServiceUpdate);
        EXPECT_EQ(config->LegacyChanged, 0u);
        EXPECT_EQ(c.field(*config), c.stored);
        EXPECT_EQ((tree[0].Flags & OPTIF_CHANGED) != 0, c.rewritten != nullptr);
        EXPECT_STREQ(c.rewritten != nullptr ? tree[0].pSel : nullptr, c.rewritten);
    }
}

TEST_F(LegacyWriter, ApplyCorrectsCharactersAndLinesThatDoNotFitBeforeCommitting) {
    // 8.5 x 10 inches, margins 5 and 5, 40 characters, 25 lines, text mode.
    config->EmbsrPaperLength = 200;
    config->EmbsrLeftMargin = 5;
    config->EmbsrCharsWidth = 40;
    config->EmbsrLinesLength = 25;
    ItemTree tree;
    tree.Add(232, &gList, 2);

    ApplyLegacyChanges(tree.Param(), *config);

    EXPECT_EQ(printer.Jobs(),
              Default("QUALITY=BEST") + Default("CHARSWIDTH=32") + Default("LINESLENGTH=23") + kServiceUpdate);
    EXPECT_EQ(config->EmbsrCharsWidth, 40);  // sent, not kept
    EXPECT_EQ(config->EmbsrLinesLength, 25);
}

TEST_F(LegacyWriter, ApplySendsNothingWhenNoItemDiffers) {
    ItemTree same;
    same.Edit(41, L"0.35");  // 7
    same.Edit(52, L"8.50");
    same.Add(26, &gList, 0);
    same.Add(230, &gUpDown, 30);
    same.Add(60, &gList, 1);
    same.Edit(175, L"5");
    ItemTree empty;

    for (CPSUICBPARAM* param : {same.Param(), empty.Param(), static_cast<CPSUICBPARAM*>(nullptr)}) {
        TraceLog log;
        EXPECT_FALSE(ApplyLegacyChanges(param, *config));
        EXPECT_TRUE(log.Contains("ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()"));
    }
    EXPECT_EQ(printer.Jobs(), "");
}

TEST_F(LegacyWriter, ApplyUpdatesTheFieldsButSendsNothingWhileTheDeviceSettingsAreUnknown) {
    config->EmbsrCharsWidth = 40;  // would need a correction
    for (int32_t count : {0, -1}) {
        config->LegacyParmCount = count;
        config->EmbsrLeftMargin = 7;
        config->EmbsrGraphicsMode = 0;
        ItemTree tree;
        tree.Edit(41, L"0.5");
        tree.Add(42, &gList, 1);

        EXPECT_TRUE(ApplyLegacyChanges(tree.Param(), *config)) << count;

        EXPECT_EQ(config->EmbsrLeftMargin, 10);
        EXPECT_EQ(config->EmbsrGraphicsMode, 1u);
    }
    EXPECT_EQ(printer.Jobs(), "");
}

TEST_F(LegacyWriter, UpdateLegacyConfigOpensThePrinterByNameWhenNoJobStartsOnTheHandle) {
    config->PrinterHandle = nullptr;

    UpdateLegacyConfig(*config, L"TOPMARGIN", 12);
    UpdateLegacyConfigBool(*config, L"AUTOCR", false);
    UpdateLegacyConfigString(*config, L"SPACING", "MARBURG");
    UpdateNvRamData(*config);

    EXPECT_EQ(printer.Jobs(),
              Default("TOPMARGIN=12") + Default("AUTOCR=OFF") + Default("SPACING=MARBURG") + kServiceUpdate);
}

TEST_F(LegacyWriter, SendPrinterCommandSendsTheMediaForceBytesAsOneJob) {
    EXPECT_EQ(SendPrinterCommand(printer.name().c_str(), kPjlMediaForceCommand, kPjlMediaForceCommandLength), 0u);
    EXPECT_EQ(printer.Jobs(), std::string("\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n"));

    EXPECT_EQ(SendPrinterCommand(L"No Such Embosser", kPjlMediaForceCommand, kPjlMediaForceCommandLength),
              static_cast<DWORD>(ERROR_INVALID_PRINTER_NAME));
}
