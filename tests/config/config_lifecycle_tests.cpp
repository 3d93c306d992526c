#include <gtest/gtest.h>
#include <windows.h>
#include <shlobj.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

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

// No user pattern and no installer for the tests that do not ask for them.
struct CleanMachine {
    RegistryValueGuard pattern{HKEY_CURRENT_USER, kPatternsKey, L"CurrentPattern"};
    PlacedFile noInstaller{L"", PeripheralInstallerPath()};
    PlacedFile noLocale{L"", LocaleLibraryPath()};
    CleanMachine() { pattern.Remove(); }
};

uint32_t FieldAt(const UIConfig* config, size_t offset) {
    uint32_t value = 0;
    std::memcpy(&value, reinterpret_cast<const BYTE*>(config) + offset, sizeof(value));
    return value;
}

struct IntegerDefault {
    const wchar_t* key;  // null: top-level printer data
    const wchar_t* name;
    uint32_t value;
    size_t offset;
};

#define CONFIG_DEFAULT(field, value) {L"Config", L## #field, value, offsetof(UIConfig, field)}
#define EMBOSSER_DEFAULT(field, value) {nullptr, L## #field, value, offsetof(UIConfig, field)}

const IntegerDefault kIntegerDefaults[] = {
    CONFIG_DEFAULT(MediaType, 256),        CONFIG_DEFAULT(PaperSource, 7),
    CONFIG_DEFAULT(MediaSurface, 1),       CONFIG_DEFAULT(InterPoint, 0),
    CONFIG_DEFAULT(InsertEmptyPage, 0),    CONFIG_DEFAULT(LandscapeMode, 0),
    CONFIG_DEFAULT(HorizontalShift, 0),    CONFIG_DEFAULT(Orientation, 1),
    CONFIG_DEFAULT(Preview, 0),            CONFIG_DEFAULT(Collate, 0),
    CONFIG_DEFAULT(TwoInOne, 0),           CONFIG_DEFAULT(OutputFace, 1),
    CONFIG_DEFAULT(BindingEdge, 2),        CONFIG_DEFAULT(EmbossMode, 1),
    CONFIG_DEFAULT(DotHeight, 1),          CONFIG_DEFAULT(InkMode, 1),
    CONFIG_DEFAULT(Quality, 1),            CONFIG_DEFAULT(DotQuality, 1),
    CONFIG_DEFAULT(BrailleQuality, 1),     CONFIG_DEFAULT(RenderingDensity, 6),
    CONFIG_DEFAULT(BrailleStandard, 0),    CONFIG_DEFAULT(EmbossStandardTexts, 0),
    CONFIG_DEFAULT(ThinLineIntensity, 1),  CONFIG_DEFAULT(InvertColor, 0),
    CONFIG_DEFAULT(Brightness, 0),         CONFIG_DEFAULT(Contrast, 0),
    CONFIG_DEFAULT(ColorPattern, 0),       CONFIG_DEFAULT(RenderMode, 2),
    CONFIG_DEFAULT(TwoPassPrint, 0),       CONFIG_DEFAULT(DryTime, 8),
    CONFIG_DEFAULT(Magnification, 1),      CONFIG_DEFAULT(OutputBitmap, 0),
    EMBOSSER_DEFAULT(EmbsrAutoCr, 0),      EMBOSSER_DEFAULT(EmbsrGraphicsMode, 0),
    EMBOSSER_DEFAULT(EmbsrOutputFace, 1),  EMBOSSER_DEFAULT(EmbsrDuplex, 1),
    EMBOSSER_DEFAULT(EmbsrFormWidth, 170), EMBOSSER_DEFAULT(EmbsrFormHeight, 220),
    EMBOSSER_DEFAULT(EmbsrTopMargin, 5),   EMBOSSER_DEFAULT(EmbsrLeftMargin, 5),
    EMBOSSER_DEFAULT(EmbsrRightMargin, 5), EMBOSSER_DEFAULT(EmbsrCharsWidth, 32),
    EMBOSSER_DEFAULT(EmbsrLinesLength, 25), EMBOSSER_DEFAULT(EmbsrLineSpacing, 0),
    EMBOSSER_DEFAULT(EmbsrMediaType, 286), EMBOSSER_DEFAULT(EmbsrBrailleStandard, 0),
    EMBOSSER_DEFAULT(EmbsrBrailleDots, 6), EMBOSSER_DEFAULT(EmbsrBrailleForce, 1),
    EMBOSSER_DEFAULT(EmbsrQuality, 0),
};

