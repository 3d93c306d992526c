#include "config/config_lifecycle.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "config/extension_library.h"
#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "config/printer_data.h"
#include "config/registry.h"
#include "base/spooler.h"
#include "base/heap_memory.h"
#include "base/module_state.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "base/unique_handle.h"

namespace {

constexpr const wchar_t* kDefaultPatternFile = L"C:\\ProgramData\\Kestrova\\Quorl\\Patterns\\Default.dat";
constexpr DWORD kTextBytes = kTextCapacity * sizeof(wchar_t);  // 520
constexpr PaperDimensions kDefaultPaperSize = {210000, 297000};  // A4

using InstallPeripheralsFunction = void(CALLBACK*)(HWND, HINSTANCE, LPSTR, int);

// Step 4: the maker's installation folder.
void ReadInstallationFolder(UIConfig* config) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMakerKey, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        ReadRegistryString(L"KSDir", config->KSDir, kTextBytes, key);
    }
    Trace(L"CreateConfig(): %ws\\%ws, szKSDir=%ws\n", kMakerKey, L"KSDir", config->KSDir);
}

// Step 5: names of the printer and its driver. False when no memory could be had.
bool ReadPrinterNames(UIConfig* config) {
    const HANDLE printer = config->hPrinter;
    PrinterInfoOutcome outcome;
    HeapBuffer info = FetchPrinterInfo(printer, 2, &outcome);
    Trace(L"CreateConfig(): hPrinter=0x%p\n", printer);
    if (outcome.noMemory) {
        return false;
    }
    Trace(L"CreateConfig(): pi=0x%p, needed=%u\n", info.bytes(), outcome.needed);
    if (info.size() >= sizeof(PRINTER_INFO_2W)) {
        CopyWide(config->PrinterName, kTextCapacity, info.as<PRINTER_INFO_2W>()->pPrinterName);
        CopyWide(config->DriverName, kTextCapacity, info.as<PRINTER_INFO_2W>()->pDriverName);
    }
    return true;
}

// Step 6: a printer without its "Config" key is repaired by the peripheral installer.
void TestRegistry(UIConfig* config) {
    DWORD type = 0;
    DWORD needed = 0;
    DWORD version = 0;
    const DWORD status = Spool().GetPrinterDataExW(config->hPrinter, kConfigKey, L"OutputVersion", &type,
                                                   reinterpret_cast<BYTE*>(&version), sizeof(version), &needed);
    if (status != ERROR_SUCCESS) {
        Trace(L"CreateConfig(): testRegistry failed\n");
        Config_restorePrinterKeys(config);
    }
}

