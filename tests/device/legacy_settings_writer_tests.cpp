// Writing device settings back, checked on the raw jobs the test printer receives. What
// each item makes of its value is the protocol core's part (tests/native); here: the
// walk over the items, the jobs and the commit.
#include "support/embosser_fixtures.h"

#include <vector>

#include "device/legacy_settings_writer.h"
#include "device/protocol/pjl_commands.h"

using devicetest::Default;
using devicetest::kServiceUpdate;

namespace {

// An item of the device-settings branch: an edit box gives its text, the others a selection.
LegacyItemEdit Edit(uint32_t id, int32_t selection, const wchar_t* text = nullptr) {
    return {id, selection, text, false, {}};
}

}  // namespace

TEST(LegacyWriter, ApplySendsEachChangedItemInListOrderThenTheCorrectionsThenTheCommitOnlyWhileTheDeviceIsKnown) {
    // A known device: 10 lines on a page 11 inches long, everything else 0.
    testenv::TestPrinter printer;
    auto config = devicetest::ConfigFor(printer);
    config->LegacyParmCount = 23;
    config->EmbsrPaperLength = 220;
    config->EmbsrLinesLength = 10;
    std::vector<LegacyItemEdit> edits = {
        Edit(30, 0, L"7"),  // rewritten as 7.00; only one line of that height fits the page
        Edit(50, 3),        // no device setting
        Edit(26, 1),
        Edit(230, 40),  // more characters than fit a line of 8.5 inches
        Edit(45, 0), Edit(52, 0, L"8.5"), Edit(232, 2),
    };
    config->LegacyChanged = 1;

    EXPECT_TRUE(ApplyLegacyChanges(*config, edits.data(), edits.size()));

    EXPECT_EQ(printer.Jobs(), Default("EXTRALINESPACE=140") + Default("BRAILLEDOTS=8") + Default("CHARSWIDTH=40") +
                                  Default("AUTOCR=ON") + Default("PAPERWIDTH=6120") + Default("QUALITY=BEST") +
                                  Default("CHARSWIDTH=34") + Default("LINESLENGTH=1") + kServiceUpdate);
    EXPECT_TRUE(edits[0].rewritten);
    EXPECT_STREQ(edits[0].rewrittenText, L"7.00");
    EXPECT_FALSE(edits[5].rewritten);
    EXPECT_EQ(config->LegacyChanged, 0u);
    EXPECT_EQ(config->EmbsrCharsWidth, 40);  // the corrections are sent, not kept
    EXPECT_EQ(config->EmbsrLinesLength, 10);

    // Applied again nothing differs, and nothing is sent; nor without a parameter.
    printer.ClearJobs();
    testenv::TraceLog log;
    EXPECT_FALSE(ApplyLegacyChanges(*config, edits.data(), edits.size()));
    EXPECT_FALSE(ApplyLegacyChanges(*config, nullptr, 0));
    EXPECT_EQ(log.Count("ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()"), 2);
    EXPECT_EQ(printer.Jobs(), "");

    // Without a handle to start a job on, the printer is opened by its name.
    config->PrinterHandle = nullptr;
    config->LegacyChanged = 1;
    SendLegacyDefault(*config, PjlNumber(L"TOPMARGIN", 12));
    EXPECT_EQ(printer.Jobs(), Default("TOPMARGIN=12"));
    EXPECT_EQ(config->LegacyChanged, 0u);

    // While the device settings are unknown the fields change, and nothing is sent.
    printer.ClearJobs();
    std::vector<LegacyItemEdit> changed = {Edit(41, 0, L"0.5"), Edit(42, 1), Edit(232, 0)};
    config->LegacyParmCount = 0;
    EXPECT_TRUE(ApplyLegacyChanges(*config, changed.data(), changed.size()));
    EXPECT_EQ(config->EmbsrLeftMargin, 10);  // a number, a switch and a word
    EXPECT_EQ(config->EmbsrGraphicsMode, 1u);
    EXPECT_EQ(config->EmbsrQuality, 0u);
    config->LegacyParmCount = -1;
    SendLegacyDefault(*config, PjlNumber(L"TOPMARGIN", 13));
    EXPECT_EQ(printer.Jobs(), "");
}

TEST(LegacyWriter, SendPrinterCommandSendsTheMediaForceBytesAsOneJob) {
    testenv::TestPrinter printer;
    EXPECT_EQ(SendPrinterCommand(printer.name().c_str(), kPjlMediaForceCommand, kPjlMediaForceCommandLength), 0u);
    EXPECT_EQ(printer.Jobs(), std::string("\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n"));

    EXPECT_EQ(SendPrinterCommand(L"No Such Embosser", kPjlMediaForceCommand, kPjlMediaForceCommandLength),
              static_cast<DWORD>(ERROR_INVALID_PRINTER_NAME));
}
