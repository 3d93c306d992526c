// The printing preferences of a printer of their own, opened the way the driver's host
// opens them, with the plug-in object linked into the test program (so that the test
// spooler can stand in where Wine's cannot), and what the tests read back.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "frame/oem_ui_plugin.h"
#include "support/host_fixtures.h"
#include "support/spooler_doubles.h"
#include "support/wine_environment.h"
#include "tools/host/dialog_driver.h"

namespace docui {

using namespace ozdkhost;

// A top-level window that counts the WM_DEVMODECHANGE broadcasts naming a printer.
class DevModeBroadcasts {
public:
    explicit DevModeBroadcasts(const std::wstring& printer) : printer_(printer) {
        WNDCLASSW type = {};
        type.lpfnWndProc = Proc;
        type.hInstance = GetModuleHandleW(nullptr);
        type.lpszClassName = L"OzdkBroadcastCounter";
        RegisterClassW(&type);
        window_ = CreateWindowW(type.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                type.hInstance, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~DevModeBroadcasts() { DestroyWindow(window_); }
    int count() const { return count_; }

private:
    static LRESULT CALLBACK Proc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = reinterpret_cast<DevModeBroadcasts*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_DEVMODECHANGE && self != nullptr && lParam != 0 &&
            self->printer_ == reinterpret_cast<const wchar_t*>(lParam)) {
            ++self->count_;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }
    std::wstring printer_;
    HWND window_ = nullptr;
    int count_ = 0;
};

// The document sheet of a printer of its own, opened the way the driver's host opens it.
struct Preferences {
    // `prepare` may change the document's device mode before the sheet is built.
    bool Open(void (*prepare)(DEVMODEW&) = nullptr) {
        if (!hostPrinter.Open(printer.name()) || hostPrinter.publicDevMode() == nullptr || object.Adopt(new OemUIPlugin()) != S_OK ||
            !hostPrinter.PrepareOemPrivatePart(object.get(), GetModuleHandleW(nullptr))) {
            return false;
        }
        if (prepare != nullptr) prepare(*hostPrinter.publicDevMode());
        sheet = std::make_unique<PropertySheetHost>(SheetKind::Document, object, GetModuleHandleW(nullptr),
                                                    hostPrinter, &log);
        sheet->Prepare();
        return sheet->ShowModeless() != nullptr;
    }
    DWORD Stored(const wchar_t* name) { return testenv::ReadPrinterData(printer.handle(), L"Config", name).AsDword(); }
    void Store(const wchar_t* key, const wchar_t* name, DWORD value) {
        SetPrinterDataExW(printer.handle(), const_cast<wchar_t*>(key), const_cast<wchar_t*>(name), REG_DWORD,
                          reinterpret_cast<BYTE*>(&value), sizeof(value));
    }
    // The printer's own device mode, as the spooler keeps it.
    DEVMODEW PrinterDevMode() const {
        DWORD needed = 0;
        GetPrinterW(printer.handle(), 2, nullptr, 0, &needed);
        std::vector<BYTE> info(needed);
        DEVMODEW devMode = {};
        if (GetPrinterW(printer.handle(), 2, info.data(), needed, &needed)) {
            devMode = *reinterpret_cast<PRINTER_INFO_2W*>(info.data())->pDevMode;
        }
        return devMode;
    }
    // What was written since the last call.
    std::vector<std::wstring> TakeWrites() {
        std::vector<std::wstring> names;
        for (const auto& write : spooler.writes) names.push_back(write.name);
        spooler.writes.clear();
        return names;
    }

    testenv::TestPrinter printer{L"Ozdk Pages"};
    testenv::TestSpooler spooler;
    testenv::SpoolerSwap swap{&spooler};
    DevModeBroadcasts broadcasts{printer.name()};
    HostLog log;
    HostPrinter hostPrinter{&log};
    PluginObject object{&log};
    std::unique_ptr<PropertySheetHost> sheet;
};

}  // namespace docui
