// GetQuorlSettings with real peers: a printer on a Standard TCP/IP port whose host is the
// simulator, and a printer on an ordinary port whose spooler-side component answers
// through the spooler.
#include "support/embosser_fixtures.h"

#include <vector>

#include "base/spooler.h"
#include "device/device_settings_store.h"
#include "spooler_component.h"
#include "support/spooler_doubles.h"

using devicetest::ConfigFor;
using devicetest::CountLinesStartingWith;
using devicetest::Simulating;
using devicetest::StartSimulator;
using embosser_sim::Behaviour;
using testenv::TraceLog;

namespace {

// Every value differs from the simulator's sample and from a zeroed record; apart from
// the paper width, the same device as standin::TypicalStoredValues().
const char kDistinctBlock[] =
    "@PJL INFO LEGACY [23 ENTRIES]\r\n"
    "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
    "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=OFF\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
    "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7920\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
    "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=2\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\nMODEL=\"Quorl 640\"\r\n";

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

// The fields both transports fill the same way for that device.
void ExpectTheDistinctDevice(const UIConfig& c) {
    const std::vector<int64_t> numbers = {
        c.LegacyParmCount,    c.EmbsrTopMargin,    c.EmbsrLeftMargin,      c.EmbsrRightMargin, c.EmbsrBrailleDots,
        c.EmbsrCharsWidth,    c.EmbsrLinesLength,  c.EmbsrLineSpacing,     c.EmbsrAutoCr,      c.EmbsrGraphicsMode,
        c.EmbsrBrailleStandard, c.EmbsrMediaType,  c.EmbsrPaperLength,     c.EmbsrBrailleForce, c.EmbsrQuality,
        c.EmbsrDuplex,        c.EmbsrOutputFace,   c.FirmwareVersion,      c.LegacyStateA,     c.LegacyStateB};
    // The paper length is 7920 / 36; the firmware "3.1.12".
    EXPECT_EQ(numbers, (std::vector<int64_t>{23, 12, 7, 6, 8, 38, 27, 4, 0, 1, 3, 11, 220, 2, 2, 2, 2,
                                             3 << 16 | 1 << 8 | 12, 0, 0}));
    EXPECT_STREQ(c.EmbsrBrailleTable, L"DE_DE");
    EXPECT_STREQ(c.SerialNumber, L"QX-0042");
    EXPECT_STREQ(c.ModelNumber, L"Quorl 640");
}

}  // namespace

TEST(GetQuorlSettings, ReadsEverySettingFromTheNetworkEmbosserElseFromTheSpoolerSideComponent) {
    const struct {
        const char* what;
        const wchar_t* host;  // null: an ordinary port
        int32_t paperWidth;
        uint32_t tableIndex, customMediaMin, customMediaMax;
        int simulatorRequests, componentRequests;
    } cases[] = {
        // 8280 / 36; the table's name is looked up; the reply has no custom media.
        {"a Standard TCP/IP port whose host is the embosser", L"127.77.2.1", 230, 2, 111, 111, 1, 0},
        // 6120 / 36; the stored name is not looked up again.
        {"an ordinary port", nullptr, 170, 9, 40, 200, 0, 1},
    };
    auto simulator = StartSimulator(Simulating("127.77.2.1", Behaviour::Answer, embosser_sim::HttpReply(kDistinctBlock)));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        testenv::TestPrinter printer;
        if (c.host != nullptr) printer.MakeNetworkPort(c.host, L"");
        standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 300);
        auto config = ConfigFor(printer);
        FillWithSentinels(*config);
        const int requestsBefore = simulator->RequestCount();

        EXPECT_TRUE(GetQuorlSettings(*config));

        ExpectTheDistinctDevice(*config);
        EXPECT_EQ(config->EmbsrPaperWidth, c.paperWidth);
        EXPECT_EQ(config->BrailleTableIndex, c.tableIndex);
        EXPECT_EQ(config->EmbsrCustomMediaMin, c.customMediaMin);
        EXPECT_EQ(config->EmbsrCustomMediaMax, c.customMediaMax);
        EXPECT_EQ(simulator->RequestCount() - requestsBefore, c.simulatorRequests);
        EXPECT_EQ(component.RequestCount(), c.componentRequests);
    }
    EXPECT_EQ(simulator->LastRequest(), std::string("GET /PJLINFOLEGACY HTTP/1.1\r\n\r\n"));
}

