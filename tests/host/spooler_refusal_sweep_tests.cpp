// Every spooler call of a scenario refused once: the scenario runs again for N = 1, 2, ...
// up to the number of calls it makes, with call N failing the way the spooler fails
// (access denied, no memory, a bad handle; for stored values also a value of the wrong
// type or size). Each run must end without a crash (the program's crash filter ends the
// run), leave no printer handle, kernel handle or heap block behind once the object is
// released (against what a run without refusal leaves in Wine's caches), and leave every
// stored setting and device-mode field with its value from before, the value a run
// without refusal leaves, or the value the plug-in falls back to when nothing can be read
// (a run on a printer with nothing stored). The sheets are linked into this program, so
// that the spooler can be replaced.
//
// CI refuses a fixed sample of the calls (OZDK_SWEEP_STRIDE, default 3, and always the
// first calls); scripts/run-spooler-sweep.sh refuses every call.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "frame/oem_ui_plugin.h"
#include "printer_ui/service_page.h"
#include "resources/device_dialog_ids.h"
#include "resources/document_dialog_ids.h"
#include "support/host_fixtures.h"
#include "support/spooler_doubles.h"
#include "tools/host/dialog_driver.h"
#include "tools/host/option_tree_page.h"

using namespace ozdkhost;

namespace {

// The spooler of the sweep: forwards to the test spooler, counts the plug-in's calls and
// refuses the one numbered `refuse`. Calls a call makes through the seam itself are not
// counted again.
class RefusingSpooler : public testenv::TestSpooler {
public:
    int refuse = 0;
    bool refuseMerges = false;  // every DocumentPropertiesW that merges fails, uncounted
    int calls = 0;
    int openPrinters = 0;
    std::string refused;  // which call, and how

