// The host shows a real Wine printer's document and printer property sheets with the
// plug-in's pages.
#include "host/plugin_under_test.h"

#include <commctrl.h>

TEST(HostSheets, DocumentAndPrinterSheetsOfARealPrinterOpenApplyAndCloseWhateverThePagesAnswer) {
    testenv::TestPrinter printer;
    ozdkhost::HostLog log;
    ozdkhost::PluginLibrary library(&log);
    ASSERT_TRUE(library.Load(hosttest::PluginUnderTest()));
    ozdkhost::HostPrinter hostPrinter(&log);
    ASSERT_TRUE(hostPrinter.Open(printer.name()));
    ozdkhost::PluginObject object(&log);
    ASSERT_EQ(object.Create(library), S_OK);
    ASSERT_TRUE(hostPrinter.PrepareOemPrivatePart(object.get(), library.module()));

    for (auto kind : {ozdkhost::SheetKind::Document, ozdkhost::SheetKind::Printer}) {
        const std::wstring sheets =
            kind == ozdkhost::SheetKind::Document ? L"DocumentPropertySheets(" : L"DevicePropertySheets(";
        ozdkhost::PropertySheetHost sheet(kind, object, library.module(), hostPrinter, &log);
        sheet.Prepare();
        ASSERT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_INIT)"), nullptr) << testenv::Narrow(log.Text());
        ASSERT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_GET_INFO_HEADER)"), nullptr);
        for (const auto& call : sheet.calls()) {
            EXPECT_TRUE(SUCCEEDED(call.result) || call.lastError != 0)
                << testenv::Narrow(call.call) << " failed without saying why";
        }

        sheet.AddHostPage(ozdkhost::MakeCallLogPage(log));  // the document sheet has no page of the plug-in
        const HWND window = sheet.ShowModeless();
        ASSERT_NE(window, nullptr) << testenv::Narrow(log.Text());
        EXPECT_EQ(static_cast<size_t>(TabCtrl_GetItemCount(PropSheet_GetTabControl(window))),
                  sheet.pluginPages().size() + 1);
        EXPECT_TRUE(sheet.PumpMessages(150)) << "the sheet stays open";
        sheet.Apply();
        sheet.Close();
        EXPECT_FALSE(IsWindow(window));
        EXPECT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_DESTROY)"), nullptr);
    }
    EXPECT_EQ(object.Release(), 0u) << "the sheets keep no reference";
}
