// The embosser protocol core: the reply parser, the device-setting rules and the page
// layout check, the PJL command bytes and the braille table names.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "device/protocol/braille_tables.h"
#include "device/protocol/legacy_reply_parser.h"
#include "device/protocol/legacy_setting_rules.h"
#include "device/protocol/pjl_commands.h"
#include "tests/native/trace_recorder.h"

namespace {

#define FIELD(name) [](const UIConfig& c) -> int64_t { return static_cast<int64_t>(c.name); }
#define SETUP(body) [](UIConfig& c) { body; }

// A record as CreateConfig hands it out, with every byte set to `fill`.
std::unique_ptr<UIConfig> NewConfig(unsigned char fill = 0) {
    auto config = std::make_unique<UIConfig>();
    std::memset(config.get(), fill, sizeof(UIConfig));
    return config;
}

// A field as 8-bit text for comparisons and messages: numbers in decimal, texts with the
// characters outside ASCII as <code>.
std::string Shown(int64_t number) { return std::to_string(number); }
std::string Shown(const WideChar* text) {
    std::string out;
    for (; text != nullptr && *text != 0; ++text)
        out += *text < 0x80 ? std::string(1, static_cast<char>(*text)) : "<" + Shown(*text) + ">";
    return out;
}
#define SHOWN(name) [](const UIConfig& c) { return Shown(c.name); }
#define SHOWN2(a, b) [](const UIConfig& c) { return Shown(c.a) + " " + Shown(c.b); }

const std::string kExit = "\x1b%-12345X";
std::string Default(const std::string& keyAndValue) { return kExit + "@PJL DEFAULT " + keyAndValue + "\r\n"; }

// An HTTP preamble with values that must not be read, then the block; lines end CR LF.
const char kPreamble[] = "HTTP/1.1 200 OK\r\nX-Note: TOPMARGIN=99 MODEL=Wrong\r\n\r\n";
const std::vector<std::string> kCompleteLines = {
    "@PJL INFO LEGACY [23 ENTRIES]", "TOPMARGIN=10",        "LEFTMARGIN=5",    "RIGHTMARGIN=6",
    "BRAILLEDOTS=8",                 "CHARSWIDTH=40",       "LINESLENGTH=25",  "EXTRALINESPACE=2",
    "BRAILLETABLE=\"EN_US\"",        "AUTOCR=ON",           "GRAPHICS=OFF",    "SPACING=USNATLIB",
    "MEDIATYPE=PLAIN",               "PAPERLENGTH=7920",    "PAPERWIDTH=6120", "BRAILLEFORCE=HEAVY",
    "QUALITY=BEST",                  "DUPLEXMODE=LONGEDGE", "OUTPUTFACE=2",    "FWPRIMARY=1.2.3",
    "SERIALNUMBER=\"SN-0042\"",      "MODEL=\"Quorl 40\"",
};

// The complete reply with the line of `key` replaced by `line` (removed when empty).
std::string ReplyWith(const std::string& key = "", const std::string& line = "") {
    std::string reply = kPreamble;
    for (const std::string& each : kCompleteLines) {
        const bool replaced = !key.empty() && each.compare(0, key.size() + 1, key + "=") == 0;
        const std::string& chosen = replaced ? line : each;
        if (!chosen.empty()) reply += chosen + "\r\n";
    }
    return reply;
}

TEST(ParseInfoLegacySettings, WithoutThePrefixChangesNothingButIsTraced) {
    for (std::string reply : {"", "TOPMARGIN=10\r\n", "@PJL INFO LEGACY [22\r\nTOPMARGIN=1", "@pjl info legacy [23"}) {
        auto config = NewConfig(0x5A);
        trace_recorder::Text().clear();
        EXPECT_EQ(ParseInfoLegacySettings(*config, reply.c_str()), 0) << reply;
        EXPECT_EQ(std::memcmp(config.get(), NewConfig(0x5A).get(), sizeof(UIConfig)), 0) << reply;
        EXPECT_TRUE(trace_recorder::Contains("ParseInfoLegacySettings(): " + reply + "\n")) << reply;
    }
}

// A missing key gives result 0 (items counted: 22), or the default code for word keys.
// Every field read from the whole block is checked where the embosser is asked
// (tests/device); here the words and cases that check does not meet.
TEST(ParseInfoLegacySettings, SingleLineVariations) {
    // `key`: the line replaced by `line`, or removed when `line` is empty; no key: the
    // complete reply, whose preamble holds keys that must not be read.
    struct Case { const char* key; std::string line; int result; std::string (*field)(const UIConfig&);
                  std::string shown; } const cases[] = {
        {"", "", 23, SHOWN2(EmbsrTopMargin, ModelNumber), "10 Quorl 40"},
        {"", "", 23, SHOWN2(EmbsrBrailleStandard, EmbsrMediaType), "2 2"},  // the words of the complete reply
        {"", "", 23, SHOWN2(EmbsrBrailleForce, EmbsrDuplex), "0 1"},
        {"MEDIATYPE", "MEDIATYPE=CUSTOM12", 23, SHOWN(EmbsrMediaType), "30"},
        {"MEDIATYPE", "", 23, SHOWN(EmbsrMediaType), "12"}, {"PAPERWIDTH", "", 0, SHOWN(EmbsrPaperWidth), "0"},
        {"SPACING", "SPACING=MARBURG", 23, SHOWN(EmbsrBrailleStandard), "0"},
        {"PAPERWIDTH", "PAPERWIDTH=-71", 23, SHOWN(EmbsrPaperWidth), "-1"},
        {"PAPERWIDTH", "PAPERWIDTH=99999999999", 23, SHOWN(EmbsrPaperWidth), Shown(INT32_MAX / 36)},
        {"AUTOCR", "AUTOCR=no", 23, SHOWN(EmbsrAutoCr), "0"}, {"AUTOCR", "AUTOCR=0", 23, SHOWN(EmbsrAutoCr), "0"},
        {"AUTOCR", "AUTOCR=False", 23, SHOWN(EmbsrAutoCr), "0"}, {"AUTOCR", "AUTOCR=YES", 23, SHOWN(EmbsrAutoCr), "1"},
        {"AUTOCR", "AUTOCR=", 23, SHOWN(EmbsrAutoCr), "1"}, {"AUTOCR", "", 0, SHOWN(EmbsrAutoCr), "0"},
        {"TOPMARGIN", "TOPMARGIN= -12", 23, SHOWN(EmbsrTopMargin), "-12"},
        {"TOPMARGIN", "TOPMARGIN 7", 23, SHOWN(EmbsrTopMargin), "7"},  // any one character is skipped
        {"BRAILLEFORCE", "", 23, SHOWN(EmbsrBrailleForce), "1"}, {"QUALITY", "", 23, SHOWN(EmbsrQuality), "1"},
        {"DUPLEXMODE", "", 23, SHOWN(EmbsrDuplex), "0"}, {"OUTPUTFACE", "", 23, SHOWN(EmbsrOutputFace), "1"},
        {"FWPRIMARY", "FWPRIMARY=2.10", 0, SHOWN(FirmwareVersion), Shown(2 << 16 | 10 << 8)},
        {"FWPRIMARY", "FWPRIMARY=1 .2.3", 0, SHOWN(FirmwareVersion), Shown(1 << 16)},  // '.' must follow at once
        {"FWPRIMARY", "", 0, SHOWN(FirmwareVersion), "0"}, {"SERIALNUMBER", "", 0, SHOWN(SerialNumber), ""},
        {"BRAILLETABLE", "BRAILLETABLE=\"de_de\"", 23, SHOWN(BrailleTableIndex), "2"},
        {"BRAILLETABLE", "", 0, SHOWN(BrailleTableIndex), "0"},
        {"SERIALNUMBER", "SERIALNUMBER=\"A\"=B\"\r\rC", 23, SHOWN(SerialNumber), "ABC"},
        {"SERIALNUMBER", "SERIALNUMBER=\xE9\xFF\x01X", 23, SHOWN(SerialNumber), "<233><255>\x01X"},
        {"SERIALNUMBER", "SERIALNUMBER=" + std::string(10000, 'S'), 23, SHOWN(SerialNumber), std::string(259, 'S')},
        // A key inside an earlier value is taken from there.
        {"SERIALNUMBER", "SERIALNUMBER=\"XMODEL=ABC\"", 23, SHOWN2(SerialNumber, ModelNumber), "XMODELABC ABC"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line.substr(0, 40) + " for " + c.key);
        auto config = NewConfig(0xA5);
        EXPECT_EQ(ParseInfoLegacySettings(*config, ReplyWith(c.key, c.line).c_str()), c.result);
        EXPECT_EQ(c.field(*config), c.shown);
    }
}

TEST(ParseInfoLegacySettings, ReadsNothingPastTheEnd) {
    // Each key as the last bytes of a heap copy of exactly the text's size.
    for (const std::string tail : {"TOPMARGIN", "AUTOCR", "FWPRIMARY", "FWPRIMARY=7.", "MODEL", "BRAILLETABLE=\"EN"}) {
        const std::string reply = "@PJL INFO LEGACY [23\r\n" + tail;
        const std::vector<char> exact(reply.c_str(), reply.c_str() + reply.size() + 1);
        EXPECT_EQ(ParseInfoLegacySettings(*NewConfig(0xA5), exact.data()), 0) << tail;
    }
}

TEST(ApplyLegacyItem, ComputesStoresAndDescribesTheCommand) {
    // `setup` prepares the zero-filled record; `field` null: the item is no device setting;
    // `sent` empty: nothing sent; `shown`: the item's text afterwards (null: left alone).
    struct Case { uint32_t id; int32_t selection; const char16_t* text; void (*setup)(UIConfig&);
                  int64_t (*field)(const UIConfig&); int64_t stored; std::string sent; const char* shown; }
    const cases[] = {
        {26, 3, nullptr, nullptr, FIELD(EmbsrBrailleDots), 8, Default("BRAILLEDOTS=8")},
        {27, 9, nullptr, SETUP(c.EmbsrDuplex = 1), FIELD(EmbsrDuplex), 0, Default("DUPLEXMODE=SIMPLEX")},
        {30, 0, u"20", nullptr, FIELD(EmbsrLineSpacing), 250, Default("EXTRALINESPACE=250"), "12.50"},
        {30, 0, u"-1", nullptr, FIELD(EmbsrLineSpacing), 250, Default("EXTRALINESPACE=250"), "12.50"},
        {30, 0, u"0.35", nullptr, FIELD(EmbsrLineSpacing), 7, Default("EXTRALINESPACE=7"), "0.35"},
        {30, 0, u"1.999", nullptr, FIELD(EmbsrLineSpacing), 39, Default("EXTRALINESPACE=39"), "1.99"},
        {30, 0, u"", nullptr, FIELD(EmbsrLineSpacing), 0, "", "0.00"},
        {30, 0, u"-0.001", SETUP(c.EmbsrLineSpacing = 3), FIELD(EmbsrLineSpacing), 0, Default("EXTRALINESPACE=0"),
         "0.00"},
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
        {231, -1, nullptr, nullptr, FIELD(EmbsrLinesLength), -1, Default("LINESLENGTH=4294967295")},
        {232, 7, nullptr, nullptr, FIELD(EmbsrQuality), 1, Default("QUALITY=STANDARD")},
        {0, 1, u"1"}, {32, 1, u"1"}, {77, 1, u"1"}, {0xFFFFFFFFu, 1, u"1"},
    };
    trace_recorder::Text().clear();
    for (const Case& c : cases) {
        SCOPED_TRACE("item " + Shown(c.id) + " selection " + Shown(c.selection) + " text '" + Shown(c.text) + "'");
        auto config = NewConfig();
        if (c.setup != nullptr) c.setup(*config);
        const LegacyItemUpdate update = ApplyLegacyItem(*config, c.id, c.selection, c.text);
        EXPECT_EQ(update.known, c.field != nullptr);
        if (c.field != nullptr) EXPECT_EQ(c.field(*config), c.stored);
        if (c.field == nullptr) EXPECT_EQ(std::memcmp(config.get(), NewConfig().get(), sizeof(UIConfig)), 0);
        EXPECT_EQ(update.changed, !c.sent.empty());
        EXPECT_EQ(update.changed ? FormatPjlDefault(update.command) : std::string(), c.sent);
        EXPECT_EQ(update.rewriteText ? Shown(update.text) : "(left alone)", c.shown ? c.shown : "(left alone)");
    }
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): paper width=170\n"));
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): media type=30\n"));
    EXPECT_TRUE(trace_recorder::Contains("ApplyLegacyChanges(): @PJL DEFAULT BRAILLETABLE=DE_DE\n"));
}

