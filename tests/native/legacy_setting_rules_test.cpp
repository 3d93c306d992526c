#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "device/protocol/legacy_setting_rules.h"
#include "device/protocol/pjl_commands.h"
#include "tests/native/test_support.h"
#include "tests/native/trace_recorder.h"

namespace {

#define FIELD(name) [](const UIConfig& c) -> int64_t { return static_cast<int64_t>(c.name); }
#define SETUP(body) [](UIConfig& c) { body; }

std::string Default(const std::string& keyAndValue) { return "\x1b%-12345X@PJL DEFAULT " + keyAndValue + "\r\n"; }

TEST(ApplyLegacyItem, ComputesStoresAndDescribesTheCommand) {
    // `setup` prepares the record before the item (zero-filled otherwise); `sent` empty: nothing sent.
    struct Case {
        uint32_t id;
        int32_t selection;
        const char16_t* text;
        void (*setup)(UIConfig&);
        int64_t (*field)(const UIConfig&);
        int64_t stored;
        std::string sent;
    } const cases[] = {
        {26, 3, nullptr, nullptr, FIELD(EmbsrBrailleDots), 8, Default("BRAILLEDOTS=8")},
        {27, 9, nullptr, SETUP(c.EmbsrDuplex = 1), FIELD(EmbsrDuplex), 0, Default("DUPLEXMODE=SIMPLEX")},
        {30, 0, u"20", nullptr, FIELD(EmbsrLineSpacing), 250, Default("EXTRALINESPACE=250")},
        {30, 0, u"-1", nullptr, FIELD(EmbsrLineSpacing), 250, Default("EXTRALINESPACE=250")},
        {30, 0, u"0.35", nullptr, FIELD(EmbsrLineSpacing), 7, Default("EXTRALINESPACE=7")},
        {30, 0, u"-0.001", SETUP(c.EmbsrLineSpacing = 3), FIELD(EmbsrLineSpacing), 0, Default("EXTRALINESPACE=0")},
        {40, 0, u"-0.5", nullptr, FIELD(EmbsrTopMargin), -10, Default("TOPMARGIN=4294967286")},
        {40, 0, u"99999999999999999999", nullptr, FIELD(EmbsrTopMargin), INT32_MAX, Default("TOPMARGIN=2147483647")},
        {41, 0, u"0.1", nullptr, FIELD(EmbsrLeftMargin), 5, Default("LEFTMARGIN=5")},
        {42, 2, nullptr, SETUP(c.EmbsrGraphicsMode = 1), FIELD(EmbsrGraphicsMode), 0, Default("GRAPHICS=OFF")},
        {45, 0, nullptr, nullptr, FIELD(EmbsrAutoCr), 1, Default("AUTOCR=ON")},
        {52, 0, u"8.5", nullptr, FIELD(EmbsrPaperWidth), 170, Default("PAPERWIDTH=6120")},
        {52, 0, u"8.5", SETUP(c.EmbsrPaperWidth = 170), FIELD(EmbsrPaperWidth), 170, ""},
        {53, 0, u"11", nullptr, FIELD(EmbsrPaperLength), 220, Default("PAPERLENGTH=7920")},
        {56, -1, nullptr, nullptr, FIELD(EmbsrCustomMediaMax), 255, Default("CUSTOMMEDIAMAX=255")},
        {57, 6, nullptr, nullptr, FIELD(EmbsrMediaType), 30, Default("MEDIATYPE=CUSTOM")},
        {57, 15, nullptr, nullptr, FIELD(EmbsrMediaType), 39, Default("MEDIATYPE=CUSTOM16")},
        {57, 16, nullptr, nullptr, FIELD(EmbsrMediaType), 12, Default("MEDIATYPE=BRAILLE")},
        {58, 3, nullptr, nullptr, FIELD(PaperSourceCode), 7, Default("PAPERSOURCE=7")},
        {60, 2, nullptr, nullptr, FIELD(EmbsrBrailleTable[0]), 'D', Default("BRAILLETABLE=DE_DE")},
        {60, 2, nullptr, SETUP(std::memcpy(c.EmbsrBrailleTable, u"dE_de", 12)), FIELD(EmbsrBrailleTable[0]), 'd', ""},
        {60, -1, nullptr, nullptr, FIELD(EmbsrBrailleTable[0]), 'C', Default("BRAILLETABLE=CUSTM")},
        {61, 0, nullptr, SETUP(c.EmbsrBrailleForce = 1), FIELD(EmbsrBrailleForce), 0, Default("BRAILLEFORCE=HEAVY")},
        {61, 7, nullptr, nullptr, FIELD(EmbsrBrailleForce), 7, Default("BRAILLEFORCE=NORMAL")},
        {76, 0, u"0", SETUP(c.EmbsrPaperWidth = 230), FIELD(EmbsrRightMargin), 5, Default("RIGHTMARGIN=5")},
        {76, 0, u"0", SETUP(c.EmbsrPaperWidth = 220; c.EmbsrRightMargin = 3), FIELD(EmbsrRightMargin), 0,
         Default("RIGHTMARGIN=0")},
        {99, 1, nullptr, nullptr, FIELD(EmbsrOutputFace), 2, Default("OUTPUTFACE=2")},
        {175, 0, u"0", nullptr, FIELD(DryTime), 8, Default("DRYTIME=8")},
        {175, 0, u"17", nullptr, FIELD(DryTime), 8, Default("DRYTIME=8")},
        {175, 0, u"12.9", nullptr, FIELD(DryTime), 12, Default("DRYTIME=12")},
        {178, 0, nullptr, nullptr, FIELD(AutoLoadPaper), 1, Default("AUTOLOAD=1")},
        {228, 6, nullptr, SETUP(c.EmbsrBrailleStandard = 2), FIELD(EmbsrBrailleStandard), 0, Default("SPACING=MARBURG")},
        {230, 40, nullptr, nullptr, FIELD(EmbsrCharsWidth), 40, Default("CHARSWIDTH=40")},
        {231, -1, nullptr, nullptr, FIELD(EmbsrLinesLength), -1, Default("LINESLENGTH=4294967295")},
        {232, 7, nullptr, nullptr, FIELD(EmbsrQuality), 1, Default("QUALITY=STANDARD")},
    };
    for (const Case& c : cases) {
        auto config = NewConfig();
        if (c.setup != nullptr) c.setup(*config);
        const std::string label = "item " + std::to_string(c.id) + " sel " + std::to_string(c.selection) + " text '" +
                                  (c.text ? Narrow(c.text) : std::string("(null)")) + "'";
        const LegacyItemUpdate update = ApplyLegacyItem(*config, c.id, c.selection, c.text);
        EXPECT_TRUE(update.known) << label;
        EXPECT_EQ(c.field(*config), c.stored) << label;
        EXPECT_EQ(update.changed, !c.sent.empty()) << label;
        EXPECT_EQ(update.changed ? FormatPjlDefault(update.command) : std::string(), c.sent) << label;
    }
}

TEST(ApplyLegacyItem, ExtraLineSpaceTextIsAlwaysRewritten) {
    struct Case { const char16_t* text; const char* shown; } const cases[] = {
        {u"20", "12.50"}, {u"-1", "12.50"}, {u"0.35", "0.35"}, {u"", "0.00"}, {u"1.999", "1.99"}};
    for (const Case& c : cases) {
        auto config = NewConfig();
        config->EmbsrLineSpacing = 250;
        const LegacyItemUpdate update = ApplyLegacyItem(*config, 30, 0, c.text);
        EXPECT_TRUE(update.rewriteText) << c.shown;
        EXPECT_EQ(Narrow(update.text), c.shown);
    }
    auto config = NewConfig();
    EXPECT_FALSE(ApplyLegacyItem(*config, 40, 0, u"1").rewriteText);
}

TEST(ApplyLegacyItem, OtherItemsArePassedOver) {
    for (uint32_t id : {0u, 32u, 77u, 0xFFFFFFFFu}) {
        auto config = NewConfig(0x11);
        const auto before = NewConfig(0x11);
        const LegacyItemUpdate update = ApplyLegacyItem(*config, id, 1, u"1");
        EXPECT_FALSE(update.known || update.changed) << id;
        EXPECT_EQ(std::memcmp(config.get(), before.get(), sizeof(UIConfig)), 0) << id;
    }
}

TEST(ApplyLegacyItem, TracesPaperWidthMediaTypeAndBrailleTable) {
    auto config = NewConfig();
    trace_recorder::Clear();
    ApplyLegacyItem(*config, 52, 0, u"8.5");
    ApplyLegacyItem(*config, 57, 7, nullptr);
    ApplyLegacyItem(*config, 60, 2, nullptr);
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): paper width=170\n"));
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): media type=31\n"));
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): @PJL DEFAULT BRAILLETABLE=DE_DE\n"));
}

