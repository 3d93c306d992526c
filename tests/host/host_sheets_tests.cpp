// The host opens, applies and closes the document and printer property sheets of a real
// Wine printer with the plug-in's pages, through the DLL just built; every call the
// plug-in fails says why. The printer is a simulated network embosser: the printer
// sheet's "Device Settings" page shows the item tree CommonUIProp builds next to the
// plug-in's "Service" page, the host's callbacks reach the plug-in, and what it writes
// arrives as raw jobs. What each callback
// does (the push buttons included) is checked in-process, in tests/printer_ui.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include "support/host_fixtures.h"
#include "tools/host/host_library.h"
#include "tools/host/option_tree_page.h"

using ozdkhost::SheetKind;

TEST(HostSheets, DocumentAndPrinterSheetsOpenApplyAndCloseAndTheDeviceSettingsShowTheEmbosserAndSendTheEdit) {
    // The device's margins and layout fit a letter page, so that no page-fit corrections
    // are sent; its left margin (10) is not the lowest one it takes (5).
    std::string settings = embosser_sim::SampleLegacyBlock();
    settings.replace(settings.find("LEFTMARGIN=5\r"), 13, "LEFTMARGIN=10\r");
    settings.replace(settings.find("CHARSWIDTH=40\r"), 14, "CHARSWIDTH=30\r");
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.0.0.40", L"");
    auto simulator = devicetest::StartSimulator(
        devicetest::Simulating("127.0.0.40", embosser_sim::Behaviour::Answer, embosser_sim::HttpReply(settings)));
    testenv::HostedPlugin plugin(printer.name());
    ASSERT_TRUE(plugin.ready) << testenv::Narrow(plugin.log.Text());
    ozdkhost::HostLog& log = plugin.log;

    for (auto kind : {SheetKind::Document, SheetKind::Printer}) {
        const std::wstring sheets = kind == SheetKind::Document ? L"DocumentPropertySheets(" : L"DevicePropertySheets(";
        ozdkhost::PropertySheetHost sheet(kind, plugin.object, plugin.library.module(), plugin.printer, &log);
        sheet.Prepare();
        ASSERT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_INIT)"), nullptr) << testenv::Narrow(log.Text());
        for (const auto& call : sheet.calls()) {  // what fails says why
            EXPECT_TRUE(SUCCEEDED(call.result) || call.lastError != 0) << testenv::Narrow(call.call);
        }
        // The printer sheet also gets the "Device Settings" page, before the "Plug-in Calls" page.
        ozdkhost::OptionTreePage* tree = kind == SheetKind::Printer ? sheet.AddOptionTreePage() : nullptr;
        ASSERT_EQ(tree != nullptr, kind == SheetKind::Printer) << testenv::Narrow(log.Text());
        std::unique_ptr<ozdkhost::HostPage> callLog = ozdkhost::MakeCallLogPage(log);
        const ozdkhost::HostPage* callLogPage = callLog.get();
        sheet.AddHostPage(std::move(callLog));
        ASSERT_NE(sheet.ShowModeless(), nullptr) << testenv::Narrow(log.Text());
        if (tree != nullptr) {
            EXPECT_EQ(sheet.TabTitles(), (std::vector<std::wstring>{L"Device Settings", L"Service", L"Plug-in Calls"}));
            ASSERT_EQ(sheet.items().count, 22u);
            ASSERT_TRUE(sheet.ShowHostPage(tree) && sheet.ShowHostPage(callLogPage) && sheet.ShowHostPage(tree));
            EXPECT_EQ(simulator->RequestCount(), 1) << "the device is read at the first activation only";
            for (const auto& [id, text] : {std::pair<BYTE, const wchar_t*>{41, L"0.50"}, {230, L"30"},
                                           {99, L"Face Up"}, {32, L"Reset To Default"}}) {
                EXPECT_EQ(tree->ControlText(id), text) << "item " << static_cast<int>(id);
                EXPECT_TRUE(tree->ControlUsable(id)) << "item " << static_cast<int>(id);
            }
            ASSERT_TRUE(sheet.Apply());  // nothing edited yet: nothing sent
            ASSERT_TRUE(tree->Type(41, L"0.1"));  // the left margin, below the lowest the device takes
        }
        ASSERT_TRUE(sheet.Apply());
        EXPECT_EQ(printer.Jobs(), tree ? devicetest::Default("LEFTMARGIN=5") + devicetest::kServiceUpdate : "")
            << testenv::Narrow(log.Text());
    }  // the sheet closes
    EXPECT_EQ(plugin.object.Release(), 0u) << "the sheets keep no reference";
}
