#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstddef>
#include <cstring>

#include "config/config_lifecycle.h"
#include "config_fixtures.h"
#include "standins/peripheral_installer/peripheral_installer_record.h"

using namespace configtest;
using testenv::ReadPrinterData;
using testenv::TestPrinter;
using testenv::TraceLog;

namespace {

// A printer, the host's heap and the owner's pointer; the record is destroyed with it.
struct Owner {
    explicit Owner(const TestPrinter& printer, DEVMODEW* devMode = nullptr)
        : param(MakeParam(printer, heap.get(), devMode)) {}
    ~Owner() { DestroyConfig(config); }
    int Create() { return CreateConfig(&param, &config); }

    HostHeap heap;
    OEMCUIPPARAM param;
    UIConfig* config = nullptr;
};

// No user pattern and no companions for the tests that do not ask for them.
struct CleanMachine {
    RegistryValue pattern{HKEY_CURRENT_USER, kPatternsKey, L"CurrentPattern"};
    PlacedFile noInstaller{L"", PeripheralInstallerPath()};
    PlacedFile noLocale{L"", LocaleLibraryPath()};
};

// `key` null: top-level printer data.
struct IntegerDefault { const wchar_t* key; const wchar_t* name; uint32_t value; size_t offset; };

#define CONFIG_DEFAULT(field, value) {L"Config", L## #field, value, offsetof(UIConfig, field)}
#define EMBOSSER_DEFAULT(field, value) {nullptr, L## #field, value, offsetof(UIConfig, field)}

const IntegerDefault kIntegerDefaults[] = {
    CONFIG_DEFAULT(MediaType, 256), CONFIG_DEFAULT(PaperSource, 7), CONFIG_DEFAULT(MediaSurface, 1),
    CONFIG_DEFAULT(InterPoint, 0), CONFIG_DEFAULT(InsertEmptyPage, 0), CONFIG_DEFAULT(LandscapeMode, 0),
    CONFIG_DEFAULT(HorizontalShift, 0), CONFIG_DEFAULT(Orientation, 1), CONFIG_DEFAULT(Preview, 0),
    CONFIG_DEFAULT(Collate, 0), CONFIG_DEFAULT(TwoInOne, 0), CONFIG_DEFAULT(OutputFace, 1),
    CONFIG_DEFAULT(BindingEdge, 2), CONFIG_DEFAULT(EmbossMode, 1), CONFIG_DEFAULT(DotHeight, 1),
    CONFIG_DEFAULT(InkMode, 1), CONFIG_DEFAULT(Quality, 1), CONFIG_DEFAULT(DotQuality, 1),
    CONFIG_DEFAULT(BrailleQuality, 1), CONFIG_DEFAULT(RenderingDensity, 6), CONFIG_DEFAULT(BrailleStandard, 0),
    CONFIG_DEFAULT(EmbossStandardTexts, 0), CONFIG_DEFAULT(ThinLineIntensity, 1), CONFIG_DEFAULT(InvertColor, 0),
    CONFIG_DEFAULT(Brightness, 0), CONFIG_DEFAULT(Contrast, 0), CONFIG_DEFAULT(ColorPattern, 0),
    CONFIG_DEFAULT(RenderMode, 2), CONFIG_DEFAULT(TwoPassPrint, 0), CONFIG_DEFAULT(DryTime, 8),
    CONFIG_DEFAULT(Magnification, 1), CONFIG_DEFAULT(OutputBitmap, 0), EMBOSSER_DEFAULT(EmbsrAutoCr, 0),
    EMBOSSER_DEFAULT(EmbsrGraphicsMode, 0), EMBOSSER_DEFAULT(EmbsrOutputFace, 1), EMBOSSER_DEFAULT(EmbsrDuplex, 1),
    EMBOSSER_DEFAULT(EmbsrFormWidth, 170), EMBOSSER_DEFAULT(EmbsrFormHeight, 220),
    EMBOSSER_DEFAULT(EmbsrTopMargin, 5), EMBOSSER_DEFAULT(EmbsrLeftMargin, 5), EMBOSSER_DEFAULT(EmbsrRightMargin, 5),
    EMBOSSER_DEFAULT(EmbsrCharsWidth, 32), EMBOSSER_DEFAULT(EmbsrLinesLength, 25),
    EMBOSSER_DEFAULT(EmbsrLineSpacing, 0), EMBOSSER_DEFAULT(EmbsrMediaType, 286),
    EMBOSSER_DEFAULT(EmbsrBrailleStandard, 0), EMBOSSER_DEFAULT(EmbsrBrailleDots, 6),
    EMBOSSER_DEFAULT(EmbsrBrailleForce, 1), EMBOSSER_DEFAULT(EmbsrQuality, 0),
};

const wchar_t kDefaultPattern[] = L"C:\\ProgramData\\Kestrova\\Quorl\\Patterns\\Default.dat";

// Every call the peripheral installer stand-in recorded, a line each.
std::string InstallerCalls() {
    std::string text(4096, '\0');
    DWORD size = static_cast<DWORD>(text.size());
    if (RegGetValueW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, L"Calls", RRF_RT_REG_BINARY, nullptr, &text[0],
                     &size) != ERROR_SUCCESS) {
        size = 0;
    }
    text.resize(size);
    return text;
}

}  // namespace

