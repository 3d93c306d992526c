#include <gtest/gtest.h>

#include <climits>
#include <map>

#include "config/paper_sizes.h"
#include "config_fixtures.h"

using namespace configtest;
using testenv::TestPrinter;

TEST(IsFormAboutSize, MatchesWithinOneUnitEitherWayRound) {
    const struct { PaperDimensions sf, df; bool expected; } cases[] = {
        {{100, 200}, {201, 99}, true},    // turned, one unit off in both
        {{100, 200}, {102, 200}, false},  // two units off
        {{100, 200}, {101, 199}, true},   // bounds are inclusive
        {{100, 200}, {200, 102}, false},  // turned, but one dimension two units off
        {{-1, 0}, {0, 1}, true},          // signed comparison
        {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, false},  // no overflow at the ends
        {{INT_MAX, INT_MIN}, {INT_MAX - 1, INT_MIN + 1}, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(IsFormAboutSize(c.sf, c.df), c.expected)
            << "sf=(" << c.sf.cx << ", " << c.sf.cy << "), df=(" << c.df.cx << ", " << c.df.cy << ")";
    }
}

TEST(EnumPrinterPaperSizes, ListsThePrintersPaperNamesInSlotsOf64Characters) {
    TestPrinter printer;
    DWORD bytes = 1;
    DWORD fields = 0;
    ASSERT_EQ(EnumPrinterPaperSizes(printer.handle(), nullptr, &bytes, &fields), 4);
    EXPECT_EQ(bytes, 4u * 128u);
    BYTE info[8192] = {};
    DWORD needed = 0;
    ASSERT_TRUE(GetPrinterW(printer.handle(), 2, info, sizeof(info), &needed));
    ASSERT_NE(reinterpret_cast<PRINTER_INFO_2W*>(info)->pDevMode, nullptr);
    EXPECT_EQ(fields, reinterpret_cast<PRINTER_INFO_2W*>(info)->pDevMode->dmFields);

    std::vector<wchar_t> names(bytes / sizeof(wchar_t) + 64, L'#');
    EXPECT_EQ(EnumPrinterPaperSizes(printer.handle(), names.data(), &bytes, nullptr), 4);
    std::vector<std::wstring> listed;
    for (int i = 0; i < 4; ++i) {
        wchar_t name[kPaperNameCharacters + 1];
        CopyPaperName(names.data(), i, name, kPaperNameCharacters + 1);
        listed.push_back(name);
    }
    EXPECT_EQ(listed, (std::vector<std::wstring>{L"Letter", L"Letter Small", L"A4", L"Legal"}));
    EXPECT_EQ(names[4 * 64], L'#');  // nothing written past the names

    // Too small a buffer is left alone.
    std::vector<wchar_t> small(3 * 64, L'#');
    EXPECT_EQ(EnumPrinterPaperSizes(printer.handle(), small.data(), 3 * 128, &bytes, nullptr), 0);
    EXPECT_EQ(small[0], L'#');
}

// The last form whose truncated size matches; the name is left alone when the printer
// has no paper names to try.
TEST(GetPrinterCurrentFormName, TakesTheLastFormWhoseTruncatedSizeMatches) {
    const struct {
        const char* what;
        PaperDimensions paper;
        std::map<std::wstring, SIZEL> formSizes;
        const wchar_t* expected;
        bool withholdDevMode = false;
        int paperNames = -2;  // -2: as the printer says
    } cases[] = {
        {"A4", {210000, 297000}, {}, L"A4"},
        {"Letter and Letter Small are alike: the later wins", {215900, 279400}, {}, L"Letter Small"},
        {"no form matches", {100000, 100000}, {}, L"Letter"},
        {"a form 50 micrometres wider", {210000, 297000}, {{L"A4", {210050, 297000}}}, L"A4"},
        {"truncated, not rounded", {210000, 297000}, {{L"A4", {210099, 297099}}}, L"A4"},
        {"just below", {210000, 297000}, {{L"A4", {209999, 297000}}}, L"Letter"},
        {"the size is compared exactly", {210050, 297000}, {{L"A4", {210050, 297000}}}, L"Letter"},
        {"no default device mode", {210000, 297000}, {}, L"As it was", true},
        {"no paper names", {210000, 297000}, {}, L"As it was", false, 0},
        {"capability fails", {210000, 297000}, {}, L"As it was", false, -1},
    };
    TestPrinter printer;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ConfigSpooler spooler;
        spooler.formSizes = c.formSizes;
        spooler.withholdDevMode = c.withholdDevMode;
        spooler.paperNamesAnswer = c.paperNames;
        testenv::SpoolerSwap swap(&spooler);
        wchar_t name[kFormNameCapacity] = L"As it was";
        const bool named = c.paperNames == -2 && !c.withholdDevMode;
        EXPECT_EQ(GetPrinterCurrentFormName(printer.handle(), c.paper, name), named ? 4 : 0);
        EXPECT_STREQ(name, c.expected);
        DWORD bytes = 7;
        EXPECT_EQ(EnumPrinterPaperSizes(printer.handle(), nullptr, &bytes, nullptr), named ? 4 : 0);
        EXPECT_EQ(bytes, named ? 4u * 128u : 0u);
    }
    const PaperDimensions a4 = GetFormSize(printer.handle(), L"A4");
    EXPECT_EQ(a4.cx, 210000);
    EXPECT_EQ(a4.cy, 297000);
    const PaperDimensions unknown = GetFormSize(printer.handle(), L"No Such Form 42");
    EXPECT_EQ(unknown.cx, 0);
    EXPECT_EQ(unknown.cy, 0);
}
