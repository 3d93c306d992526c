// What "Device Settings" writes is what the embosser keeps and what the next sheet shows.
// The printer is a Standard TCP/IP port of a simulated embosser: its settings query
// answers from what the embosser keeps, and the port's jobs reach the embosser's raw
// print port, whose PJL changes and commits those settings. Each sheet is opened by a
// fresh plug-in object of the real DLL, so every value shown was read from the embosser.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include <algorithm>

#include "support/host_fixtures.h"
#include "tools/host/dialog_driver.h"
#include "tools/host/host_library.h"
#include "tools/host/option_tree_page.h"

using ozdkhost::SheetKind;

namespace {

// The printer's properties, opened by a fresh plug-in object on the "Device Settings"
// page: the plug-in reads the embosser as the page comes to the front.
class DeviceSettingsSheet {
public:
    DeviceSettingsSheet(const ozdkhost::PluginLibrary& library, const std::wstring& printerName) {
        EXPECT_TRUE(printer_.Open(printerName));
        EXPECT_EQ(object_.Create(library), S_OK);
        printer_.PrepareOemPrivatePart(object_.get(), library.module());
        sheet_ = std::make_unique<ozdkhost::PropertySheetHost>(SheetKind::Printer, object_, library.module(), printer_,
                                                               &log_);
        sheet_->Prepare();
        tree_ = sheet_->AddOptionTreePage();
        if (tree_ != nullptr) sheet_->StartWithHostPage(tree_);
        EXPECT_NE(sheet_->ShowModeless(), nullptr) << testenv::Narrow(log_.Text());
    }

    std::wstring Shown(BYTE id) const { return tree_ != nullptr ? tree_->ControlText(id) : L"<no tree>"; }
    bool Set(BYTE id, const wchar_t* value) { return tree_ != nullptr && tree_->ChooseOrType(id, value); }
    bool Apply() { return sheet_->Apply(); }
    // "Reset To Default", answering its question with Yes.
    bool Reset(const std::wstring& printerName) {
        ozdkhost::DialogScript yes(printerName, [](HWND box) { ozdkhost::Answer(box, IDYES); });
        return tree_ != nullptr && tree_->Press(32) && yes.Finish();
    }

private:
    ozdkhost::HostLog log_;
    ozdkhost::HostPrinter printer_{&log_};
    ozdkhost::PluginObject object_{&log_};
    std::unique_ptr<ozdkhost::PropertySheetHost> sheet_;  // closes before the object is released
    ozdkhost::OptionTreePage* tree_ = nullptr;
};

struct Change {
    BYTE item;
    const wchar_t* chosen;    // what the person picks or types; null: set by another item
    const wchar_t* readBack;  // what the next sheet shows
};

// Every setting of the tree, away from the simulator's sample. A row whose read-back
// differs from the choice names the rule that makes it differ. "Legacy Settings" (the
// head) carries no value, and "Braille Tables" hands over to the language monitor's
// extension library; "Reset To Default" has a round trip of its own below.
// The choices fit the page (graphics cells of 4 and lines of 6 units), so no
// characters-per-line or lines-per-page correction is sent with them.
const Change kChanges[] = {
    {50, L"A4", L"A4"},
    {52, nullptr, L"8.30"},   // the form's width, rounded up to the next tenth of an inch
    {53, nullptr, L"11.70"},  // and its length
    {40, L"0.75", L"0.75"},
    {41, L"0.40", L"0.40"},
    {76, L"0.35", L"0.35"},
    {230, L"36", L"36"},
    {231, L"30", L"30"},
    {42, L"Graphics", L"Graphics"},
    {26, L"8", L"8"},
    // Rule: the refresh after a read shows braille standard 3 (Microbraille) as entry 2.
    {228, L"Japanese Standard (Microbraille)", L"American National Library of the Blind"},
    {45, L"Off", L"Off"},
    // Rule: extra line space is sent in whole 1/20 inch (hundredths divided by 5, cut).
    {30, L"0.33", L"0.30"},
    {57, L"Default 5 (Card Stock)", L"Default 5 (Card Stock)"},
    {60, L"German", L"German"},
    {61, L"Low", L"Low"},
    {232, L"Best", L"Best"},
    {27, L"Double Sided (Interpoint)", L"Double Sided (Interpoint)"},
    {99, L"Face Down", L"Face Down"},
};

// What "Reset To Default" leaves on the embosser, as the next sheet shows it. The form
// size is not sent; 8.50 x 11.00 inches is found again as the last letter-sized form.
const Change kDefaults[] = {
    {50, nullptr, L"Letter Small"}, {52, nullptr, L"8.50"},     {53, nullptr, L"11.00"},
    {40, nullptr, L"0.50"},         {41, nullptr, L"0.25"},     {76, nullptr, L"0.25"},
    {230, nullptr, L"32"},          {231, nullptr, L"25"},      {42, nullptr, L"Text"},
    {26, nullptr, L"6"},            {228, nullptr, L"Marburg"}, {45, nullptr, L"Off"},
    {30, nullptr, L"0.00"},         {57, nullptr, L"Default 1 (Braille Paper)"}, {60, nullptr, L"English US"},
    {61, nullptr, L"Normal"},       {232, nullptr, L"Standard"}, {27, nullptr, L"Single Sided"},
    {99, nullptr, L"Face Down"},
};

template <size_t N>
void ExpectShown(const DeviceSettingsSheet& sheet, const Change (&rows)[N], const char* when) {
    for (const Change& row : rows) {
        EXPECT_EQ(testenv::Narrow(sheet.Shown(row.item)), testenv::Narrow(row.readBack))
            << when << ", item " << static_cast<int>(row.item);
    }
}

struct RoundTripPrinter {
    explicit RoundTripPrinter(const char* embosser) : printer(L"Ozdk Round Trip", embosser) {
        printer.MakeNetworkPort(testenv::Widen(embosser), L"");
        EXPECT_NE(GetFileAttributesW(testenv::WindowsPath(testenv::RawJobSenderPath()).c_str()),
                  INVALID_FILE_ATTRIBUTES)
            << "the build has no native raw_job_sender";
        EXPECT_TRUE(library.Load(testenv::BuildFilePath(L"ozdkrnui.dll")));
    }
    testenv::TestPrinter printer;
    ozdkhost::PluginLibrary library;
};

}  // namespace

