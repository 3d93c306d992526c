// The network transport of the embosser's settings, against real peers: the simulator
// on loopback, Standard TCP/IP port keys in the real registry. The spooler-side transport
// is checked with GetQuorlSettings.
#include "support/embosser_fixtures.h"

#include "device/legacy_transports.h"

using devicetest::Simulating;
using embosser_sim::Behaviour;

TEST(IsNetworkPort, FindsTheAddressFromTheStandardTcpIpPortKeyOnly) {
    const uint32_t kUntouched = 0xA5A5A5A5;
    // `key`: the printer's port is a Standard TCP/IP port with these values; `listed`: what
    // follows the port's name in the port list; `address` kUntouched or 0: not found.
    const struct { const char* what; bool key; const wchar_t *hostName, *ipAddress, *listed; uint32_t address; }
    cases[] = {
        {"a port list is cut at its last comma", true, L"", L"10.0.0.9", L",COM1", inet_addr("10.0.0.9")},
        {"only the last comma cuts", true, L"", L"10.0.0.9", L",COM1,LPT1", kUntouched},
        {"a host name that does not resolve is read as dotted text", true, L"10.0.0.9 (embosser)", L"", L"",
         inet_addr("10.0.0.9")},
        {"the host name goes before the IP address", true, L"127.0.0.5", L"10.0.0.9", L"", inet_addr("127.0.0.5")},
        {"an unusable host name falls back to the IP address", true, L"embosser (offline)", L"192.168.1.20", L"",
         inet_addr("192.168.1.20")},
        {"address 0 is no address", true, L"", L"0.0.0.0", L"", 0},
        {"three numbers are no address", true, L"", L"10.0.9", L"", kUntouched},
        {"a port key without addresses", true, L"", L"", L"", kUntouched},
        {"a port that is not a Standard TCP/IP port", false, L"", L"", L"", kUntouched},
    };
    testenv::TestPrinter printer;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::DeleteRegTree(HKEY_LOCAL_MACHINE, testenv::StandardTcpIpPortPath(printer.portName()));
        if (c.key) printer.MakeNetworkPort(c.hostName, c.ipAddress);
        uint32_t address = kUntouched;
        EXPECT_EQ(IsNetworkPort((printer.portName() + c.listed).c_str(), &address),
                  c.address != kUntouched && c.address != 0);
        EXPECT_EQ(address, c.address);
    }
}

TEST(GetLegacyDataNetwork, ReadsUntilTheEmbosserClosesAtMost4095BytesWithoutTenWaitsInARow) {
    const std::string sample = embosser_sim::SampleReply();
    auto trickle = Simulating("127.77.1.5", Behaviour::Trickle);
    trickle.trickleChunk = (sample.size() + 11) / 12;
    trickle.trickleDelayMs = 1300;
    // `waits`: one-second waits without data; `connect`: the failed connection's trace.
    const struct {
        const char* what;
        embosser_sim::Options embosser;
        std::string reply;
        int waits;
        const char* connect;
    } cases[] = {
        {"a flood is cut at 4095 bytes", Simulating("127.77.1.3", Behaviour::Flood),
         embosser_sim::PaddedReply(sample, 4095), 0, nullptr},
        {"a refused connection ends at once with nothing", Simulating("127.77.1.4", Behaviour::Refuse), "", 0,
         "10061=connect()"},
        // Without a bound the system would wait for minutes.
        {"an unanswered connection gives up after the silence budget", Simulating("127.77.1.6", Behaviour::Unreachable),
         "", 0, "10060=connect()"},
        // Gaps of 1.3 s cost one wait each: more gaps than ten still read the whole reply,
        // since every arrival restores the budget.
        {"trickled bytes keep the wait going", trickle, sample, 11, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::TestPrinter printer;
        printer.MakeNetworkPort(testenv::Widen(c.embosser.address), L"");
        auto simulator = devicetest::StartSimulator(c.embosser);
        testenv::TraceLog log;

        int length = kLegacyInfoTcpPort;
        const DWORD start = GetTickCount();
        const char* received = GetLegacyDataNetwork(printer.portName().c_str(), kLegacyInfoRequest, &length);
        const DWORD elapsed = GetTickCount() - start;

        EXPECT_EQ(received != nullptr ? std::string(received) : std::string(), c.reply);
        EXPECT_EQ(length, static_cast<int>(c.reply.size()));
        const int waits = log.Count("GetLegacyDataNetwork(): socket timeout 0=select()");
        EXPECT_TRUE(c.waits == 0 ? waits == 0 : waits >= c.waits) << waits;
        if (c.connect != nullptr) {
            EXPECT_EQ(log.Count(std::string("GetLegacyDataNetwork(): ") + c.connect), 1) << log.Text();
            EXPECT_LT(elapsed, 12000u) << "the connection attempt is bounded";
        }
    }
}