// Steps 10 and 12: the document settings of the "Config" key.
void ReadDocumentSettings(UIConfig* config) {
    const HANDLE printer = config->hPrinter;
    GetPrinterDataString(printer, L"CustomMediaType", config->CustomMediaType, L"", kTextBytes);
    GetPrinterDataInteger(printer, L"MediaType", &config->MediaType, 256);
    GetPrinterDataInteger(printer, L"PaperSource", &config->PaperSource, 7);
    GetPrinterDataInteger(printer, L"MediaSurface", &config->MediaSurface, 1);
    GetPrinterDataInteger(printer, L"InterPoint", &config->InterPoint, 0);
    config->LoadedInterPoint = config->InterPoint;
    GetPrinterDataInteger(printer, L"InsertEmptyPage", &config->InsertEmptyPage, 0);
    GetPrinterDataInteger(printer, L"LandscapeMode", &config->LandscapeMode, 0);
    GetPrinterDataInteger(printer, L"HorizontalShift", &config->HorizontalShift, 0);
    GetPrinterDataInteger(printer, L"Orientation", &config->Orientation, 1);
    GetPrinterDataInteger(printer, L"Preview", &config->Preview, 0);
    GetPrinterDataInteger(printer, L"Collate", &config->Collate, 0);
    GetPrinterDataInteger(printer, L"TwoInOne", &config->TwoInOne, 0);
    GetPrinterDataInteger(printer, L"OutputFace", &config->OutputFace, 1);
    GetPrinterDataInteger(printer, L"BindingEdge", &config->BindingEdge, 2);
    GetPrinterDataInteger(printer, L"EmbossMode", &config->EmbossMode, 1);
    GetPrinterDataInteger(printer, L"DotHeight", &config->DotHeight, 1);
    GetPrinterDataInteger(printer, L"InkMode", &config->InkMode, 1);
    GetPrinterDataInteger(printer, L"Quality", &config->Quality, 1);
    GetPrinterDataInteger(printer, L"DotQuality", &config->DotQuality, 1);
    GetPrinterDataInteger(printer, L"BrailleQuality", &config->BrailleQuality, 1);
    GetPrinterDataInteger(printer, L"RenderingDensity", &config->RenderingDensity, 6);
    GetPrinterDataInteger(printer, L"BrailleStandard", &config->BrailleStandard, 0);
    GetPrinterDataInteger(printer, L"EmbossStandardTexts", &config->EmbossStandardTexts, 0);
    GetPrinterDataInteger(printer, L"ThinLineIntensity", &config->ThinLineIntensity, 1);
    GetPrinterDataInteger(printer, L"InvertColor", &config->InvertColor, 0);
    GetPrinterDataInteger(printer, L"Brightness", &config->Brightness, 0);
    GetPrinterDataInteger(printer, L"Contrast", &config->Contrast, 0);
    GetPrinterDataInteger(printer, L"ColorPattern", &config->ColorPattern, 0);
    GetPrinterDataInteger(printer, L"RenderMode", &config->RenderMode, 2);
    GetPrinterDataInteger(printer, L"TwoPassPrint", &config->TwoPassPrint, 0);
}

// Step 11: the pattern the user picked last (user registry) wins over the stored one.
void ReadPatternFileName(UIConfig* config) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kUserPatternsKey, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        wchar_t pattern[kTextCapacity] = {};
        wchar_t folder[MAX_PATH] = {};
        if (ReadRegistryString(L"CurrentPattern", pattern, kTextBytes, key) == ERROR_SUCCESS &&
            GetPatternFolder(folder, MAX_PATH)) {
            FormatWide(config->CustomPatternFileName, kTextCapacity, L"%s\\%s", folder, pattern);
            return;
        }
    }
    GetPrinterDataString(config->hPrinter, L"CustomPatternFileName", config->CustomPatternFileName,
                         kDefaultPatternFile, kTextBytes);
}

// Whether the caller's device mode is long enough to hold the field that ends at `end`.
bool Covers(const DEVMODEW* devMode, size_t end) { return devMode->dmSize >= end; }

#define OZDK_DEVMODE_FIELD(devMode, field) \
    (Covers(devMode, offsetof(DEVMODEW, field) + sizeof((devMode)->field)) ? (devMode)->field : 0)

