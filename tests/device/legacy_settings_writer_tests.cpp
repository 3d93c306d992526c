// Writing device settings back, checked on the raw jobs the test printer receives. What
// each item makes of its value is the protocol core's part (tests/native); here: the
// walk over the items, the jobs and the commit.
#include "support/embosser_fixtures.h"

#include <compstui.h>

#include <vector>

#include "device/legacy_settings_writer.h"
#include "device/protocol/pjl_commands.h"

using devicetest::Default;
using devicetest::kServiceUpdate;

namespace {

OPTTYPE gEdit = {sizeof(OPTTYPE), TVOT_EDITBOX};
OPTTYPE gList = {sizeof(OPTTYPE), TVOT_LISTBOX};
OPTTYPE gUpDown = {sizeof(OPTTYPE), TVOT_UDARROW};

// A device-settings item as the tree hands it to the callback: an edit box carries its
// text (a buffer of kMeasureTextCapacity), the other kinds a selection.
OPTITEM Item(BYTE id, OPTTYPE* type, LONG selection, wchar_t* text = nullptr) {
    OPTITEM item = {sizeof(OPTITEM), 2, 0, 0, 0, nullptr, {selection}, {}, type, 0, 0, id};
    if (text != nullptr) item.pSel = text;
    return item;
}

CPSUICBPARAM ParamOf(std::vector<OPTITEM>& items) {
    return {sizeof(CPSUICBPARAM), 0, nullptr, items.data(), static_cast<WORD>(items.size())};
}

}  // namespace

TEST(LegacyWriter, ApplySendsEachChangedItemInListOrderThenTheCorrectionsThenTheCommitOnlyWhileTheDeviceIsKnown) {
    // A known device: 10 lines on a page 11 inches long, everything else 0.
    testenv::TestPrinter printer;
    auto config = devicetest::ConfigFor(printer);
    config->LegacyParmCount = 23;
    config->EmbsrPaperLength = 220;
    config->EmbsrLinesLength = 10;
    wchar_t lineSpace[kMeasureTextCapacity] = L"7", width[kMeasureTextCapacity] = L"8.5";
    std::vector<OPTITEM> items = {
        Item(30, &gEdit, 0, lineSpace),  // rewritten as 7.00; only one line of that height fits the page
        Item(50, &gList, 3),             // no device setting
        Item(26, nullptr, 1),            // no option type
        Item(26, &gList, 1),
        Item(230, &gUpDown, 40),  // more characters than fit a line of 8.5 inches
        Item(45, &gList, 0), Item(52, &gEdit, 0, width), Item(232, &gList, 2),
    };
    CPSUICBPARAM param = ParamOf(items);
    config->LegacyChanged = 1;

    EXPECT_TRUE(ApplyLegacyChanges(&param, *config));

    EXPECT_EQ(printer.Jobs(), Default("EXTRALINESPACE=140") + Default("BRAILLEDOTS=8") + Default("CHARSWIDTH=40") +
                                  Default("AUTOCR=ON") + Default("PAPERWIDTH=6120") + Default("QUALITY=BEST") +
                                  Default("CHARSWIDTH=34") + Default("LINESLENGTH=1") + kServiceUpdate);
    EXPECT_STREQ(lineSpace, L"7.00");
    EXPECT_NE(items[0].Flags & OPTIF_CHANGED, 0u);
    EXPECT_EQ(items[6].Flags & OPTIF_CHANGED, 0u);
    EXPECT_EQ(config->LegacyChanged, 0u);
    EXPECT_EQ(config->EmbsrCharsWidth, 40);  // the corrections are sent, not kept
    EXPECT_EQ(config->EmbsrLinesLength, 10);

    // Applied again nothing differs, and nothing is sent; nor without a parameter.
    printer.ClearJobs();
    testenv::TraceLog log;
    EXPECT_FALSE(ApplyLegacyChanges(&param, *config));
    EXPECT_FALSE(ApplyLegacyChanges(nullptr, *config));
    EXPECT_EQ(log.Count("ApplyLegacyChanges(): no changes, not calling UpdateNvRamData()"), 2);
    EXPECT_EQ(printer.Jobs(), "");

    // Without a handle to start a job on, the printer is opened by its name.
    config->PrinterHandle = nullptr;
    config->LegacyChanged = 1;
    UpdateLegacyConfig(*config, L"TOPMARGIN", 12);
    EXPECT_EQ(printer.Jobs(), Default("TOPMARGIN=12"));
    EXPECT_EQ(config->LegacyChanged, 0u);

    // While the device settings are unknown the fields change, and nothing is sent.
    printer.ClearJobs();
    wchar_t half[kMeasureTextCapacity] = L"0.5";
    std::vector<OPTITEM> changed = {Item(41, &gEdit, 0, half), Item(42, &gList, 1), Item(232, &gList, 0)};
    param = ParamOf(changed);
    config->LegacyParmCount = 0;
    EXPECT_TRUE(ApplyLegacyChanges(&param, *config));
    EXPECT_EQ(config->EmbsrLeftMargin, 10);  // a number, a switch and a word
    EXPECT_EQ(config->EmbsrGraphicsMode, 1u);
    EXPECT_EQ(config->EmbsrQuality, 0u);
    config->LegacyParmCount = -1;
    UpdateLegacyConfig(*config, L"TOPMARGIN", 13);
    EXPECT_EQ(printer.Jobs(), "");
}

TEST(LegacyWriter, SendPrinterCommandSendsTheMediaForceBytesAsOneJob) {
    testenv::TestPrinter printer;
    EXPECT_EQ(SendPrinterCommand(printer.name().c_str(), kPjlMediaForceCommand, kPjlMediaForceCommandLength), 0u);
    EXPECT_EQ(printer.Jobs(), std::string("\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n"));

    EXPECT_EQ(SendPrinterCommand(L"No Such Embosser", kPjlMediaForceCommand, kPjlMediaForceCommandLength),
              static_cast<DWORD>(ERROR_INVALID_PRINTER_NAME));
}
