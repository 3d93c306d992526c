#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "device/protocol/legacy_reply_parser.h"
#include "tests/native/test_support.h"
#include "tests/native/trace_recorder.h"

namespace {

// An HTTP preamble with values that must not be read, then the block; lines end CR LF.
const char kPreamble[] = "HTTP/1.1 200 OK\r\nX-Note: TOPMARGIN=99 MODEL=Wrong\r\n\r\n";
const std::vector<std::string> kCompleteLines = {
    "@PJL INFO LEGACY [23 ENTRIES]", "TOPMARGIN=10",         "LEFTMARGIN=5",     "RIGHTMARGIN=6",
    "BRAILLEDOTS=8",                 "CHARSWIDTH=40",        "LINESLENGTH=25",   "EXTRALINESPACE=2",
    "BRAILLETABLE=\"EN_US\"",        "AUTOCR=ON",            "GRAPHICS=OFF",     "SPACING=USNATLIB",
    "MEDIATYPE=PLAIN",               "PAPERLENGTH=7920",     "PAPERWIDTH=6120",  "BRAILLEFORCE=HEAVY",
    "QUALITY=BEST",                  "DUPLEXMODE=LONGEDGE",  "OUTPUTFACE=2",     "FWPRIMARY=1.2.3",
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

// A heap copy of exactly the text's size, so that a read past its end is caught.
std::unique_ptr<char[]> ExactCopy(const std::string& text) {
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy;
}

TEST(ParseInfoLegacySettings, CompleteReplyFillsEveryField) {
    auto config = NewConfig(0xA5);
    trace_recorder::Clear();
    const std::string reply = ReplyWith();
    ASSERT_EQ(ParseInfoLegacySettings(*config, reply.c_str()), 23);
    EXPECT_TRUE(trace_recorder::Contains("ParseInfoLegacySettings(): " + reply + "\n"));

    EXPECT_EQ(config->EmbsrTopMargin, 10);
    EXPECT_EQ(config->EmbsrLeftMargin, 5);
    EXPECT_EQ(config->EmbsrRightMargin, 6);
    EXPECT_EQ(config->EmbsrBrailleDots, 8u);
    EXPECT_EQ(config->EmbsrCharsWidth, 40);
    EXPECT_EQ(config->EmbsrLinesLength, 25);
    EXPECT_EQ(config->EmbsrLineSpacing, 2);
    EXPECT_EQ(Narrow(config->EmbsrBrailleTable), "EN_US");
    EXPECT_EQ(config->BrailleTableIndex, 1u);
    EXPECT_EQ(config->EmbsrAutoCr, 1u);
    EXPECT_EQ(config->EmbsrGraphicsMode, 0u);
    EXPECT_EQ(config->EmbsrBrailleStandard, 2u);
    EXPECT_EQ(config->EmbsrMediaType, 2u);
    EXPECT_EQ(config->EmbsrPaperLength, 220);
    EXPECT_EQ(config->EmbsrPaperWidth, 170);
    EXPECT_EQ(config->EmbsrBrailleForce, 0u);
    EXPECT_EQ(config->EmbsrQuality, 2u);
    EXPECT_EQ(config->EmbsrDuplex, 1u);
    EXPECT_EQ(config->EmbsrOutputFace, 2u);
    EXPECT_EQ(config->FirmwareVersion, (1u << 16) | (2u << 8) | 3u);
    EXPECT_EQ(Narrow(config->SerialNumber), "SN-0042");
    EXPECT_EQ(Narrow(config->ModelNumber), "Quorl 40");
}

TEST(ParseInfoLegacySettings, WithoutPrefixChangesNothing) {
    for (const char* reply : {"", "TOPMARGIN=10\r\n", "@PJL INFO LEGACY [22\r\nTOPMARGIN=1", "@pjl info legacy [23"}) {
        auto config = NewConfig(0x5A);
        const auto before = NewConfig(0x5A);
        EXPECT_EQ(ParseInfoLegacySettings(*config, reply), 0) << reply;
        EXPECT_EQ(std::memcmp(config.get(), before.get(), sizeof(UIConfig)), 0) << reply;
    }
}

#define FIELD(name) [](const UIConfig& c) -> int64_t { return static_cast<int64_t>(c.name); }

// A missing key gives result 0 (items counted: 22), or the default code for word keys.
TEST(ParseInfoLegacySettings, SingleLineVariations) {
    // `key`: the line replaced by `line`, or removed when `line` is empty.
    struct Case { const char* key; const char* line; int result; int64_t (*field)(const UIConfig&); int64_t expected; }
    const cases[] = {
        {"MEDIATYPE", "MEDIATYPE=CUSTOM12", 23, FIELD(EmbsrMediaType), 30},
        {"MEDIATYPE", "", 23, FIELD(EmbsrMediaType), 12},
        {"SPACING", "SPACING=MARBURG", 23, FIELD(EmbsrBrailleStandard), 0},
        {"PAPERWIDTH", "PAPERWIDTH=6120", 23, FIELD(EmbsrPaperWidth), 170},
        {"PAPERWIDTH", "PAPERWIDTH=-71", 23, FIELD(EmbsrPaperWidth), -1},
        {"PAPERWIDTH", "PAPERWIDTH=99999999999", 23, FIELD(EmbsrPaperWidth), 2147483647 / 36},
        {"PAPERWIDTH", "", 0, FIELD(EmbsrPaperWidth), 0},
        {"AUTOCR", "AUTOCR=no", 23, FIELD(EmbsrAutoCr), 0},
        {"AUTOCR", "AUTOCR=0", 23, FIELD(EmbsrAutoCr), 0},
        {"AUTOCR", "AUTOCR=False", 23, FIELD(EmbsrAutoCr), 0},
        {"AUTOCR", "AUTOCR=YES", 23, FIELD(EmbsrAutoCr), 1},
        {"AUTOCR", "AUTOCR=", 23, FIELD(EmbsrAutoCr), 1},
        {"AUTOCR", "", 0, FIELD(EmbsrAutoCr), 0},
        {"TOPMARGIN", "TOPMARGIN= -12", 23, FIELD(EmbsrTopMargin), -12},
        {"TOPMARGIN", "TOPMARGIN 7", 23, FIELD(EmbsrTopMargin), 7},  // any one character is skipped
        {"BRAILLEFORCE", "", 23, FIELD(EmbsrBrailleForce), 1},
        {"QUALITY", "", 23, FIELD(EmbsrQuality), 1},
        {"DUPLEXMODE", "", 23, FIELD(EmbsrDuplex), 0},
        {"OUTPUTFACE", "", 23, FIELD(EmbsrOutputFace), 1},
        {"FWPRIMARY", "FWPRIMARY=2.10", 0, FIELD(FirmwareVersion), (2 << 16) | (10 << 8)},
        {"FWPRIMARY", "FWPRIMARY=1 .2.3", 0, FIELD(FirmwareVersion), 0x010000},  // '.' must follow at once
        {"FWPRIMARY", "", 0, FIELD(FirmwareVersion), 0},
        {"BRAILLETABLE", "BRAILLETABLE=\"de_de\"", 23, FIELD(BrailleTableIndex), 2},
        {"BRAILLETABLE", "", 0, FIELD(BrailleTableIndex), 0},
        {"SERIALNUMBER", "", 0, FIELD(SerialNumber[0]), 0},
    };
    for (const Case& c : cases) {
        auto config = NewConfig(0xA5);
        const std::string reply = ReplyWith(c.key, c.line);
        EXPECT_EQ(ParseInfoLegacySettings(*config, reply.c_str()), c.result) << c.line << " for " << c.key;
        EXPECT_EQ(c.field(*config), c.expected) << c.line << " for " << c.key;
    }
}

TEST(ParseInfoLegacySettings, TextValues) {
    struct Case { const char* key; std::string line; std::u16string serial; std::u16string model; } const cases[] = {
        {"SERIALNUMBER", "SERIALNUMBER=\"A\"=B\"\r\rC", u"ABC", u"Quorl 40"},
        {"SERIALNUMBER", "SERIALNUMBER=\xE9\xFF\x01X", u"\u00e9\u00ff\u0001X", u"Quorl 40"},
        // A key inside an earlier value is taken from there.
        {"SERIALNUMBER", "SERIALNUMBER=\"XMODEL=ABC\"", u"XMODELABC", u"ABC"},
        {"SERIALNUMBER", "SERIALNUMBER=" + std::string(10000, 'S'), std::u16string(259, u'S'), u"Quorl 40"},
    };
    for (const Case& c : cases) {
        auto config = NewConfig(0xA5);
        EXPECT_EQ(ParseInfoLegacySettings(*config, ReplyWith(c.key, c.line).c_str()), 23) << c.line.substr(0, 40);
        EXPECT_EQ(std::u16string(config->SerialNumber), c.serial) << c.line.substr(0, 40);
        EXPECT_EQ(std::u16string(config->ModelNumber), c.model) << c.line.substr(0, 40);
    }
}

TEST(ParseInfoLegacySettings, ReplyOfReceiveBufferSizeAndKeysAtTheVeryEnd) {
    // A full receive buffer whose last line (the model) runs to the end without a line end.
    std::string full = ReplyWith("MODEL", "");
    full += "MODEL=";
    full += std::string(kLegacyReplyCapacity - 1 - full.size(), 'M');
    ASSERT_EQ(full.size(), 4095u);
    auto config = NewConfig();
    EXPECT_EQ(ParseInfoLegacySettings(*config, ExactCopy(full).get()), 23);
    EXPECT_EQ(std::u16string(config->ModelNumber), std::u16string(259, u'M'));

    // Each key as the last bytes of the text: nothing is read past the terminator.
    for (const char* tail : {"TOPMARGIN", "AUTOCR", "FWPRIMARY", "FWPRIMARY=7.", "MODEL", "BRAILLETABLE=\"EN"}) {
        auto tailConfig = NewConfig(0xA5);
        const std::string reply = std::string("@PJL INFO LEGACY [23\r\n") + tail;
        EXPECT_EQ(ParseInfoLegacySettings(*tailConfig, ExactCopy(reply).get()), 0) << tail;
    }
}

}  // namespace
