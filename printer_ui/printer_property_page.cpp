#include "printer_ui/printer_property_page.h"

#include <cstdint>
#include <compstui.h>

#include <cstring>
#include <vector>

#include "config/config_lifecycle.h"
#include "config/localisation.h"
#include "config/paper_sizes.h"
#include "base/heap_memory.h"
#include "base/text_format.h"
#include "base/trace_log.h"
#include "device/protocol/legacy_settings_table.h"
#include "printer_ui/printer_ui_callbacks.h"
#include "resources/resource_ids.h"

namespace {

constexpr LONG kLegacyHeadIcon = 64062;   // platform icon number, passed on as it is
constexpr WORD kResetButtonStyle = 0x60;  // OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT

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

void BeginItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    item.Level = 2;
    item.Flags = b.itemFlags;
    item.pName = LoadLocalString(b.config, b.heap, row.caption);
    item.UserItemID = row.id;
    // The buttons and the braille table hand their callbacks the record.
    if (row.kind != LegacyItemKind::List || row.rule == LegacyValueRule::BrailleTableName) {
        item.UserData = reinterpret_cast<ULONG_PTR>(b.config);
    }
}

void ListItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    item.Sel = LegacySelectionOf(row, *b.config, LegacyMoment::Build);
    item.pOptType = CreateOptType(b.heap, TVOT_LISTBOX, row.list->entryCount);
    if (item.pOptType != nullptr) {
        for (WORD i = 0; i < row.list->entryCount; ++i) {
            item.pOptType->pOptParam[i].pData = LoadLocalString(b.config, b.heap, row.list->entries[i]);
        }
    }
}

void EditItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    item.pSel = HostCopy(b.heap, LegacyTextOf(row, *b.config), kMeasureTextCapacity);
    item.pOptType = CreateOptType(b.heap, TVOT_EDITBOX, 2);
    if (item.pOptType != nullptr) {
        item.pOptType->pOptParam[0].pData = LoadLocalString(b.config, b.heap, IDS_INCHES);
        item.pOptType->pOptParam[1].IconID = kMeasureTextCapacity;
    }
}

void UpDownItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    item.Sel = LegacySelectionOf(row, *b.config, LegacyMoment::Build);
    item.pOptType = CreateOptType(b.heap, TVOT_UDARROW, 2);
    if (item.pOptType != nullptr) {
        item.pOptType->pOptParam[1].IconID = static_cast<DWORD>(row.lowest);
        item.pOptType->pOptParam[1].lParam = row.highest;
    }
}

void PushButtonItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    item.Sel = 0;
    item.pOptType = CreateOptType(b.heap, TVOT_PUSHBUTTON, 1);
    if (item.pOptType != nullptr) {
        const bool reset = row.kind == LegacyItemKind::ResetButton;
        item.pOptType->Style = reset ? kResetButtonStyle : 0;
        const _CPSUICALLBACK callback = reset ? OEMResetToDefaultPushButtonCallback : OEMBrailleTableUIPushButtonCallback;
        item.pOptType->pOptParam[0].Style = PUSHBUTTON_TYPE_CALLBACK;
        item.pOptType->pOptParam[0].pData = reinterpret_cast<LPTSTR>(callback);
    }
}

// The printer's paper sizes and "Custom". Each named entry's lParam points to an 8-byte
// block with its form's width (low half) and length (high half) in micrometres; the
// selection is the last entry whose form is about the device's paper size, else "Custom".
void FormSizeItem(const TreeBuilder& b, OPTITEM& item) {
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
        if (IsFormOfDeviceSize(form, *b.config)) {
            item.Sel = i;
        }
    }
    entries[count].pData = LoadLocalString(b.config, b.heap, IDS_CUSTOM);
}

// One item of the branch, as its row of the settings table describes it.
void BuildItem(const TreeBuilder& b, OPTITEM& item, const LegacySetting& row) {
    if (row.kind == LegacyItemKind::Head) {
        item.Level = 1;
        item.Flags = 0;
        item.pName = LoadLocalString(b.config, b.heap, row.caption);
        item.Sel = kLegacyHeadIcon;
        item.UserItemID = row.id;
        return;
    }
    BeginItem(b, item, row);
    switch (row.kind) {
        case LegacyItemKind::FormSize:
            FormSizeItem(b, item);
            break;
        case LegacyItemKind::List:
            ListItem(b, item, row);
            break;
        case LegacyItemKind::UpDown:
            UpDownItem(b, item, row);
            break;
        case LegacyItemKind::Inches:
        case LegacyItemKind::Seconds:
            EditItem(b, item, row);
            break;
        case LegacyItemKind::BrailleTablesButton:
        case LegacyItemKind::ResetButton:
            PushButtonItem(b, item, row);
            break;
        case LegacyItemKind::Head:
        case LegacyItemKind::Accepted:
            break;
    }
}

void BuildItems(const TreeBuilder& b, OPTITEM* items) {
    size_t next = 0;
    for (const LegacySetting& row : LegacySettings()) {
        if (row.caption != 0) {
            BuildItem(b, items[next++], row);
        }
    }
}

}  // namespace

HRESULT hrPrinterPropertyPage(DWORD dwMode, POEMCUIPPARAM pOEMUIParam, UIConfig** ppUserData) {
    if (pOEMUIParam == nullptr || ppUserData == nullptr) {
        Trace(L"hrPrinterPropertyPage(): dwMode=%d without parameters\n", dwMode);
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    const DWORD itemCount = static_cast<DWORD>(LegacyTreeItemCount());
    if (pOEMUIParam->pOEMOptItems == nullptr) {
        pOEMUIParam->cOEMOptItems = itemCount;
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
    if (count >= itemCount) {
        BuildItems(builder, items);
    } else {
        // A host that made less room than it was told gets the items that fit.
        Trace(L"hrPrinterPropertyPage(): room for %d of %d items\n", static_cast<int>(count),
              static_cast<int>(itemCount));
        std::vector<OPTITEM> built(itemCount);
        BuildItems(builder, built.data());
        std::memcpy(items, built.data(), sizeof(OPTITEM) * count);
        for (DWORD i = 0; i < count; ++i) {
            items[i].cbSize = sizeof(OPTITEM);
        }
    }
    Trace(L"hrPrinterPropertyPage(): property items n=%d\n", static_cast<int>(itemCount));
    return S_OK;
}
