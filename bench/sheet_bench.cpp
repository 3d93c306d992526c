// ozdk_sheet_bench.exe: opens the printing preferences and the printer's properties
// through the host the way the driver's UI host does, really showing each sheet, and
// reports whether the process's resources stay flat and what opening a sheet costs.
//
//   ozdk_sheet_bench.exe [--dll PATH] [--cycles N] [--rounds N] [--address A] [--trace-log]
//
// The trace log is off as on a customer's machine (the maker's folder under the common
// application data is moved aside for the run and put back); --trace-log leaves it on.
//
// Soak: N cycles per sheet (default 200), each one opens the printer, creates the
// plug-in object, prepares the sheet (CommonUIProp, HideStandardUI, the INIT and
// GET_INFO_HEADER calls), shows it modeless, brings every page to the front in turn and
// pumps messages until all pages exist, then cancels and destroys it, sends DESTROY and
// releases the object. Handles, GDI and USER objects and heap use are taken after a
// warm-up and again at the end.
//
// Speed: the same opening (preparation, show, every page created) with the plug-in's
// pages against the host opening as many blank pages of its own in the same sheet
// machinery, alternated round by round; the ratio of the medians must stay at or below
// 1.5. Closing is not timed. For the breakdown it also opens the plug-in's own dialog
// templates with a procedure that does nothing: the gap between those and the blank
// pages is what creating the templates' controls costs, the gap between the plug-in's
// pages and those is what the plug-in's code adds.
//
// The printer is one of the test driver ("Test Embosser") on a Standard TCP/IP port of
// an embosser simulated in this process on A:80 (default 127.0.0.41), so the printer
// sheet's "Device Settings" page reads real settings over the network. Needs a prefix
// where the test driver is installed; run by scripts/run-bench.sh. Exit code 0 when
// every resource stayed flat and both ratios are within the bound.
#include "embosser_simulator.h"  // winsock2.h before windows.h

#include <windows.h>
#include <commctrl.h>
#include <shlobj.h>
#include <prsht.h>
#include <winspool.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include "tools/host/dialog_template.h"
#include "tools/host/host_library.h"
#include "tools/host/option_tree_page.h"

namespace {

using Clock = std::chrono::steady_clock;
using ozdkhost::SheetKind;

constexpr double kAllowedRatio = 1.5;
constexpr DWORD kPageWaitMs = 5000;

// A blank page of the host, as big as the plug-in's pages: what a sheet costs without
// any plug-in work.
class BlankPage final : public ozdkhost::HostPage {
public:
    BlankPage(bool leads, int number) : leads_(leads), title_(L"Blank " + std::to_wstring(number)),
                                        template_(title_.c_str(), 252, 218) {}
    HPROPSHEETPAGE CreatePage() override {
        PROPSHEETPAGEW page = {};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_DLGINDIRECT | PSP_USETITLE;
        page.pResource = template_.get();
        page.pszTitle = title_.c_str();
        page.pfnDlgProc = &BlankPage::DialogProc;
        return CreatePropertySheetPageW(&page);
    }
    bool LeadsPluginPages() const override { return leads_; }

private:
    static INT_PTR CALLBACK DialogProc(HWND, UINT message, WPARAM, LPARAM) { return message == WM_INITDIALOG; }
    bool leads_;
    std::wstring title_;
    ozdkhost::DialogTemplate template_;
};

// One of the plug-in's own dialog templates with a procedure that does nothing: what
// the template alone costs the sheet.
class TemplatePage final : public ozdkhost::HostPage {
public:
    TemplatePage(HMODULE module, WORD templateId, bool leads) : module_(module), id_(templateId), leads_(leads) {}
    HPROPSHEETPAGE CreatePage() override {
        PROPSHEETPAGEW page = {};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_USETITLE;
        page.hInstance = module_;
        page.pszTemplate = MAKEINTRESOURCEW(id_);
        page.pszTitle = L"Template";
        page.pfnDlgProc = &TemplatePage::DialogProc;
        return CreatePropertySheetPageW(&page);
    }
    bool LeadsPluginPages() const override { return leads_; }

private:
    static INT_PTR CALLBACK DialogProc(HWND, UINT message, WPARAM, LPARAM) { return message == WM_INITDIALOG; }
    HMODULE module_;
    WORD id_;
    bool leads_;
};

// Shows the prepared sheet and brings each page to the front until every one exists, as
// a person clicking through the tabs. The number of pages created; -1 when the sheet
// did not open.
int ShowAllPages(ozdkhost::PropertySheetHost& sheet, std::vector<double>* pageMs = nullptr) {
    auto mark = Clock::now();
    const HWND window = sheet.ShowModeless();
    if (window == nullptr) {
        return -1;
    }
    const int count = sheet.pageCount();
    int created = 0;
    for (int i = 0; i < count; ++i) {
        PropSheet_SetCurSel(window, nullptr, i);
        const ULONGLONG end = GetTickCount64() + kPageWaitMs;
        while (sheet.PumpMessages(0) && PropSheet_IndexToHwnd(window, i) == nullptr && GetTickCount64() < end) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 1, QS_ALLINPUT);
        }
        if (sheet.window() != nullptr && PropSheet_IndexToHwnd(window, i) != nullptr) {
            ++created;
        }
        if (pageMs != nullptr) {
            pageMs->push_back(std::chrono::duration<double, std::milli>(Clock::now() - mark).count());
            mark = Clock::now();
        }
    }
    sheet.PumpMessages(0);
    return created;
}