const wchar_t kDefaultPattern[] = L"C:\\ProgramData\\Kestrova\\Quorl\\Patterns\\Default.dat";

std::wstring CommonAppData() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
    return folder;
}

std::string InstallerCommandLine() {
    HKEY key = nullptr;
    std::string text;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        DWORD size = 0;
        RegQueryValueExW(key, L"CommandLine", nullptr, nullptr, nullptr, &size);
        text.resize(size);
        RegQueryValueExW(key, L"CommandLine", nullptr, nullptr, reinterpret_cast<BYTE*>(&text[0]), &size);
        RegCloseKey(key);
    }
    return text;
}

DWORD InstallerRecordDword(const wchar_t* name) {
    DWORD value = 0;
    DWORD size = sizeof(value);
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
        RegCloseKey(key);
    }
    return value;
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
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->Size, 7024u);
    EXPECT_EQ(config->UsageCount, 1u);
    EXPECT_EQ(config->hPrinter, printer.handle());
    EXPECT_EQ(config->hHeap, owner.heap.get());
    EXPECT_STREQ(config->PrinterName, printer.name().c_str());
    EXPECT_STREQ(config->DriverName, L"Test Embosser");

    for (const auto& expected : kIntegerDefaults) {
        SCOPED_TRACE(testenv::Narrow(expected.name));
        EXPECT_EQ(FieldAt(config, expected.offset), expected.value);
        const auto stored = ReadPrinterData(printer.handle(), expected.key, expected.name);
        EXPECT_EQ(stored.status, 0u);
        EXPECT_EQ(stored.type, static_cast<DWORD>(REG_DWORD));
        EXPECT_EQ(stored.data.size(), 4u);
        EXPECT_EQ(stored.AsDword(), expected.value);
    }
    EXPECT_EQ(config->LoadedInterPoint, 0u);

    // Strings go out without their terminator: 2 x length bytes.
    const auto* media = spooler.FindWrite(L"Config", L"CustomMediaType");
    ASSERT_NE(media, nullptr);
    EXPECT_EQ(media->type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(media->data.size(), 0u);
    const auto* pattern = spooler.FindWrite(L"Config", L"CustomPatternFileName");
    ASSERT_NE(pattern, nullptr);
    EXPECT_EQ(pattern->type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(pattern->data.size(), 2 * wcslen(kDefaultPattern));
    EXPECT_EQ(std::wstring(reinterpret_cast<const wchar_t*>(pattern->data.data()), wcslen(kDefaultPattern)),
              kDefaultPattern);
    EXPECT_STREQ(config->CustomPatternFileName, kDefaultPattern);
    EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"CustomPatternFileName").AsString(), kDefaultPattern);

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
    EXPECT_STREQ(config->EmbsrBrailleTable, L"");

    // The embosser's block beyond its stored values.
    EXPECT_EQ(config->EmbsrCustomMediaMin, 3u);
    EXPECT_EQ(config->EmbsrCustomMediaMax, 17u);
    EXPECT_EQ(config->DeviceDryTime, 8);
    EXPECT_EQ(config->PaperSourceCode, 7u);
    EXPECT_EQ(config->AutoLoadPaper, 1u);
    EXPECT_EQ(config->LegacyParmCount, 0);
    EXPECT_STREQ(config->FormWidthText, L"8.50");
    EXPECT_STREQ(config->FormHeightText, L"11.00");
    EXPECT_STREQ(config->TopMarginText, L"0.25");
    EXPECT_STREQ(config->LineSpacingText, L"0.00");
}

