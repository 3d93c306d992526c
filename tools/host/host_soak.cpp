// ozdk_host_soak.exe: creates and releases the plug-in object many times the way the
// driver's host does and reports whether the process's handle count or heap use grows.
//
//   ozdk_host_soak.exe [--dll PATH] [--cycles N] [--printer NAME]
//
// Each cycle: DllGetClassObject, CreateInstance, QueryInterface(IPrintOemUI2),
// PublishDriverInterface, GetInfo, DevMode(OEMDM_SIZE/DEFAULT/MERGE), DeviceCapabilities,
// QueryColorProfile, Release. With --printer each cycle also opens the printer and runs
// the document and printer sheets' preparation (CommonUIProp, HideStandardUI,
// Document/DevicePropertySheets INIT, GET_INFO_HEADER, DESTROY) without showing them.
// Exit code 0 when neither handles nor heap use grew beyond the noise allowance.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "tools/host/host_library.h"

namespace {

using ozdkhost::HeapUsage;

bool RunCycle(const ozdkhost::PluginLibrary& library, const std::wstring& printerName) {
    ozdkhost::PluginObject object;
    if (FAILED(object.Create(library))) {
        return false;
    }
    IPrintOemUI2* plugin = object.get();
    DWORD value = 0;
    DWORD needed = 0;
    plugin->GetInfo(OEMGI_GETSIGNATURE, &value, sizeof(value), &needed);
    plugin->GetInfo(OEMGI_GETVERSION, &value, sizeof(value), &needed);
    OEMDMPARAM param = {};
    param.cbSize = sizeof(param);
    plugin->DevMode(OEMDM_SIZE, &param);
    std::vector<BYTE> in(param.cbBufSize), out(param.cbBufSize);
    param.pOEMDMOut = in.data();
    plugin->DevMode(OEMDM_DEFAULT, &param);
    param.pOEMDMIn = in.data();
    param.pOEMDMOut = out.data();
    plugin->DevMode(OEMDM_DEFAULT, &param);
    plugin->DevMode(OEMDM_MERGE, &param);
    wchar_t capability[32] = {};
    DWORD result = 0;
    plugin->DeviceCapabilities(nullptr, nullptr, nullptr, 257, capability, nullptr, nullptr, 0, &result);
    wchar_t profile[16] = {};
    ULONG profileBytes = sizeof(profile);
    FLONG flags = 0;
    plugin->QueryColorProfile(nullptr, nullptr, nullptr, nullptr, 0, profile, &profileBytes, &flags);

    if (!printerName.empty()) {
        ozdkhost::HostPrinter printer;
        if (!printer.Open(printerName) || !printer.PrepareOemPrivatePart(plugin, library.module())) {
            return false;
        }
        for (auto kind : {ozdkhost::SheetKind::Document, ozdkhost::SheetKind::Printer}) {
            ozdkhost::PropertySheetHost sheet(kind, object, library.module(), printer);
            sheet.Prepare();
            sheet.Close();
        }
        object.Release();  // before the printer's heap goes
    }
    return true;
}

struct Handles {
    DWORD reported;  // GetProcessHandleCount
    DWORD counted;   // probed one by one
};

Handles MeasureHandles() {
    return Handles{ozdkhost::ProcessHandleCount(), ozdkhost::CountOpenHandles()};
}

void Report(const char* phase, int cycles, const Handles& handlesBefore, const Handles& handlesAfter,
            const HeapUsage& before, const HeapUsage& after) {
    std::printf("%s: %d cycles\n", phase, cycles);
    std::printf("  handles   GetProcessHandleCount before %lu, after %lu; counted before %lu, after %lu, growth %ld\n",
                handlesBefore.reported, handlesAfter.reported, handlesBefore.counted, handlesAfter.counted,
                static_cast<long>(handlesAfter.counted) - static_cast<long>(handlesBefore.counted));
    std::printf("  heap      before %llu bytes in %llu blocks, after %llu bytes in %llu blocks, growth %lld bytes, "
                "%lld blocks\n",
                static_cast<unsigned long long>(before.busyBytes), static_cast<unsigned long long>(before.busyBlocks),
                static_cast<unsigned long long>(after.busyBytes), static_cast<unsigned long long>(after.busyBlocks),
                static_cast<long long>(after.busyBytes) - static_cast<long long>(before.busyBytes),
                static_cast<long long>(after.busyBlocks) - static_cast<long long>(before.busyBlocks));
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    std::wstring dllPath;
    std::wstring printerName;
    int cycles = 1000;
    for (int i = 1; i < argc; ++i) {
        const std::wstring arg = argv[i];
        if (arg == L"--dll" && i + 1 < argc) {
            dllPath = argv[++i];
        } else if (arg == L"--cycles" && i + 1 < argc) {
            cycles = static_cast<int>(std::wcstol(argv[++i], nullptr, 10));
        } else if (arg == L"--printer" && i + 1 < argc) {
            printerName = argv[++i];
        } else {
            std::fputs("usage: ozdk_host_soak [--dll PATH] [--cycles N] [--printer NAME]\n", stderr);
            return 2;
        }
    }
    if (dllPath.empty()) {
        dllPath = ozdkhost::InstalledPluginPath();
    }
    ozdkhost::PluginLibrary library;
    if (!library.Load(dllPath)) {
        std::printf("cannot load the plug-in\n");
        return 1;
    }
    // Warm-up: first-use allocations of the runtime and the spooler are not growth.
    for (int i = 0; i < 20; ++i) {
        RunCycle(library, printerName);
    }
    const Handles handlesBefore = MeasureHandles();
    const HeapUsage heapBefore = ozdkhost::MeasureHeapUsage();
    LARGE_INTEGER frequency, start, stop;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    int completed = 0;
    for (int i = 0; i < cycles; ++i) {
        if (RunCycle(library, printerName)) {
            ++completed;
        }
    }
    QueryPerformanceCounter(&stop);
    const double elapsedMs = 1000.0 * static_cast<double>(stop.QuadPart - start.QuadPart) /
                             static_cast<double>(frequency.QuadPart);
    const Handles handlesAfter = MeasureHandles();
    const HeapUsage heapAfter = ozdkhost::MeasureHeapUsage();

    Report(printerName.empty() ? "object cycles" : "object and sheet-preparation cycles", cycles, handlesBefore,
           handlesAfter, heapBefore, heapAfter);
    std::printf("  completed %d of %d in %.1f ms (%.4f ms per cycle)\n", completed, cycles, elapsedMs,
                cycles > 0 ? elapsedMs / cycles : 0.0);
    std::printf("  DllCanUnloadNow = 0x%08lX\n", static_cast<unsigned long>(library.CanUnloadNow()));

    // Noise allowance: a few blocks of the loader or the runtime, far below one leaked
    // object (or factory) per cycle.
    const long long heapGrowth =
        static_cast<long long>(heapAfter.busyBytes) - static_cast<long long>(heapBefore.busyBytes);
    const bool handlesSteady =
        handlesAfter.counted <= handlesBefore.counted && handlesAfter.reported <= handlesBefore.reported;
    const bool heapSteady = heapGrowth < static_cast<long long>(cycles) * 8;
    std::printf("  verdict: handles %s, heap %s\n", handlesSteady ? "steady" : "GROWING",
                heapSteady ? "steady" : "GROWING");
    return completed == cycles && handlesSteady && heapSteady ? 0 : 1;
}
