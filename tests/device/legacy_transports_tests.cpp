// The two transports of the embosser's settings and the extension library binding,
// against real peers: the simulator on loopback, the spooler-side component stand-in
// on the real spooler, Standard TCP/IP port keys in the real registry.
#include "support/embosser_fixtures.h"

#include "device/legacy_transports.h"
#include "device/protocol/legacy_reply_parser.h"
#include "spooler_component.h"
#include "support/host_fixtures.h"

using devicetest::CountLinesStartingWith;
using devicetest::SecondsSince;
using devicetest::Simulating;
using devicetest::StartSimulator;
using embosser_sim::Behaviour;
using testenv::TraceLog;

namespace {

// A Standard TCP/IP port key that lives as long as the object.
class ScopedPortKey {
public:
    ScopedPortKey(const std::wstring& name, const std::wstring& hostName, const std::wstring& ipAddress = L"")
        : path_(testenv::StandardTcpIpPortPath(name)) {
        testenv::WriteRegDword(HKEY_LOCAL_MACHINE, path_, L"PortNumber", 9100);
        if (!hostName.empty()) testenv::WriteRegString(HKEY_LOCAL_MACHINE, path_, L"HostName", hostName);
        if (!ipAddress.empty()) testenv::WriteRegString(HKEY_LOCAL_MACHINE, path_, L"IPAddress", ipAddress);
    }
    ~ScopedPortKey() { testenv::DeleteRegTree(HKEY_LOCAL_MACHINE, path_); }

private:
    std::wstring path_;
};

uint32_t Address(uint32_t a, uint32_t b, uint32_t c, uint32_t d) { return a | b << 8 | c << 16 | d << 24; }

}  // namespace

TEST(IsNetworkPort, FindsTheAddressFromTheStandardTcpIpPortKeyOnly) {
    const uint32_t kUntouched = 0xA5A5A5A5;
    const struct {
        const char* what;
        const wchar_t* keyName;  // null: no key
        const wchar_t* hostName;
        const wchar_t* ipAddress;
        const wchar_t* portName;  // null: the key's name
        uint32_t address;         // kUntouched or 0: not found
    } cases[] = {
        {"a port list is cut at its last comma", L"IP_10.0.0.9", L"", L"10.0.0.9", L"IP_10.0.0.9,COM1",
         Address(10, 0, 0, 9)},
        {"only the last comma cuts", L"IP_10.0.0.9", L"", L"10.0.0.9", L"IP_10.0.0.9,COM1,LPT1", kUntouched},
        {"a host name that does not resolve is read as dotted text", L"OZDK_HOST_UNRESOLVED", L"10.0.0.9 (embosser)",
         L"", nullptr, Address(10, 0, 0, 9)},
        {"the host name goes before the IP address", L"OZDK_HOST_FIRST", L"127.0.0.5", L"10.0.0.9", nullptr,
         Address(127, 0, 0, 5)},
        {"an unusable host name falls back to the IP address", L"OZDK_HOST_UNUSABLE", L"embosser (offline)",
         L"192.168.1.20", nullptr, Address(192, 168, 1, 20)},
        {"address 0 is no address", L"OZDK_IP_ZERO", L"", L"0.0.0.0", nullptr, 0},
        {"three numbers are no address", L"OZDK_IP_SHORT", L"", L"10.0.9", nullptr, kUntouched},
        {"a port key without addresses", L"OZDK_NO_VALUES", L"", L"", nullptr, kUntouched},
        {"a port that is not a Standard TCP/IP port", nullptr, L"", L"", L"COM1:", kUntouched},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::unique_ptr<ScopedPortKey> key;
        if (c.keyName != nullptr) key = std::make_unique<ScopedPortKey>(c.keyName, c.hostName, c.ipAddress);
        uint32_t address = kUntouched;
        EXPECT_EQ(IsNetworkPort(c.portName != nullptr ? c.portName : c.keyName, &address),
                  c.address != kUntouched && c.address != 0);
        EXPECT_EQ(address, c.address);
    }
}

TEST(GetLegacyDataNetwork, CutsALongReplyAt4095Bytes) {
    ScopedPortKey port(L"OZDK_NET_FLOOD", L"127.77.1.3");
    auto options = Simulating("127.77.1.3", Behaviour::Flood);
    options.floodBytes = 5000;
    auto simulator = StartSimulator(options);

    int length = kLegacyInfoTcpPort;
    const char* reply = GetLegacyDataNetwork(L"OZDK_NET_FLOOD", kLegacyInfoRequest, &length);

    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(length, 4095);
    EXPECT_EQ(strlen(reply), 4095u);
    EXPECT_EQ(std::string(reply, 4095), embosser_sim::PaddedReply(embosser_sim::SampleReply(), 4095));
}

