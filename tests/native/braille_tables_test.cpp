#include <gtest/gtest.h>

#include <string>

#include "device/protocol/braille_tables.h"
#include "tests/native/test_support.h"
#include "tests/native/trace_recorder.h"

namespace {

TEST(BrailleTableStringToInt, MatchesFirstFiveCharactersIgnoringCaseAndTraces) {
    struct Case { const char16_t* name; uint32_t code; } const cases[] = {
        {u"EN_US", 1}, {u"en_us-extra", 1}, {u"Ja_Jp", 19}, {u"en_gbx", 15}, {u"EN_U", 0}, {u"CUSTM", 0}, {u"\u00c9N_US", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(BrailleTableStringToInt(c.name), c.code) << Narrow(c.name);
    EXPECT_EQ(BrailleTableStringToInt(nullptr), 0u);

    trace_recorder::Clear();
    EXPECT_EQ(BrailleTableStringToInt(u"de_de"), 2u);
    EXPECT_TRUE(trace_recorder::Contains("BrailleTableStringToInt(): 'de_de'=2\n"));
}

TEST(BrailleTableIntToString, IsTheInverseAndNamesUnknownCodesCustom) {
    for (uint32_t code = 1; code <= kBrailleTableCount; ++code) {
        EXPECT_EQ(BrailleTableStringToInt(BrailleTableIntToString(code)), code);
        EXPECT_EQ(Narrow(BrailleTableIntToString(code)), BrailleTableIntToAnsiString(code));
    }
    for (uint32_t code : {0u, 20u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Narrow(BrailleTableIntToString(code)), "CUSTM") << code;
        EXPECT_STREQ(BrailleTableIntToAnsiString(code), "CUSTM") << code;
    }
}

}  // namespace