TEST(CreateConfig, OnAPrinterWithoutStoredValuesWritesBackEveryDefault) {
    CleanMachine machine;
    TestPrinter printer;
    ConfigSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);
    Owner owner(printer);

    ASSERT_EQ(owner.Create(), 1);
    const UIConfig* config = owner.config;
    EXPECT_EQ(config->Size, 7024u);
    EXPECT_EQ(config->UsageCount, 1u);
    EXPECT_EQ(config->hPrinter, printer.handle());
    EXPECT_STREQ(config->PrinterName, printer.name().c_str());
    EXPECT_STREQ(config->DriverName, L"Test Embosser");

    for (const auto& expected : kIntegerDefaults) {
        SCOPED_TRACE(testenv::Narrow(expected.name));
        uint32_t field = 0;
        std::memcpy(&field, reinterpret_cast<const BYTE*>(config) + expected.offset, sizeof(field));
        EXPECT_EQ(field, expected.value);
        const auto stored = ReadPrinterData(printer.handle(), expected.key, expected.name);
        EXPECT_EQ(stored.type, static_cast<DWORD>(REG_DWORD));
        EXPECT_EQ(stored.data.size(), 4u);
        EXPECT_EQ(stored.AsDword(), expected.value);
    }

    // Strings go out without their terminator: 2 x length bytes.
    for (const std::wstring text : {std::wstring(), std::wstring(kDefaultPattern)}) {
        const auto* write = spooler.FindWrite(L"Config", text.empty() ? L"CustomMediaType" : L"CustomPatternFileName");
        ASSERT_NE(write, nullptr);
        EXPECT_EQ(write->type, static_cast<DWORD>(REG_SZ));
        EXPECT_EQ(std::wstring(reinterpret_cast<const wchar_t*>(write->data.data()), write->data.size() / 2), text);
        EXPECT_EQ(write->data.size(), 2 * text.size());
    }
    EXPECT_STREQ(config->CustomPatternFileName, kDefaultPattern);

    const auto paper = ReadPrinterData(printer.handle(), L"Config", L"PaperSize");
    EXPECT_EQ(paper.type, static_cast<DWORD>(REG_BINARY));
    ASSERT_EQ(paper.data.size(), 8u);
    int32_t stored[2];
    std::memcpy(stored, paper.data.data(), 8);
    EXPECT_EQ(stored[0], 210000);
    EXPECT_EQ(stored[1], 297000);
    EXPECT_STREQ(config->FormName, L"A4");

    // The braille table's name is never defaulted; the test value is never written.
    EXPECT_EQ(spooler.FindWrite(nullptr, L"EmbsrBrailleTable"), nullptr);
    EXPECT_EQ(spooler.FindWrite(L"Config", L"OutputVersion"), nullptr);

    EXPECT_STREQ(config->FormWidthText, L"8.50");
    EXPECT_STREQ(config->LineSpacingText, L"0.00");
}

