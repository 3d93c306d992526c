// The host shows a real Wine printer's document and printer property sheets with the
// plug-in's pages, and tears everything down in the driver's order.
#include "host/plugin_under_test.h"

#include <commctrl.h>

using hosttest::PluginUnderTest;

namespace {

size_t LineIndex(const ozdkhost::HostLog& log, const std::wstring& fragment) {
    const auto& lines = log.Lines();
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].find(fragment) != std::wstring::npos) return i;
    }
    return lines.size();
}

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
        ASSERT_NE(hostPrinter.publicDevMode(), nullptr);
        EXPECT_STREQ(hostPrinter.publicDevMode()->dmDeviceName, printer.name().substr(0, 31).c_str());
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

TEST(HostSheets, AWholeRunReleasesTheObjectBeforeTheLibraryAndReportsSuccess) {
    testenv::TestPrinter printer;
    ASSERT_NE(printer.handle(), nullptr);
    ozdkhost::HostOptions options;
    options.dllPath = PluginUnderTest();
    options.printerName = printer.name();
    options.apply = true;
    options.showMilliseconds = 100;
    ozdkhost::HostLog log;
    EXPECT_EQ(ozdkhost::RunHost(options, log), 0) << Dump(log);

    const std::vector<std::wstring> order = {
        L"host: loaded ",
        L"DevMode(OEMDM_SIZE) = 0x00000000, cbBufSize=724",
        L"DocumentPropertySheets(PROPSHEETUI_REASON_INIT)",
        L"document sheet \"",
        L"DocumentPropertySheets(PROPSHEETUI_REASON_DESTROY)",
        L"DevicePropertySheets(PROPSHEETUI_REASON_INIT)",
        L"printer sheet \"",
        L"DevicePropertySheets(PROPSHEETUI_REASON_DESTROY)",
        L"plug-in object released, Release() = 0",
        L"library freed",
    };
    size_t previous = 0;
    for (const auto& step : order) {
        const size_t at = LineIndex(log, step);
        ASSERT_LT(at, log.Lines().size()) << testenv::Narrow(step) << " missing\n" << Dump(log);
        EXPECT_GE(at, previous) << testenv::Narrow(step) << " out of order\n" << Dump(log);
        previous = at;
    }
}

TEST(HostSheets, AMissingPrinterOrLibraryEndsTheRunWithoutShowingAnything) {
    ozdkhost::HostOptions options;
    options.dllPath = PluginUnderTest();
    options.printerName = L"No Such Printer 0451";
    ozdkhost::HostLog log;
    EXPECT_EQ(ozdkhost::RunHost(options, log), 1);
    EXPECT_TRUE(log.Contains(L"OpenPrinterW(No Such Printer 0451) failed")) << Dump(log);

    testenv::TestPrinter printer;
    options.printerName = printer.name();
    options.dllPath = testenv::WorkDirectory() + L"\\missing-ozdkrnui.dll";
    ozdkhost::HostLog second;
    EXPECT_EQ(ozdkhost::RunHost(options, second), 1);
    EXPECT_FALSE(second.Contains(L"sheet \"")) << Dump(second);
}

TEST(HostMeasurements, SeeAHandleAndAHeapBlockComeAndGo) {
    const DWORD handles = ozdkhost::CountOpenHandles();
    const auto heap = ozdkhost::MeasureHeapUsage();
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    void* block = HeapAlloc(GetProcessHeap(), 0, 4096);
    EXPECT_EQ(ozdkhost::CountOpenHandles(), handles + 1);
    EXPECT_GE(ozdkhost::MeasureHeapUsage().busyBytes, heap.busyBytes + 4096);
    CloseHandle(event);
    HeapFree(GetProcessHeap(), 0, block);
    EXPECT_EQ(ozdkhost::CountOpenHandles(), handles);
    EXPECT_EQ(ozdkhost::MeasureHeapUsage().busyBytes, heap.busyBytes);
}