TEST(DeviceSettingsRoundTrip, WhatIsAppliedIsWhatTheEmbosserKeepsUntilItRestarts) {
    auto embosser = devicetest::StartSimulator(devicetest::Simulating("127.0.0.42", embosser_sim::Behaviour::Answer));
    RoundTripPrinter demo("127.0.0.42");
    {
        DeviceSettingsSheet sheet(demo.library, demo.printer.name());
        for (const Change& row : kChanges) {
            if (row.chosen != nullptr) {
                EXPECT_TRUE(sheet.Set(row.item, row.chosen)) << static_cast<int>(row.item);
            }
        }
        EXPECT_TRUE(sheet.Apply());
    }
    EXPECT_EQ(embosser->RequestCount(), 1);
    {
        DeviceSettingsSheet sheet(demo.library, demo.printer.name());
        ExpectShown(sheet, kChanges, "after the apply");
        EXPECT_TRUE(sheet.Reset(demo.printer.name()));  // sent at once, without an apply
    }
    {
        DeviceSettingsSheet sheet(demo.library, demo.printer.name());
        ExpectShown(sheet, kDefaults, "after the reset");
    }
    EXPECT_EQ(embosser->RequestCount(), 3);
    // The jobs arrived as the port sent them, and a copy stayed for reading.
    const std::string jobs = demo.printer.Jobs();
    EXPECT_NE(jobs.find(devicetest::Default("EXTRALINESPACE=6")), std::string::npos);
    EXPECT_EQ(embosser->JobCount(), static_cast<int>(std::count(jobs.begin(), jobs.end(), '\x1b')));

    // Only a restart brings back the settings it started with.
    embosser->Stop();
    ASSERT_TRUE(embosser->Start());
    DeviceSettingsSheet sheet(demo.library, demo.printer.name());
    EXPECT_EQ(sheet.Shown(40), L"0.50");
    EXPECT_EQ(sheet.Shown(230), L"40");
    EXPECT_EQ(sheet.Shown(60), L"English US");
}

// Rule: the refresh shows short-edge duplex (2) as selection 2, which no entry of the
// two-entry list reads, so that an apply of other settings leaves it as the embosser has
// it instead of sending it back as long edge.
TEST(DeviceSettingsRoundTrip, ShortEdgeDuplexSurvivesAnApplyOfOtherSettings) {
    std::string settings = embosser_sim::SampleLegacyBlock();
    settings.replace(settings.find("DUPLEXMODE=SIMPLEX"), 18, "DUPLEXMODE=SHORTEDGE");
    auto embosser = devicetest::StartSimulator(
        devicetest::Simulating("127.0.0.43", embosser_sim::Behaviour::Answer, embosser_sim::HttpReply(settings)));
    RoundTripPrinter demo("127.0.0.43");
    for (int opening = 0; opening < 2; ++opening) {
        DeviceSettingsSheet sheet(demo.library, demo.printer.name());
        EXPECT_EQ(sheet.Shown(27), L"") << "opening " << opening;
        EXPECT_EQ(sheet.Shown(40), opening == 0 ? L"0.50" : L"1.00");
        if (opening == 0) {
            EXPECT_TRUE(sheet.Set(40, L"1.00") && sheet.Apply());
        }
    }
    EXPECT_NE(embosser->CurrentReply().find("DUPLEXMODE=SHORTEDGE\r\n"), std::string::npos);
    EXPECT_EQ(demo.printer.Jobs().find("DUPLEXMODE"), std::string::npos);
}

