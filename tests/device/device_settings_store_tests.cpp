// GetQuorlSettings with real peers: a printer on a Standard TCP/IP port whose host is the
// simulator, and a printer on an ordinary port whose spooler-side component answers
// through the spooler.
#include "device_test_support.h"

#include "config/spooler.h"
#include "device/device_settings_store.h"
#include "spooler_component.h"

using devicetest::ConfigFor;
using devicetest::CountLinesStartingWith;
using devicetest::RunningSimulator;
using devicetest::Stopwatch;
using embosser_sim::Behaviour;
using testenv::TraceLog;

namespace {

// Every value differs from the simulator's sample and from a zeroed record.
const char kDistinctBlock[] =
    "@PJL INFO LEGACY [23 ENTRIES]\r\n"
    "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
    "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=OFF\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
    "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7920\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
    "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=2\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\nMODEL=\"Quorl 640\"\r\n";

constexpr uint32_t kFirmware3_1_12 = 3u << 16 | 1u << 8 | 12u;

// Values no read produces, to see which fields a read left alone.
void FillWithSentinels(UIConfig& config) {
    config.EmbsrTopMargin = config.EmbsrLeftMargin = config.EmbsrRightMargin = 111;
    config.EmbsrCharsWidth = config.EmbsrLinesLength = config.EmbsrLineSpacing = 111;
    config.EmbsrPaperWidth = config.EmbsrPaperLength = 111;
    config.EmbsrBrailleDots = config.EmbsrAutoCr = config.EmbsrGraphicsMode = config.EmbsrBrailleStandard = 111;
    config.EmbsrMediaType = config.EmbsrBrailleForce = config.EmbsrQuality = config.EmbsrDuplex = 111;
    config.EmbsrOutputFace = config.EmbsrCustomMediaMin = config.EmbsrCustomMediaMax = 111;
    config.FirmwareVersion = 111;
    config.BrailleTableIndex = 9;
    config.LegacyStateA = config.LegacyStateB = 5;
    wcscpy(config.EmbsrBrailleTable, L"old table");
    wcscpy(config.SerialNumber, L"old serial");
    wcscpy(config.ModelNumber, L"old model");
}

}  // namespace

TEST(GetQuorlSettings, ReadsEverySettingFromTheEmbosserOnTheNetwork) {
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.77.2.1", L"");
    RunningSimulator simulator("127.77.2.1", Behaviour::Answer, embosser_sim::HttpReply(kDistinctBlock));
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 100);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    TraceLog log;

    EXPECT_TRUE(GetQuorlSettings(*config));

    const UIConfig& c = *config;
    EXPECT_EQ(c.LegacyParmCount, 23);
    EXPECT_EQ(c.EmbsrTopMargin, 12);
    EXPECT_EQ(c.EmbsrLeftMargin, 7);
    EXPECT_EQ(c.EmbsrRightMargin, 6);
    EXPECT_EQ(c.EmbsrBrailleDots, 8u);
    EXPECT_EQ(c.EmbsrCharsWidth, 38);
    EXPECT_EQ(c.EmbsrLinesLength, 27);
    EXPECT_EQ(c.EmbsrLineSpacing, 4);
    EXPECT_STREQ(c.EmbsrBrailleTable, L"DE_DE");
    EXPECT_EQ(c.BrailleTableIndex, 2u);
    EXPECT_EQ(c.EmbsrAutoCr, 0u);
    EXPECT_EQ(c.EmbsrGraphicsMode, 1u);
    EXPECT_EQ(c.EmbsrBrailleStandard, 3u);
    EXPECT_EQ(c.EmbsrMediaType, 11u);
    EXPECT_EQ(c.EmbsrPaperLength, 220);
    EXPECT_EQ(c.EmbsrPaperWidth, 230);
    EXPECT_EQ(c.EmbsrBrailleForce, 2u);
    EXPECT_EQ(c.EmbsrQuality, 2u);
    EXPECT_EQ(c.EmbsrDuplex, 2u);
    EXPECT_EQ(c.EmbsrOutputFace, 2u);
    EXPECT_EQ(c.FirmwareVersion, kFirmware3_1_12);
    EXPECT_STREQ(c.SerialNumber, L"QX-0042");
    EXPECT_STREQ(c.ModelNumber, L"Quorl 640");
    EXPECT_EQ(c.LegacyStateA, 0u);
    EXPECT_EQ(c.LegacyStateB, 0u);
    EXPECT_EQ(c.EmbsrCustomMediaMin, 111u);  // not part of the reply

    EXPECT_EQ(simulator->RequestCount(), 1);
    EXPECT_EQ(component.RequestCount(), 0);
    EXPECT_EQ(CountLinesStartingWith(log, "GetLegacyData(): "), 0);
    EXPECT_TRUE(log.Contains("GetLegacyDataNetwork(): network port " + testenv::Narrow(printer.portName())));
}