    BOOL OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) override {
        const BOOL opened = Failing("OpenPrinterW", [&] { return TestSpooler::OpenPrinterW(name, printer, defaults); });
        openPrinters += opened ? 1 : 0;
        return opened;
    }
    BOOL ClosePrinter(HANDLE printer) override {
        --openPrinters;  // a refused close has closed the handle all the same
        const BOOL closed = TestSpooler::ClosePrinter(printer);
        return Failing("ClosePrinter", [&] { return closed; });
    }
    // The other calls forward unless refused: with their failure result and the last
    // error, or with the error as their status. A refused call leaves its output buffer
    // filled with what the caller must not read.
#define OZDK_FAILING(Result, Name, Params, Args, failed) \
    Result Name Params override { return Failing(#Name, [&] { return TestSpooler::Name Args; }, Result(failed)); }
#define OZDK_FILLING(Result, Name, Params, Args, buffer, size) \
    Result Name Params override { Fill(buffer, size); return Failing(#Name, [&] { return TestSpooler::Name Args; }, Result()); }
#define OZDK_STATUS(Name, Params, Args) \
    DWORD Name Params override { return Status(#Name, [&] { return TestSpooler::Name Args; }); }
    OZDK_FILLING(BOOL, GetPrinterW, (HANDLE p, DWORD level, BYTE* buffer, DWORD size, DWORD* needed),
                 (p, level, buffer, size, needed), buffer, size)
    OZDK_FAILING(BOOL, SetPrinterW, (HANDLE p, DWORD level, BYTE* info, DWORD command), (p, level, info, command), FALSE)
    OZDK_STATUS(SetPrinterDataW, (HANDLE p, const wchar_t* name, DWORD type, const BYTE* data, DWORD size),
                (p, name, type, data, size))
    OZDK_STATUS(SetPrinterDataExW, (HANDLE p, const wchar_t* key, const wchar_t* name, DWORD type, const BYTE* data,
                DWORD size), (p, key, name, type, data, size))
    OZDK_STATUS(DeletePrinterDataExW, (HANDLE p, const wchar_t* key, const wchar_t* name), (p, key, name))
    OZDK_FILLING(BOOL, GetFormW, (HANDLE p, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size, DWORD* needed),
                 (p, form, level, buffer, size, needed), buffer, size)
    OZDK_FAILING(BOOL, AddFormW, (HANDLE p, DWORD level, BYTE* form), (p, level, form), FALSE)
    OZDK_FAILING(BOOL, DeleteFormW, (HANDLE p, const wchar_t* form), (p, form), FALSE)
    OZDK_FAILING(int, DeviceCapabilitiesW, (const wchar_t* device, const wchar_t* port, WORD what, wchar_t* output,
                 const DEVMODEW* dm), (device, port, what, output, dm), -1)
    OZDK_FAILING(DWORD, StartDocPrinterW, (HANDLE p, DWORD level, BYTE* docInfo), (p, level, docInfo), 0)
    OZDK_FAILING(BOOL, WritePrinter, (HANDLE p, const void* data, DWORD size, DWORD* written), (p, data, size, written),
                 FALSE)
    OZDK_FAILING(BOOL, EndDocPrinter, (HANDLE p), (p), FALSE)
    OZDK_FILLING(BOOL, GetPrinterDriverW, (HANDLE p, const wchar_t* environment, DWORD level, BYTE* buffer, DWORD size,
                 DWORD* needed), (p, environment, level, buffer, size, needed), buffer, size)
    OZDK_FILLING(BOOL, GetPrinterDriverDirectoryW, (const wchar_t* server, const wchar_t* environment, DWORD level,
                 BYTE* buffer, DWORD size, DWORD* needed), (server, environment, level, buffer, size, needed), buffer, size)
#undef OZDK_FAILING
#undef OZDK_FILLING
#undef OZDK_STATUS
    DWORD GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                          DWORD* needed) override {
        return Reading("GetPrinterDataW", type, data, size, needed,
                       [&] { return TestSpooler::GetPrinterDataW(printer, name, type, data, size, needed); });
    }
    DWORD GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                            DWORD size, DWORD* needed) override {
        return Reading("GetPrinterDataExW", type, data, size, needed,
                       [&] { return TestSpooler::GetPrinterDataExW(printer, key, name, type, data, size, needed); });
    }
    LONG DocumentPropertiesW(HWND window, HANDLE printer, const wchar_t* device, DEVMODEW* output, DEVMODEW* input,
                             DWORD mode) override {
        if (refuseMerges && (mode & DM_IN_BUFFER) != 0) return SetLastError(ERROR_ACCESS_DENIED), -1;
        if (output != nullptr && output == input) Fill(output, size_t{output->dmSize} + output->dmDriverExtra);
        return Failing("DocumentPropertiesW", [&] {
            return TestSpooler::DocumentPropertiesW(window, printer, device, output, input, mode);
        }, -1L);
    }

private:
    static constexpr DWORD kErrors[] = {ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY, ERROR_INVALID_HANDLE};

    // The output buffer of the call about to be made.
    void Fill(void* at, size_t size) {
        if (nested_ == 0) fill_ = {static_cast<BYTE*>(at), at != nullptr ? size : 0};
    }
    // True when this outermost call is the one to refuse.
    bool Refusing(const char* call, const char* how) {
        const bool refusing = ++calls == refuse;
        if (refusing) {
            refused = std::string(call) + " " + how;
            if (fill_.first != nullptr) memset(fill_.first, 0xCD, fill_.second);
        }
        fill_ = {};
        return refusing;
    }
    DWORD Error() const { return kErrors[refuse % 3]; }
    const char* ErrorName() const { return refuse % 3 == 0 ? "access denied" : refuse % 3 == 1 ? "no memory" : "invalid handle"; }

    // A call that reports failure by its result (`failed`) and the thread's last error.
    template <typename Forward, typename Result = decltype(std::declval<Forward>()())>
    Result Failing(const char* call, Forward forward, Result failed = Result()) {
        if (nested_ > 0) return forward();
        if (Refusing(call, ErrorName())) {
            SetLastError(Error());
            return failed;
        }
        ++nested_;
        const Result result = forward();
        --nested_;
        return result;
    }
    // A call that answers its status.
    template <typename Forward>
    DWORD Status(const char* call, Forward forward) {
        if (nested_ > 0) return forward();
        if (Refusing(call, ErrorName())) return Error();
        ++nested_;
        const DWORD status = forward();
        --nested_;
        return status;
    }
    // A read of a stored value; every fourth refusal finds it of another type, and every
    // fourth one shorter than it is.
    template <typename Forward>
    DWORD Reading(const char* call, DWORD* type, BYTE* data, DWORD size, DWORD* needed, Forward forward) {
        Fill(data, size);
        if (nested_ > 0 || refuse % 4 < 2 || calls + 1 != refuse) return Status(call, forward);
        Refusing(call, refuse % 4 == 2 ? "of another type" : "shorter than it is");
        ++nested_;
        const DWORD status = forward();
        --nested_;
        if (status == ERROR_SUCCESS && refuse % 4 == 2 && type != nullptr) {
            *type = *type == REG_BINARY ? REG_SZ : REG_BINARY;
        } else if (status == ERROR_SUCCESS && needed != nullptr && *needed > 1) {
            *needed /= 2;
            if (data != nullptr) data[*needed] ^= 0x5A;  // what follows is not the value's
        }
        return status;
    }

    int nested_ = 0;
    std::pair<BYTE*, size_t> fill_;
};

// A setting's stored form: its registry type and bytes, or nothing.
using Settings = std::map<std::wstring, std::vector<BYTE>>;

void ReadKey(HKEY key, const std::wstring& path, Settings* settings) {
    wchar_t name[256];
    BYTE data[4096];
    for (DWORD i = 0;; ++i) {
        DWORD nameLength = 256, size = sizeof(data), type = 0;
        if (RegEnumValueW(key, i, name, &nameLength, nullptr, &type, data, &size) != ERROR_SUCCESS) break;
        std::vector<BYTE>& value = (*settings)[path + name];
        value.assign(data, data + size);
        value.push_back(static_cast<BYTE>(type));
    }
    for (DWORD i = 0;; ++i) {
        DWORD nameLength = 256;
        if (RegEnumKeyExW(key, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        HKEY sub = nullptr;
        if (RegOpenKeyExW(key, name, 0, KEY_READ, &sub) != ERROR_SUCCESS) continue;
        ReadKey(sub, path + name + L"\\", settings);
        RegCloseKey(sub);
    }
}

// The fields of a device mode a page may change, each on its own; a field whose bit in
// dmFields is clear holds nothing. The form name is left out: the driver's merge writes it
// from the paper it settles on, and Wine's driver, given the paper size 0 that "Automatic
// Select" sets, writes text of its own there.
void ReadDevMode(const DEVMODEW* dm, const std::wstring& which, Settings* settings) {
    if (dm == nullptr) return;
    const auto field = [&](const wchar_t* name, DWORD bit, const void* at, size_t size) {
        if (dm->dmFields & bit) {
            (*settings)[which + name].assign(static_cast<const BYTE*>(at), static_cast<const BYTE*>(at) + size);
        }
    };
#define OZDK_FIELD(f, bit) field(L## #f, bit, &dm->f, sizeof(dm->f))
    OZDK_FIELD(dmOrientation, DM_ORIENTATION), OZDK_FIELD(dmPaperSize, DM_PAPERSIZE);
    OZDK_FIELD(dmPaperLength, DM_PAPERLENGTH), OZDK_FIELD(dmPaperWidth, DM_PAPERWIDTH);
    OZDK_FIELD(dmDefaultSource, DM_DEFAULTSOURCE), OZDK_FIELD(dmColor, DM_COLOR), OZDK_FIELD(dmDuplex, DM_DUPLEX);
    OZDK_FIELD(dmCollate, DM_COLLATE), OZDK_FIELD(dmMediaType, DM_MEDIATYPE);
#undef OZDK_FIELD
    field(L"private part", ~0ul, reinterpret_cast<const BYTE*>(dm) + dm->dmSize, dm->dmDriverExtra);
}

// The printer's stored values (with the deletions the test spooler only records made) and
// both device modes.
Settings ReadSettings(const testenv::TestPrinter& printer, const testenv::TestSpooler& spooler,
                      const DEVMODEW* document) {
    Settings settings;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, (testenv::PrinterRegistryPath(printer.name()) + L"\\PrinterDriverData").c_str(),
                      0, KEY_READ, &key) == ERROR_SUCCESS) {
        ReadKey(key, L"", &settings);
        RegCloseKey(key);
    }
    for (const auto& deletion : spooler.deletions) settings.erase(deletion.key + L"\\" + deletion.name);
    DWORD needed = 0;
    ::GetPrinterW(printer.handle(), 2, nullptr, 0, &needed);
    std::vector<BYTE> info(needed);
    if (::GetPrinterW(printer.handle(), 2, info.data(), needed, &needed)) {
        ReadDevMode(reinterpret_cast<PRINTER_INFO_2W*>(info.data())->pDevMode, L"printer.", &settings);
    }
    ReadDevMode(document, L"document.", &settings);
    return settings;
}

// Answers every message box of the program as a person who agrees would.
class BoxAnswerer {
public:
    BoxAnswerer() : thread_([this] {
        while (WaitForSingleObject(stop_, 15) == WAIT_TIMEOUT) {  // a look every 15 ms
            for (HWND w = FindWindowExW(nullptr, nullptr, L"#32770", nullptr); w != nullptr;
                 w = FindWindowExW(nullptr, w, L"#32770", nullptr)) {
                DWORD process = 0;
                GetWindowThreadProcessId(w, &process);
                // A message box's text is control 0xFFFF under Windows, 100 under Wine.
                const bool box = GetDlgItem(w, 0xFFFF) != nullptr || GetDlgItem(w, 100) != nullptr;
                if (process == GetCurrentProcessId() && IsWindowVisible(w) && box) {
                    Answer(w, GetDlgItem(w, IDYES) != nullptr ? IDYES : IDOK);
                }
            }
        }
    }) {}
    ~BoxAnswerer() {
        SetEvent(stop_);
        thread_.join();
        CloseHandle(stop_);
    }

private:
    HANDLE stop_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread_;
};

// The one printer of a sweep: every run starts it afresh from what it was made with, so
// that what Wine keeps per printer is made once and not counted against a run.
class SweptPrinter {
public:
    explicit SweptPrinter(bool network) {
        if (network) printer.MakeNetworkPort(L"127.77.30.1", L"");
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, testenv::PrinterRegistryPath(printer.name()).c_str(), 0, KEY_READ, &key);
        DWORD size = 0;
        RegQueryValueExW(key, L"Default DevMode", nullptr, nullptr, nullptr, &size);
        devMode_.resize(size);
        RegQueryValueExW(key, L"Default DevMode", nullptr, nullptr, devMode_.data(), &size);
        RegCloseKey(key);
    }
    // No stored values but, with `stored`, a few a person chose earlier (none of them the
    // one the plug-in falls back to), and the device mode the printer was made with.
    void Reset(bool stored) {
        const std::wstring path = testenv::PrinterRegistryPath(printer.name());
        testenv::DeleteRegTree(HKEY_LOCAL_MACHINE, path + L"\\PrinterDriverData");
        if (!devMode_.empty()) {
            testenv::WriteRegBytes(HKEY_LOCAL_MACHINE, path, L"Default DevMode", REG_BINARY, devMode_.data(),
                                   static_cast<DWORD>(devMode_.size()));
        }
        for (const auto& [name, value] : {std::pair<const wchar_t*, DWORD>{L"MediaType", 258}, {L"RenderMode", 1},
                                          {L"DotHeight", 2}, {L"LandscapeMode", 0}, {L"EnableStatusMonitoring", 1}}) {
            if (stored) testenv::WriteRegBytes(HKEY_LOCAL_MACHINE, path + L"\\PrinterDriverData\\Config", name, REG_DWORD, &value, sizeof(value));
        }
    }
    testenv::TestPrinter printer{L"Ozdk Sweep"};

private:
    std::vector<BYTE> devMode_;
};

// One scenario's run: the sheet of the printer, with the spooler in place.
struct SheetRun {
    SheetRun(RefusingSpooler& spooler, SweptPrinter& swept, bool stored = true)
        : swap(&spooler), spooler(spooler), printer(swept.printer) {
        swept.Reset(stored);
    }
    bool Open(SheetKind kind) {
        if (!hostPrinter.Open(printer.name()) || object.Adopt(new OemUIPlugin()) != S_OK ||
            !hostPrinter.PrepareOemPrivatePart(object.get(), GetModuleHandleW(nullptr))) {
            return false;
        }
        sheet = std::make_unique<PropertySheetHost>(kind, object, GetModuleHandleW(nullptr), hostPrinter, &log);
        sheet->Prepare();
        tree = kind == SheetKind::Printer ? sheet->AddOptionTreePage() : nullptr;
        if (tree != nullptr) sheet->StartWithHostPage(tree);
        return sheet->ShowModeless() != nullptr;
    }
    // Closes the sheet and releases the object; the settings it left.
    Settings Close() {
        Settings settings = ReadSettings(printer, spooler, hostPrinter.publicDevMode());
        sheet.reset();
        object.Release();
        return settings;
    }

    testenv::SpoolerSwap swap;
    RefusingSpooler& spooler;
    const testenv::TestPrinter& printer;
    HostLog log;
    HostPrinter hostPrinter{&log};
    PluginObject object{&log};
    std::unique_ptr<PropertySheetHost> sheet;
    OptionTreePage* tree = nullptr;
};

using Scenario = std::function<void(SheetRun&)>;

// The printing preferences: a change on each page, applied.
void ChangeEachPage(SheetRun& run) {
    Click(run.sheet->CurrentPage(), IDC_DOUBLE_SIDED);
    if (HWND paper = run.sheet->ShowPluginPage(1)) ChooseEntry(paper, IDC_MEDIA_TYPE_LIST, L"Custom 12");
    if (HWND quorl = run.sheet->ShowPluginPage(2)) Click(quorl, IDC_COLOR);
    run.sheet->Apply();
}
void ChangeEveryPage(SheetRun& run) {
    if (run.Open(SheetKind::Document)) ChangeEachPage(run);
}

// The printer's properties: the device read, a margin changed, applied.
void ChangeADeviceSetting(SheetRun& run) {
    if (!run.Open(SheetKind::Printer) || run.tree == nullptr) return;
    run.tree->Type(41, L"0.50");
    run.sheet->Apply();
}

// The "Service" page with monitoring stored on, and one tick of its status timer.
void MonitorTheService(SheetRun& run) {
    if (!run.Open(SheetKind::Printer)) return;
    if (HWND service = run.sheet->ShowPluginPage(0)) DeviceServiceTimerProc(service, WM_TIMER, kServiceStatusTimer, 0);
    run.sheet->Apply();
}

// "Paper/Media" Advanced: a media type added, a form added and deleted.
void ManageMediaAndForms(SheetRun& run) {
    if (!run.Open(SheetKind::Document)) return;
    HWND paper = run.sheet->ShowPluginPage(1);
    if (paper == nullptr) return;
    DialogScript script(L"Advanced - *", [](HWND dialog) {  // the printer's name may not be known
        PostClick(dialog, IDC_ADD_MEDIA_TYPE);
        if (HWND add = WaitForWindow(L"Add ...", 3000)) Click(add, IDOK);
        PostClick(dialog, IDC_ADD_CUSTOM_FORM);
        if (HWND form = WaitForWindow(L"Add Form ...", 3000)) {
            Type(form, IDC_FORM_NAME, L"Ozdk Sweep Form");
            Type(form, IDC_FORM_WIDTH, L"30");
            Type(form, IDC_FORM_HEIGHT, L"25");
            Click(form, IDOK);
        }
        if (ChooseEntry(dialog, IDC_FORMS_LIST, L"Ozdk Sweep Form")) Click(dialog, IDC_DELETE_FORM);
        Click(dialog, IDOK);
    }, 5000);
    Click(paper, IDC_ADVANCED);
    script.Finish();
    run.sheet->Apply();
}

// What a run leaves behind in the process: kernel handles and heap blocks.
struct Leftovers {
    long long handles = 0;
    long long heapBlocks = 0;
};
Leftovers Measure() { return {CountOpenHandles(), static_cast<long long>(MeasureHeapUsage().busyBlocks)}; }

// One run of a scenario with call `refuse` refused (0: none): the calls it made, what was
// refused, the printer handles it left open and what stayed behind in the process once
// everything was released. `look` sees the settings the run left.
struct Outcome {
    int calls = 0;
    char refused[64] = {};
    int openPrinters = 0;
    Leftovers left;
};

Outcome RunOnce(const Scenario& scenario, int refuse, SweptPrinter& printer,
                const std::function<void(const Settings&)>& look) {
    Outcome outcome;
    const Leftovers start = Measure();
    {
        RefusingSpooler spooler;
        spooler.refuse = refuse;
        {
            SheetRun run(spooler, printer);
            scenario(run);
            look(run.Close());
        }
        outcome.calls = spooler.calls;
        snprintf(outcome.refused, sizeof(outcome.refused), "%s", spooler.refused.c_str());
        outcome.openPrinters = spooler.openPrinters;
    }
    const Leftovers end = Measure();
    outcome.left = {end.handles - start.handles, end.heapBlocks - start.heapBlocks};
    return outcome;
}

// A whole number from the environment, or `otherwise`.
int Setting(const char* name, int otherwise) {
    char text[16] = {};
    return GetEnvironmentVariableA(name, text, sizeof(text)) > 0 && atoi(text) > 0 ? atoi(text) : otherwise;
}

std::string Shown(const Settings& settings, const std::wstring& name) {
    const auto found = settings.find(name);
    if (found == settings.end()) return "none";
    std::string bytes;
    for (BYTE b : found->second) bytes += "0123456789ABCDEF"[b >> 4], bytes += "0123456789ABCDEF"[b & 15];
    return bytes;
}

// The whole sweep of one scenario.
void Sweep(const char* name, const Scenario& scenario, bool network) {
    std::unique_ptr<embosser_sim::Simulator> embosser;
    if (network) {
        embosser = devicetest::StartSimulator(devicetest::Simulating("127.77.30.1", embosser_sim::Behaviour::Answer));
    }
    BoxAnswerer answerer;
    testenv::PlacedCompanion extension(
        testenv::BuildFilePath(L"tests\\standins\\language_monitor_extension\\ozdkrnlmex.dll"),
        testenv::ExtensionLibraryPath());
    SweptPrinter printer(network);
    Settings before;
    {
        RefusingSpooler spooler;  // what a person had stored
        SheetRun run(spooler, printer);
        before = run.Close();
    }
    Settings fallback, after;
    {
        RefusingSpooler spooler;  // what the plug-in stores when nothing can be read
        SheetRun run(spooler, printer, false);
        run.Open(SheetKind::Document);
        fallback = run.Close();
    }
    const Outcome clean = RunOnce(scenario, 0, printer, [&](const Settings& s) { after = s; });
    // What a run leaves in Wine's own caches once they are warm, compared with each run.
    const Leftovers usual = RunOnce(scenario, 0, printer, [](const Settings&) {}).left;

    // OZDK_SWEEP_FROM and OZDK_SWEEP_TO replay a part of the sweep.
    const int stride = Setting("OZDK_SWEEP_STRIDE", 3), last = std::min(Setting("OZDK_SWEEP_TO", 1 << 30), clean.calls);
    int tried = 0, survived = 0;
    for (int n = Setting("OZDK_SWEEP_FROM", 1); n <= last; n += n < 8 ? 1 : stride) {
        bool kept = true;
        const auto check = [&](const Settings& left) {
            kept = true;
            for (const auto& [setting, value] : left) {
                const auto holds = [&setting = setting, &value = value](const Settings& s) {
                    const auto found = s.find(setting);
                    return found != s.end() && found->second == value;
                };
                // The spooler-side component's handshake value is the request's, not a setting.
            const bool fine = holds(before) || holds(after) || holds(fallback) || setting == L"LegacyDataAvailable";
                EXPECT_TRUE(fine) << "call " << n << " refused: " << testenv::Narrow(setting) << " holds "
                                  << Shown(left, setting) << ", not " << Shown(before, setting) << " (before), "
                                  << Shown(after, setting) << " (after) or " << Shown(fallback, setting) << " (fallback)";
                kept = kept && fine;
            }
        };
        Outcome run = RunOnce(scenario, n, printer, check);
        if (run.calls < n) continue;  // a run that went another way before reaching call n
        if (run.left.handles > usual.handles || run.left.heapBlocks > usual.heapBlocks) {
            run = RunOnce(scenario, n, printer, check);  // the first refusal of its kind may warm a cache
        }
        ++tried;
        SCOPED_TRACE(std::string(name) + ": call " + std::to_string(n) + " refused: " + run.refused);
        EXPECT_EQ(run.openPrinters, 0) << "printer handles left open";
        EXPECT_LE(run.left.handles, usual.handles) << "kernel handles left open";
        EXPECT_LE(run.left.heapBlocks, usual.heapBlocks) << "heap blocks left";
        survived += kept && run.openPrinters == 0 && run.left.handles <= usual.handles &&
                    run.left.heapBlocks <= usual.heapBlocks;
    }
    std::printf("%s: %d calls refused, %d survived (%d calls without refusal)\n", name, tried, survived, clean.calls);
    EXPECT_GT(tried, 0);
}

}  // namespace

TEST(SpoolerRefusalSweep, PrintingPreferencesWithAChangeOnEachPage) { Sweep("preferences", ChangeEveryPage, false); }
TEST(SpoolerRefusalSweep, PrinterPropertiesWithADeviceSettingChanged) { Sweep("properties", ChangeADeviceSetting, true); }
TEST(SpoolerRefusalSweep, ServicePageWithMonitoringOn) { Sweep("service", MonitorTheService, true); }
TEST(SpoolerRefusalSweep, PaperAdvancedAddsAMediaTypeAndAddsAndDeletesAForm) {
    Sweep("paper advanced", ManageMediaAndForms, false);
}

// A device mode the driver will not merge stays as it was, the document's and the
// printer's: unmerged, "Automatic Select" would leave paper size 0 in both.
TEST(SpoolerRefusalSweep, DeviceModesTheDriverWillNotMergeStayAsTheyWere) {
    SweptPrinter printer(false);
    RefusingSpooler spooler;
    spooler.refuseMerges = true;
    SheetRun run(spooler, printer);
    ASSERT_TRUE(run.Open(SheetKind::Document));
    const Settings before = ReadSettings(run.printer, spooler, run.hostPrinter.publicDevMode());
    ChangeEachPage(run);
    const Settings after = run.Close();
    for (const auto& [setting, value] : before) {
        if (setting.find(L"dm") == std::wstring::npos) continue;
        EXPECT_EQ(Shown(after, setting), Shown(before, setting)) << testenv::Narrow(setting);
    }
}