TEST(CreateConfig, TakesStoredValuesAsTheyAreAndWritesNothingForThem) {
    CleanMachine machine;
    TestPrinter printer;
    StoreConfigDword(printer.handle(), L"MediaType", 268);
    StoreConfigDword(printer.handle(), L"InterPoint", 1);
    StoreConfigDword(printer.handle(), L"Brightness", static_cast<DWORD>(-40));
    const int32_t letter[2] = {215900, 279400};
    StoreConfigValue(printer.handle(), L"PaperSize", REG_BINARY, letter, sizeof(letter));
    const wchar_t media[] = L"Thick Paper";
    StoreConfigValue(printer.handle(), L"CustomMediaType", REG_SZ, media, 2 * (DWORD)wcslen(media));
    const DWORD formWidth = 171;
    const DWORD lineSpacing = 3;
    StoreTopLevelValue(printer.handle(), L"EmbsrFormWidth", REG_DWORD, &formWidth, 4);
    StoreTopLevelValue(printer.handle(), L"EmbsrLineSpacing", REG_DWORD, &lineSpacing, 4);
    const wchar_t table[] = L"GERMAN";
    StoreTopLevelValue(printer.handle(), L"EmbsrBrailleTable", REG_SZ, table, sizeof(table));

    ConfigSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);
    Owner owner(printer);
    ASSERT_EQ(owner.Create(), 1);
    const UIConfig* config = owner.config;

    EXPECT_EQ(config->MediaType, 268u);
    EXPECT_EQ(config->InterPoint, 1u);
    EXPECT_EQ(config->LoadedInterPoint, 1u);
    EXPECT_EQ(config->Brightness, -40);
    EXPECT_STREQ(config->CustomMediaType, media);
    EXPECT_EQ(config->PaperSize.cx, 215900);
    EXPECT_EQ(config->PaperSize.cy, 279400);
    EXPECT_STREQ(config->FormName, L"Letter Small");  // Letter and Letter Small match: the later wins
    EXPECT_EQ(config->EmbsrFormWidth, 171);
    EXPECT_STREQ(config->FormWidthText, L"8.55");
    EXPECT_STREQ(config->LineSpacingText, L"0.15");
    EXPECT_STREQ(config->EmbsrBrailleTable, L"GERMAN");
    for (const wchar_t* name : {L"MediaType", L"InterPoint", L"Brightness", L"PaperSize", L"CustomMediaType"}) {
        EXPECT_EQ(spooler.FindWrite(L"Config", name), nullptr) << testenv::Narrow(name);
    }
    EXPECT_EQ(spooler.FindWrite(nullptr, L"EmbsrFormWidth"), nullptr);
}

TEST(CreateConfig, ASecondCallSharesTheRecordAndDestroyFreesItWhateverTheCount) {
    CleanMachine machine;
    TestPrinter printer;
    HostHeap heap;
    OEMCUIPPARAM param = MakeParam(printer, heap.get());
    UIConfig* config = nullptr;
    ASSERT_EQ(CreateConfig(&param, &config), 1);
    UIConfig* const first = config;
    EXPECT_EQ(heap.BusyBlocks(), 1);

    StoreConfigDword(printer.handle(), L"MediaType", 270);
    ConfigSpooler spooler;
    {
        testenv::SpoolerSwap swap(&spooler);
        TraceLog log;
        EXPECT_EQ(CreateConfig(&param, &config), 2);
        EXPECT_EQ(CreateConfig(&param, &config), 3);
        EXPECT_TRUE(log.Contains("CreateConfig(): usage count=2"));
        EXPECT_TRUE(log.Contains("CreateConfig(): usage count=3"));
    }
    EXPECT_EQ(config, first);
    EXPECT_EQ(config->UsageCount, 3u);
    EXPECT_EQ(config->MediaType, 256u);
    EXPECT_TRUE(spooler.reads.empty());
    EXPECT_TRUE(spooler.writes.empty());

    // A language-monitor extension loaded meanwhile goes with the record.
    config->hExtDLL = LoadLibraryW(BuildPath(L"tests\\standins\\peripheral_installer\\ozdkrnpi.dll").c_str());
    ASSERT_NE(config->hExtDLL, nullptr);

    TraceLog log;
    DestroyConfig(config);
    EXPECT_EQ(heap.BusyBlocks(), 0);
    EXPECT_EQ(GetModuleHandleW(L"ozdkrnpi.dll"), nullptr);
    EXPECT_TRUE(log.Contains("DestroyConfig(): usage count=3"));
    EXPECT_TRUE(log.Contains("ExtDllUnloadFunction(): lib was unloaded"));
    EXPECT_EQ(log.Lines().back().rfind("DestroyConfig(): freeing pConfig=0x", 0), 0u);
    DestroyConfig(nullptr);  // accepted and ignored
}

