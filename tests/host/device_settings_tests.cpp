// The printer sheet's "Device Settings" page with the real plug-in on a simulated network
// embosser, in one session: CommonUIProp builds the item tree, the host's callbacks
// reach the plug-in, and what it writes arrives as raw jobs. What each callback does
// (the push buttons included) is checked in-process, in tests/printer_ui.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include "host/plugin_under_test.h"

#include <memory>
#include <string>
#include <utility>

#include "tools/host/option_tree_page.h"

using devicetest::Default;
using devicetest::kServiceUpdate;

constexpr BYTE kLeftMargin = 41;

TEST(DeviceSettingsEndToEnd, ReadsTheEmbosserOnceShowsItsSettingsAndSendsOnlyTheEdit) {
    // The device's margins and layout fit a letter page, so that no page-fit corrections
    // are sent; its left margin (10) is not the lowest one it takes (5).
    std::string settings = embosser_sim::SampleLegacyBlock();
    settings.replace(settings.find("LEFTMARGIN=5\r"), 13, "LEFTMARGIN=10\r");
    settings.replace(settings.find("CHARSWIDTH=40\r"), 14, "CHARSWIDTH=30\r");
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.0.0.40", L"");
    auto simulator = devicetest::StartSimulator(
        devicetest::Simulating("127.0.0.40", embosser_sim::Behaviour::Answer, embosser_sim::HttpReply(settings)));

    // The printer sheet with the "Device Settings" page behind the "Plug-in Calls" page.
    ozdkhost::HostLog log;
    ozdkhost::PluginLibrary library{&log};
    ASSERT_TRUE(library.Load(hosttest::PluginUnderTest()));
    ozdkhost::HostPrinter hostPrinter(&log);
    ASSERT_TRUE(hostPrinter.Open(printer.name()));
    ozdkhost::PluginObject object(&log);
    ASSERT_EQ(object.Create(library), S_OK);
    hostPrinter.PrepareOemPrivatePart(object.get(), library.module());
    ozdkhost::PropertySheetHost sheet(ozdkhost::SheetKind::Printer, object, library.module(), hostPrinter, &log);
    sheet.Prepare();
    ozdkhost::OptionTreePage* tree = sheet.AddOptionTreePage();
    ASSERT_NE(tree, nullptr) << testenv::Narrow(log.Text());
    std::unique_ptr<ozdkhost::HostPage> callLog = ozdkhost::MakeCallLogPage(log);
    const ozdkhost::HostPage* callLogPage = callLog.get();
    sheet.AddHostPage(std::move(callLog));
    ASSERT_NE(sheet.ShowModeless(), nullptr) << testenv::Narrow(log.Text());

    ASSERT_EQ(sheet.items().count, 22u);

    ASSERT_TRUE(sheet.ShowHostPage(tree));
    ASSERT_TRUE(sheet.ShowHostPage(callLogPage));
    ASSERT_TRUE(sheet.ShowHostPage(tree));
    EXPECT_EQ(simulator->RequestCount(), 1) << "the device is read at the first activation only";
    for (const auto& [id, text] : {std::pair<BYTE, const wchar_t*>{kLeftMargin, L"0.50"}, {230, L"30"},
                                   {99, L"Face Up"}, {32, L"Reset To Default"}}) {
        EXPECT_EQ(tree->ControlText(id), text) << "item " << static_cast<int>(id);
        EXPECT_TRUE(tree->ControlUsable(id)) << "item " << static_cast<int>(id);
    }

    ASSERT_TRUE(sheet.Apply());
    EXPECT_EQ(printer.Jobs(), "") << "nothing was edited";

    ASSERT_TRUE(tree->Type(kLeftMargin, L"0.1"));
    ASSERT_TRUE(sheet.Apply());
    EXPECT_EQ(printer.Jobs(), Default("LEFTMARGIN=5") + kServiceUpdate) << testenv::Narrow(log.Text());
}
