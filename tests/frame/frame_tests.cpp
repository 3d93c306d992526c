// The ground the frame stands on (trace log, text formatting, the version string) and
// the plug-in object's ownership of the configuration record.
#include <gtest/gtest.h>

#include "support/spooler_doubles.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/config_lifecycle.h"
#include "config/version_string.h"
#include "frame/oem_ui_plugin.h"
#include "support/host_fixtures.h"

// The Microsoft runtime's meaning of %s, %S and %ws in trace lines; buffers that are too
// small get what fits, terminated; no maker folder, no log (and no folder made for it).
TEST(TextFormat, TraceLinesFollowWindowsConventionsCutWhatDoesNotFitAndNeedTheMakerFolder) {
    testenv::TraceLog log;
    Trace(L"CreateConfig(): pPrinterName=%ws\n", L"Embosser 1");
    Trace(L"UpdateLegacyConfigString(): @PJL DEFAULT %s=%S\n", L"MEDIATYPE", "PLAIN");
    {
        testenv::MakerFolderHidden hidden;
        Trace(L"DestroyConfig(): usage count=%d\n", 3);
        EXPECT_EQ(GetFileAttributesW(testenv::TraceLog::Folder().c_str()), INVALID_FILE_ATTRIBUTES) << "not made";
    }
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"CreateConfig(): pPrinterName=Embosser 1",
                                                     "UpdateLegacyConfigString(): @PJL DEFAULT MEDIATYPE=PLAIN"}));

    wchar_t buffer[8];
    EXPECT_EQ(FormatWide(buffer, 8, L"%s", L"abcdefghij"), -1);
    EXPECT_STREQ(buffer, L"abcdefg");
    char narrow[6];
    EXPECT_EQ(FormatNarrow(narrow, 6, "%ws=%u", L"KEY", 12345u), -1);
    EXPECT_STREQ(narrow, "KEY=1");
    EXPECT_FALSE(CopyWide(buffer, 3, L"abc"));
    EXPECT_STREQ(buffer, L"ab");
}

TEST(FileVersionString, ComesFromThePrintersDriverVersionElseFromTheInstalledModulesVersionResource) {
    testenv::TestSpooler spooler;  // Wine's spooler keeps no driver version
    spooler.driverVersion = 0x0003000200010000;
    testenv::SpoolerSwap swap(&spooler);
    UIConfig config = {};
    config.hPrinter = reinterpret_cast<HANDLE>(1);
    testenv::TraceLog log;
    const wchar_t* first = GetFileVersionString(&config);
    EXPECT_STREQ(first, L"3.2.1.0");
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"GetFileVersionString(): 0.0.0.0"});
    EXPECT_STREQ(GetFileVersionString(nullptr), L"1.4.7.0") << "the resource of the plug-in in the driver folder";
    EXPECT_EQ(GetFileVersionString(nullptr), first) << "one shared buffer";
}

// The record the pages attach through the object's config slot is destroyed exactly
// once, by the final Release.
TEST(PluginLifetime, FinalReleaseDestroysTheSharedConfigurationExactlyOnce) {
    testenv::TestPrinter printer;
    testenv::HostHeap heap;
    auto* plugin = new OemUIPlugin();  // with its creator's one reference
    // Three pages attach the record through the object; the host holds one more reference.
    testenv::TraceLog log;
    OEMCUIPPARAM param = testenv::MakeParam(printer, heap.get());
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(CreateConfig(&param, plugin->ConfigSlot()), i);
    char freeing[128];
    FormatNarrow(freeing, sizeof(freeing), "DestroyConfig(): freeing pConfig=0x%p", *plugin->ConfigSlot());
    EXPECT_EQ(plugin->AddRef(), 2u);
    EXPECT_EQ(plugin->Release(), 1u);
    EXPECT_EQ(log.Count(freeing), 0) << "not before the final Release";
    EXPECT_EQ(plugin->Release(), 0u);
    EXPECT_EQ(log.Count(freeing), 1);
    EXPECT_EQ(HeapValidate(heap.get(), 0, nullptr), TRUE);
}