TEST(GetQuorlSettings, TakesOnlyACompleteReply) {
    const std::string block = kDistinctBlock;
    const struct {
        const char* what;
        std::string reply;
        int32_t topMargin;
        const wchar_t* model;
    } cases[] = {
        {"no \"@PJL INFO LEGACY [23\" prefix", embosser_sim::HttpReply("@PJL INFO LEGACY [22" + block.substr(20)), 111,
         L"old model"},
        {"a reply cut before its last key", embosser_sim::HttpReply(block.substr(0, block.find("MODEL="))), 12, L""},
    };
    testenv::TestPrinter printer;
    int host = 10;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string address = "127.77.3." + std::to_string(++host);
        printer.MakeNetworkPort(testenv::Widen(address), L"");
        auto simulator = StartSimulator(Simulating(address.c_str(), Behaviour::Answer, c.reply));
        auto config = ConfigFor(printer);
        FillWithSentinels(*config);
        config->LegacyParmCount = -1;

        EXPECT_FALSE(GetQuorlSettings(*config));

        EXPECT_EQ(config->LegacyParmCount, 0);
        EXPECT_EQ(config->EmbsrTopMargin, c.topMargin);
        EXPECT_STREQ(config->ModelNumber, c.model);
        EXPECT_EQ(config->LegacyStateA, 0u);
        EXPECT_EQ(simulator->RequestCount(), 1);
    }
}

TEST(GetQuorlSettings, ASilentEmbosserGivesFalseAfterTheNetworkWaitWithoutAskingTheSpooler) {
    testenv::TestPrinter printer;
    printer.MakeNetworkPort(L"127.77.2.2", L"");
    auto simulator = StartSimulator(Simulating("127.77.2.2", Behaviour::Silent));
    standin::SpoolerComponent component(printer.name(), standin::TypicalStoredValues(), 23, 100);
    auto config = ConfigFor(printer);
    FillWithSentinels(*config);
    config->LegacyParmCount = -1;
    TraceLog log;
    const auto start = std::chrono::steady_clock::now();

    EXPECT_FALSE(GetQuorlSettings(*config));

    const double seconds = devicetest::SecondsSince(start);
    EXPECT_GE(seconds, 9.5);
    EXPECT_LT(seconds, 12.0);
    EXPECT_EQ(config->LegacyParmCount, -1);
    EXPECT_EQ(config->LegacyStateA, 5u);
    EXPECT_STREQ(config->ModelNumber, L"old model");
    EXPECT_EQ(simulator->RequestCount(), 1);
    EXPECT_EQ(log.Count("GetLegacyDataNetwork(): socket timeout 0=select()"), 10);
    EXPECT_EQ(CountLinesStartingWith(log, "GetLegacyData(): "), 0);
    EXPECT_EQ(component.RequestCount(), 0);
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

TEST(GetQuorlSettings, IsFalseWithNoParametersWhenThePrinterCannotBeOpenedToAskTheComponent) {
    testenv::TestPrinter printer;
    for (const auto& value : standin::TypicalStoredValues()) {
        SetPrinterDataW(printer.handle(), const_cast<wchar_t*>(value.name.c_str()), value.type,
                        const_cast<BYTE*>(value.data.data()), static_cast<DWORD>(value.data.size()));
    }
    auto config = ConfigFor(printer);
    ReopenRefusingSpooler spooler;
    TraceLog log;
    bool known = true;
    {
        testenv::SpoolerSwap swap(&spooler);
        known = GetQuorlSettings(*config);
    }

    EXPECT_FALSE(known);
    EXPECT_EQ(spooler.refused, 1);
    EXPECT_EQ(testenv::ReadPrinterData(printer.handle(), nullptr, L"LegacyDataAvailable").status,
              static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): 0=GetLegacyData(), nbrParms=0"));
    EXPECT_EQ(config->LegacyParmCount, 0);
    EXPECT_EQ(config->EmbsrPaperWidth, 170);  // every stored value is still read
    EXPECT_TRUE(log.Contains("GetQuorlSettings(): nbrParms=0, count=23"));
}