TEST(GetQuorlSettings, TakesOnlyACompleteReplyWithinTheFirst4095Bytes) {
    const std::string block = kDistinctBlock;
    const std::string head = embosser_sim::HttpReply("");
    // 5000 bytes whose block starts 100 bytes before the cut: its first keys are read, its
    // last ones are not.
    std::string padded = head;
    while (padded.size() < 3995) padded += "X-Filler: ..............................\r\n";
    padded.resize(3995, '.');
    padded += block;
    padded.resize(5000, '.');

    struct Case {
        const char* what;
        Behaviour behaviour;
        std::string reply;
        bool known;
        int32_t topMargin;
        const wchar_t* model;
    };
    const Case cases[] = {
        {"a complete reply", Behaviour::Answer, embosser_sim::HttpReply(block), true, 12, L"Quorl 640"},
        {"no \"@PJL INFO LEGACY [23\" prefix", Behaviour::Answer,
         embosser_sim::HttpReply("@PJL INFO LEGACY [22" + block.substr(20)), false, 111, L"old model"},
        {"a reply cut before its last key", Behaviour::Answer,
         embosser_sim::HttpReply(block.substr(0, block.find("MODEL="))), false, 12, L""},
        {"only the HTTP head", Behaviour::Answer, embosser_sim::HttpReply(""), false, 111, L"old model"},
        {"5000 bytes whose block lies in the first 4095", Behaviour::Flood, embosser_sim::HttpReply(block), true, 12,
         L"Quorl 640"},
        {"5000 bytes whose block is cut at byte 4095", Behaviour::Answer, padded, false, 12, L""},
    };
    testenv::TestPrinter printer;
    int host = 10;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string address = "127.77.3." + std::to_string(++host);
        printer.MakeNetworkPort(testenv::Widen(address), L"");
        embosser_sim::Options options;
        options.address = address;
        options.behaviour = c.behaviour;
        options.reply = c.reply;
        options.floodBytes = 5000;
        RunningSimulator simulator(options);
        auto config = ConfigFor(printer);
        FillWithSentinels(*config);
        config->LegacyParmCount = -1;

        EXPECT_EQ(GetQuorlSettings(*config), c.known);

        EXPECT_EQ(config->LegacyParmCount, c.known ? 23 : 0);
        EXPECT_EQ(config->EmbsrTopMargin, c.topMargin);
        EXPECT_STREQ(config->ModelNumber, c.model);
        EXPECT_EQ(config->LegacyStateA, 0u);
        EXPECT_EQ(simulator->RequestCount(), 1);
    }
}

TEST(GetQuorlSettings, ASilentEmbosserGivesFalseAfterTheNetworkWaitWithoutAskingTheSpooler) {
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.77.2.2", L"");
    RunningSimulator simulator("127.77.2.2", Behaviour::Silent);
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 100);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    config->LegacyParmCount = -1;
    TraceLog log;
    Stopwatch clock;

    EXPECT_FALSE(GetQuorlSettings(*config));

    const double seconds = clock.Seconds();
    EXPECT_GE(seconds, 9.5);
    EXPECT_LT(seconds, 12.0);
    EXPECT_EQ(config->LegacyParmCount, -1);
    EXPECT_EQ(config->LegacyStateA, 5u);
    EXPECT_STREQ(config->ModelNumber, L"old model");
    EXPECT_EQ(simulator->RequestCount(), 1);
    EXPECT_EQ(log.Count("GetLegacyDataNetwork(): socket timeout 0=select()"), 10);
    EXPECT_TRUE(log.Contains("GetLegacyDataNetwork(): 0=sockread"));
    EXPECT_EQ(CountLinesStartingWith(log, "GetLegacyData(): "), 0);
    EXPECT_EQ(component.RequestCount(), 0);
}

TEST(GetQuorlSettings, ReachesAnEmbosserWhoseHostNameIsDottedTextThatDoesNotResolve) {
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.77.2.3 (embosser)", L"10.0.0.9");
    RunningSimulator simulator("127.77.2.3", Behaviour::Answer, embosser_sim::HttpReply(kDistinctBlock));
    auto config = ConfigFor(printer);
    TraceLog log;

    EXPECT_TRUE(GetQuorlSettings(*config));
    EXPECT_EQ(config->LegacyParmCount, 23);
    EXPECT_EQ(simulator->RequestCount(), 1);
    EXPECT_TRUE(log.Contains("IsNetworkPort(): found ip in hostname=127.77.2.3 (embosser), bRet=1"));
}

