// The two transports of the embosser's settings and the extension library binding,
// against real peers: the simulator on loopback, the spooler-side component stand-in
// on the real spooler, Standard TCP/IP port keys in the real registry.
#include "device_test_support.h"

#include "config/spooler.h"
#include "device/legacy_transports.h"
#include "device/protocol/legacy_reply_parser.h"
#include "spooler_component.h"

using devicetest::CountLinesStartingWith;
using devicetest::RunningSimulator;
using devicetest::Stopwatch;
using embosser_sim::Behaviour;
using testenv::TraceLog;

namespace {

// A Standard TCP/IP port key that lives as long as the object.
class ScopedPortKey {
public:
    ScopedPortKey(const std::wstring& name, const std::wstring& hostName, const std::wstring& ipAddress)
        : path_(testenv::StandardTcpIpPortPath(name)) {
        testenv::WriteRegDword(HKEY_LOCAL_MACHINE, path_, L"PortNumber", 9100);
        if (!hostName.empty()) testenv::WriteRegString(HKEY_LOCAL_MACHINE, path_, L"HostName", hostName);
        if (!ipAddress.empty()) testenv::WriteRegString(HKEY_LOCAL_MACHINE, path_, L"IPAddress", ipAddress);
    }
    ~ScopedPortKey() { testenv::DeleteRegTree(HKEY_LOCAL_MACHINE, path_); }

private:
    std::wstring path_;
};

uint32_t Address(int a, int b, int c, int d) {
    return static_cast<uint32_t>(a) | static_cast<uint32_t>(b) << 8 | static_cast<uint32_t>(c) << 16 |
           static_cast<uint32_t>(d) << 24;
}

}  // namespace

// ---------------------------------------------------------------- IsNetworkPort

