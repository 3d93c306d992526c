// The printer's "Service" page as a person uses it, through the host on the real dialog:
// the device is an embosser simulator behind the printer's Standard TCP/IP port, the
// language-monitor extension its stand-in (which tells the error a test sets), and the
// ink toolbox a stand-in program that writes down how it was started.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include <shlobj.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

#include "config/config_fixtures.h"
#include "frame/oem_ui_plugin.h"
#include "printer_ui/ink_toolbox.h"
#include "printer_ui/service_page.h"
#include "resources/device_dialog_ids.h"
#include "standins/language_monitor_extension/language_monitor_extension_record.h"
#include "tools/host/dialog_driver.h"
#include "tools/host/option_tree_page.h"

using namespace ozdkhost;
using testenv::TraceLog;

namespace {

constexpr DWORDLONG kDriverVersion = 0x0003000200010000;  // 3.2.1.0
const std::wstring kDriverLine = L"\r\nDriver Version: 3.2.1.0";
// The simulator's sample settings: firmware 1.2.3, so stored as the bytes 3, 2, 1.
const std::wstring kIdentity = kDriverLine +
                               L"\r\nPrinter Serial Number: SIM-000001\r\nFirmware Version: 1.2.3"
                               L"\r\nModel Number: Quorl Simulator";

// The properties of a printer whose port reaches `address`, opened the way the driver's
// host opens them, with the plug-in object linked into the test program, the extension
// stand-in in place and a driver of version 3.2.1.0.
struct ServiceSheet {
    explicit ServiceSheet(const char* address) {
        printer.MakeNetworkPort(testenv::Widen(address), L"");
        spooler.driverVersion = kDriverVersion;
        SetEnvironmentVariableW(OZDK_EXTENSION_CALLS, nullptr);
        SetEnvironmentVariableW(OZDK_PRINTER_ERROR, nullptr);
    }
    // The sheet, open on the plug-in's page (or on the item tree); the page's window, null
    // when it did not open.
    HWND Open(bool onTree = false) {
        if (!hostPrinter.Open(printer.name()) || object.Adopt(new OemUIPlugin()) != S_OK ||
            !hostPrinter.PrepareOemPrivatePart(object.get(), GetModuleHandleW(nullptr))) {
            return nullptr;
        }
        sheet = std::make_unique<PropertySheetHost>(SheetKind::Printer, object, GetModuleHandleW(nullptr),
                                                    hostPrinter, &log);
        sheet->Prepare();
        tree = sheet->AddOptionTreePage();
        if (onTree) sheet->StartWithHostPage(tree);
        return tree != nullptr && sheet->ShowModeless() != nullptr ? sheet->CurrentPage() : nullptr;
    }
    testenv::StoredValue Monitoring() const {
        return testenv::ReadPrinterData(printer.handle(), L"Config", L"EnableStatusMonitoring");
    }
    // Dispatches the sheet's messages until `done` holds, for at most `milliseconds`.
    bool PumpUntil(const std::function<bool()>& done, DWORD milliseconds) {
        for (DWORD waited = 0; !done(); waited += 50) {
            if (waited >= milliseconds) return false;
            sheet->PumpMessages(50);
        }
        return true;
    }

    testenv::PlacedCompanion extension{testenv::BuildFilePath(L"tests\\standins\\language_monitor_extension\\ozdkrnlmex.dll"),
                                       testenv::ExtensionLibraryPath()};
    testenv::TestSpooler spooler;
    testenv::SpoolerSwap swap{&spooler};
    testenv::TestPrinter printer{L"Ozdk Service"};
    HostLog log;
    HostPrinter hostPrinter{&log};
    PluginObject object{&log};
    std::unique_ptr<PropertySheetHost> sheet;
    OptionTreePage* tree = nullptr;
};

bool Click(HWND page, int id, bool hidden) {
    if (!hidden) return ozdkhost::Click(page, id);
    // What the hidden button would send, were it shown.
    SendMessageW(page, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(page, id)));
    return true;
}

int TimerRuns(const TraceLog& log) {
    const std::string text = log.Text();
    int runs = 0;
    for (size_t at = text.find("idEvent=13369"); at != std::string::npos; at = text.find("idEvent=13369", at + 1)) ++runs;
    return runs;
}

