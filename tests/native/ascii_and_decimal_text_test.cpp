#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "device/protocol/ascii_text.h"
#include "device/protocol/decimal_text.h"
#include "tests/native/test_support.h"

namespace {

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();

TEST(ReadInteger, ReadsBlanksSignDigitsAndSaturates) {
    struct Case {
        const char* text;
        int32_t expected;
    } const cases[] = {
        {"42", 42},           {"  -7x", -7},          {"+5", 5},
        {"\t\r\n 3", 3},      {"", 0},                {"abc", 0},
        {"-", 0},             {"+-3", 0},             {"2147483647", kMax},
        {"2147483648", kMax}, {"-2147483648", kMin},  {"-2147483649", kMin},
        {"99999999999999999999999999", kMax},         {"-99999999999999999999999999", kMin},
        {"0000000000000000000000000012", 12},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ozdk::ReadInteger(c.text), c.expected) << '"' << c.text << '"';
        EXPECT_EQ(ozdk::ReadInteger(Widen(c.text).c_str()), c.expected) << "wide \"" << c.text << '"';
    }
}

TEST(ReadDecimal, ReadsFixedPointTextOnly) {
    struct Case {
        const char* text;
        double expected;
    } const cases[] = {
        {"8.5", 8.5},  {" -0.25", -0.25}, {".5", 0.5},   {"3.", 3.0},   {"+2", 2.0},
        {".", 0.0},    {"-", 0.0},        {"", 0.0},     {"x1", 0.0},   {"1e3", 1.0},
        {"1,5", 1.0},  {"12.50in", 12.5}, {"0.35", 0.35}, {"007.25", 7.25},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ozdk::ReadDecimal(Widen(c.text).c_str()), c.expected) << '"' << c.text << '"';
    }
    EXPECT_EQ(ozdk::ReadDecimal(nullptr), 0.0);
    EXPECT_EQ(ozdk::ReadDecimal(Widen(std::string(400, '9')).c_str()), std::numeric_limits<double>::infinity());
    EXPECT_EQ(ozdk::ReadDecimal(Widen("-" + std::string(400, '9')).c_str()), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(ozdk::ReadDecimal(Widen("0." + std::string(400, '0') + "1").c_str()), 0.0);
}

TEST(TruncateToInt32, TruncatesTowardZeroAndSaturates) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Case {
        double value;
        int32_t expected;
    } const cases[] = {
        {1.9, 1},         {-1.9, -1},           {-0.5, 0},      {2147483647.9, kMax}, {2147483648.0, kMax},
        {-2147483648.9, kMin}, {-2147483649.0, kMin}, {1e300, kMax}, {-1e300, kMin}, {inf, kMax}, {-inf, kMin},
        {std::nan(""), kMin},
    };
    for (const Case& c : cases) EXPECT_EQ(ozdk::TruncateToInt32(c.value), c.expected) << c.value;
}

TEST(ReadUnsignedField, FollowsScanfUnsignedRules) {
    struct Case {
        const char* text;
        bool read;
        uint32_t value;
        size_t consumed;
    } const cases[] = {
        {"7.1", true, 7, 1},       {" +7", true, 7, 3},   {"-1", true, 0xFFFFFFFFu, 2},
        {"99999999999", true, 1215752191u, 11},  // 99999999999 modulo 2^32
        {"x", false, 1234, 0},     {"-", false, 1234, 0}, {"", false, 1234, 0},
    };
    for (const Case& c : cases) {
        const char* cursor = c.text;
        uint32_t value = 1234;
        EXPECT_EQ(ozdk::ReadUnsignedField(cursor, value), c.read) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_EQ(static_cast<size_t>(cursor - c.text), c.consumed) << c.text;
    }
}

TEST(AsciiText, ComparesIgnoringAsciiCaseOnly) {
    EXPECT_TRUE(ozdk::EqualPrefixIgnoringAsciiCase(u"en_us-extra", u"EN_US", 5));
    EXPECT_FALSE(ozdk::EqualPrefixIgnoringAsciiCase(u"EN_U", u"EN_US", 5));
    EXPECT_TRUE(ozdk::EqualPrefixIgnoringAsciiCase(nullptr, u"", 5));
    EXPECT_FALSE(ozdk::EqualPrefixIgnoringAsciiCase(u"\u00e9", u"\u00c9", 1));
    EXPECT_TRUE(ozdk::StartsWithIgnoringAsciiCase("fAlSe", "FALSE"));
    EXPECT_FALSE(ozdk::StartsWithIgnoringAsciiCase("NO", "NONE"));
    EXPECT_EQ(ozdk::NarrowAscii(u"K\u00e9y", 2), "K?");
}

}  // namespace