TEST(GetQuorlSettings, ReadsTheValuesTheSpoolerSideComponentStored) {
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 300);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    TraceLog log;

    EXPECT_TRUE(GetQuorlSettings(*config));

    const UIConfig& c = *config;
    EXPECT_EQ(c.LegacyParmCount, 23);
    EXPECT_EQ(c.FirmwareVersion, kFirmware3_1_12);
    EXPECT_STREQ(c.SerialNumber, L"QX-0042");
    EXPECT_STREQ(c.ModelNumber, L"Quorl 640");
    EXPECT_EQ(c.EmbsrPaperWidth, 170);   // 6120 / 36
    EXPECT_EQ(c.EmbsrPaperLength, 220);  // 7920 / 36
    EXPECT_EQ(c.EmbsrCharsWidth, 38);
    EXPECT_EQ(c.EmbsrLinesLength, 27);
    EXPECT_EQ(c.EmbsrLeftMargin, 7);
    EXPECT_EQ(c.EmbsrRightMargin, 6);
    EXPECT_EQ(c.EmbsrTopMargin, 12);
    EXPECT_STREQ(c.EmbsrBrailleTable, L"DE_DE");
    EXPECT_EQ(c.BrailleTableIndex, 9u);  // the stored name is not looked up again
    EXPECT_EQ(c.EmbsrAutoCr, 0u);
    EXPECT_EQ(c.EmbsrGraphicsMode, 1u);
    EXPECT_EQ(c.EmbsrBrailleDots, 8u);
    EXPECT_EQ(c.EmbsrBrailleStandard, 3u);
    EXPECT_EQ(c.EmbsrLineSpacing, 4);
    EXPECT_EQ(c.EmbsrBrailleForce, 2u);
    EXPECT_EQ(c.EmbsrMediaType, 11u);
    EXPECT_EQ(c.EmbsrCustomMediaMin, 40u);
    EXPECT_EQ(c.EmbsrCustomMediaMax, 200u);
    EXPECT_EQ(c.EmbsrQuality, 2u);
    EXPECT_EQ(c.EmbsrDuplex, 2u);
    EXPECT_EQ(c.EmbsrOutputFace, 2u);
    EXPECT_EQ(c.LegacyStateA, 0u);
    EXPECT_EQ(c.LegacyStateB, 0u);
    EXPECT_EQ(component.RequestCount(), 1);
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): 0=GetLegacyData(), nbrParms=23"));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=23, count=23"));
}

TEST(GetQuorlSettings, LeavesStoredValuesOfTheWrongSizeAsTheyWere) {
    using standin::StoredValue;
    auto values = standin::TypicalStoredValues();
    standin::Replace(values, StoredValue::Bytes(L"EmbsrPaperWidth", REG_BINARY, {0x10, 0x00}));
    standin::Replace(values, StoredValue::Bytes(L"EmbsrTopMargin", REG_BINARY, {1, 0, 0, 0, 0, 0, 0, 0}));
    standin::Replace(values, StoredValue::Text(L"EmbsrCharsWidth", L"40"));
    standin::Replace(values, StoredValue::Text(L"SerialNumber", std::wstring(2100, L'S')));     // 4202 bytes
    standin::Replace(values, StoredValue::Text(L"ModelNumber", std::wstring(1000, L'M')));      // cut to fit
    standin::Replace(values, StoredValue::Text(L"EmbsrBrailleTable", std::wstring(200, L'T')));  // 402 bytes
    standin::Replace(values, StoredValue::Text(L"FirmwareVersion", L"2.10"));
    testenv::TestPrinter printer;
    standin::SpoolerComponent component(printer.name(), values, 23, 300);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    TraceLog log;

    EXPECT_TRUE(GetQuorlSettings(*config));

    EXPECT_EQ(config->EmbsrPaperWidth, 111);
    EXPECT_EQ(config->EmbsrTopMargin, 111);
    EXPECT_EQ(config->EmbsrCharsWidth, 111);
    EXPECT_STREQ(config->SerialNumber, L"old serial");
    EXPECT_EQ(std::wstring(config->ModelNumber), std::wstring(kTextCapacity - 1, L'M'));
    EXPECT_STREQ(config->EmbsrBrailleTable, L"old table");
    EXPECT_EQ(config->FirmwareVersion, 2u << 16 | 10u << 8);
    EXPECT_EQ(config->EmbsrPaperLength, 220);  // its neighbours are read as usual
    EXPECT_EQ(config->EmbsrLinesLength, 27);
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=23, count=18")) << log.Text();
}

namespace {
class ReopenRefusingSpooler : public Spooler {
public:
    BOOL OpenPrinterW(const wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) override {
        if (defaults != nullptr && defaults->DesiredAccess == PRINTER_ALL_ACCESS) {
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }
        return Spooler::OpenPrinterW(name, printer, defaults);
    }
};
}  // namespace

TEST(GetQuorlSettings, IsFalseWithNoParametersEvenWhenEveryStoredValueReads) {
    testenv::TestPrinter printer;
    for (const auto& value : standin::TypicalStoredValues()) {
        SetPrinterDataW(printer.handle(), const_cast<wchar_t*>(value.name.c_str()), value.type,
                        const_cast<BYTE*>(value.data.data()), static_cast<DWORD>(value.data.size()));
    }
    auto config = ConfigFor(printer);
    ReopenRefusingSpooler spooler;
    SetSpoolerForTesting(&spooler);
    TraceLog log;
    const bool known = GetQuorlSettings(*config);
    SetSpoolerForTesting(nullptr);

    EXPECT_FALSE(known);
    EXPECT_EQ(config->LegacyParmCount, 0);
    EXPECT_EQ(config->EmbsrPaperWidth, 170);
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=0, count=23"));
}