TEST(CreateConfig, TheDocumentsDeviceModeOverridesForThisRecordOnly) {
    struct Case {
        const char* what;
        DWORD fields;
        short collate, color, source, orientation, duplex;
        DWORD media;
        uint32_t interPoint, bindingEdge, collateSetting, renderMode, paperSource, orientationSetting, mediaType;
    };
    // Stored: InterPoint 1, BindingEdge 2, Collate 1, RenderMode 2, PaperSource 7,
    // Orientation 1, MediaType 256. Device-mode values without their bit are ignored.
    const Case cases[] = {
        {"duplex simplex", DM_DUPLEX, 1, 1, 8, 2, DMDUP_SIMPLEX, 300, 0, 3, 1, 2, 7, 1, 256},
        {"duplex long edge", DM_DUPLEX, 1, 1, 8, 2, DMDUP_VERTICAL, 300, 1, 2, 1, 2, 7, 1, 256},
        {"duplex short edge", DM_DUPLEX, 1, 1, 8, 2, DMDUP_HORIZONTAL, 300, 1, 3, 1, 2, 7, 1, 256},
        {"collate 2", DM_COLLATE, 2, 1, 8, 2, 1, 300, 1, 2, 0, 2, 7, 1, 256},
        {"collate true", DM_COLLATE, DMCOLLATE_TRUE, 1, 8, 2, 1, 300, 1, 2, 1, 2, 7, 1, 256},
        {"colour, source, orientation, media", DM_COLOR | DM_DEFAULTSOURCE | DM_ORIENTATION | DM_MEDIATYPE, 0,
         DMCOLOR_MONOCHROME, 8, 2, 1, 300, 1, 2, 1, 1, 8, 2, 300},
        {"no bits", 0, 0, 1, 8, 2, 1, 300, 1, 2, 1, 2, 7, 1, 256},
    };
    CleanMachine machine;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TestPrinter printer;
        const struct {
            const wchar_t* name;
            DWORD value;
        } stored[] = {{L"InterPoint", 1}, {L"BindingEdge", 2}, {L"Collate", 1},   {L"RenderMode", 2},
                      {L"PaperSource", 7}, {L"Orientation", 1}, {L"MediaType", 256}};
        for (const auto& value : stored) StoreConfigDword(printer.handle(), value.name, value.value);

        DEVMODEW devMode = {};
        devMode.dmSize = sizeof(devMode);
        devMode.dmFields = c.fields;
        devMode.dmCollate = c.collate;
        devMode.dmColor = c.color;
        devMode.dmDefaultSource = c.source;
        devMode.dmOrientation = c.orientation;
        devMode.dmDuplex = c.duplex;
        devMode.dmMediaType = c.media;
        ConfigSpooler spooler;
        testenv::SpoolerSwap swap(&spooler);
        TraceLog log;
        Owner owner(printer, &devMode);
        ASSERT_EQ(owner.Create(), 1);
        const UIConfig* config = owner.config;
        EXPECT_EQ(config->pPublicDM, &devMode);
        EXPECT_EQ(config->InterPoint, c.interPoint);
        EXPECT_EQ(config->LoadedInterPoint, c.interPoint);
        EXPECT_EQ(config->BindingEdge, c.bindingEdge);
        EXPECT_EQ(config->Collate, c.collateSetting);
        EXPECT_EQ(config->RenderMode, c.renderMode);
        EXPECT_EQ(config->PaperSource, c.paperSource);
        EXPECT_EQ(config->Orientation, c.orientationSetting);
        EXPECT_EQ(config->MediaType, c.mediaType);
        for (const auto& value : stored) {
            EXPECT_EQ(spooler.FindWrite(L"Config", value.name), nullptr) << testenv::Narrow(value.name);
            EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", value.name).AsDword(), value.value);
        }
        EXPECT_TRUE(log.Contains("CreateConfig(): dmDuplex=" + std::to_string(c.duplex)));
    }
}

