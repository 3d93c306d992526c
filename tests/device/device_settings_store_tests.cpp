// GetQuorlSettings with real peers: a printer on a Standard TCP/IP port whose host is the
// simulator, and a printer on an ordinary port whose spooler-side component answers
// through the spooler.
#include "support/embosser_fixtures.h"

#include <chrono>
#include <cstddef>

#include "device/device_read_worker.h"
#include "device/device_settings_store.h"
#include "device/legacy_transports.h"
#include "spooler_component.h"
#include "support/spooler_doubles.h"

using embosser_sim::Behaviour;

namespace {

// Every value differs from the simulator's sample and from a zeroed record; apart from
// the paper width, the same device as the stored values of the second test.
const std::string kDistinctBlock =
    "@PJL INFO LEGACY [23 ENTRIES]\r\n"
    "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
    "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=OFF\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
    "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7920\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
    "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=2\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\nMODEL=\"Quorl 640\"\r\n";

// The printer's record with every field a read may fill starting as these bytes, so that
// what a read left alone shows.
constexpr int64_t kSentinel = 0x6F6F6F6F;
std::unique_ptr<UIConfig> FilledConfigFor(const testenv::TestPrinter& printer) {
    auto config = devicetest::ConfigFor(printer);
    std::memset(&config->EmbsrDuplex, 0x6F, offsetof(UIConfig, PrinterHandle) - offsetof(UIConfig, EmbsrDuplex));
    return config;
}

// The numbers a read fills, in one list so that a failure shows them all.
std::vector<int64_t> DeviceNumbers(const UIConfig& c) {
    return {c.LegacyParmCount,   c.LegacyStateA,      c.LegacyStateB,        c.EmbsrTopMargin,    c.EmbsrLeftMargin,
            c.EmbsrRightMargin,  c.EmbsrBrailleDots,  c.EmbsrCharsWidth,     c.EmbsrLinesLength,  c.EmbsrLineSpacing,
            c.EmbsrAutoCr,       c.EmbsrGraphicsMode, c.EmbsrBrailleStandard, c.EmbsrMediaType,   c.EmbsrPaperLength,
            c.EmbsrPaperWidth,   c.EmbsrBrailleForce, c.EmbsrQuality,        c.EmbsrDuplex,       c.EmbsrOutputFace,
            c.FirmwareVersion,   c.BrailleTableIndex, c.EmbsrCustomMediaMin, c.EmbsrCustomMediaMax};
}

// The braille table, serial number and model.
std::wstring DeviceTexts(const UIConfig& c) {
    return std::wstring(c.EmbsrBrailleTable) + L" " + c.SerialNumber + L" " + c.ModelNumber;
}

}  // namespace