// Stored values are read as they are and nothing is written; the locale library is bound;
// later calls through the same owner share the record without reading again; DestroyConfig
// frees it whatever the count, with the libraries it holds.
TEST(CreateConfig, ReadsStoredValuesOnceSharesTheRecordAndDestroyFreesIt) {
    RegistryValue userPattern(HKEY_CURRENT_USER, kPatternsKey, L"CurrentPattern");
    PlacedFile noInstaller(L"", PeripheralInstallerPath());
    PlacedFile library(StandIn(L"locale_library\\ozdkrnlcl.dll"), LocaleLibraryPath());
    MakerFolder maker;
    TestPrinter printer;
    {
        Owner first(printer);  // every value exists afterwards
        ASSERT_EQ(first.Create(), 1);
    }
    for (const auto& [name, value] : {std::pair<const wchar_t*, DWORD>{L"OutputVersion", 1}, {L"MediaType", 268},
                                      {L"InterPoint", 1}, {L"Brightness", static_cast<DWORD>(-40)}}) {
        StoreConfigDword(printer.handle(), name, value);
    }
    const int32_t letter[2] = {215900, 279400};
    StoreValue(printer.handle(), L"Config", L"PaperSize", REG_BINARY, letter, sizeof(letter));
    const wchar_t media[] = L"Thick Paper";
    StoreValue(printer.handle(), L"Config", L"CustomMediaType", REG_SZ, media, 2 * (DWORD)wcslen(media));
    for (const auto& [name, value] : {std::pair<const wchar_t*, DWORD>{L"EmbsrFormWidth", 171}, {L"EmbsrLineSpacing", 3}}) {
        StoreValue(printer.handle(), nullptr, name, REG_DWORD, &value, 4);
    }
    const wchar_t table[] = L"GERMAN";
    StoreValue(printer.handle(), nullptr, L"EmbsrBrailleTable", REG_SZ, table, sizeof(table));
    const wchar_t pattern[] = L"Z:\\stored\\Stored.dat";
    StoreValue(printer.handle(), L"Config", L"CustomPatternFileName", REG_SZ, pattern, sizeof(pattern));

    ConfigSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);
    TraceLog log;
    Owner owner(printer);
    ASSERT_EQ(owner.Create(), 1);
    UIConfig* const config = owner.config;
    EXPECT_EQ(config->MediaType, 268u);
    EXPECT_EQ(config->InterPoint, 1u);
    EXPECT_EQ(config->LoadedInterPoint, 1u);
    EXPECT_EQ(config->Brightness, -40);
    EXPECT_STREQ(config->CustomMediaType, media);
    EXPECT_EQ(config->PaperSize.cx, 215900);
    EXPECT_EQ(config->PaperSize.cy, 279400);
    EXPECT_EQ(config->EmbsrFormWidth, 171);
    EXPECT_STREQ(config->FormWidthText, L"8.55");
    EXPECT_STREQ(config->LineSpacingText, L"0.15");
    EXPECT_STREQ(config->EmbsrBrailleTable, L"GERMAN");
    EXPECT_STREQ(config->CustomPatternFileName, pattern);
    EXPECT_TRUE(spooler.writes.empty());
    EXPECT_FALSE(log.Contains("CreateConfig(): testRegistry failed"));
    EXPECT_EQ(owner.heap.BusyBlocks(), 1);
    EXPECT_NE(config->hLcl, nullptr);
    EXPECT_TRUE(maker.WasAsked(L"Create " + maker.LocaleFolder() + L"|ozdkrnui"));

    StoreConfigDword(printer.handle(), L"MediaType", 270);
    spooler.reads.clear();
    EXPECT_EQ(owner.Create(), 2);
    EXPECT_EQ(owner.Create(), 3);
    EXPECT_EQ(owner.config, config);
    EXPECT_EQ(config->UsageCount, 3u);
    EXPECT_EQ(config->MediaType, 268u);
    EXPECT_TRUE(spooler.reads.empty());

    config->hExtDLL = LoadLibraryW(StandIn(L"peripheral_installer\\ozdkrnpi.dll").c_str());
    ASSERT_NE(config->hExtDLL, nullptr);
    DestroyConfig(config);
    owner.config = nullptr;
    EXPECT_EQ(owner.heap.BusyBlocks(), 0);
    EXPECT_EQ(GetModuleHandleW(L"ozdkrnpi.dll"), nullptr);
    EXPECT_TRUE(maker.WasAsked(L"Dispose"));
    EXPECT_EQ(GetModuleHandleW(L"ozdkrnlcl.dll"), nullptr);
    DestroyConfig(nullptr);  // accepted and ignored
}