TEST(CheckNvRamLayout, CorrectsWhatDoesNotFit) {
    struct Case { int32_t width, left, right, chars; uint32_t graphics; int32_t length, top, lines, spacing;
                  int32_t widthGood, heightGood; std::vector<std::string> sent; } const cases[] = {
        {170, 5, 5, 40, 0, 220, 10, 25, 0, -40, 10, {Default("CHARSWIDTH=32")}},
        {170, 5, 5, 40, 1, 200, 10, 32, 7, 0, -2, {Default("LINESLENGTH=31")}},  // graphics: 4 and 6 units
        {170, 5, 5, 32, 0, 5, 10, 25, -8, 0, -5, {}},  // a line of height 0 fits no count
        {INT32_MIN, INT32_MAX, INT32_MAX, INT32_MAX, 0, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN,
         {Default("CHARSWIDTH=3006477108"), Default("LINESLENGTH=1")}},  // exact, no wrap
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("chars " + Shown(c.chars) + " lines " + Shown(c.lines));
        auto config = NewConfig();
        std::tie(config->EmbsrPaperWidth, config->EmbsrLeftMargin, config->EmbsrRightMargin, config->EmbsrCharsWidth,
                 config->EmbsrGraphicsMode) = std::tie(c.width, c.left, c.right, c.chars, c.graphics);
        std::tie(config->EmbsrPaperLength, config->EmbsrTopMargin, config->EmbsrLinesLength, config->EmbsrLineSpacing) =
            std::tie(c.length, c.top, c.lines, c.spacing);
        const NvRamLayoutCheck check = CheckNvRamLayout(*config);
        EXPECT_EQ(std::make_pair(check.widthGood, check.heightGood), std::make_pair(c.widthGood, c.heightGood));
        std::vector<std::string> sent;
        if (check.correctCharsWidth) sent.push_back(FormatPjlDefault(check.charsWidth));
        if (check.correctLinesLength) sent.push_back(FormatPjlDefault(check.linesLength));
        EXPECT_EQ(sent, c.sent);
    }
}