// Step 13: what the document's device mode says wins over the stored values, for this
// record only (nothing is written back).
void OverrideFromDevMode(UIConfig* config) {
    const DEVMODEW* devMode = config->pPublicDM;
    if (devMode == nullptr) {
        return;
    }
    const DWORD fields = OZDK_DEVMODE_FIELD(devMode, dmFields);
    const short collate = OZDK_DEVMODE_FIELD(devMode, dmCollate);
    const short color = OZDK_DEVMODE_FIELD(devMode, dmColor);
    const short duplex = OZDK_DEVMODE_FIELD(devMode, dmDuplex);
    const short printQuality = OZDK_DEVMODE_FIELD(devMode, dmPrintQuality);
    const short yResolution = OZDK_DEVMODE_FIELD(devMode, dmYResolution);
    const short orientation = OZDK_DEVMODE_FIELD(devMode, dmOrientation);
    const short defaultSource = OZDK_DEVMODE_FIELD(devMode, dmDefaultSource);
    const DWORD mediaType = OZDK_DEVMODE_FIELD(devMode, dmMediaType);

    Trace(L"CreateConfig(): overriding settings from pPublicDM, dmFields=0x%p\n",
          reinterpret_cast<void*>(static_cast<uintptr_t>(fields)));
    Trace(L"CreateConfig(): dmCollate=%d, %u\n", collate, fields & DM_COLLATE);
    Trace(L"CreateConfig(): dmDuplex=%d\n", duplex);
    Trace(L"CreateConfig(): dmPrintQuality=%d\n", printQuality);  // traced only, never applied
    Trace(L"CreateConfig(): dmYResolution=%d\n", yResolution);    // traced only, never applied
    Trace(L"CreateConfig(): dmOrientation=%d\n", orientation);
    Trace(L"CreateConfig(): dmDefaultSource=%d\n", defaultSource);

    if (fields & DM_COLLATE) {
        config->Collate = collate == DMCOLLATE_TRUE ? 1 : 0;
    }
    if (fields & DM_COLOR) {
        config->RenderMode = static_cast<uint32_t>(color);
    }
    if (fields & DM_DEFAULTSOURCE) {
        config->PaperSource = static_cast<uint32_t>(defaultSource);
    }
    if (fields & DM_MEDIATYPE) {
        config->MediaType = mediaType;
    }
    if (fields & DM_ORIENTATION) {
        config->Orientation = static_cast<uint32_t>(orientation);
    }
    if (fields & DM_DUPLEX) {
        config->InterPoint = duplex != DMDUP_SIMPLEX ? 1 : 0;
        config->LoadedInterPoint = config->InterPoint;
        // Simplex also sets the short edge: the binding edge only matters when interpoint is on.
        config->BindingEdge = duplex == DMDUP_VERTICAL ? 2 : 3;
    }
}

#undef OZDK_DEVMODE_FIELD

// "EmbsrBrailleTable" of the top-level printer data, as stored: no default, no write-back.
// A value that cannot be read in 520 bytes, or is not a string, leaves the field empty.
void ReadBrailleTableName(UIConfig* config) {
    wchar_t* table = config->EmbsrBrailleTable;
    DWORD type = 0;
    DWORD needed = 0;
    const DWORD status = Spool().GetPrinterDataW(config->hPrinter, L"EmbsrBrailleTable", &type,
                                                 reinterpret_cast<BYTE*>(table), kTextBytes, &needed);
    if (status == ERROR_SUCCESS && (type == REG_SZ || type == REG_EXPAND_SZ)) {
        TerminateReadString(table, kTextCapacity, needed);
    } else {
        table[0] = L'\0';
    }
}