// The notice over the sheet while the embosser is read; null when none is shown.
HWND FindNotice() {
    for (HWND w = FindWindowExW(nullptr, nullptr, L"#32770", nullptr); w != nullptr;
         w = FindWindowExW(nullptr, w, L"#32770", nullptr)) {
        if (IsWindowVisible(w) && GetDlgItem(w, IDC_READING_TEXT) != nullptr) return w;
    }
    return nullptr;
}

// How a person leaves a read that takes too long.
enum class Leave { Wait, ClickCancel, PressEsc, PressAltF4 };

// What another thread sees of the page's thread while the embosser holds the read, and
// what it does then: from the connection on, for `watchMs` it asks the sheet and the
// notice for answers as a screen reader would (each must come within 100 ms), then
// leaves the read as `leave` says; to wait is to ask until the read is over.
struct ReadWatch {
    ReadWatch(DWORD pageThread, const embosser_sim::Simulator& embosser, DWORD watchMs, Leave leave)
        : thread([=, &embosser, before = embosser.ConnectionCount()] { Watch(pageThread, embosser, before, watchMs, leave); }) {}
    ~ReadWatch() { Join(); }
    void Join() { if (thread.joinable()) thread.join(); }

    void Watch(DWORD pageThread, const embosser_sim::Simulator& embosser, int before, DWORD watchMs, Leave leave) {
        for (int i = 0; i < 300 && embosser.ConnectionCount() == before; ++i) Sleep(20);
        // The notice, once it is shown, painted and holds the focus (at most 2 s).
        HWND notice = nullptr, cancel = nullptr;
        GUITHREADINFO gui = {sizeof(gui)};
        for (int i = 0; i < 100 && !(painted && focusOnCancel); ++i, Sleep(20)) {
            notice = FindNotice();
            cancel = notice != nullptr ? GetDlgItem(notice, IDCANCEL) : nullptr;
            painted = notice != nullptr && !GetUpdateRect(notice, nullptr, FALSE);
            focusOnCancel = notice != nullptr && GetGUIThreadInfo(pageThread, &gui) && gui.hwndFocus == cancel;
        }
        if (notice == nullptr) return;
        sheetDisabled = !IsWindowEnabled(GetWindow(notice, GW_OWNER));
        AttachThreadInput(GetCurrentThreadId(), pageThread, TRUE);
        waitCursor = GetCursor() == LoadCursorW(nullptr, IDC_WAIT);
        AttachThreadInput(GetCurrentThreadId(), pageThread, FALSE);
        const auto start = std::chrono::steady_clock::now();
        for (;; Sleep(50)) {
            DWORD_PTR answer = 0;
            wchar_t text[64] = {};
            const HWND sheet = GetWindow(notice, GW_OWNER);
            const bool sheetAnswered = SendMessageTimeoutW(sheet, WM_NULL, 0, 0, SMTO_NORMAL, 100, &answer) != 0;
            const bool noticeRead = SendMessageTimeoutW(GetDlgItem(notice, IDC_READING_TEXT), WM_GETTEXT, 64,
                                                        reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 100, &answer) != 0 &&
                                    std::wstring(text) == kNotice;
            if (!IsWindow(notice)) break;  // the read ended during the round, which does not count
            answers += sheetAnswered + noticeRead;
            asked += 2;
            const auto spent = std::chrono::steady_clock::now() - start;
            if ((leave != Leave::Wait && spent >= std::chrono::milliseconds(watchMs)) || spent >= std::chrono::seconds(30)) {
                break;
            }
        }
        left = std::chrono::steady_clock::now();
        if (leave == Leave::ClickCancel) PostMessageW(cancel, BM_CLICK, 0, 0);
        if (leave == Leave::PressEsc) PostMessageW(cancel, WM_KEYDOWN, VK_ESCAPE, 1);
        if (leave == Leave::PressAltF4) PostMessageW(cancel, WM_SYSKEYDOWN, VK_F4, 1 | KF_ALTDOWN << 16);
    }

    static constexpr const wchar_t* kNotice = L"Reading embosser settings ...";
    std::atomic<bool> sheetDisabled{false}, painted{false}, focusOnCancel{false}, waitCursor{false};
    std::atomic<int> asked{0}, answers{0};
    std::chrono::steady_clock::time_point left;
    std::thread thread;
};