// The plug-in's sheet of one kind, opened from scratch: the pages it shows, -1 on failure.
// Time spent inside the plug-in's item callbacks (printer sheet), summed while a sheet
// opens: the plug-in's share of the host's "Device Settings" page.
OEMCUIPCALLBACK gItemCallback = nullptr;
double gItemCallbackMs = 0;

LONG APIENTRY TimedItemCallback(PCPSUICBPARAM param, POEMCUIPPARAM block) {
    const auto start = Clock::now();
    const LONG answer = gItemCallback(param, block);
    gItemCallbackMs += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    return answer;
}

// `prepareMs`, when given, gets the part before the sheet is shown.
int OpenPluginSheet(SheetKind kind, ozdkhost::PluginObject& object, HMODULE module, ozdkhost::HostPrinter& printer,
                    double* openMs, double* prepareMs = nullptr, std::vector<double>* pageMs = nullptr) {
    const auto start = Clock::now();
    ozdkhost::PropertySheetHost sheet(kind, object, module, printer);
    sheet.Prepare();
    if (kind == SheetKind::Printer && sheet.AddOptionTreePage() == nullptr) {
        return -1;
    }
    // The page holds the sheet's call block; the callback it calls is timed.
    auto& param = const_cast<ozdkhost::CollectedItems&>(sheet.items()).param;
    gItemCallbackMs = 0;
    if (param.OEMCUIPCallback != nullptr) {
        gItemCallback = param.OEMCUIPCallback;
        param.OEMCUIPCallback = &TimedItemCallback;
    }
    if (prepareMs != nullptr) {
        *prepareMs = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }
    const int pages = ShowAllPages(sheet, pageMs);
    if (openMs != nullptr) {
        *openMs = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }
    sheet.Close();
    return pages;
}

// The same sheet machinery with `pages` blank host pages (the first one leading, as the
// printer sheet's "Device Settings" page does).
int OpenBlankSheet(SheetKind kind, int pages, ozdkhost::PluginObject& object, HMODULE module,
                   ozdkhost::HostPrinter& printer, double* openMs, std::vector<double>* pageMs = nullptr) {
    const auto start = Clock::now();
    ozdkhost::PropertySheetHost sheet(kind, object, module, printer);
    for (int i = 0; i < pages; ++i) {
        sheet.AddHostPage(std::make_unique<BlankPage>(kind == SheetKind::Printer && i == 0, i + 1));
    }
    const int shown = ShowAllPages(sheet, pageMs);
    *openMs = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    sheet.Close();
    return shown;
}