TEST(PjlCommands, BytesOfEachFormAreExactAndCutAtCapacity) {
    EXPECT_EQ(FormatPjlDefault(PjlWord(u"K\u00e9Y", nullptr)), Default("K?Y="));
    EXPECT_EQ(FormatPjlDefault(PjlWord(u"W", std::string(40, 'w').c_str())), Default("W=" + std::string(15, 'w')));
    PjlDefault command{u"AUTOCR", PjlValueForm::Switch, 7, ""};
    EXPECT_EQ(FormatPjlDefault(command), Default("AUTOCR=ON"));
    command.key = nullptr;
    EXPECT_EQ(FormatPjlDefault(command), "");

    EXPECT_EQ(FormatPjlDefault(PjlNumber(std::u16string(5000, u'K').c_str(), 1)).size(), kPjlCommandCapacity);
    PjlDefault unterminated{u"W", PjlValueForm::Word, 0, ""};
    std::memset(unterminated.word, 'x', sizeof unterminated.word);  // no terminator at all
    EXPECT_EQ(FormatPjlDefault(unterminated), Default("W=" + std::string(15, 'x')));
}

TEST(BrailleTables, NamesMatchOnFiveCharactersIgnoringCaseAndUnknownCodesAreCustom) {
    struct Case { const char16_t* name; uint32_t code; } const cases[] = {
        {u"EN_US", 1}, {u"en_us-extra", 1}, {u"Ja_Jp", 19}, {u"en_gbx", 15}, {u"EN_U", 0}, {u"CUSTM", 0},
        {u"\u00c9N_US", 0}, {nullptr, 0},
    };
    for (const Case& c : cases) EXPECT_EQ(BrailleTableStringToInt(c.name), c.code) << Shown(c.name);
    trace_recorder::Text().clear();
    EXPECT_EQ(BrailleTableStringToInt(u"de_de"), 2u);
    EXPECT_TRUE(trace_recorder::Contains("BrailleTableStringToInt(): 'de_de'=2\n"));

    // Code 0 and codes past the last table are "CUSTM", which reads back as 0.
    for (uint32_t code = 0; code <= kBrailleTableCount + 1; ++code) {
        EXPECT_EQ(BrailleTableStringToInt(BrailleTableIntToString(code)), code <= kBrailleTableCount ? code : 0);
        EXPECT_EQ(Shown(BrailleTableIntToString(code)), BrailleTableIntToAnsiString(code)) << code;
    }
    EXPECT_STREQ(BrailleTableIntToAnsiString(kBrailleTableCount + 1), "CUSTM");
}

}  // namespace