TEST(CreateConfig, APrinterWithoutItsConfigKeyIsRepairedByThePeripheralInstaller) {
    RegistryValueGuard pattern(HKEY_CURRENT_USER, kPatternsKey, L"CurrentPattern");
    pattern.Remove();
    PlacedFile noLocale(L"", LocaleLibraryPath());
    testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY);
    {
        PlacedFile installer(BuildPath(L"tests\\standins\\peripheral_installer\\ozdkrnpi.dll"),
                             PeripheralInstallerPath());
        ASSERT_TRUE(installer.placed());

        // A name beyond ASCII reaches the installer folded: U+00E9 becomes 0x49 ("I").
        TestPrinter accented(L"Ozdk T\u00e9st");
        Owner first(accented);
        EXPECT_EQ(first.Create(), 1);
        EXPECT_EQ(InstallerRecordDword(L"Calls"), 1u);
        EXPECT_EQ(InstallerCommandLine(), testenv::Narrow(accented.name()).replace(6, 1, "I"));
        EXPECT_EQ(InstallerRecordDword(L"ShowCommand"), 5u);
        EXPECT_EQ(InstallerRecordDword(L"NullWindow"), 1u);

        // A plain name: the installer recreates the key, so the next record needs no repair.
        TestPrinter plain;
        TraceLog log;
        Owner second(plain);
        EXPECT_EQ(second.Create(), 1);
        EXPECT_TRUE(log.Contains("CreateConfig(): testRegistry failed"));
        EXPECT_EQ(InstallerCommandLine(), testenv::Narrow(plain.name()));
        EXPECT_EQ(InstallerRecordDword(L"Repaired"), 1u);
        EXPECT_EQ(ReadPrinterData(plain.handle(), L"Config", L"OutputVersion").AsDword(), 1u);
        EXPECT_EQ(second.config->MediaType, 256u);  // the reads went on with defaults

        Owner third(plain);
        EXPECT_EQ(third.Create(), 1);
        EXPECT_EQ(InstallerRecordDword(L"Calls"), 2u);
    }
    {
        // A library without the export, and no library at all: the record is built anyway.
        PlacedFile wrongLibrary(BuildPath(L"tests\\standins\\locale_library\\ozdkrnlcl.dll"),
                                PeripheralInstallerPath());
        TestPrinter printer;
        TraceLog log;
        Owner owner(printer);
        EXPECT_EQ(owner.Create(), 1);
        EXPECT_TRUE(log.Contains("Config_restorePrinterKeys(): pfnInstallQuorlPeripherals=0x0000000000000000"));
        EXPECT_EQ(owner.config->EmbsrFormWidth, 170);
    }
    {
        PlacedFile noInstaller(L"", PeripheralInstallerPath());
        TestPrinter printer;
        TraceLog log;
        Owner owner(printer);
        EXPECT_EQ(owner.Create(), 1);
        EXPECT_TRUE(log.Contains("Config_restorePrinterKeys(): hModule=0x0000000000000000"));
        EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"MediaType").AsDword(), 256u);
    }
    EXPECT_EQ(InstallerRecordDword(L"Calls"), 2u);
    testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_INSTALLER_RECORD_KEY);
}

TEST(CreateConfig, TheUsersCurrentPatternWinsOverTheStoredOneAndIsNotStored) {
    CleanMachine machine;
    const std::wstring longName(400, L'p');
    const struct {
        const char* what;
        std::wstring value;  // empty: no value
        std::wstring expected;
    } cases[] = {
        {"current pattern", L"Mine.dat", CommonAppData() + L"\\Kestrova\\Quorl\\Patterns\\Mine.dat"},
        {"oversize value", longName,
         (CommonAppData() + L"\\Kestrova\\Quorl\\Patterns\\" + longName).substr(0, kTextCapacity - 1)},
        {"no value", L"", L"Z:\\stored\\Stored.dat"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.value.empty()) {
            machine.pattern.Remove();
        } else {
            machine.pattern.SetString(c.value);
        }
        TestPrinter printer;
        const wchar_t stored[] = L"Z:\\stored\\Stored.dat";
        StoreConfigValue(printer.handle(), L"CustomPatternFileName", REG_SZ, stored, sizeof(stored));
        ConfigSpooler spooler;
        testenv::SpoolerSwap swap(&spooler);
        Owner owner(printer);
        ASSERT_EQ(owner.Create(), 1);
        EXPECT_EQ(std::wstring(owner.config->CustomPatternFileName), c.expected);
        EXPECT_EQ(spooler.FindWrite(L"Config", L"CustomPatternFileName"), nullptr);
    }
}