int OpenTemplateSheet(SheetKind kind, ozdkhost::PluginObject& object, HMODULE module,
                      ozdkhost::HostPrinter& printer, double* openMs) {
    const auto start = Clock::now();
    ozdkhost::PropertySheetHost sheet(kind, object, module, printer);
    if (kind == SheetKind::Document) {
        for (WORD id : {110, 111, 106}) sheet.AddHostPage(std::make_unique<TemplatePage>(module, id, false));
    } else {
        sheet.AddHostPage(std::make_unique<BlankPage>(true, 1));
        sheet.AddHostPage(std::make_unique<TemplatePage>(module, 108, false));
    }
    const int shown = ShowAllPages(sheet);
    *openMs = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    sheet.Close();
    return shown;
}

DWORD CountWindows();
DWORD CountGdiObjects();

// One session of the driver's host: printer, object, one sheet, release. With
// `whileOpen` the process's windows and GDI objects are counted while the sheet shows
// all its pages (that the counters see what a sheet makes).
bool SoakCycle(SheetKind kind, const ozdkhost::PluginLibrary& library, const std::wstring& printerName,
               int expectedPages, std::pair<DWORD, DWORD>* whileOpen = nullptr) {
    ozdkhost::HostPrinter printer;
    if (!printer.Open(printerName)) {
        return false;
    }
    ozdkhost::PluginObject object;
    if (FAILED(object.Create(library)) || !printer.PrepareOemPrivatePart(object.get(), library.module())) {
        return false;
    }
    int pages = 0;
    {
        ozdkhost::PropertySheetHost sheet(kind, object, library.module(), printer);
        sheet.Prepare();
        if (kind == SheetKind::Printer && sheet.AddOptionTreePage() == nullptr) {
            return false;
        }
        pages = ShowAllPages(sheet);
        if (whileOpen != nullptr) {
            *whileOpen = {CountWindows(), CountGdiObjects()};
        }
        sheet.Close();
    }
    object.Release();  // before the printer's heap goes
    return pages == expectedPages;
}

// --- counting the process's resources ---

// GDI objects by probing: Wine's GetGuiResources answers 0, and a GDI handle whose
// high word is 0 names its table slot whatever its generation.
DWORD CountGdiObjects() {
    DWORD count = 0;
    for (ULONG_PTR slot = 1; slot < 0x10000; ++slot) {
        if (GetObjectType(reinterpret_cast<HGDIOBJ>(slot)) != 0) {
            ++count;
        }
    }
    return count;
}

BOOL CALLBACK CountChild(HWND, LPARAM counter) {
    ++*reinterpret_cast<DWORD*>(counter);
    return TRUE;
}

BOOL CALLBACK CountTopLevel(HWND window, LPARAM counter) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId()) {
        ++*reinterpret_cast<DWORD*>(counter);
        EnumChildWindows(window, &CountChild, counter);
    }
    return TRUE;
}

// USER objects as the process's windows, top-level and child (the part of USER objects a
// sheet makes most of), for systems whose GetGuiResources does not count.
DWORD CountWindows() {
    DWORD count = 0;
    EnumWindows(&CountTopLevel, reinterpret_cast<LPARAM>(&count));
    return count;
}

struct Resources {
    DWORD handlesReported;  // GetProcessHandleCount
    DWORD handlesCounted;   // probed
    DWORD gdiReported;      // GetGuiResources(GR_GDIOBJECTS)
    DWORD gdiCounted;       // probed
    DWORD userReported;     // GetGuiResources(GR_USEROBJECTS)
    DWORD windows;          // counted
    ozdkhost::HeapUsage heap;
};

Resources Measure() {
    Resources r;
    r.handlesReported = ozdkhost::ProcessHandleCount();
    r.handlesCounted = ozdkhost::CountOpenHandles();
    r.gdiReported = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    r.gdiCounted = CountGdiObjects();
    r.userReported = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    r.windows = CountWindows();
    r.heap = ozdkhost::MeasureHeapUsage();
    return r;
}

