// The per-printer configuration record shared by every page and by the embosser link.
//
// This header deliberately does not include <windows.h>: the embosser protocol core
// (reply parser, braille tables, PJL command text, setting rules) works on this record
// and is also built natively on Linux. Handles are therefore kept as opaque pointers;
// the Windows side converts them where it uses them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/wide_char.h"

struct _devicemodeW;  // DEVMODEW on Windows

// Width and height, signed 32-bit, in micrometres unless a caller says otherwise.
struct PaperDimensions {
    int32_t cx;
    int32_t cy;
};

// The exports of the locale library, bound by name in this order.
struct LocaleFunctions {
    void* (*Create)(const WideChar* folder, const WideChar* section);
    void* (*CreateEx)(const WideChar* folder, const WideChar* section, const WideChar* locale);
    void (*Dispose)(void* instance);
    int (*InitLocale)(void* instance, const WideChar* localeName);
    int (*EnumLocales)(void* instance, const WideChar** list);
    int (*EnumLocaleStrings)(void* instance, const WideChar** list);
    const WideChar* (*GetActiveLocale)(void* instance);
    const WideChar* (*GetString)(void* instance, const WideChar* key);
    const WideChar* (*GetSectionString)(void* instance, const WideChar* section, const WideChar* key);
    int (*TranslateDialog)(void* instance, void* hwnd);
    int (*TranslateMenu)(void* instance, void* hmenu);
};
inline constexpr int kLocaleFunctionCount = 11;
static_assert(sizeof(LocaleFunctions) == kLocaleFunctionCount * sizeof(void*), "11 bound exports");

inline constexpr int kTextCapacity = 260;        // wide characters of the name/text fields
inline constexpr int kMeasureTextCapacity = 16;  // wide characters of the inch texts
inline constexpr int kFormNameCapacity = 64;     // wide characters of a form name

struct UIConfig {
    // --- header and document settings (stored under the printer's "Config" key) ---
    uint32_t Size;
    uint32_t InterPoint;
    uint32_t InsertEmptyPage;
    uint32_t EmbossMode;
    uint32_t InkMode;
    uint32_t Collate;
    uint32_t Preview;
    uint32_t InvertColor;
    uint32_t LandscapeMode;
    uint32_t EmbossStandardTexts;
    uint32_t TwoInOne;
    uint32_t OutputFace;
    uint32_t OutputBitmap;
    uint32_t TwoPassPrint;
    uint32_t HorizontalShift;
    int32_t Brightness;
    int32_t Contrast;
    uint32_t Magnification;
    int32_t DryTime;  // seconds; also what the device-settings tree sends as DRYTIME
    uint32_t ThinLineIntensity;
    uint32_t DotHeight;
    uint32_t BrailleStandard;
    uint32_t DotQuality;
    uint32_t BrailleQuality;
    uint32_t Quality;
    uint32_t MediaType;
    uint32_t MediaSurface;
    uint32_t PaperSource;
    uint32_t RenderMode;
    uint32_t Orientation;
    uint32_t ColorPattern;
    uint32_t BindingEdge;
    uint32_t RenderingDensity;
    WideChar CustomPatternFileName[kTextCapacity];
    uint32_t LoadedInterPoint;

    // --- the embosser's own settings (top-level printer data, values named Embsr...) ---
    uint32_t EmbsrDuplex;        // 0 simplex, 1 long edge, 2 short edge
    uint32_t EmbsrGraphicsMode;  // 1 graphics mode
    uint32_t EmbsrAutoCr;        // 1 automatic carriage return
    uint32_t EmbsrOutputFace;    // 1 face up, 2 face down
    uint32_t UsageCount;         // CreateConfig calls that attached this record
    uint32_t EmbsrMediaType;     // embosser media code
    uint32_t EmbsrCustomMediaMin;
    uint32_t EmbsrCustomMediaMax;
    uint32_t EmbsrBrailleDots;
    uint32_t EmbsrBrailleStandard;
    int32_t EmbsrLineSpacing;  // lengths in 1/20 inch
    int32_t EmbsrTopMargin;
    int32_t EmbsrLeftMargin;
    int32_t EmbsrRightMargin;
    int32_t EmbsrCharsWidth;
    int32_t EmbsrLinesLength;
    union {
        int32_t EmbsrPaperWidth;
        int32_t EmbsrFormWidth;  // the name of its stored value
    };
    union {
        int32_t EmbsrPaperLength;
        int32_t EmbsrFormHeight;
    };
    uint32_t EmbsrBrailleForce;  // 0 heavy, 1 normal, 2 light
    uint32_t EmbsrQuality;       // 0 draft, 1 standard, 2 best
    int32_t LegacyParmCount;     // 0 not read, -1 read failed, above 0 known
    uint32_t BrailleTableIndex;
    uint32_t FirmwareVersion;  // major << 16 | minor << 8 | build
    uint32_t LegacyChanged;
    uint32_t AutoLoadPaper;
    int32_t DeviceDryTime;     // the embosser's factory dry time
    uint32_t PaperSourceCode;  // the embosser's paper source; 7 whenever it is sent
    uint32_t LegacyRefresh;
    uint32_t LegacyStateA;
    uint32_t LegacyStateB;
    WideChar EmbsrBrailleTable[kTextCapacity];
    WideChar SerialNumber[kTextCapacity];
    WideChar ModelNumber[kTextCapacity];

    // --- handles, names and texts ---
    union {
        void* hPrinter;  // the host's handle, borrowed
        void* PrinterHandle;
    };
    union {
        void* hModule;  // module whose resources hold the texts
        void* hResource;
    };
    union {
        void* hExtDLL;  // language-monitor extension library, loaded on demand
        void* ExtLibraryHandle;
    };
    void* hHeap;
    LocaleFunctions lcl;
    void* LocaleDLL;
    void* hLcl;
    union {
        _devicemodeW* pPublicDM;  // the caller's public device mode, borrowed
        _devicemodeW* pDevMode;
    };
    PaperDimensions PaperSize;  // micrometres
    WideChar CustomMediaType[kTextCapacity];
    WideChar PrinterName[kTextCapacity];
    WideChar DriverName[kTextCapacity];
    WideChar LineSpacingText[kMeasureTextCapacity];
    WideChar TopMarginText[kMeasureTextCapacity];
    WideChar LeftMarginText[kMeasureTextCapacity];
    WideChar RightMarginText[kMeasureTextCapacity];
    union {
        WideChar FormWidthText[kMeasureTextCapacity];
        WideChar PaperWidthText[kMeasureTextCapacity];
    };
    union {
        WideChar FormHeightText[kMeasureTextCapacity];
        WideChar PaperLengthText[kMeasureTextCapacity];
    };
    WideChar KSDir[kTextCapacity];
    WideChar FormName[kFormNameCapacity];

    // --- state of the document pages ---
    uint32_t PageChanged;
    uint32_t MagazineFoldLine;
    int32_t LayoutListIndex;
    WideChar CustomMediaName[kTextCapacity];
    WideChar PatternFileChoice[kTextCapacity];

    uint32_t DeviceReadRunning;  // a page's first read of the device is under way

    uint8_t Reserved[1080];  // room for later settings; keeps the block size fixed
};

inline constexpr uint32_t kUIConfigSize = 7024;
static_assert(sizeof(UIConfig) == kUIConfigSize, "the record is one block of 7024 bytes");
