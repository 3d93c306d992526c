// What tests that play the driver's host share: a heap of the host's kind, files of the
// build folder, and companion libraries copied to where the plug-in looks for them.
// Header-only, so that any test program can use it.
#pragma once

#include <cstdlib>
#include <utility>

#include "base/printer_oem_ui.h"
#include "support/wine_environment.h"
#include "tools/host/host_library.h"

namespace testenv {

// A heap of the host's kind (what hOEMHeap is), destroyed with the object.
class HostHeap {
public:
    HostHeap() : heap_(HeapCreate(0, 0, 0)) {}
    ~HostHeap() { HeapDestroy(heap_); }
    HostHeap(const HostHeap&) = delete;
    HostHeap& operator=(const HostHeap&) = delete;
    HANDLE get() const { return heap_; }

    int BusyBlocks() const { return static_cast<int>(ozdkhost::MeasureHeapUsage(heap_).busyBlocks); }

private:
    HANDLE heap_;
};

// The host's call block for a printer, with this test program as the plug-in's module.
inline OEMCUIPPARAM MakeParam(const TestPrinter& printer, HANDLE heap, DEVMODEW* publicDevMode = nullptr) {
    OEMCUIPPARAM param = {};
    param.cbSize = sizeof(param);
    param.hPrinter = printer.handle();
    param.pPrinterName = const_cast<wchar_t*>(printer.name().c_str());
    param.hModule = GetModuleHandleW(nullptr);
    param.hOEMHeap = heap;
    param.pPublicDM = publicDevMode;
    return param;
}

// The Windows path of a file of the build folder (OZDK_BUILD_DIR), e.g.
// BuildFilePath(L"tests\\standins\\language_monitor_extension\\ozdkrnlmex.dll").
inline std::wstring BuildFilePath(const std::wstring& relative) {
    const char* build = std::getenv("OZDK_BUILD_DIR");
    return WindowsPath(build != nullptr ? build : "") + L"\\" + relative;
}

// The DLL just built, loaded the way the driver's UI host loads it, with its plug-in
// object made for printer `printerName` and the printer's private device-mode part
// prepared. `ready` says whether all of that succeeded; `log` says why not.
struct HostedPlugin {
    explicit HostedPlugin(const std::wstring& printerName) {
        ready = library.Load(BuildFilePath(L"ozdkrnui.dll")) && printer.Open(printerName) &&
                object.Create(library) == S_OK && printer.PrepareOemPrivatePart(object.get(), library.module());
    }
    ozdkhost::HostLog log;
    ozdkhost::PluginLibrary library{&log};
    ozdkhost::HostPrinter printer{&log};
    ozdkhost::PluginObject object{&log};
    bool ready = false;
};

using ozdkhost::PrinterDriverDirectory;

// Where the plug-in looks for the language-monitor extension library.
inline std::wstring ExtensionLibraryPath() { return PrinterDriverDirectory() + L"\\3\\ozdkrnlmex.dll"; }

// A file copied into place for the life of the object (or, with an empty source, a place
// kept empty); removed afterwards. Whoever loaded a library from it must have freed it
// by then.
class PlacedCompanion {
public:
    PlacedCompanion(const std::wstring& source, std::wstring destination) : destination_(std::move(destination)) {
        DeleteFileW(destination_.c_str());
        placed_ = !source.empty() && CopyFileW(source.c_str(), destination_.c_str(), FALSE);
    }
    ~PlacedCompanion() { DeleteFileW(destination_.c_str()); }
    PlacedCompanion(const PlacedCompanion&) = delete;
    PlacedCompanion& operator=(const PlacedCompanion&) = delete;
    bool placed() const { return placed_; }

private:
    std::wstring destination_;
    bool placed_ = false;
};

}  // namespace testenv