TEST(CheckNvRamLayout, CorrectsWhatDoesNotFitWithoutStoring) {
    struct Case {
        int32_t width, left, right, chars;
        uint32_t graphics;
        int32_t length, top, lines, spacing;
        int32_t widthGood, heightGood;
        std::vector<std::string> sent;
    } const cases[] = {
        {170, 5, 5, 40, 0, 220, 10, 25, 0, -40, 10, {Default("CHARSWIDTH=32")}},
        {170, 5, 5, 32, 0, 200, 10, 25, 0, 0, -10, {Default("LINESLENGTH=23")}},
        {170, 5, 5, 40, 1, 200, 10, 32, 7, 0, -2, {Default("LINESLENGTH=31")}},  // graphics: 4 and 6 units
        {170, 5, 5, 32, 0, 5, 10, 25, -8, 0, -5, {}},  // a line of height 0 fits no count
        {INT32_MIN, INT32_MAX, INT32_MAX, INT32_MAX, 0, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN,
         {Default("CHARSWIDTH=3006477108"), Default("LINESLENGTH=1")}},  // exact, no wrap
    };
    for (const Case& c : cases) {
        auto config = NewConfig();
        config->EmbsrPaperWidth = c.width;
        config->EmbsrLeftMargin = c.left;
        config->EmbsrRightMargin = c.right;
        config->EmbsrCharsWidth = c.chars;
        config->EmbsrGraphicsMode = c.graphics;
        config->EmbsrPaperLength = c.length;
        config->EmbsrTopMargin = c.top;
        config->EmbsrLinesLength = c.lines;
        config->EmbsrLineSpacing = c.spacing;
        const NvRamLayoutCheck check = CheckNvRamLayout(*config);
        const std::string label = "chars " + std::to_string(c.chars) + " lines " + std::to_string(c.lines);
        EXPECT_EQ(check.widthGood, c.widthGood) << label;
        EXPECT_EQ(check.heightGood, c.heightGood) << label;
        std::vector<std::string> sent;
        if (check.correctCharsWidth) sent.push_back(FormatPjlDefault(check.charsWidth));
        if (check.correctLinesLength) sent.push_back(FormatPjlDefault(check.linesLength));
        EXPECT_EQ(sent, c.sent) << label;
        EXPECT_EQ(config->EmbsrCharsWidth, c.chars) << label;
        EXPECT_EQ(config->EmbsrLinesLength, c.lines) << label;
    }
}

}  // namespace