TEST(CreateConfig, BadStoredValuesAndRegistryTextsTakeTheirFallbacks) {
    CleanMachine machine;
    RegistryValueGuard ksDir(HKEY_LOCAL_MACHINE, kMakerKey, L"KSDir");
    const std::wstring longText(300, L'k');
    const wchar_t unterminated[] = {L'C', L':', L'\\', L'K', L'S'};

    struct Case {
        const char* what;
        std::function<void(const TestPrinter&)> arrange;
        std::function<void(const UIConfig&, const TestPrinter&)> check;
    };
    const Case cases[] = {
        {"wrong-typed and wrong-sized values take defaults, written back as they should be",
         [](const TestPrinter& p) {
             const wchar_t text[] = L"268";
             StoreConfigValue(p.handle(), L"MediaType", REG_SZ, text, sizeof(text));
             const WORD shortValue = 1;
             StoreConfigValue(p.handle(), L"InterPoint", REG_BINARY, &shortValue, sizeof(shortValue));
             const int32_t half[1] = {215900};
             StoreConfigValue(p.handle(), L"PaperSize", REG_BINARY, half, sizeof(half));
             StoreTopLevelValue(p.handle(), L"EmbsrFormWidth", REG_SZ, text, sizeof(text));
         },
         [](const UIConfig& c, const TestPrinter& p) {
             EXPECT_EQ(c.MediaType, 256u);
             EXPECT_EQ(c.InterPoint, 0u);
             EXPECT_EQ(c.PaperSize.cx, 210000);
             EXPECT_EQ(c.EmbsrFormWidth, 170);
             EXPECT_EQ(ReadPrinterData(p.handle(), L"Config", L"MediaType").type, static_cast<DWORD>(REG_DWORD));
             EXPECT_EQ(ReadPrinterData(p.handle(), L"Config", L"PaperSize").data.size(), 8u);
             EXPECT_EQ(ReadPrinterData(p.handle(), nullptr, L"EmbsrFormWidth").AsDword(), 170u);
         }},
        {"oversize braille table name and KSDir are cut and terminated",
         [&](const TestPrinter& p) {
             StoreTopLevelValue(p.handle(), L"EmbsrBrailleTable", REG_SZ, longText.c_str(),
                                static_cast<DWORD>(2 * longText.size()));
             ksDir.SetString(longText);
         },
         [&](const UIConfig& c, const TestPrinter&) {
             EXPECT_EQ(std::wstring(c.EmbsrBrailleTable), longText.substr(0, kTextCapacity - 1));
             EXPECT_EQ(std::wstring(c.KSDir), longText.substr(0, kTextCapacity - 1));
             EXPECT_STREQ(c.SerialNumber, L"");
             EXPECT_STREQ(c.FormName, L"A4");
         }},
        {"unterminated KSDir, braille table stored as a number",
         [&](const TestPrinter& p) {
             ksDir.SetBytes(REG_SZ, unterminated, sizeof(unterminated));
             const DWORD number = 7;
             StoreTopLevelValue(p.handle(), L"EmbsrBrailleTable", REG_DWORD, &number, sizeof(number));
         },
         [](const UIConfig& c, const TestPrinter& p) {
             EXPECT_STREQ(c.KSDir, L"C:\\KS");
             EXPECT_STREQ(c.EmbsrBrailleTable, L"");
             EXPECT_EQ(ReadPrinterData(p.handle(), nullptr, L"EmbsrBrailleTable").type, static_cast<DWORD>(REG_DWORD));
         }},
        {"no KSDir, no braille table",
         [&](const TestPrinter&) { ksDir.Remove(); },
         [](const UIConfig& c, const TestPrinter& p) {
             EXPECT_STREQ(c.KSDir, L"");
             EXPECT_STREQ(c.EmbsrBrailleTable, L"");
             EXPECT_NE(ReadPrinterData(p.handle(), nullptr, L"EmbsrBrailleTable").status, 0u);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TestPrinter printer;
        c.arrange(printer);
        Owner owner(printer);
        ASSERT_EQ(owner.Create(), 1);
        c.check(*owner.config, printer);
    }
}

TEST(CreateConfig, APrinterWithoutPaperNamesOrDeviceModeKeepsAnEmptyFormName) {
    CleanMachine machine;
    const struct {
        const char* what;
        bool withholdDevMode;
        bool answerPaperNames;
        int answer;
    } cases[] = {{"no device mode", true, false, 0}, {"no paper names", false, true, 0},
                 {"paper names fail", false, true, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TestPrinter printer;
        ConfigSpooler spooler;
        spooler.withholdDevMode = c.withholdDevMode;
        spooler.answerPaperNames = c.answerPaperNames;
        spooler.paperNamesAnswer = c.answer;
        testenv::SpoolerSwap swap(&spooler);
        Owner owner(printer);
        ASSERT_EQ(owner.Create(), 1);
        EXPECT_STREQ(owner.config->FormName, L"");
        EXPECT_EQ(owner.config->PaperSize.cx, 210000);
    }
}

TEST(CreateConfig, RefusesWhatItCannotAttach) {
    TestPrinter printer;
    HostHeap heap;
    OEMCUIPPARAM param = MakeParam(printer, heap.get());
    UIConfig* config = nullptr;
    EXPECT_EQ(CreateConfig(nullptr, &config), 0);
    EXPECT_EQ(config, nullptr);
    EXPECT_EQ(CreateConfig(&param, nullptr), 0);

    param.hOEMHeap = nullptr;  // no heap to take the record from
    EXPECT_EQ(CreateConfig(&param, &config), 0);
    EXPECT_EQ(config, nullptr);
    EXPECT_EQ(heap.BusyBlocks(), 0);
}

TEST(CreateConfig, ReadsInItsOrderAndTracesEachStep) {
    CleanMachine machine;
    TestPrinter printer;
    {
        Owner first(printer);  // every value exists afterwards
        ASSERT_EQ(first.Create(), 1);
    }
    StoreConfigDword(printer.handle(), L"OutputVersion", 1);
    ConfigSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);
    TraceLog log;
    Owner owner(printer);
    ASSERT_EQ(owner.Create(), 1);

    std::vector<std::wstring> configReads;
    std::vector<std::wstring> topLevelReads;
    for (const auto& read : spooler.reads) {
        (read.key.empty() ? topLevelReads : configReads).push_back(read.name);
    }
    EXPECT_EQ(configReads,
              (std::vector<std::wstring>{
                  L"OutputVersion", L"PaperSize", L"CustomMediaType", L"MediaType", L"PaperSource", L"MediaSurface",
                  L"InterPoint", L"InsertEmptyPage", L"LandscapeMode", L"HorizontalShift", L"Orientation", L"Preview",
                  L"Collate", L"TwoInOne", L"OutputFace", L"BindingEdge", L"EmbossMode", L"DotHeight", L"InkMode",
                  L"Quality", L"DotQuality", L"BrailleQuality", L"RenderingDensity", L"BrailleStandard",
                  L"EmbossStandardTexts", L"ThinLineIntensity", L"InvertColor", L"Brightness", L"Contrast",
                  L"ColorPattern", L"RenderMode", L"TwoPassPrint", L"CustomPatternFileName", L"DryTime",
                  L"Magnification", L"OutputBitmap"}));
    EXPECT_EQ(topLevelReads,
              (std::vector<std::wstring>{
                  L"EmbsrAutoCr", L"EmbsrGraphicsMode", L"EmbsrOutputFace", L"EmbsrDuplex", L"EmbsrFormWidth",
                  L"EmbsrFormHeight", L"EmbsrTopMargin", L"EmbsrLeftMargin", L"EmbsrRightMargin", L"EmbsrCharsWidth",
                  L"EmbsrLinesLength", L"EmbsrLineSpacing", L"EmbsrMediaType", L"EmbsrBrailleStandard",
                  L"EmbsrBrailleDots", L"EmbsrBrailleForce", L"EmbsrQuality", L"EmbsrBrailleTable"}));
    EXPECT_TRUE(spooler.writes.empty());

    // The steps' trace lines, in order (addresses left out).
    const char* const steps[] = {
        "CreateConfig(): hExtDLL=0x0000000000000000",
        "CreateConfig(): LPUIConfig=0x",
        "CreateConfig(): pPrinterName=",
        "CreateConfig(): hModule=0x",
        "CreateConfig(): SOFTWARE\\Kestrova\\KSDir, szKSDir=",
        "CreateConfig(): hPrinter=0x",
        "CreateConfig(): pi=0x",
        "CreateConfig(): pOEMConfig=0x",
        "GetPrinterCurrentFormName(): 4=EnumPrinterPaperSizes()",
        "PrepareLocale(): loading LocaleDLL failed",
    };
    size_t next = 0;
    for (const auto& line : log.Lines()) {
        if (next < sizeof(steps) / sizeof(steps[0]) && line.rfind(steps[next], 0) == 0) ++next;
    }
    EXPECT_EQ(next, sizeof(steps) / sizeof(steps[0])) << "missing or out of order: " << steps[next];
    EXPECT_FALSE(log.Contains("CreateConfig(): testRegistry failed"));
}