// The launch's system calls as the toolbox test sees them: what is handed to CreateProcessW
// ("<program>|<command line>"), the started process to wait for, the failures asked for.
HRESULT gFolderFailure = S_OK;
DWORD gStartFailure = 0;
std::wstring gHanded;
HANDLE gStarted = nullptr;
HRESULT WINAPI WatchedGetFolderPath(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path) {
    return FAILED(gFolderFailure) ? gFolderFailure : SHGetFolderPathW(owner, folder, token, flags, path);
}
BOOL WINAPI WatchedCreateProcess(LPCWSTR program, LPWSTR line, LPSECURITY_ATTRIBUTES pa, LPSECURITY_ATTRIBUTES ta,
                                 BOOL inherit, DWORD flags, LPVOID env, LPCWSTR folder, LPSTARTUPINFOW si,
                                 LPPROCESS_INFORMATION pi) {
    gHanded = std::wstring(program ? program : L"") + L"|" + line + (inherit || flags != DETACHED_PROCESS ? L"|?" : L"");
    if (gStartFailure != 0) return SetLastError(gStartFailure), FALSE;
    const BOOL started = CreateProcessW(program, line, pa, ta, inherit, flags, env, folder, si, pi);
    if (started) DuplicateHandle(GetCurrentProcess(), pi->hProcess, GetCurrentProcess(), &gStarted, SYNCHRONIZE, FALSE, 0);
    return started;
}

}  // namespace

// A silent embosser: while it is waited for, the sheet takes no input but answers every
// message at once, the notice can be read and holds the focus on "Cancel", and the
// cursor waits. Cancel, Esc or Alt+F4 end the read within a second: the device counts as
// unreachable, and no page asks it again.
TEST(ReadingNotice, KeepsTheSheetAnsweringWhileASilentEmbosserIsReadAndCancelEndsTheRead) {
    auto embosser = devicetest::StartSimulator(devicetest::Simulating("127.77.12.5", embosser_sim::Behaviour::Silent));
    struct Case {
        bool onTree;
        Leave leave;
    } const cases[] = {{false, Leave::ClickCancel}, {true, Leave::PressEsc}, {true, Leave::PressAltF4}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.onTree ? "Device Settings" : "Service") + " left by " +
                     std::to_string(static_cast<int>(c.leave)));
        const int connections = embosser->ConnectionCount();
        ServiceSheet p("127.77.12.5");
        TraceLog log;
        ReadWatch watch(GetCurrentThreadId(), *embosser, 2000, c.leave);
        const HWND page = p.Open(c.onTree);
        const auto returned = std::chrono::steady_clock::now();
        ASSERT_NE(page, nullptr) << testenv::Narrow(p.log.Text());
        watch.Join();
        EXPECT_TRUE(watch.sheetDisabled && watch.painted && watch.focusOnCancel && watch.waitCursor)
            << watch.sheetDisabled << watch.painted << watch.focusOnCancel << watch.waitCursor;
        EXPECT_GE(watch.asked, 40);
        EXPECT_EQ(watch.answers, watch.asked) << "every answer within 100 ms";
        EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(returned - watch.left).count(), 1000);

        const char* caller = c.onTree ? "OEMPrinterUICallBack" : "ServicePage";
        EXPECT_TRUE(log.Contains(std::string(caller) + "(): 0=GetQuorlSettings()"));
        EXPECT_TRUE(log.Contains(std::string(caller) + "(): reading the embosser was cancelled")) << log.Text();
        EXPECT_EQ(FindNotice(), nullptr);
        EXPECT_TRUE(IsWindowEnabled(p.sheet->window()));
        ASSERT_TRUE(c.onTree ? p.sheet->ShowPluginPage(0) != nullptr : p.sheet->ShowHostPage(p.tree));
        ASSERT_TRUE(p.sheet->ShowHostPage(p.tree));
        EXPECT_FALSE(p.tree->ControlUsable(230)) << "items disabled as for an unreachable embosser";
        const HWND service = p.sheet->ShowPluginPage(0);
        EXPECT_FALSE(Enabled(service, IDC_OPEN_PRINTER_EXTENSION));
        EXPECT_EQ(embosser->ConnectionCount(), connections + 1) << "asked once";
    }
}