TEST(IsNetworkPort, FindsTheAddressFromTheStandardTcpIpPortKey) {
    struct Case {
        const char* what;
        const wchar_t* keyName;  // null: no key
        const wchar_t* hostName;
        const wchar_t* ipAddress;
        const wchar_t* portName;
        bool found;
        uint32_t address;
        const char* traceLine;
    };
    const uint32_t kUntouched = 0xA5A5A5A5;
    const Case cases[] = {
        {"a port list is cut at its last comma", L"IP_10.0.0.9", L"", L"10.0.0.9", L"IP_10.0.0.9,COM1", true,
         Address(10, 0, 0, 9), "IsNetworkPort(): pszPortName=IP_10.0.0.9"},
        {"only the last comma cuts", L"IP_10.0.0.9", L"", L"10.0.0.9", L"IP_10.0.0.9,COM1,LPT1", false, kUntouched,
         "IsNetworkPort(): pszPortName=IP_10.0.0.9,COM1"},
        {"a dotted host name resolves to itself", L"OZDK_HOST_DOTTED", L"10.0.0.9", L"", L"OZDK_HOST_DOTTED", true,
         Address(10, 0, 0, 9), "IsNetworkPort(): trying by hostname=10.0.0.9, getaddrinfo()=10.0.0.9"},
        {"a host name that does not resolve is read as dotted text", L"OZDK_HOST_UNRESOLVED",
         L"10.0.0.9 (embosser)", L"", L"OZDK_HOST_UNRESOLVED", true, Address(10, 0, 0, 9),
         "IsNetworkPort(): found ip in hostname=10.0.0.9 (embosser), bRet=1"},
        {"the host name goes before the IP address", L"OZDK_HOST_FIRST", L"127.0.0.5", L"10.0.0.9",
         L"OZDK_HOST_FIRST", true, Address(127, 0, 0, 5), "IsNetworkPort(): found ip address=127.0.0.5, bRet=1"},
        {"an unusable host name falls back to the IP address", L"OZDK_HOST_UNUSABLE", L"embosser (offline)",
         L"192.168.1.20", L"OZDK_HOST_UNUSABLE", true, Address(192, 168, 1, 20),
         "IsNetworkPort(): found IPAddress=192.168.1.20, bRet=1"},
        {"address 0 is no address", L"OZDK_IP_ZERO", L"", L"0.0.0.0", L"OZDK_IP_ZERO", false, 0,
         "IsNetworkPort(): found IPAddress=0.0.0.0, bRet=0"},
        {"three numbers are no address", L"OZDK_IP_SHORT", L"", L"10.0.9", L"OZDK_IP_SHORT", false, kUntouched,
         "IsNetworkPort(): found IPAddress=10.0.9, bRet=0"},
        {"a port key without addresses", L"OZDK_NO_VALUES", L"", L"", L"OZDK_NO_VALUES", false, kUntouched,
         "IsNetworkPort(): pszPortName=OZDK_NO_VALUES"},
        {"a port that is not a Standard TCP/IP port", nullptr, L"", L"", L"COM1:", false, kUntouched,
         "IsNetworkPort(): pszPortName=COM1:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::unique_ptr<ScopedPortKey> key;
        if (c.keyName != nullptr) key = std::make_unique<ScopedPortKey>(c.keyName, c.hostName, c.ipAddress);
        TraceLog log;
        uint32_t address = kUntouched;
        EXPECT_EQ(IsNetworkPort(c.portName, &address), c.found);
        EXPECT_EQ(address, c.address);
        EXPECT_TRUE(log.Contains(c.traceLine)) << log.Text();
    }
}

// ---------------------------------------------------------------- GetLegacyDataNetwork

TEST(GetLegacyDataNetwork, SendsTheBareRequestOnceAndReturnsTheWholeReply) {
    ScopedPortKey port(L"OZDK_NET_ANSWER", L"127.77.1.1", L"");
    RunningSimulator simulator("127.77.1.1", Behaviour::Answer);
    TraceLog log;

    int length = kLegacyInfoTcpPort;
    const char* reply = GetLegacyDataNetwork(L"OZDK_NET_ANSWER", kLegacyInfoRequest, &length);

    const std::string expected = embosser_sim::SampleReply();
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(std::string(reply), expected);
    EXPECT_EQ(length, static_cast<int>(expected.size()));
    EXPECT_EQ(simulator->RequestCount(), 1);
    EXPECT_EQ(simulator->LastRequest(), std::string("GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(log.Contains("GetLegacyDataNetwork(): connection available"));
    EXPECT_TRUE(log.Contains("GetLegacyDataNetwork(): " + std::to_string(expected.size()) + "=sockread"));
    EXPECT_EQ(CountLinesStartingWith(log, "GetLegacyDataNetwork(): socket timeout"), 0);
}

TEST(GetLegacyDataNetwork, ReportsMinusOneForAPortThatIsNotANetworkPort) {
    RunningSimulator simulator("127.77.1.2", Behaviour::Answer);
    TraceLog log;
    int length = kLegacyInfoTcpPort;
    EXPECT_EQ(GetLegacyDataNetwork(L"LPT1:", kLegacyInfoRequest, &length), nullptr);
    EXPECT_EQ(length, -1);
    EXPECT_EQ(simulator->ConnectionCount(), 0);
    EXPECT_FALSE(log.Contains("GetLegacyDataNetwork(): connection available"));
}

TEST(GetLegacyDataNetwork, CutsALongReplyAt4095Bytes) {
    ScopedPortKey port(L"OZDK_NET_FLOOD", L"127.77.1.3", L"");
    embosser_sim::Options options;
    options.address = "127.77.1.3";
    options.behaviour = Behaviour::Flood;
    options.floodBytes = 5000;
    RunningSimulator simulator(options);

    int length = kLegacyInfoTcpPort;
    const char* reply = GetLegacyDataNetwork(L"OZDK_NET_FLOOD", kLegacyInfoRequest, &length);

    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(length, 4095);
    EXPECT_EQ(strlen(reply), 4095u);
    EXPECT_EQ(std::string(reply, 4095), embosser_sim::PaddedReply(embosser_sim::SampleReply(), 4095));
}

TEST(EmbosserSimulator, RefusesToServeOutsideLoopback) {
    embosser_sim::Options options;
    options.address = "10.0.0.9";
    embosser_sim::Simulator simulator(options);
    std::string error;
    EXPECT_FALSE(simulator.Start(&error));
    EXPECT_NE(error.find("127.0.0.0/8"), std::string::npos) << error;
    EXPECT_FALSE(embosser_sim::IsLoopbackAddress("128.0.0.1"));
    EXPECT_TRUE(embosser_sim::IsLoopbackAddress("127.255.0.1"));
}

TEST(GetLegacyDataNetwork, ARefusedConnectionEndsWithNothingAfterTheFailedExchange) {
    ScopedPortKey port(L"OZDK_NET_REFUSED", L"127.77.1.4", L"");
    RunningSimulator simulator("127.77.1.4", Behaviour::Refuse);
    TraceLog log;
    Stopwatch clock;

    int length = kLegacyInfoTcpPort;
    EXPECT_EQ(GetLegacyDataNetwork(L"OZDK_NET_REFUSED", kLegacyInfoRequest, &length), nullptr);

    EXPECT_EQ(length, 0);
    EXPECT_LT(clock.Seconds(), 1.0);
    // The closed socket's send, wait and receive all fail, in this order.
    std::vector<std::string> exchange;
    for (const auto& line : log.Lines()) {
        if (line.find("=send()") != std::string::npos || line.find("=select()") != std::string::npos ||
            line.find("FD_ISSET") != std::string::npos || line.find("=recv()") != std::string::npos ||
            line.find("=sockread") != std::string::npos) {
            exchange.push_back(line);
        }
    }
    EXPECT_EQ(exchange, (std::vector<std::string>{
                            "GetLegacyDataNetwork(): -1=send()",
                            "GetLegacyDataNetwork(): -1=select()",
                            "GetLegacyDataNetwork(): 1=FD_ISSET()",
                            "GetLegacyDataNetwork(): -1=recv()",
                            "GetLegacyDataNetwork(): 0=sockread",
                        }));
}

TEST(GetLegacyDataNetwork, TrickledBytesKeepTheWaitGoing) {
    // Gaps of 1.3 s cost one time-out each; more gaps than the budget of ten still read the
    // whole reply because every arrival restores the budget.
    const std::string reply = embosser_sim::SampleReply();
    ScopedPortKey port(L"OZDK_NET_TRICKLE", L"127.77.1.5", L"");
    embosser_sim::Options options;
    options.address = "127.77.1.5";
    options.behaviour = Behaviour::Trickle;
    options.trickleChunk = (reply.size() + 11) / 12;
    options.trickleDelayMs = 1300;
    RunningSimulator simulator(options);
    TraceLog log;

    int length = kLegacyInfoTcpPort;
    const char* received = GetLegacyDataNetwork(L"OZDK_NET_TRICKLE", kLegacyInfoRequest, &length);

    ASSERT_NE(received, nullptr);
    EXPECT_EQ(std::string(received), reply);
    EXPECT_GE(CountLinesStartingWith(log, "GetLegacyDataNetwork(): socket timeout 0=select()"), 11);
}

TEST(GetLegacyDataNetwork, APeerThatKeepsTheConnectionOpenIsReadAfterTenSecondsOfSilence) {
    ScopedPortKey port(L"OZDK_NET_HOLD", L"127.77.1.6", L"");
    RunningSimulator simulator("127.77.1.6", Behaviour::HoldOpen);
    TraceLog log;
    Stopwatch clock;

    int length = kLegacyInfoTcpPort;
    const char* reply = GetLegacyDataNetwork(L"OZDK_NET_HOLD", kLegacyInfoRequest, &length);

    const double seconds = clock.Seconds();
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(std::string(reply), embosser_sim::SampleReply());
    EXPECT_GE(seconds, 9.5);
    EXPECT_LT(seconds, 12.0);
    EXPECT_EQ(log.Count("GetLegacyDataNetwork(): socket timeout 0=select()"), 10);
}

// ---------------------------------------------------------------- GetLegacyData

TEST(GetLegacyData, SucceedsWithTheCountTheComponentSetsAtTheThirdPoll) {
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 2500);
    TraceLog log;
    Stopwatch clock;

    DWORD count = 0;
    EXPECT_EQ(GetLegacyData(printer.handle(), &count), 0u);

    EXPECT_EQ(count, 23u);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_GE(clock.Seconds(), 2.9);
    EXPECT_LT(clock.Seconds(), 4.5);
    std::vector<std::string> polls;
    for (const auto& line : log.Lines()) {
        if (line.rfind("GetLegacyData(): ", 0) == 0) polls.push_back(line);
    }
    EXPECT_EQ(polls, (std::vector<std::string>{
                         "GetLegacyData(): " + testenv::Narrow(printer.name()),
                         "GetLegacyData(): first try LegacyDataAvailable=0",
                         "GetLegacyData(): 0=SetPrinterData()",
                         "GetLegacyData(): second try LegacyDataAvailable=0",
                         "GetLegacyData(): second try LegacyDataAvailable=0",
                         "GetLegacyData(): second try LegacyDataAvailable=23",
                         "GetLegacyData(): err=0",
                     }));
}

TEST(GetLegacyData, TimesOutAfterNinePollsWhenTheComponentNeverAnswers) {
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), {}, 23, standin::SpoolerComponent::kNever);
    TraceLog log;
    Stopwatch clock;

    DWORD count = 77;
    EXPECT_EQ(GetLegacyData(printer.handle(), &count), static_cast<DWORD>(ERROR_TIMEOUT));

    EXPECT_EQ(count, 0u);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 9);
    EXPECT_TRUE(log.Contains("GetLegacyData(): err=1460"));
    EXPECT_GE(clock.Seconds(), 8.9);
    EXPECT_LT(clock.Seconds(), 10.5);
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").AsDword(), 0u);
}

