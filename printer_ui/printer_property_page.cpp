#include "printer_ui/printer_property_page.h"

#include <compstui.h>

#include <cstdint>
#include <cstring>

#include "config/config_lifecycle.h"
#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "printer_ui/legacy_items.h"
#include "printer_ui/printer_ui_callbacks.h"
#include "resources/resource_ids.h"

namespace {

// Everything an item is built from: the host's heap, the record and the flags every
// setting item starts with.
struct TreeBuilder {
    HANDLE heap;
    UIConfig* config;
    DWORD itemFlags;
};

void* HostAlloc(HANDLE heap, size_t bytes) { return HeapAlloc(heap, HEAP_ZERO_MEMORY, bytes); }

wchar_t* HostCopy(HANDLE heap, const wchar_t* text, size_t capacity) {
    auto* copy = static_cast<wchar_t*>(HostAlloc(heap, capacity * sizeof(wchar_t)));
    if (copy != nullptr) {
        CopyWide(copy, capacity, text);
    }
    return copy;
}

// An option type with `count` zero-filled parameters, or null (nothing kept) when
// either block cannot be had.
POPTTYPE CreateOptType(HANDLE heap, BYTE type, WORD count) {
    auto* optType = static_cast<POPTTYPE>(HostAlloc(heap, sizeof(OPTTYPE)));
    if (optType == nullptr) {
        return nullptr;
    }
    auto* params = static_cast<POPTPARAM>(HostAlloc(heap, sizeof(OPTPARAM) * (count > 0 ? count : 1)));
    if (params == nullptr) {
        HeapFree(heap, 0, optType);
        return nullptr;
    }
    optType->cbSize = sizeof(OPTTYPE);
    optType->Type = type;
    optType->Count = count;
    optType->pOptParam = params;
    for (WORD i = 0; i < count; ++i) {
        params[i].cbSize = sizeof(OPTPARAM);
    }
    return optType;
}

void BeginItem(const TreeBuilder& b, OPTITEM& item, UINT caption, BYTE id) {
    item.Level = 2;
    item.Flags = b.itemFlags;
    item.pName = LoadLocalString(b.config, b.heap, caption);
    item.UserItemID = id;
}

template <size_t N>
void ListItem(const TreeBuilder& b, OPTITEM& item, UINT caption, const UINT (&entries)[N], LONG selection) {
    BeginItem(b, item, caption, static_cast<BYTE>(caption));
    item.Sel = selection;
    item.pOptType = CreateOptType(b.heap, TVOT_LISTBOX, static_cast<WORD>(N));
    if (item.pOptType != nullptr) {
        for (size_t i = 0; i < N; ++i) {
            item.pOptType->pOptParam[i].pData = LoadLocalString(b.config, b.heap, entries[i]);
        }
    }
}

void EditItem(const TreeBuilder& b, OPTITEM& item, UINT caption, const wchar_t* text) {
    BeginItem(b, item, caption, static_cast<BYTE>(caption));
    item.pSel = HostCopy(b.heap, text, kLegacyEditCapacity);
    item.pOptType = CreateOptType(b.heap, TVOT_EDITBOX, 2);
    if (item.pOptType != nullptr) {
        item.pOptType->pOptParam[0].pData = LoadLocalString(b.config, b.heap, IDS_INCHES);
        item.pOptType->pOptParam[1].IconID = kLegacyEditCapacity;
    }
}

void UpDownItem(const TreeBuilder& b, OPTITEM& item, UINT caption, LONG selection) {
    BeginItem(b, item, caption, static_cast<BYTE>(caption));
    item.Sel = selection;
    item.pOptType = CreateOptType(b.heap, TVOT_UDARROW, 2);
    if (item.pOptType != nullptr) {
        item.pOptType->pOptParam[1].IconID = kLegacyUpDownLowest;
        item.pOptType->pOptParam[1].lParam = kLegacyUpDownHighest;
    }
}

void PushButtonItem(const TreeBuilder& b, OPTITEM& item, UINT caption, BYTE id, _CPSUICALLBACK callback,
                    WORD typeStyle) {
    BeginItem(b, item, caption, id);
    item.Sel = 0;
    item.UserData = reinterpret_cast<ULONG_PTR>(b.config);
    item.pOptType = CreateOptType(b.heap, TVOT_PUSHBUTTON, 1);
    if (item.pOptType != nullptr) {
        item.pOptType->Style = typeStyle;
        item.pOptType->pOptParam[0].Style = PUSHBUTTON_TYPE_CALLBACK;
        item.pOptType->pOptParam[0].pData = reinterpret_cast<LPTSTR>(callback);
    }
}

// The printer's paper sizes and "Custom". Each named entry's lParam points to an 8-byte
// block with its form's width (low half) and length (high half) in micrometres; the
// selection is the last entry whose form is about the device's paper size, else "Custom".
void FormSizeItem(const TreeBuilder& b, OPTITEM& item) {
    BeginItem(b, item, IDS_FORM_SIZE, IDS_FORM_SIZE);
    HANDLE printer = b.config->hPrinter;

    int count = 0;
    HeapBuffer names = FetchPrinterPaperNames(printer, &count);
    if (count > 0xFFFE) {
        count = 0xFFFE;
    }
    if (count < 1) {
        Trace(L"hrPrinterPropertyPage(): no paper sizes, only \"Custom\"\n");
        item.Sel = 0;
        item.pOptType = CreateOptType(b.heap, TVOT_LISTBOX, 1);
        if (item.pOptType != nullptr) {
            item.pOptType->pOptParam[0].pData = LoadLocalString(b.config, b.heap, IDS_CUSTOM);
        }
        return;
    }

    item.Sel = count;
    item.pOptType = CreateOptType(b.heap, TVOT_LISTBOX, static_cast<WORD>(count + 1));
    if (item.pOptType == nullptr) {
        return;
    }
    OPTPARAM* entries = item.pOptType->pOptParam;
    const PaperDimensions device = {b.config->EmbsrPaperWidth, b.config->EmbsrPaperLength};
    for (int i = 0; i < count; ++i) {
        wchar_t name[kPaperNameCharacters + 1] = {};
        CopyPaperName(names.as<wchar_t>(), i, name, kPaperNameCharacters + 1);
        if (name[0] == L'\0') {
            continue;
        }
        entries[i].pData = HostCopy(b.heap, name, wcslen(name) + 1);
        const PaperDimensions form = GetFormSize(printer, name);
        auto* block = static_cast<uint32_t*>(HostAlloc(b.heap, 2 * sizeof(uint32_t)));
        if (block != nullptr) {
            block[0] = static_cast<uint32_t>(form.cx);
            block[1] = static_cast<uint32_t>(form.cy);
            entries[i].lParam = reinterpret_cast<LPARAM>(block);
        }
        const PaperDimensions twentieths = {form.cx / static_cast<int32_t>(kFormSizeDivisor),
                                            form.cy / static_cast<int32_t>(kFormSizeDivisor)};
        if (IsFormAboutSize(twentieths, device)) {
            item.Sel = i;
        }
    }
    entries[count].pData = LoadLocalString(b.config, b.heap, IDS_CUSTOM);
}

void BuildItems(const TreeBuilder& b, OPTITEM* items) {
    const UIConfig& c = *b.config;

    OPTITEM& head = items[0];
    head.Level = 1;
    head.Flags = 0;
    head.pName = LoadLocalString(b.config, b.heap, IDS_LEGACY_SETTINGS);
    head.Sel = kLegacyHeadIcon;
    head.UserItemID = 0;

    FormSizeItem(b, items[1]);
    EditItem(b, items[2], IDS_FORM_WIDTH, c.PaperWidthText);
    EditItem(b, items[3], IDS_FORM_LENGTH, c.PaperLengthText);
    EditItem(b, items[4], IDS_TOP_MARGIN, c.TopMarginText);
    EditItem(b, items[5], IDS_LEFT_MARGIN, c.LeftMarginText);
    EditItem(b, items[6], IDS_RIGHT_MARGIN, c.RightMarginText);
    UpDownItem(b, items[7], IDS_CHARS_PER_LINE, c.EmbsrCharsWidth);
    UpDownItem(b, items[8], IDS_LINES_PER_PAGE, c.EmbsrLinesLength);

    static const UINT kTextGraphics[] = {IDS_TEXT, IDS_GRAPHICS};
    ListItem(b, items[9], IDS_TEXT_GRAPHICS_MODE, kTextGraphics, c.EmbsrGraphicsMode == 1 ? 1 : 0);

    static const UINT kDots[] = {IDS_DOTS_6, IDS_DOTS_8};
    ListItem(b, items[10], IDS_DOTS_PER_CHARACTER, kDots, c.EmbsrBrailleDots == 8 ? 1 : 0);

    static const UINT kStandards[] = {IDS_STANDARD_MARBURG,         IDS_STANDARD_LIBRARY_OF_CONGRESS,
                                      IDS_STANDARD_NATIONAL_LIBRARY, IDS_STANDARD_MICROBRAILLE,
                                      IDS_STANDARD_KOREAN,           IDS_STANDARD_JUMBO};
    const uint32_t standard = c.EmbsrBrailleStandard;
    ListItem(b, items[11], IDS_BRAILLE_STANDARD, kStandards,
             standard >= 1 && standard <= 5 ? static_cast<LONG>(standard) : 0);

    static const UINT kOnOff[] = {IDS_ON, IDS_OFF};
    ListItem(b, items[12], IDS_AUTOMATIC_TEXT_WRAPPING, kOnOff, c.EmbsrAutoCr != 0 ? 0 : 1);

    EditItem(b, items[13], IDS_EXTRA_LINE_SPACING, c.LineSpacingText);

    static const UINT kMedia[] = {IDS_MEDIA_DEFAULT_1, IDS_MEDIA_DEFAULT_2,  IDS_MEDIA_DEFAULT_3,  IDS_MEDIA_DEFAULT_4,
                                  IDS_MEDIA_DEFAULT_5, IDS_MEDIA_DEFAULT_6,  IDS_CUSTOM,           IDS_MEDIA_CUSTOM_8,
                                  IDS_MEDIA_CUSTOM_9,  IDS_MEDIA_CUSTOM_10, IDS_MEDIA_CUSTOM_11, IDS_MEDIA_CUSTOM_12,
                                  IDS_MEDIA_CUSTOM_13, IDS_MEDIA_CUSTOM_14, IDS_MEDIA_CUSTOM_15, IDS_MEDIA_CUSTOM_16};
    ListItem(b, items[14], IDS_MEDIA_TYPE, kMedia, MediaTypeSelection(c.EmbsrMediaType));

    PushButtonItem(b, items[15], IDS_BRAILLE_TABLES, IDS_TABLE, OEMBrailleTableUIPushButtonCallback, 0);

    static const UINT kTables[] = {IDS_TABLE_CUSTOM,     IDS_TABLE_ENGLISH_US, IDS_TABLE_GERMAN,    IDS_TABLE_FRENCH,
                                   IDS_TABLE_SPANISH,    IDS_TABLE_ITALIAN,    IDS_TABLE_ARABIC,    IDS_TABLE_CZECH,
                                   IDS_TABLE_DANISH,     IDS_TABLE_GREEK,      IDS_TABLE_SWEDISH,   IDS_TABLE_LATVIAN,
                                   IDS_TABLE_ICELANDIC,  IDS_TABLE_NORWEGIAN,  IDS_TABLE_RUSSIAN,   IDS_TABLE_ENGLISH_UK,
                                   IDS_TABLE_DUTCH,      IDS_TABLE_POLISH,     IDS_TABLE_PORTUGUESE, IDS_TABLE_JAPANESE};
    ListItem(b, items[16], IDS_BRAILLE_TABLE, kTables, static_cast<LONG>(c.BrailleTableIndex));
    items[16].UserData = reinterpret_cast<ULONG_PTR>(b.config);

    static const UINT kDotHeights[] = {IDS_HIGH, IDS_NORMAL, IDS_LOW};
    ListItem(b, items[17], IDS_BRAILLE_DOT_HEIGHT, kDotHeights, static_cast<LONG>(c.EmbsrBrailleForce));

    static const UINT kQualities[] = {IDS_DRAFT, IDS_STANDARD, IDS_BEST};
    ListItem(b, items[18], IDS_BRAILLE_QUALITY, kQualities, c.EmbsrQuality == 2 ? 2 : (c.EmbsrQuality != 0 ? 1 : 0));

    static const UINT kDuplex[] = {IDS_SINGLE_SIDED, IDS_DOUBLE_SIDED};
    ListItem(b, items[19], IDS_DUPLEX, kDuplex, c.EmbsrDuplex != 0 ? 1 : 0);

    static const UINT kFaces[] = {IDS_FACE_UP, IDS_FACE_DOWN};
    ListItem(b, items[20], IDS_OUTPUT_FACE, kFaces, c.EmbsrOutputFace == 2 ? 1 : 0);

    PushButtonItem(b, items[21], IDS_RESET_TO_DEFAULT, IDS_RESET_TO_DEFAULT, OEMResetToDefaultPushButtonCallback,
                   kResetButtonStyle);
}

}  // namespace