// A slow embosser still delivers its values while the notice is shown; one that takes no
// connection is given up after the connection's budget, the notice shown all along.
TEST(ReadingNotice, SlowEmbosserDeliversItsValuesAndAnUnreachableOneIsGivenUpAfterItsBudget) {
    auto slow = devicetest::Simulating("127.77.12.4", embosser_sim::Behaviour::Trickle);
    slow.trickleChunk = embosser_sim::SampleReply().size() / 2 + 1;
    slow.trickleDelayMs = 3000;
    struct Case {
        bool onTree;
        embosser_sim::Behaviour behaviour;
    } const cases[] = {{false, embosser_sim::Behaviour::Trickle}, {true, embosser_sim::Behaviour::Unreachable}};
    for (const Case& c : cases) {
        const bool known = c.behaviour == embosser_sim::Behaviour::Trickle;
        SCOPED_TRACE(known ? "slow" : "unreachable");
        slow.behaviour = c.behaviour;
        auto embosser = devicetest::StartSimulator(slow);
        ServiceSheet p("127.77.12.4");
        TraceLog log;
        ReadWatch watch(GetCurrentThreadId(), *embosser, 500, Leave::Wait);
        const auto opened = std::chrono::steady_clock::now();
        ASSERT_NE(p.Open(c.onTree), nullptr) << testenv::Narrow(p.log.Text());
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - opened);
        watch.Join();
        EXPECT_TRUE(watch.painted && watch.focusOnCancel && watch.waitCursor);
        EXPECT_EQ(watch.answers, watch.asked);
        EXPECT_EQ(FindNotice(), nullptr);
        EXPECT_NE(GetCursor(), LoadCursorW(nullptr, IDC_WAIT));
        EXPECT_GE(took.count(), known ? 3000 : 10000);
        EXPECT_LT(took.count(), known ? 8000 : 13000);
        const char* caller = c.onTree ? "OEMPrinterUICallBack" : "ServicePage";
        EXPECT_TRUE(log.Contains(std::string(caller) + (known ? "(): 1=GetQuorlSettings()" : "(): 0=GetQuorlSettings()")));
        EXPECT_EQ(log.Contains("GetLegacyDataNetwork(): 10060=connect()"), !known);
        ASSERT_TRUE(p.sheet->ShowHostPage(p.tree));
        EXPECT_EQ(p.tree->ControlUsable(230), known);
        if (known) {
            EXPECT_EQ(p.tree->ControlText(230), L"40");
        }
    }
}

