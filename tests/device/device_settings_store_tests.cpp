// GetQuorlSettings with real peers: a printer on a Standard TCP/IP port whose host is the
// simulator, and a printer on an ordinary port whose spooler-side component answers
// through the spooler.
#include "support/embosser_fixtures.h"

#include <cstddef>
#include <vector>

#include "device/device_settings_store.h"
#include "spooler_component.h"
#include "support/spooler_doubles.h"

using devicetest::ConfigFor;
using devicetest::SecondsSince;
using embosser_sim::Behaviour;
using testenv::TraceLog;

namespace {

// Every value differs from the simulator's sample and from a zeroed record; apart from
// the paper width, the same device as standin::TypicalStoredValues().
const std::string kDistinctBlock =
    "@PJL INFO LEGACY [23 ENTRIES]\r\n"
    "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
    "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=OFF\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
    "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7920\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
    "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=2\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\nMODEL=\"Quorl 640\"\r\n";

// Every field a read may fill starts with these bytes, so that what a read left alone shows.
constexpr int64_t kSentinel = 0x6F6F6F6F;
void FillWithSentinels(UIConfig& c) {
    std::memset(&c.EmbsrDuplex, 0x6F, offsetof(UIConfig, PrinterHandle) - offsetof(UIConfig, EmbsrDuplex));
}

// The numbers a read fills, in one list so that a failure shows them all.
std::vector<int64_t> DeviceNumbers(const UIConfig& c) {
    return {c.LegacyParmCount,   c.LegacyStateA,      c.LegacyStateB,        c.EmbsrTopMargin,    c.EmbsrLeftMargin,
            c.EmbsrRightMargin,  c.EmbsrBrailleDots,  c.EmbsrCharsWidth,     c.EmbsrLinesLength,  c.EmbsrLineSpacing,
            c.EmbsrAutoCr,       c.EmbsrGraphicsMode, c.EmbsrBrailleStandard, c.EmbsrMediaType,   c.EmbsrPaperLength,
            c.EmbsrPaperWidth,   c.EmbsrBrailleForce, c.EmbsrQuality,        c.EmbsrDuplex,       c.EmbsrOutputFace,
            c.FirmwareVersion,   c.BrailleTableIndex, c.EmbsrCustomMediaMin, c.EmbsrCustomMediaMax};
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
        {"a complete reply", "127.77.2.1", Behaviour::Answer, embosser_sim::HttpReply(kDistinctBlock), true, 0,
         distinct},
        {"a reply cut before its last key is read as far as it goes", "127.77.2.3", Behaviour::Answer,
         embosser_sim::HttpReply(kDistinctBlock.substr(0, kDistinctBlock.find("MODEL="))), false, 0, cut},
        {"a silent embosser changes nothing after ten waits", "127.77.2.2", Behaviour::Silent, "", false, 10,
         untouched},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::TestPrinter printer;
        printer.MakeNetworkPort(testenv::Widen(c.address), L"");
        auto simulator = devicetest::StartSimulator(devicetest::Simulating(c.address, c.behaviour, c.reply));
        standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 100);
        auto config = ConfigFor(printer);
        FillWithSentinels(*config);
        TraceLog log;
        const auto start = std::chrono::steady_clock::now();

        EXPECT_EQ(GetQuorlSettings(*config), c.known);

        EXPECT_GE(SecondsSince(start), c.waits - 0.5);
        EXPECT_LT(SecondsSince(start), c.waits + 2.0);
        EXPECT_EQ(log.Count("GetLegacyDataNetwork(): socket timeout 0=select()"), c.waits);
        EXPECT_EQ(DeviceNumbers(*config), c.numbers);
        EXPECT_EQ(simulator->LastRequest(), std::string("GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n"));
        EXPECT_EQ(simulator->RequestCount(), 1);
        EXPECT_EQ(component.RequestCount(), 0);
        if (c.known) {
            EXPECT_STREQ(config->EmbsrBrailleTable, L"DE_DE");
            EXPECT_STREQ(config->SerialNumber, L"QX-0042");
            EXPECT_STREQ(config->ModelNumber, L"Quorl 640");
        }
    }
}

TEST(GetQuorlSettings, AsksTheComponentThroughAFullAccessHandleAndTakesTheStoredValuesThatFit) {
    testenv::TestPrinter printer;
    standin::Store(printer.handle(), standin::TypicalStoredValues(), 7);  // what an earlier request left
    standin::SpoolerComponent component(printer.name(),
                                        {{L"EmbsrPaperWidth", REG_BINARY, {0x10, 0x00}},
                                         {L"EmbsrTopMargin", REG_BINARY, {1, 0, 0, 0, 0, 0, 0, 0}},
                                         {L"SerialNumber", std::wstring(2100, L'S')},     // 4202 bytes
                                         {L"ModelNumber", std::wstring(1000, L'M')},      // cut to fit
                                         {L"EmbsrBrailleTable", std::wstring(200, L'T')},  // 402 bytes
                                         {L"FirmwareVersion", L"2.10"}},
                                        23, 2500);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    TraceLog log;

    // Without the full-access handle (as on Windows for a user without rights to the
    // printer) the component is not asked; what it stored is read.
    {
        testenv::TestSpooler spooler;
        spooler.refuseFullAccess = true;
        testenv::SpoolerSwap swap(&spooler);
        EXPECT_FALSE(GetQuorlSettings(*config));
        EXPECT_EQ(spooler.refusedOpens, 1);
    }
    // 6120 / 36; the stored table's name is not looked up.
    EXPECT_EQ(DeviceNumbers(*config), (std::vector<int64_t>{0, 0, 0, 12, 7, 6, 8, 38, 27, 4, 0, 1, 3, 11, 220, 170, 2,
                                                            2, 2, 2, 3 << 16 | 1 << 8 | 12, kSentinel, 40, 200}));
    EXPECT_STREQ(config->EmbsrBrailleTable, L"DE_DE");
    EXPECT_STREQ(config->SerialNumber, L"QX-0042");
    EXPECT_STREQ(config->ModelNumber, L"Quorl 640");
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): 0=GetLegacyData(), nbrParms=0"));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=0, count=23"));
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").AsDword(), 7u);
    EXPECT_EQ(component.RequestCount(), 0);

    // With it, the component's answer comes at the third poll; values of the wrong size
    // are left as they were.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(GetQuorlSettings(*config));
    EXPECT_GE(SecondsSince(start), 2.9);
    EXPECT_LT(SecondsSince(start), 4.5);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_TRUE(log.Contains("GetLegacyData(): first try LegacyDataAvailable=7"));
    EXPECT_EQ(log.Count("GetLegacyData(): second try LegacyDataAvailable=0"), 2);
    EXPECT_TRUE(log.Contains("GetLegacyData(): second try LegacyDataAvailable=23"));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=23, count=19")) << log.Text();
    EXPECT_EQ(config->EmbsrPaperWidth, 170);
    EXPECT_EQ(config->EmbsrTopMargin, 12);
    EXPECT_STREQ(config->SerialNumber, L"QX-0042");
    EXPECT_EQ(std::wstring(config->ModelNumber), std::wstring(kTextCapacity - 1, L'M'));
    EXPECT_STREQ(config->EmbsrBrailleTable, L"DE_DE");
    EXPECT_EQ(config->FirmwareVersion, 2u << 16 | 10u << 8);
}