// Step 14: the embosser's settings as last stored.
void ReadEmbosserSettings(UIConfig* config) {
    config->EmbsrLineSpacing = 0;
    config->EmbsrTopMargin = 5;
    config->EmbsrLeftMargin = 5;
    config->EmbsrRightMargin = 5;
    config->EmbsrBrailleStandard = 0;
    config->EmbsrBrailleForce = 1;
    config->EmbsrFormHeight = 220;
    config->EmbsrCharsWidth = 32;
    config->EmbsrFormWidth = 170;
    config->EmbsrLinesLength = 25;
    config->EmbsrMediaType = 286;
    config->EmbsrBrailleDots = 6;
    config->EmbsrCustomMediaMin = 3;
    config->EmbsrCustomMediaMax = 17;
    config->LegacyParmCount = 0;
    config->BrailleTableIndex = 0;
    config->FirmwareVersion = 0;
    config->LegacyChanged = 0;
    config->AutoLoadPaper = 1;
    config->DeviceDryTime = 8;
    config->PaperSourceCode = 7;

    const HANDLE printer = config->hPrinter;
    GetPrinterDataInteger2(printer, L"EmbsrAutoCr", &config->EmbsrAutoCr, 0);
    GetPrinterDataInteger2(printer, L"EmbsrGraphicsMode", &config->EmbsrGraphicsMode, 0);
    GetPrinterDataInteger2(printer, L"EmbsrOutputFace", &config->EmbsrOutputFace, 1);
    GetPrinterDataInteger2(printer, L"EmbsrDuplex", &config->EmbsrDuplex, 1);
    GetPrinterDataInteger2(printer, L"EmbsrFormWidth", &config->EmbsrFormWidth, 170);
    GetPrinterDataInteger2(printer, L"EmbsrFormHeight", &config->EmbsrFormHeight, 220);
    GetPrinterDataInteger2(printer, L"EmbsrTopMargin", &config->EmbsrTopMargin, 5);
    GetPrinterDataInteger2(printer, L"EmbsrLeftMargin", &config->EmbsrLeftMargin, 5);
    GetPrinterDataInteger2(printer, L"EmbsrRightMargin", &config->EmbsrRightMargin, 5);
    GetPrinterDataInteger2(printer, L"EmbsrCharsWidth", &config->EmbsrCharsWidth, 32);
    GetPrinterDataInteger2(printer, L"EmbsrLinesLength", &config->EmbsrLinesLength, 25);
    GetPrinterDataInteger2(printer, L"EmbsrLineSpacing", &config->EmbsrLineSpacing, 0);
    GetPrinterDataInteger2(printer, L"EmbsrMediaType", &config->EmbsrMediaType, 286);
    GetPrinterDataInteger2(printer, L"EmbsrBrailleStandard", &config->EmbsrBrailleStandard, 0);
    GetPrinterDataInteger2(printer, L"EmbsrBrailleDots", &config->EmbsrBrailleDots, 6);
    GetPrinterDataInteger2(printer, L"EmbsrBrailleForce", &config->EmbsrBrailleForce, 1);
    GetPrinterDataInteger2(printer, L"EmbsrQuality", &config->EmbsrQuality, 0);
    ReadBrailleTableName(config);
}

// Step 15: the measures in inches, for display.
void FormatMeasure(wchar_t* text, int32_t twentiethsOfAnInch) {
    FormatWide(text, kMeasureTextCapacity, L"%.02f", twentiethsOfAnInch / 20.0);
}

void FormatMeasureTexts(UIConfig* config) {
    FormatMeasure(config->LineSpacingText, config->EmbsrLineSpacing);
    FormatMeasure(config->TopMarginText, config->EmbsrTopMargin);
    FormatMeasure(config->LeftMarginText, config->EmbsrLeftMargin);
    FormatMeasure(config->RightMarginText, config->EmbsrRightMargin);
    FormatMeasure(config->FormWidthText, config->EmbsrFormWidth);
    FormatMeasure(config->FormHeightText, config->EmbsrFormHeight);
}

}  // namespace

int CreateConfig(const OEMCUIPPARAM* pParam, UIConfig** ppConfig) {
    if (ppConfig == nullptr) {
        return 0;
    }
    if (*ppConfig != nullptr) {
        UIConfig* shared = *ppConfig;
        ++shared->UsageCount;
        Trace(L"CreateConfig(): usage count=%d\n", shared->UsageCount);
        return static_cast<int>(shared->UsageCount);
    }
    if (pParam == nullptr) {
        return 0;
    }
    const HANDLE heap = pParam->hOEMHeap;
    auto* config = heap != nullptr ? static_cast<UIConfig*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, kUIConfigSize))
                                   : nullptr;
    if (config == nullptr) {
        *ppConfig = nullptr;
        return 0;
    }

    config->Size = kUIConfigSize;
    config->hExtDLL = nullptr;
    config->UsageCount = 1;
    config->hHeap = heap;
    Trace(L"CreateConfig(): hExtDLL=0x%p\n", config->hExtDLL);
    Trace(L"CreateConfig(): LPUIConfig=0x%p\n", config);
    Trace(L"CreateConfig(): pPrinterName=%ws\n", pParam->pPrinterName != nullptr ? pParam->pPrinterName : L"");
    Trace(L"CreateConfig(): hModule=0x%p, ghInstance=0x%p\n", pParam->hModule, ghInstance);
    config->hPrinter = pParam->hPrinter;
    config->hModule = pParam->hModule;
    config->pPublicDM = pParam->pPublicDM;
    *ppConfig = config;  // attached from here on, whatever fails later

    ReadInstallationFolder(config);
    if (!ReadPrinterNames(config)) {
        return 0;
    }
    TestRegistry(config);
    Trace(L"CreateConfig(): pOEMConfig=0x%p\n", config);

    const HANDLE printer = config->hPrinter;
    if (!GetPrinterDataPaperSize(printer, &config->PaperSize)) {
        config->PaperSize = kDefaultPaperSize;
        SetPrinterDataPaperSize(printer, L"PaperSize", &config->PaperSize, sizeof(config->PaperSize));
    }
    GetPrinterCurrentFormName(printer, config->PaperSize, config->FormName);

    ReadDocumentSettings(config);
    ReadPatternFileName(config);
    GetPrinterDataInteger(printer, L"DryTime", &config->DryTime, 8);
    GetPrinterDataInteger(printer, L"Magnification", &config->Magnification, 1);
    GetPrinterDataInteger(printer, L"OutputBitmap", &config->OutputBitmap, 0);

    OverrideFromDevMode(config);
    ReadEmbosserSettings(config);
    FormatMeasureTexts(config);
    PrepareLocale(heap, config);
    return 1;
}