// A device that answers: the controls are usable and the status shows its identity;
// monitoring is stored at once and adds the printer's error, which the timer keeps
// current while the page is in front; the hidden service buttons reach the extension;
// leaving the page stops the timer, and the item tree shows the device without reading
// it again.
TEST(ServicePage, ShowsTheEmbosserMonitorsItsErrorOnTheTimerAndHandsServicesToTheExtension) {
    auto embosser = devicetest::StartSimulator(devicetest::Simulating("127.77.12.1", embosser_sim::Behaviour::Answer));
    ServiceSheet p("127.77.12.1");
    ASSERT_TRUE(p.extension.placed());
    const std::wstring paper(1100, L'p');  // longer than the text buffer: cut to it
    SetEnvironmentVariableW(OZDK_PRINTER_ERROR, (L"3 " + paper).c_str());
    TraceLog log;
    const HWND page = p.Open();
    ASSERT_NE(page, nullptr) << testenv::Narrow(p.log.Text());
    EXPECT_EQ(p.sheet->TabTitles(), (std::vector<std::wstring>{L"Device Settings", L"Service"}));
    for (int id : {IDC_OPEN_PRINTER_EXTENSION, IDC_ENABLE_STATUS_MONITORING, IDC_SERIAL_SETTINGS, IDC_EMBOSS_USAGE}) {
        EXPECT_TRUE(Enabled(page, id)) << id;
    }
    EXPECT_FALSE(Checked(page, IDC_ENABLE_STATUS_MONITORING)) << "nothing stored: off";
    EXPECT_EQ(Text(page, IDC_PRINTER_STATUS), L"\r\n\r\n" + kIdentity);

    ASSERT_TRUE(Click(page, IDC_ENABLE_STATUS_MONITORING, false));
    EXPECT_EQ(p.Monitoring().AsDword(), 1u);
    EXPECT_EQ(Text(page, IDC_PRINTER_STATUS), paper.substr(0, 1023) + L" (Code 3)\r\n\r\n" + kIdentity);
    SetEnvironmentVariableW(OZDK_PRINTER_ERROR, L"12 Cover open");
    EXPECT_TRUE(p.PumpUntil([&] { return Text(page, IDC_PRINTER_STATUS).find(L"Cover open (Code 12)") == 0; }, 5000))
        << "the timer rebuilds the status";
    ASSERT_TRUE(Click(page, IDC_ENABLE_STATUS_MONITORING, false));
    EXPECT_EQ(p.Monitoring().AsDword(), 0u);
    EXPECT_EQ(Text(page, IDC_PRINTER_STATUS), L"\r\n\r\n" + kIdentity);
    // The timer's rebuild of the same text leaves the caret where a screen reader put it.
    SendDlgItemMessageW(page, IDC_PRINTER_STATUS, EM_SETSEL, 6, 12);
    const int runs = TimerRuns(log);
    EXPECT_TRUE(p.PumpUntil([&] { return TimerRuns(log) > runs; }, 5000));
    DWORD from = 0, to = 0;
    SendDlgItemMessageW(page, IDC_PRINTER_STATUS, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    EXPECT_EQ(std::make_pair(from, to), std::make_pair(DWORD{6}, DWORD{12}));

    ASSERT_TRUE(Click(page, IDC_PRINT_TEST_PAGE, true) && Click(page, IDC_SERIAL_SETTINGS, true));
    wchar_t calls[512] = {};
    GetEnvironmentVariableW(OZDK_EXTENSION_CALLS, calls, 512);
    const std::wstring owner = std::to_wstring(reinterpret_cast<uintptr_t>(page)) + L" " + p.printer.name();
    EXPECT_EQ(std::wstring(calls), owner + L" 8 0 0\n" + owner + L" 15 0 0\n");

    ASSERT_TRUE(p.sheet->ShowHostPage(p.tree));
    EXPECT_FALSE(KillTimer(page, kServiceStatusTimer)) << "stopped when the page was left";
    EXPECT_EQ(p.tree->ControlText(230), L"40");
    EXPECT_EQ(embosser->RequestCount(), 1);
}

// A device that cannot be reached: nothing is usable, the stored monitoring shows but
// asks nothing, the status has only the driver's version, and the timer's first tick
// after activation is its last.
TEST(ServicePage, UnreachableEmbosserLeavesOnlyTheDriverVersionAndStopsTheTimer) {
    ServiceSheet p("127.77.12.9");  // nothing listens there
    configtest::StoreConfigDword(p.printer.handle(), L"EnableStatusMonitoring", 1);
    SetEnvironmentVariableW(OZDK_PRINTER_ERROR, L"3 Out of paper");
    TraceLog log;
    const HWND page = p.Open();
    ASSERT_NE(page, nullptr) << testenv::Narrow(p.log.Text());
    for (int id : {IDC_OPEN_PRINTER_EXTENSION, IDC_ENABLE_STATUS_MONITORING, IDC_SERIAL_SETTINGS, IDC_EMBOSS_USAGE}) {
        EXPECT_FALSE(Enabled(page, id)) << id;
    }
    EXPECT_TRUE(Checked(page, IDC_ENABLE_STATUS_MONITORING));
    EXPECT_EQ(Text(page, IDC_PRINTER_STATUS), L"\r\n\r\n" + kDriverLine);

    const int runs = TimerRuns(log);
    EXPECT_TRUE(p.PumpUntil([&] { return TimerRuns(log) > runs; }, 5000)) << "the tick after activation";
    EXPECT_FALSE(KillTimer(page, kServiceStatusTimer)) << "not started again";
    EXPECT_FALSE(log.Contains("ExtDllLoadFunction(): function DllExportGetPrinterError found"));
}

// "Open Printer Extension ..." finds the toolbox under the maker's installation folder, or
// else the program-files folder (never the drive's root), and starts it detached in its
// folder with its quoted path and the printer's name; a missing toolbox is named in a
// message, and a failed start or folder is told with the system's text.
TEST(ServicePage, OpenPrinterExtensionStartsTheInkToolboxInItsFolderOrTellsWhyNot) {
    auto embosser = devicetest::StartSimulator(devicetest::Simulating("127.77.12.2", embosser_sim::Behaviour::Answer));
    ServiceSheet p("127.77.12.2");
    const HWND page = p.Open();
    ASSERT_NE(page, nullptr) << testenv::Narrow(p.log.Text());
    const InkToolboxSystem watched = {&WatchedGetFolderPath, &WatchedCreateProcess};
    SetInkToolboxSystemForTesting(&watched);
    std::unique_ptr<const void, void (*)(const void*)> restore(&watched,
                                                               [](const void*) { SetInkToolboxSystemForTesting(nullptr); });
    configtest::RegistryValue ksDir(HKEY_LOCAL_MACHINE, configtest::kMakerKey, L"KSDir");
    const std::wstring record = testenv::WorkDirectory() + L"\\toolbox-started.txt";
    SetEnvironmentVariableW(L"OZDK_TOOLBOX_RECORD", record.c_str());
    wchar_t programFiles[MAX_PATH] = {};
    ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES, nullptr, SHGFP_TYPE_CURRENT, programFiles), S_OK);
    const std::wstring installed = testenv::WorkDirectory() + L"\\" + testenv::UniqueName(L"Maker");
    const std::wstring empty = testenv::WorkDirectory() + L"\\" + testenv::UniqueName(L"No Maker");
    CreateDirectoryW(empty.c_str(), nullptr);
    const std::wstring notStarted = L"Service: The ink toolbox could not be started.\r\n";

    struct Case {
        const char* what;
        std::wstring ksDir;  // empty: no value
        std::wstring quorl;  // the folder the program is looked for under
        bool present;
        DWORD startFailure;  // what CreateProcessW fails with (no quorl: the program-files folder fails)
        std::wstring said;   // "<caption>: <text>" of the message, when one is shown; "*": the program
    } const cases[] = {
        {"installation folder", installed, installed + L"\\Quorl", true, 0, L""},
        {"program files", L"", std::wstring(programFiles) + L"\\Kestrova\\Quorl", true, 0, L""},
        {"missing", empty, empty + L"\\Quorl", false, 0, L"KS: * does not exist!"},
        {"no program files", L"", L"", false, 0, notStarted + L"\r\nPath not found."},
        {"refused", installed, installed + L"\\Quorl", true, ERROR_ACCESS_DENIED, notStarted + L"*\r\n\r\nAccess denied."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        c.ksDir.empty() ? ksDir.Remove() : ksDir.SetString(c.ksDir);
        DeleteFileW(record.c_str());
        gFolderFailure = c.quorl.empty() ? HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND) : S_OK;
        gStartFailure = c.startFailure;
        gHanded.clear();
        const std::wstring folder = c.quorl + L"\\Kestrova Tavrolin Color Pigmora";
        const std::wstring program = folder + L"\\TavrolinColorInkToolbox.exe";
        if (c.present) SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
        testenv::PlacedCompanion toolbox(
            c.present ? testenv::BuildFilePath(L"tests\\standins\\ink_toolbox\\TavrolinColorInkToolbox.exe") : L"",
            program);
        ASSERT_EQ(toolbox.placed(), c.present);

        std::wstring said;  // a message under either caption is answered, so that none can hang the test
        const auto act = [&](HWND box) {
            wchar_t caption[16] = {};
            GetWindowTextW(box, caption, 16);
            said = caption + (L": " + MessageBoxText(box)), Answer(box, IDOK);
        };
        DialogScript ks(L"KS", act, c.said.find(L"KS:") == 0 ? 10000 : 500);
        DialogScript service(L"Service", act, c.said.find(L"Service:") == 0 ? 10000 : 500);
        ASSERT_TRUE(Click(page, IDC_OPEN_PRINTER_EXTENSION, false));
        EXPECT_EQ(ks.Finish() || service.Finish(), !c.said.empty());
        const size_t star = c.said.find(L'*');
        EXPECT_EQ(said, star == std::wstring::npos ? c.said : c.said.substr(0, star) + program + c.said.substr(star + 1));
        const std::wstring line = L"\"" + program + L"\" --printer \"" + p.printer.name() + L"\"";
        EXPECT_EQ(gHanded, c.present ? program + L"|" + line : L"");

        if (!c.present || c.startFailure != 0) continue;
        ASSERT_TRUE(p.PumpUntil([&] { return WaitForSingleObject(gStarted, 0) == WAIT_OBJECT_0; }, 15000)) << "ended";
        CloseHandle(gStarted);
        std::ifstream file(record.c_str(), std::ios::binary);
        const std::string seen((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        EXPECT_EQ(seen, testenv::Narrow(line + L"\n" + folder + L"\n"));
    }
}