// Stored: InterPoint 1, BindingEdge 2, Collate 1, RenderMode 2, PaperSource 7,
// Orientation 1, MediaType 256; the device mode has source 8, orientation 2, media 300.
// Device-mode values without their bit are ignored; nothing overridden is written back.
TEST(CreateConfig, TheDocumentsDeviceModeOverridesForThisRecordOnly) {
    const struct {
        const char* what;
        DWORD fields;
        short collate, color, duplex;
        std::vector<uint32_t> expected;  // as `stored` lists them, LoadedInterPoint after InterPoint
    } cases[] = {
        {"duplex simplex", DM_DUPLEX, 1, 1, DMDUP_SIMPLEX, {0, 0, 3, 1, 2, 7, 1, 256}},
        {"duplex long edge", DM_DUPLEX, 1, 1, DMDUP_VERTICAL, {1, 1, 2, 1, 2, 7, 1, 256}},
        {"collate 2", DM_COLLATE, 2, 1, 1, {1, 1, 2, 0, 2, 7, 1, 256}},
        {"colour, source, orientation, media", DM_COLOR | DM_DEFAULTSOURCE | DM_ORIENTATION | DM_MEDIATYPE, 0,
         DMCOLOR_MONOCHROME, 1, {1, 1, 2, 1, 1, 8, 2, 300}},
        {"no bits", 0, 0, 1, 1, {1, 1, 2, 1, 2, 7, 1, 256}},
    };
    const wchar_t* const stored[] = {L"InterPoint", L"BindingEdge", L"Collate", L"RenderMode",
                                     L"PaperSource", L"Orientation", L"MediaType"};
    const DWORD storedValues[] = {1, 2, 1, 2, 7, 1, 256};
    CleanMachine machine;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TestPrinter printer;
        for (int i = 0; i < 7; ++i) StoreConfigDword(printer.handle(), stored[i], storedValues[i]);
        DEVMODEW devMode = {};
        devMode.dmSize = sizeof(devMode);
        devMode.dmFields = c.fields;
        devMode.dmCollate = c.collate;
        devMode.dmColor = c.color;
        devMode.dmDuplex = c.duplex;
        devMode.dmDefaultSource = 8;
        devMode.dmOrientation = 2;
        devMode.dmMediaType = 300;
        ConfigSpooler spooler;
        testenv::SpoolerSwap swap(&spooler);
        Owner owner(printer, &devMode);
        ASSERT_EQ(owner.Create(), 1);
        const UIConfig& r = *owner.config;
        EXPECT_EQ(r.pPublicDM, &devMode);
        EXPECT_EQ((std::vector<uint32_t>{r.InterPoint, r.LoadedInterPoint, r.BindingEdge, r.Collate, r.RenderMode,
                                         r.PaperSource, r.Orientation, r.MediaType}),
                  c.expected);
        for (const wchar_t* name : stored) EXPECT_EQ(spooler.FindWrite(L"Config", name), nullptr) << "written back";
    }
}

// The installer is called with the printer's name folded to 8 bits (U+00E9 becomes 0x49,
// "I"), shown normally, without a window; once it has recreated the key, the next record
// needs no repair. A library without the export, or none, leaves the record to be built.
TEST(CreateConfig, APrinterWithoutItsConfigKeyIsRepairedByThePeripheralInstaller) {
    RegistryValue pattern(HKEY_CURRENT_USER, kPatternsKey, L"CurrentPattern");
    PlacedFile noLocale(L"", LocaleLibraryPath());
    testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY);
    std::string expected;
    for (const wchar_t* library : {L"peripheral_installer\\ozdkrnpi.dll", L"locale_library\\ozdkrnlcl.dll", L""}) {
        SCOPED_TRACE(testenv::Narrow(library));
        PlacedFile placed(*library != L'\0' ? StandIn(library) : L"", PeripheralInstallerPath());
        const bool installer = library[0] == L'p';
        TestPrinter accented(L"Ozdk T\u00e9st");
        TestPrinter plain;
        for (const TestPrinter* printer : {&accented, &plain, &plain}) {
            Owner owner(*printer);
            EXPECT_EQ(owner.Create(), 1);
            EXPECT_EQ(owner.config->MediaType, 256u);  // the reads go on with defaults
            EXPECT_EQ(ReadPrinterData(printer->handle(), L"Config", L"MediaType").AsDword(), 256u);
        }
        if (installer) {
            expected = testenv::Narrow(accented.name()).replace(6, 1, "I") + " 5 1 0\n" +
                       testenv::Narrow(plain.name()) + " 5 1 1\n";
        }
        EXPECT_EQ(InstallerCalls(), expected);
    }
    testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY);
}