namespace {
// The full-access reopen fails, as it does on Windows for a user without rights to the
// printer (Wine grants every handle full access).
class ReopenRefusingSpooler : public Spooler {
public:
    BOOL OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) override {
        if (defaults != nullptr && defaults->DesiredAccess == PRINTER_ALL_ACCESS) {
            ++refused;
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }
        return Spooler::OpenPrinterW(name, printer, defaults);
    }
    int refused = 0;
};
}  // namespace

TEST(GetLegacyData, GivesSuccessWithNoParametersWhenThePrinterCannotBeOpenedAgain) {
    testenv::TestPrinter printer;
    ReopenRefusingSpooler spooler;
    SetSpoolerForTesting(&spooler);
    TraceLog log;
    DWORD count = 77;
    const DWORD result = GetLegacyData(printer.handle(), &count);
    SetSpoolerForTesting(nullptr);

    EXPECT_EQ(result, 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(spooler.refused, 1);
    EXPECT_TRUE(log.Contains("GetLegacyData(): err=0"));
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").status,
              static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

// ---------------------------------------------------------------- ExtDllLoadFunction

namespace {
std::wstring DriverDirectory() {
    wchar_t directory[MAX_PATH] = {};
    DWORD needed = 0;
    GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory), sizeof(directory), &needed);
    return directory;
}

// Moves an installed extension library out of the way for the life of the object.
class ExtensionLibraryAside {
public:
    ExtensionLibraryAside() : path_(DriverDirectory() + L"\\3\\ozdkrnlmex.dll"), aside_(path_ + L".aside") {
        moved_ = MoveFileExW(path_.c_str(), aside_.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    }
    ~ExtensionLibraryAside() {
        DeleteFileW(path_.c_str());
        if (moved_) MoveFileW(aside_.c_str(), path_.c_str());
    }
    const std::wstring& path() const { return path_; }

private:
    std::wstring path_;
    std::wstring aside_;
    bool moved_ = false;
};
}  // namespace

TEST(ExtDllLoadFunction, LoadsTheLibraryOncePerConfigAndRetriesAFailedLoad) {
    ExtensionLibraryAside aside;
    auto config = std::make_unique<UIConfig>();
    memset(config.get(), 0, sizeof(UIConfig));
    TraceLog log;

    EXPECT_EQ(ExtDllLoadFunction(*config, "DllExportPrinterService"), nullptr);
    EXPECT_EQ(config->ExtLibraryHandle, nullptr);

    // Any library with exports stands for the extension here: the plug-in itself.
    ASSERT_TRUE(CopyFileW((DriverDirectory() + L"\\3\\ozdkrnui.dll").c_str(), aside.path().c_str(), FALSE));
    FARPROC found = ExtDllLoadFunction(*config, "DllCanUnloadNow");
    void* const loaded = config->ExtLibraryHandle;
    FARPROC missing = ExtDllLoadFunction(*config, "DllExportPrinterService");

    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(found, GetProcAddress(static_cast<HMODULE>(loaded), "DllCanUnloadNow"));
    EXPECT_NE(found, nullptr);
    EXPECT_EQ(missing, nullptr);
    EXPECT_EQ(config->ExtLibraryHandle, loaded);
    EXPECT_EQ(CountLinesStartingWith(log, "ExtDllLoadFunction(): lib=0x"), 1);
    EXPECT_TRUE(log.Contains("ExtDllLoadFunction(): function DllCanUnloadNow found"));
    EXPECT_TRUE(log.Contains("ExtDllLoadFunction(): function DllExportPrinterService not exported"));
    FreeLibrary(static_cast<HMODULE>(loaded));
}