TEST(GetQuorlSettings, TakesOnlyACompleteReplyFromTheNetworkEmbosserAndNeverAsksTheSpoolerThen) {
    // The paper width is 8280 / 36, the firmware "3.1.12"; the reply has no custom media.
    const std::vector<int64_t> distinct = {23, 0, 0, 12, 7, 6, 8, 38, 27, 4, 0, 1, 3, 11, 220, 230, 2, 2, 2, 2,
                                           3 << 16 | 1 << 8 | 12, 2, kSentinel, kSentinel};
    std::vector<int64_t> cut = distinct, untouched(distinct.size(), kSentinel);
    cut[0] = 0;
    // `waits`: one-second waits without data.
    const struct { const char* what; const char* address; Behaviour behaviour; std::string reply; bool known; int waits;
                   const std::vector<int64_t>& numbers; } cases[] = {
        {"a whole reply", "127.77.2.1", Behaviour::Answer, embosser_sim::HttpReply(kDistinctBlock), true, 0, distinct},
        {"a reply cut before its last key is read as far as it goes", "127.77.2.3", Behaviour::Answer,
         embosser_sim::HttpReply(kDistinctBlock.substr(0, kDistinctBlock.find("MODEL="))), false, 0, cut},
        {"a silent embosser: nothing, after ten waits", "127.77.2.2", Behaviour::Silent, "", false, 10, untouched},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::TestPrinter printer;
        printer.MakeNetworkPort(testenv::Widen(c.address), L"");
        auto simulator = devicetest::StartSimulator(devicetest::Simulating(c.address, c.behaviour, c.reply));
        auto config = FilledConfigFor(printer);
        testenv::TraceLog log;

        EXPECT_EQ(GetQuorlSettings(*config), c.known);

        EXPECT_EQ(log.Count("GetLegacyDataNetwork(): socket timeout 0=select()"), c.waits);
        EXPECT_EQ(DeviceNumbers(*config), c.numbers);
        EXPECT_EQ(simulator->LastRequest(), std::string("GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n"));
        EXPECT_EQ(simulator->RequestCount(), 1);
        EXPECT_TRUE(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").data.empty());
        if (c.known) { EXPECT_EQ(DeviceTexts(*config), L"DE_DE QX-0042 Quorl 640"); }
    }
}

TEST(GetQuorlSettings, AsksTheComponentThroughAFullAccessHandleTakesTheStoredValuesThatFitAndTimesOut) {
    testenv::TestPrinter printer;
    // What an earlier request left: the device of kDistinctBlock, paper sizes in 1/720 inch.
    standin::Store(printer.handle(),
                   {{L"FirmwareVersion", L"3.1.12"}, {L"SerialNumber", L"QX-0042"},  {L"ModelNumber", L"Quorl 640"},
                    {L"EmbsrBrailleTable", L"DE_DE"}, {L"EmbsrPaperWidth", 6120},    {L"EmbsrPaperLength", 7920},
                    {L"EmbsrCharsWidth", 38},         {L"EmbsrLinesLength", 27},     {L"EmbsrLeftMargin", 7},
                    {L"EmbsrRightMargin", 6},         {L"EmbsrTopMargin", 12},       {L"EmbsrAutoCr", DWORD{0}},
                    {L"EmbsrGraphicsMode", 1},        {L"EmbsrBrailleDots", 8},      {L"EmbsrBrailleStandard", 3},
                    {L"EmbsrLineSpacing", 4},         {L"EmbsrBrailleForce", 2},     {L"EmbsrMediaType", 11},
                    {L"EmbsrCustomMediaMin", 40},     {L"EmbsrCustomMediaMax", 200}, {L"EmbsrQuality", 2},
                    {L"EmbsrDuplex", 2},              {L"EmbsrOutputFace", 2}}, 7);
    standin::SpoolerComponent component(printer.name(),
                                        {{L"EmbsrPaperWidth", std::wstring()},         // 2 bytes, no number
                                         {L"EmbsrTopMargin", std::wstring(L"123")},     // 8 bytes
                                         {L"SerialNumber", std::wstring(2100, L'S')},     // 4202 bytes
                                         {L"ModelNumber", std::wstring(1000, L'M')},      // cut to fit
                                         {L"EmbsrBrailleTable", std::wstring(200, L'T')},  // 402 bytes
                                         {L"FirmwareVersion", L"2.10"}},
                                        23, 2500);
    auto config = FilledConfigFor(printer);
    testenv::TraceLog log;

    // Without the full-access handle (as on Windows for a user without rights to the
    // printer) the component is not asked; what it stored is read.
    {
        testenv::TestSpooler spooler;
        spooler.refuseFullAccess = true;
        testenv::SpoolerSwap swap(&spooler);
        EXPECT_FALSE(GetQuorlSettings(*config));
    }
    // 6120 / 36; the stored table's name is not looked up.
    EXPECT_EQ(DeviceNumbers(*config), (std::vector<int64_t>{0, 0, 0, 12, 7, 6, 8, 38, 27, 4, 0, 1, 3, 11, 220, 170, 2,
                                                            2, 2, 2, 3 << 16 | 1 << 8 | 12, kSentinel, 40, 200}));
    EXPECT_EQ(DeviceTexts(*config), L"DE_DE QX-0042 Quorl 640");
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): 0=GetLegacyData(), nbrParms=0"));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=0, count=23"));
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").AsDword(), 7u);

    // With it, the component's answer comes at the third poll; values of the wrong size
    // are left as they were.
    EXPECT_TRUE(GetQuorlSettings(*config));
    EXPECT_TRUE(log.Contains("GetLegacyData(): first try LegacyDataAvailable=7"));
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 2);
    EXPECT_TRUE(log.Contains("GetLegacyData(): second try LegacyDataAvailable=23"));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=23, count=19")) << log.Text();
    EXPECT_EQ(config->EmbsrPaperWidth, 170);
    EXPECT_EQ(config->EmbsrTopMargin, 12);
    EXPECT_EQ(DeviceTexts(*config), L"DE_DE QX-0042 " + std::wstring(kTextCapacity - 1, L'M'));
    EXPECT_EQ(config->FirmwareVersion, 2u << 16 | 10u << 8);

    // It answers only once: the next request times out after nine polls.
    const auto start = std::chrono::steady_clock::now();
    DWORD count = 77;
    EXPECT_EQ(GetLegacyData(printer.handle(), &count), static_cast<DWORD>(ERROR_TIMEOUT));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_GE(seconds, 8.9);
    EXPECT_LT(seconds, 10.5);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 2 + 9);
    EXPECT_TRUE(log.Contains("GetLegacyData(): err=1460"));
}

// A read on a worker, cancelled while it waits for the component's answer, for the
// connection or for the reply: the worker ends within the check's interval, and the
// page's record takes nothing but the failure.
TEST(DeviceReadWorker, CancelledWhereverItWaitsEndsAtOnceAndTakesNothing) {
    const struct { const char* what; const char* address; Behaviour behaviour; const char* traced; } cases[] = {
        {"the component's polls", nullptr, Behaviour::Answer, "GetLegacyData(): cancelled"},
        {"the connection", "127.77.2.6", Behaviour::Unreachable, "GetLegacyDataNetwork(): 10004=connect()"},
        {"the reply", "127.77.2.7", Behaviour::Silent, "GetLegacyDataNetwork(): cancelled"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::TestPrinter printer;
        std::unique_ptr<embosser_sim::Simulator> simulator;
        if (c.address != nullptr) {
            printer.MakeNetworkPort(testenv::Widen(c.address), L"");
            simulator = devicetest::StartSimulator(devicetest::Simulating(c.address, c.behaviour));
        }
        auto config = FilledConfigFor(printer);
        std::vector<int64_t> expected = DeviceNumbers(*config);
        expected[0] = -1;
        testenv::TraceLog log;
        DeviceReadWorker worker;
        ASSERT_TRUE(worker.Start(*config));
        ASSERT_EQ(WaitForSingleObject(worker.thread(), 1500), static_cast<DWORD>(WAIT_TIMEOUT)) << "still waiting";
        const auto cancelled = std::chrono::steady_clock::now();
        worker.Cancel();
        worker.Join();
        EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - cancelled).count(),
                  400);
        worker.Finish(*config, L"Caller");
        EXPECT_EQ(DeviceNumbers(*config), expected);
        EXPECT_TRUE(log.Contains(c.traced)) << log.Text();
        EXPECT_TRUE(log.Contains("Caller(): 0=GetQuorlSettings()"));
        EXPECT_TRUE(log.Contains("Caller(): reading the embosser was cancelled"));
    }
}
