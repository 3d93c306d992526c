#include <gtest/gtest.h>

#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/version_string.h"
#include "support/wine_environment.h"

using testenv::TraceLog;

TEST(TraceLog, WritesEachLineAsFormattedWithWindowsConventions) {
    TraceLog log;
    Trace(L"CreateConfig(): usage count=%d\n", 2);
    Trace(L"CreateConfig(): pPrinterName=%ws\n", L"Embosser 1");
    Trace(L"UpdateLegacyConfigString(): @PJL DEFAULT %s=%S\n", L"MEDIATYPE", "PLAIN");

    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "CreateConfig(): usage count=2",
                               "CreateConfig(): pPrinterName=Embosser 1",
                               "UpdateLegacyConfigString(): @PJL DEFAULT MEDIATYPE=PLAIN",
                           }));
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
    char narrow[6];
    EXPECT_EQ(FormatNarrow(narrow, 6, "%ws=%u", L"KEY", 12345u), -1);
    EXPECT_STREQ(narrow, "KEY=1");
    EXPECT_FALSE(CopyWide(buffer, 3, L"abc"));
    EXPECT_STREQ(buffer, L"ab");
}

namespace {
// Reports a driver version, which Wine's spooler does not keep for the test driver.
class VersionedDriverSpooler : public Spooler {
public:
    BOOL GetPrinterDriverW(HANDLE, const wchar_t*, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) override {
        *needed = sizeof(DRIVER_INFO_6W);
        if (level != 6 || buffer == nullptr || size < sizeof(DRIVER_INFO_6W)) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        DRIVER_INFO_6W info = {};
        info.dwlDriverVersion = (DWORDLONG(3) << 48) | (DWORDLONG(2) << 32) | (DWORDLONG(1) << 16) | 0;
        memcpy(buffer, &info, sizeof(info));
        return TRUE;
    }
};
}  // namespace

TEST(FileVersionString, ComesFromTheDriverVersionWhenThePrinterHasOne) {
    testenv::TestPrinter printer;
    VersionedDriverSpooler spooler;
    SetSpoolerForTesting(&spooler);
    UIConfig config = {};
    config.hPrinter = printer.handle();
    TraceLog log;
    const wchar_t* first = GetFileVersionString(&config);
    SetSpoolerForTesting(nullptr);
    EXPECT_STREQ(first, L"3.2.1.0");
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"GetFileVersionString(): 0.0.0.0"});
}

TEST(FileVersionString, FallsBackToTheInstalledModulesVersionResource) {
    const wchar_t* first = GetFileVersionString(nullptr);
    EXPECT_STREQ(first, L"1.4.7.0") << "the version resource of the plug-in in the driver folder";
    const wchar_t* second = GetFileVersionString(nullptr);
    EXPECT_EQ(first, second) << "one shared buffer";
}