HRESULT hrPrinterPropertyPage(DWORD dwMode, POEMCUIPPARAM pOEMUIParam, UIConfig** ppUserData) {
    if (pOEMUIParam == nullptr || ppUserData == nullptr) {
        Trace(L"hrPrinterPropertyPage(): dwMode=%d without parameters\n", dwMode);
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    if (pOEMUIParam->pOEMOptItems == nullptr) {
        pOEMUIParam->cOEMOptItems = kLegacyItemCount;
        return S_OK;
    }

    CreateConfig(pOEMUIParam, ppUserData);
    UIConfig* config = *ppUserData;
    if (config == nullptr) {
        Trace(L"hrPrinterPropertyPage(): no UIConfig\n");
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    pOEMUIParam->pOEMUserData = config;
    pOEMUIParam->OEMCUIPCallback = OEMPrinterUICallBack;
    const DWORD count = pOEMUIParam->cOEMOptItems;
    if (count == 0) {
        return S_OK;
    }

    OPTITEM* items = pOEMUIParam->pOEMOptItems;
    std::memset(items, 0, sizeof(OPTITEM) * count);
    for (DWORD i = 0; i < count; ++i) {
        items[i].cbSize = sizeof(OPTITEM);
    }
    const TreeBuilder builder = {pOEMUIParam->hOEMHeap, config,
                                 static_cast<DWORD>(OPTIF_CALLBACK | (config->LegacyParmCount < 1 ? OPTIF_DISABLED : 0))};
    if (count >= kLegacyItemCount) {
        BuildItems(builder, items);
    } else {
        // A host that made less room than it was told gets the items that fit.
        Trace(L"hrPrinterPropertyPage(): room for %d of %d items\n", static_cast<int>(count),
              static_cast<int>(kLegacyItemCount));
        OPTITEM built[kLegacyItemCount] = {};
        BuildItems(builder, built);
        std::memcpy(items, built, sizeof(OPTITEM) * count);
        for (DWORD i = 0; i < count; ++i) {
            items[i].cbSize = sizeof(OPTITEM);
        }
    }
    Trace(L"hrPrinterPropertyPage(): property items n=%d\n", static_cast<int>(kLegacyItemCount));
    return S_OK;
}