// What the embosser does with jobs it cannot use: unknown and malformed lines are
// logged and ignored, the rest of the job still counts, and a job beyond the bound is
// cut there without committing what it held past the bound.
TEST(DeviceSettingsRoundTrip, TheEmbosserIgnoresWhatItCannotUseAndCutsAnOversizeJob) {
    auto embosser = devicetest::StartSimulator(devicetest::Simulating("127.0.0.44", embosser_sim::Behaviour::Answer));
    testenv::TestPrinter printer(L"Ozdk Raw Jobs", "127.0.0.44");
    auto print = [&](const std::string& job) {
        DOC_INFO_1W document = {nullptr, nullptr, const_cast<wchar_t*>(L"RAW")};
        DWORD written = 0;
        ASSERT_NE(StartDocPrinterW(printer.handle(), 1, reinterpret_cast<BYTE*>(&document)), 0u);
        WritePrinter(printer.handle(), const_cast<char*>(job.data()), static_cast<DWORD>(job.size()), &written);
        EndDocPrinter(printer.handle());
    };
    const std::string uel = "\x1b%-12345X";
    const std::string mixed = "before any UEL\r\n" + uel + "@PJL DEFAULT TOPMARGIN=14\r\n@PJL DEFAULT TOPMARGIN=x\r\n" +
                              "@PJL DEFAULT SPEED=9\r\n@PJL DEFAULT GRAPHICS=MAYBE\r\n@PJL DEFAULT QUALITY\r\n@PJL FLY\r\n" +
                              "plain text\r\n@PJL DEFAULT braillestandard=1\r\n@PJL DEFAULT BRAILLETABLE=de_de\r\n" +
                              "@PJL SERVICE MEDIAFORCE\r\n";
    print(mixed);
    print(uel + "@PJL SERVICE UPDATE\r\n");
    std::string oversize = uel + "@PJL DEFAULT LEFTMARGIN=9\r\n@PJL SERVICE UPDATE\r\n";
    oversize += std::string(70000 - oversize.size() - 40, '.') + "\r\n@PJL DEFAULT RIGHTMARGIN=8\r\n@PJL SERVICE UPDATE\r\n";
    print(oversize);

    std::string events;
    for (const std::string& line : embosser->Events()) events += line + "\n";
    EXPECT_EQ(events,
              "job 1: " + std::to_string(mixed.size()) + " bytes\n"
              "  ignored, no UEL before it: \"before any UEL\"\n"
              "  pending TOPMARGIN=14\n"
              "  ignored, not a number: \"@PJL DEFAULT TOPMARGIN=x\"\n"
              "  ignored, unknown setting: \"@PJL DEFAULT SPEED=9\"\n"
              "  ignored, not a value of this setting: \"@PJL DEFAULT GRAPHICS=MAYBE\"\n"
              "  ignored, no KEY=VALUE: \"@PJL DEFAULT QUALITY\"\n"
              "  ignored, unknown command: \"@PJL FLY\"\n"
              "  ignored, not PJL: \"plain text\"\n"
              "  ignored, unknown setting: \"@PJL DEFAULT braillestandard=1\"\n"
              "  pending BRAILLETABLE=\"DE_DE\"\n"
              "  printed the media type test pattern\n"
              "job 2: 30 bytes\n"
              "  committed TOPMARGIN=14\n"
              "  committed BRAILLETABLE=\"DE_DE\"\n"
              "job 3: 65536 bytes, cut off at the limit of 65536 bytes\n"
              "  pending LEFTMARGIN=9\n"
              "  committed LEFTMARGIN=9\n"
              "  ignored, cut off: \"................................................................................\"...\n");
    const std::string reply = embosser->CurrentReply();
    for (const char* kept : {"TOPMARGIN=14\r\n", "LEFTMARGIN=9\r\n", "RIGHTMARGIN=5\r\n", "BRAILLETABLE=\"DE_DE\"\r\n"}) {
        EXPECT_NE(reply.find(kept), std::string::npos) << kept;
    }
    EXPECT_NE(reply.find("Content-Length: " + std::to_string(reply.size() - reply.find("\r\n\r\n") - 4) + "\r\n"),
              std::string::npos);
}