UIConfig* AttachSheetConfig(PROPSHEETUI_INFO* info, UIConfig** ppConfig, const wchar_t* routine) {
    auto* param = reinterpret_cast<const OEMCUIPPARAM*>(info->lParamInit);
    UIConfig* config = param != nullptr && CreateConfig(param, ppConfig) != 0 ? *ppConfig : nullptr;
    info->UserData = reinterpret_cast<ULONG_PTR>(config);
    Trace(L"%s(): pPSUIInfo->UserData=pConfig=0x%p\n", routine, static_cast<void*>(config));
    if (config == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
    }
    return config;
}

void DestroyConfig(UIConfig* pConfig) {
    if (pConfig == nullptr) {
        return;
    }
    if (pConfig->UsageCount != 1) {
        // The count only informs the trace: the record is torn down whatever it says.
        Trace(L"DestroyConfig(): usage count=%d\n", pConfig->UsageCount);
        --pConfig->UsageCount;
    }
    PostpareLocale(pConfig);
    ReleaseExtensionLibrary(*pConfig);
    Trace(L"DestroyConfig(): freeing pConfig=0x%p\n", pConfig);
    HeapFree(pConfig->hHeap, 0, pConfig);
}

int Config_restorePrinterKeys(UIConfig* pConfig) {
    if (pConfig == nullptr) {
        return 0;
    }
    wchar_t system[MAX_PATH] = {};
    wchar_t path[MAX_PATH + 16] = {};
    const UINT length = GetSystemDirectoryW(system, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        system[0] = L'\0';
    }
    FormatWide(path, sizeof(path) / sizeof(path[0]), L"%s\\ozdkrnpi.dll", system);
    UniqueLibrary installer(system[0] != L'\0' ? LoadLibraryW(path) : nullptr);
    Trace(L"Config_restorePrinterKeys(): hModule=0x%p\n", installer.get());
    if (!installer) {
        return 0;
    }
    const auto install =
        reinterpret_cast<InstallPeripheralsFunction>(GetProcAddress(installer.get(), "InstallQuorlPeripherals"));
    Trace(L"Config_restorePrinterKeys(): pfnInstallQuorlPeripherals=0x%p\n", reinterpret_cast<void*>(install));
    if (install == nullptr) {
        return 0;
    }
    // The installer takes an 8-bit command line: every character beyond ASCII is folded
    // into the printable range, so that the conversion below is exact.
    wchar_t name[kTextCapacity];
    CopyWide(name, kTextCapacity, pConfig->PrinterName);
    for (wchar_t* c = name; *c != L'\0'; ++c) {
        if (*c >= 128) {
            *c = static_cast<wchar_t>((*c & 63) + 32);
        }
    }
    char commandLine[kTextCapacity] = {};
    FormatNarrow(commandLine, kTextCapacity, "%ws", name);
    install(nullptr, nullptr, commandLine, SW_SHOW);
    return 0;
}