// Values too long for their field cannot be read: the stored string falls back to its
// default, the user's pattern to the stored one, the table name and the folder stay
// empty. Unterminated ones are terminated; values of the wrong kind are not taken.
TEST(CreateConfig, TextsThatCannotBeReadWholeAreNotTakenAndUnterminatedOnesAreTerminated) {
    CleanMachine machine;
    RegistryValue ksDir(HKEY_LOCAL_MACHINE, kMakerKey, L"KSDir");
    const std::wstring longText(400, L'k');
    {
        TestPrinter printer;
        StoreValue(printer.handle(), nullptr, L"EmbsrBrailleTable", REG_SZ, longText.c_str(), 2 * 400);
        const int32_t half[1] = {215900};  // a paper size of the wrong size takes the default
        StoreValue(printer.handle(), L"Config", L"PaperSize", REG_BINARY, half, sizeof(half));
        ksDir.SetString(longText);
        machine.pattern.SetString(longText);
        Owner owner(printer);
        ASSERT_EQ(owner.Create(), 1);
        EXPECT_STREQ(owner.config->EmbsrBrailleTable, L"");
        EXPECT_STREQ(owner.config->KSDir, L"");
        EXPECT_STREQ(owner.config->CustomPatternFileName, kDefaultPattern);
        EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"CustomPatternFileName").AsString(), kDefaultPattern);
        EXPECT_EQ(owner.config->PaperSize.cx, 210000);
        EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"PaperSize").data.size(), 8u);
        EXPECT_STREQ(owner.config->FormName, L"A4");
    }
    {
        TestPrinter printer;
        const wchar_t unterminated[] = {L'C', L':', L'\\', L'K', L'S'};
        ksDir.SetBytes(REG_SZ, unterminated, sizeof(unterminated));
        const DWORD number = 7;
        StoreValue(printer.handle(), nullptr, L"EmbsrBrailleTable", REG_DWORD, &number, sizeof(number));
        const wchar_t stored[] = L"Z:\\stored\\Stored.dat";
        StoreValue(printer.handle(), L"Config", L"CustomPatternFileName", REG_SZ, stored, sizeof(stored));
        machine.pattern.SetString(L"Mine.dat");
        Owner owner(printer);
        ASSERT_EQ(owner.Create(), 1);
        EXPECT_STREQ(owner.config->KSDir, L"C:\\KS");
        EXPECT_STREQ(owner.config->EmbsrBrailleTable, L"");
        EXPECT_EQ(ReadPrinterData(printer.handle(), nullptr, L"EmbsrBrailleTable").type, DWORD(REG_DWORD));
        wchar_t common[MAX_PATH] = {};
        SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common);
        EXPECT_EQ(std::wstring(owner.config->CustomPatternFileName),
                  std::wstring(common) + L"\\Kestrova\\Quorl\\Patterns\\Mine.dat");
        EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"CustomPatternFileName").AsString(), stored)
            << "the user's pattern is not stored";
    }
}

TEST(CreateConfig, RefusesWhatItCannotAttach) {
    TestPrinter printer;
    Owner owner(printer);
    EXPECT_EQ(CreateConfig(nullptr, &owner.config), 0);
    EXPECT_EQ(CreateConfig(&owner.param, nullptr), 0);
    owner.param.hOEMHeap = nullptr;  // no heap to take the record from
    EXPECT_EQ(owner.Create(), 0);
    EXPECT_EQ(owner.config, nullptr);
    EXPECT_EQ(owner.heap.BusyBlocks(), 0);
}