TEST(GetLegacyDataNetwork, ARefusedConnectionEndsAtOnceWithNothing) {
    ScopedPortKey port(L"OZDK_NET_REFUSED", L"127.77.1.4");
    auto simulator = StartSimulator(Simulating("127.77.1.4", Behaviour::Refuse));
    const auto start = std::chrono::steady_clock::now();

    int length = kLegacyInfoTcpPort;
    EXPECT_EQ(GetLegacyDataNetwork(L"OZDK_NET_REFUSED", kLegacyInfoRequest, &length), nullptr);

    EXPECT_EQ(length, 0);
    EXPECT_LT(SecondsSince(start), 1.0);
}

TEST(GetLegacyDataNetwork, TrickledBytesKeepTheWaitGoing) {
    // Gaps of 1.3 s cost one time-out each; more gaps than the budget of ten still read the
    // whole reply because every arrival restores the budget.
    const std::string reply = embosser_sim::SampleReply();
    ScopedPortKey port(L"OZDK_NET_TRICKLE", L"127.77.1.5");
    auto options = Simulating("127.77.1.5", Behaviour::Trickle);
    options.trickleChunk = (reply.size() + 11) / 12;
    options.trickleDelayMs = 1300;
    auto simulator = StartSimulator(options);
    TraceLog log;

    int length = kLegacyInfoTcpPort;
    const char* received = GetLegacyDataNetwork(L"OZDK_NET_TRICKLE", kLegacyInfoRequest, &length);

    ASSERT_NE(received, nullptr);
    EXPECT_EQ(std::string(received), reply);
    EXPECT_GE(CountLinesStartingWith(log, "GetLegacyDataNetwork(): socket timeout 0=select()"), 11);
}

TEST(GetLegacyData, SucceedsWithTheCountTheComponentSetsAtTheThirdPoll) {
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 2500);
    TraceLog log;
    const auto start = std::chrono::steady_clock::now();

    DWORD count = 0;
    EXPECT_EQ(GetLegacyData(printer.handle(), &count), 0u);

    EXPECT_EQ(count, 23u);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_GE(SecondsSince(start), 2.9);
    EXPECT_LT(SecondsSince(start), 4.5);
    EXPECT_TRUE(log.Contains("GetLegacyData(): first try LegacyDataAvailable=0"));
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 2);
    EXPECT_TRUE(log.Contains("GetLegacyData(): second try LegacyDataAvailable=23"));
}

TEST(GetLegacyData, TimesOutAfterNinePollsWhenTheComponentNeverAnswers) {
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), {}, 23, standin::SpoolerComponent::kNever);
    TraceLog log;
    const auto start = std::chrono::steady_clock::now();

    DWORD count = 77;
    EXPECT_EQ(GetLegacyData(printer.handle(), &count), static_cast<DWORD>(ERROR_TIMEOUT));

    EXPECT_EQ(count, 0u);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 9);
    EXPECT_TRUE(log.Contains("GetLegacyData(): err=1460"));
    EXPECT_GE(SecondsSince(start), 8.9);
    EXPECT_LT(SecondsSince(start), 10.5);
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").AsDword(), 0u);
}

TEST(ExtDllLoadFunction, LoadsTheLibraryOncePerConfigAndRetriesAFailedLoad) {
    testenv::PlacedCompanion none(L"", testenv::ExtensionLibraryPath());
    auto config = std::make_unique<UIConfig>();
    memset(config.get(), 0, sizeof(UIConfig));
    TraceLog log;

    EXPECT_EQ(ExtDllLoadFunction(*config, "DllExportPrinterService"), nullptr);
    EXPECT_EQ(config->ExtLibraryHandle, nullptr);

    // Any library with exports stands for the extension here: the plug-in itself.
    ASSERT_TRUE(CopyFileW((testenv::PrinterDriverDirectory() + L"\\3\\ozdkrnui.dll").c_str(),
                          testenv::ExtensionLibraryPath().c_str(), FALSE));
    FARPROC found = ExtDllLoadFunction(*config, "DllCanUnloadNow");
    void* const loaded = config->ExtLibraryHandle;
    FARPROC missing = ExtDllLoadFunction(*config, "DllExportPrinterService");

    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(found, GetProcAddress(static_cast<HMODULE>(loaded), "DllCanUnloadNow"));
    EXPECT_EQ(missing, nullptr);
    EXPECT_EQ(config->ExtLibraryHandle, loaded);
    EXPECT_EQ(CountLinesStartingWith(log, "ExtDllLoadFunction(): lib=0x"), 1);
    FreeLibrary(static_cast<HMODULE>(loaded));
}
