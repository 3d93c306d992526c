// The host shows a real Wine printer's document and printer property sheets with the
// plug-in's pages.
#include "host/plugin_under_test.h"

#include <commctrl.h>

using hosttest::PluginUnderTest;

namespace {

std::string Dump(const ozdkhost::HostLog& log) { return testenv::Narrow(log.Text()); }

}  // namespace

TEST(HostSheets, DocumentAndPrinterSheetsOfARealPrinterOpenApplyAndCloseWhateverThePagesAnswer) {
    testenv::TestPrinter printer;
    ASSERT_NE(printer.handle(), nullptr);
    ozdkhost::HostLog log;
    ozdkhost::PluginLibrary library(&log);
    ASSERT_TRUE(library.Load(PluginUnderTest()));
    {
        ozdkhost::HostPrinter hostPrinter(&log);
        ASSERT_TRUE(hostPrinter.Open(printer.name()));
        ozdkhost::PluginObject object(&log);
        ASSERT_EQ(object.Create(library), S_OK);
        EXPECT_EQ(object.driverUI()->references(), 2) << "the plug-in keeps the published driver interface";
        ASSERT_TRUE(hostPrinter.PrepareOemPrivatePart(object.get(), library.module()));
        ASSERT_EQ(hostPrinter.oemPrivateSize(), 724u);
        EXPECT_EQ(static_cast<OEM_DMEXTRAHEADER*>(hostPrinter.oemPrivatePart())->dwSignature, 0x4F5A444Bu);

        for (auto kind : {ozdkhost::SheetKind::Document, ozdkhost::SheetKind::Printer}) {
            const bool document = kind == ozdkhost::SheetKind::Document;
            const std::wstring sheets = document ? L"DocumentPropertySheets(" : L"DevicePropertySheets(";
            ozdkhost::PropertySheetHost sheet(kind, object, library.module(), hostPrinter, &log);
            sheet.Prepare();
            ASSERT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_INIT)"), nullptr) << Dump(log);
            ASSERT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_GET_INFO_HEADER)"), nullptr);
            if (document) {
                EXPECT_EQ(sheet.FindCall(L"HideStandardUI(OEMCUIP_DOCPROP)")->result, S_OK);
                EXPECT_EQ(sheet.items().sizingResult, S_OK);
                EXPECT_EQ(sheet.items().count, 0u) << "no document items from the plug-in";
            }
            for (const auto& call : sheet.calls()) {
                EXPECT_TRUE(SUCCEEDED(call.result) || call.lastError != 0)
                    << testenv::Narrow(call.call) << " failed without saying why";
            }

            sheet.AddHostPage(ozdkhost::MakeCallLogPage(log));
            const HWND window = sheet.ShowModeless();
            ASSERT_NE(window, nullptr) << Dump(log);
            const HWND tabs = PropSheet_GetTabControl(window);
            EXPECT_EQ(static_cast<size_t>(TabCtrl_GetItemCount(tabs)), sheet.pluginPages().size() + 1);
            EXPECT_TRUE(sheet.PumpMessages(150)) << "the sheet stays open";
            sheet.Apply();
            sheet.Close();
            EXPECT_FALSE(IsWindow(window));
            EXPECT_NE(sheet.FindCall(sheets + L"PROPSHEETUI_REASON_DESTROY)"), nullptr);
        }
        EXPECT_EQ(object.Release(), 0u);
    }
    EXPECT_TRUE(library.UnloadIfAllowed());
}