long long Growth(unsigned long long before, unsigned long long after) {
    return static_cast<long long>(after) - static_cast<long long>(before);
}

// Prints the start and end figures; true when nothing grew beyond the noise allowance
// (a few heap blocks of the runtime, far below one page's worth per cycle).
bool ReportSoak(const char* name, int cycles, int completed, double seconds, const Resources& a, const Resources& b) {
    std::printf("soak, %s: %d of %d cycles in %.1f s\n", name, completed, cycles, seconds);
    std::printf("  handles  reported %lu -> %lu, counted %lu -> %lu (growth %lld)\n", a.handlesReported,
                b.handlesReported, a.handlesCounted, b.handlesCounted, Growth(a.handlesCounted, b.handlesCounted));
    std::printf("  GDI      GetGuiResources %lu -> %lu, counted %lu -> %lu (growth %lld)\n", a.gdiReported,
                b.gdiReported, a.gdiCounted, b.gdiCounted, Growth(a.gdiCounted, b.gdiCounted));
    std::printf("  USER     GetGuiResources %lu -> %lu, windows %lu -> %lu (growth %lld)\n", a.userReported,
                b.userReported, a.windows, b.windows, Growth(a.windows, b.windows));
    const long long heapGrowth = Growth(a.heap.busyBytes, b.heap.busyBytes);
    std::printf("  heap     %llu bytes in %llu blocks -> %llu bytes in %llu blocks (growth %lld bytes, %lld blocks)\n",
                static_cast<unsigned long long>(a.heap.busyBytes), static_cast<unsigned long long>(a.heap.busyBlocks),
                static_cast<unsigned long long>(b.heap.busyBytes), static_cast<unsigned long long>(b.heap.busyBlocks),
                heapGrowth, Growth(a.heap.busyBlocks, b.heap.busyBlocks));
    const bool flat = completed == cycles && b.handlesCounted <= a.handlesCounted &&
                      b.handlesReported <= a.handlesReported && b.gdiCounted <= a.gdiCounted &&
                      b.gdiReported <= a.gdiReported && b.windows <= a.windows && b.userReported <= a.userReported &&
                      heapGrowth < static_cast<long long>(cycles) * 64;
    std::printf("  verdict: %s\n", flat ? "flat" : "GROWING");
    return flat;
}

double Median(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    return samples.empty() ? 0.0 : samples[samples.size() / 2];
}

// Times of each page's creation over the rounds, as medians.
class PageTimes {
public:
    void add(const std::vector<double>& pages) {
        if (samples_.size() < pages.size()) samples_.resize(pages.size());
        for (size_t i = 0; i < pages.size(); ++i) samples_[i].push_back(pages[i]);
    }
    std::string text() const {
        std::string text;
        char one[32];
        for (const auto& page : samples_) {
            std::snprintf(one, sizeof(one), "%s%.2f ms", text.empty() ? "" : " / ", Median(page));
            text += one;
        }
        return text;
    }

private:
    std::vector<std::vector<double>> samples_;
};

const char* Name(SheetKind kind) {
    return kind == SheetKind::Document ? "printing preferences" : "printer properties";
}

// --- the bench printer ---

constexpr wchar_t kPortName[] = L"OZDK_SHEET_BENCH";

class BenchPrinter {
public:
    explicit BenchPrinter(const std::string& address)
        : name_(L"Ozdk Sheet Bench " + std::to_wstring(GetCurrentProcessId())) {
        ozdkhost::AddPrinterOfDriver(name_, L"Test Embosser", kPortName);
        ozdkhost::RegisterStandardTcpIpPort(kPortName, std::wstring(address.begin(), address.end()));
        PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
        OpenPrinterW(const_cast<wchar_t*>(name_.c_str()), &handle_, &defaults);
    }
    ~BenchPrinter() {
        if (handle_ != nullptr) {
            DeletePrinter(handle_);
            ClosePrinter(handle_);
        }
        RegDeleteTreeW(HKEY_LOCAL_MACHINE,
                       (std::wstring(L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\"
                                     L"Ports\\") + kPortName).c_str());
    }
    BenchPrinter(const BenchPrinter&) = delete;
    BenchPrinter& operator=(const BenchPrinter&) = delete;
    bool exists() const { return handle_ != nullptr; }
    const std::wstring& name() const { return name_; }

private:
    std::wstring name_;
    HANDLE handle_ = nullptr;
};

