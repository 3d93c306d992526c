#include <gtest/gtest.h>

#include "config/spooler.h"
#include "frame/text_format.h"
#include "frame/trace_log.h"
#include "support/wine_environment.h"

using testenv::TraceLog;

TEST(TraceLog, WritesEachLineAsFormattedWithWindowsConventions) {
    TraceLog log;
    Trace(L"CreateConfig(): usage count=%d\n", 2);
    Trace(L"CreateConfig(): pPrinterName=%ws\n", L"Embosser 1");
    Trace(L"UpdateLegacyConfigString(): @PJL DEFAULT %s=%S\n", L"MEDIATYPE", "PLAIN");
    Trace(L"GetFileVersionString(): %s\n", L"0.0.0.0");

    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "CreateConfig(): usage count=2",
                               "CreateConfig(): pPrinterName=Embosser 1",
                               "UpdateLegacyConfigString(): @PJL DEFAULT MEDIATYPE=PLAIN",
                               "GetFileVersionString(): 0.0.0.0",
                           }));
}

TEST(TraceLog, AppendsLongLinesWhole) {
    TraceLog log;
    const std::wstring reply(5000, L'x');
    Trace(L"ParseInfoLegacySettings(): %s\n", reply.c_str());
    ASSERT_EQ(log.Lines().size(), 1u);
    EXPECT_EQ(log.Lines()[0].size(), std::string("ParseInfoLegacySettings(): ").size() + 5000);
}

TEST(TraceLog, IsSilentWithoutTheMakerFolder) {
    TraceLog log;
    {
        testenv::MakerFolderHidden hidden;
        Trace(L"DestroyConfig(): usage count=%d\n", 3);
        EXPECT_EQ(GetFileAttributesW(TraceLog::Folder().c_str()), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(GetFileAttributesW(TraceLog::Path().c_str()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_TRUE(log.Lines().empty());
}

TEST(TextFormat, CutsAndTerminatesWhatDoesNotFit) {
    wchar_t buffer[8];
    EXPECT_EQ(FormatWide(buffer, 8, L"%s", L"abcdefghij"), -1);
    EXPECT_STREQ(buffer, L"abcdefg");
    EXPECT_EQ(FormatWideString(buffer, 8, L"%.02f", 171 / 20.0), 4);
    EXPECT_STREQ(buffer, L"8.55");
    char narrow[6];
    EXPECT_EQ(FormatNarrow(narrow, 6, "%ws=%u", L"KEY", 12345u), -1);
    EXPECT_STREQ(narrow, "KEY=1");
    EXPECT_FALSE(CopyWide(buffer, 3, L"abc"));
    EXPECT_STREQ(buffer, L"ab");
}