// Switches the plug-in's trace log off for the object's life by moving the maker's
// folder aside.
class TraceLogOff {
public:
    TraceLogOff() {
        wchar_t folder[MAX_PATH] = {};
        SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
        maker_ = std::wstring(folder) + L"\\Kestrova";
        aside_ = maker_ + L".bench-aside";
        moved_ = MoveFileW(maker_.c_str(), aside_.c_str()) != 0;
    }
    ~TraceLogOff() {
        if (moved_) MoveFileW(aside_.c_str(), maker_.c_str());
    }
    TraceLogOff(const TraceLogOff&) = delete;
    TraceLogOff& operator=(const TraceLogOff&) = delete;

private:
    std::wstring maker_;
    std::wstring aside_;
    bool moved_ = false;
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
    std::wstring dllPath;
    int cycles = 200;
    int rounds = 30;
    std::string address = "127.0.0.41";
    bool traceLog = false;
    for (int i = 1; i < argc; ++i) {
        const std::wstring arg = argv[i];
        if (arg == L"--dll" && i + 1 < argc) {
            dllPath = argv[++i];
        } else if (arg == L"--cycles" && i + 1 < argc) {
            cycles = std::max(1, static_cast<int>(std::wcstol(argv[++i], nullptr, 10)));
        } else if (arg == L"--rounds" && i + 1 < argc) {
            rounds = std::max(1, static_cast<int>(std::wcstol(argv[++i], nullptr, 10)));
        } else if (arg == L"--address" && i + 1 < argc) {
            const std::wstring wide = argv[++i];
            address.assign(wide.begin(), wide.end());
        } else if (arg == L"--trace-log") {
            traceLog = true;
        } else {
            std::fputs("usage: ozdk_sheet_bench [--dll PATH] [--cycles N] [--rounds N] [--address A] [--trace-log]\n",
                       stderr);
            return 2;
        }
    }
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);

    embosser_sim::Options options;
    options.address = address;
    embosser_sim::Simulator simulator(options);
    std::string error;
    if (!simulator.Start(&error)) {
        std::printf("ozdk_sheet_bench: %s\n", error.c_str());
        return 2;
    }
    ozdkhost::PluginLibrary library;
    if (!library.Load(dllPath.empty() ? ozdkhost::InstalledPluginPath() : dllPath)) {
        std::printf("ozdk_sheet_bench: cannot load the plug-in\n");
        return 2;
    }
    bool ok = true;
    std::printf("trace log %s\n", traceLog ? "on" : "off");
    {
        std::unique_ptr<TraceLogOff> logOff(traceLog ? nullptr : new TraceLogOff());
        BenchPrinter benchPrinter(address);
        if (!benchPrinter.exists()) {
            std::printf("ozdk_sheet_bench: the printer could not be added (is the test driver installed?)\n");
            return 2;
        }

        // Speed first, on one object as one session of the host would hold it.
        int pageCounts[2] = {0, 0};
        {
            ozdkhost::HostPrinter printer;
            ozdkhost::PluginObject object;
            if (!printer.Open(benchPrinter.name()) || FAILED(object.Create(library)) ||
                !printer.PrepareOemPrivatePart(object.get(), library.module())) {
                std::printf("ozdk_sheet_bench: no plug-in session\n");
                return 2;
            }
            for (SheetKind kind : {SheetKind::Document, SheetKind::Printer}) {
                const int index = kind == SheetKind::Document ? 0 : 1;
                std::vector<double> pluginTimes;
                std::vector<double> blankTimes;
                std::vector<double> prepareTimes;
                PageTimes pluginPages;
                std::vector<double> templateTimes;
                std::vector<double> callbackTimes;
                PageTimes blankPages;
                pageCounts[index] = OpenPluginSheet(kind, object, library.module(), printer, nullptr);  // warm-up
                if (pageCounts[index] <= 0) {
                    std::printf("ozdk_sheet_bench: the %s did not open\n", Name(kind));
                    return 1;
                }
                double ms = 0;
                double prepareMs = 0;
                OpenBlankSheet(kind, pageCounts[index], object, library.module(), printer, &ms);
                for (int r = 0; r < rounds; ++r) {
                    std::vector<double> pageMs;
                    if (OpenPluginSheet(kind, object, library.module(), printer, &ms, &prepareMs, &pageMs) ==
                        pageCounts[index]) {
                        pluginTimes.push_back(ms);
                        prepareTimes.push_back(prepareMs);
                        callbackTimes.push_back(gItemCallbackMs);
                        pluginPages.add(pageMs);
                    }
                    if (OpenTemplateSheet(kind, object, library.module(), printer, &ms) == pageCounts[index]) {
                        templateTimes.push_back(ms);
                    }
                    pageMs.clear();
                    if (OpenBlankSheet(kind, pageCounts[index], object, library.module(), printer, &ms, &pageMs) ==
                        pageCounts[index]) {
                        blankTimes.push_back(ms);
                        blankPages.add(pageMs);
                    }
                }
                const double plugin = Median(pluginTimes);
                const double blank = Median(blankTimes);
                const double ratio = blank > 0 ? plugin / blank : 0.0;
                const bool within = pluginTimes.size() == static_cast<size_t>(rounds) &&
                                    blankTimes.size() == static_cast<size_t>(rounds) && ratio <= kAllowedRatio;
                std::printf("speed, %s (%d pages, %d rounds): plug-in %.2f ms (preparation %.2f ms), blank pages "
                            "%.2f ms, ratio %.2f: %s (allowed %.1f)\n",
                            Name(kind), pageCounts[index], rounds, plugin, Median(prepareTimes), blank, ratio,
                            within ? "WITHIN" : "OVER", kAllowedRatio);
                std::printf("  per page (shown, then each page brought to the front): plug-in %s; blank %s\n",
                            pluginPages.text().c_str(), blankPages.text().c_str());
                const double templates = Median(templateTimes);
                std::printf("  the plug-in's dialog templates with a do-nothing procedure: %.2f ms; the plug-in's code "
                            "on top of its templates: ratio %.2f\n",
                            templates, templates > 0 ? plugin / templates : 0.0);
                if (kind == SheetKind::Printer) {
                    std::printf("  inside the plug-in's item callbacks: %.2f ms\n", Median(callbackTimes));
                }
                ok = ok && within;
            }
            object.Release();
        }

        for (SheetKind kind : {SheetKind::Document, SheetKind::Printer}) {
            const int expected = pageCounts[kind == SheetKind::Document ? 0 : 1];
            std::pair<DWORD, DWORD> whileOpen;
            for (int i = 0; i < 5; ++i) {  // first-use allocations of the runtime and Wine are not growth
                SoakCycle(kind, library, benchPrinter.name(), expected, &whileOpen);
            }
            const Resources before = Measure();
            const auto start = Clock::now();
            int completed = 0;
            for (int i = 0; i < cycles; ++i) {
                completed += SoakCycle(kind, library, benchPrinter.name(), expected) ? 1 : 0;
            }
            const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
            const Resources after = Measure();
            ok = ReportSoak(Name(kind), cycles, completed, seconds, before, after) && ok;
            std::printf("  while the sheet is open: %lu windows, %lu GDI objects counted\n", whileOpen.first,
                        whileOpen.second);
        }
    }
    std::printf("embosser simulator: %u requests served\n", static_cast<unsigned>(simulator.RequestCount()));
    simulator.Stop();
    return ok ? 0 : 1;
}
