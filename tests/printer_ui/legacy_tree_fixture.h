// The "Legacy Settings" tree as the driver's host drives it: a real printer, a heap of
// the host's kind, the host's call block, the item array the host hands over, and the
// callback block the host builds for each callback.
#pragma once

#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include <compstui.h>

#include <initializer_list>
#include <utility>

#include "base/printer_oem_ui.h"
#include "config/config_lifecycle.h"
#include "printer_ui/printer_property_page.h"
#include "support/host_fixtures.h"

namespace printeruitest {

// A device reply whose every setting differs from the values the reset button restores.
inline std::string ReplyUnlikeTheDefaults() {
    return embosser_sim::HttpReply(
        "@PJL INFO LEGACY [23 ENTRIES]\r\n"
        "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
        "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=ON\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
        "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7200\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
        "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=1\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\n"
        "MODEL=\"Quorl 640\"\r\n");
}

// The tree of a printer of its own (a test gives it a network port before the first
// Build() to reach an embosser simulator).
struct LegacyTree {
    ~LegacyTree() { DestroyConfig(config); }

    // The record, attached as the host's first building call would attach it; a test
    // may change its values before Build().
    UIConfig& Config() {
        if (config == nullptr) CreateConfig(&param, &config);
        return *config;
    }

    // The host's sizing call and building call. May be called again to rebuild.
    HRESULT Build() {
        param.pOEMOptItems = nullptr;
        param.cOEMOptItems = 0;
        const HRESULT sizing = hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, &config);
        if (sizing != S_OK) return sizing;
        items.assign(param.cOEMOptItems, OPTITEM{});
        param.pOEMOptItems = items.data();
        return hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, &config);
    }

    // By UserItemID (0 is the head).
    OPTITEM& Item(BYTE id) {
        for (auto& item : items) {
            if (item.UserItemID == id) return item;
        }
        ADD_FAILURE() << "no item " << static_cast<int>(id);
        return items.front();
    }
    // What an item shows: an edit item its text, an up-down item its number, a list its
    // selected entry's text, or "#n" for a selection n that is no entry.
    std::wstring Shown(BYTE id) { return Shown(Item(id)); }
    static std::wstring Shown(const OPTITEM& item) {
        const OPTTYPE* type = item.pOptType;
        if (type != nullptr && type->Type == TVOT_EDITBOX) return item.pSel != nullptr ? item.pSel : L"<no text>";
        if (type == nullptr || type->Type != TVOT_LISTBOX || item.Sel < 0 || item.Sel >= type->Count ||
            type->pOptParam[item.Sel].pData == nullptr) {
            return (type != nullptr && type->Type == TVOT_UDARROW ? L"" : L"#") + std::to_wstring(item.Sel);
        }
        return type->pOptParam[item.Sel].pData;
    }
    void ExpectShown(std::initializer_list<std::pair<BYTE, const wchar_t*>> shown) {
        for (const auto& [id, text] : shown) EXPECT_EQ(Shown(id), text) << "item " << static_cast<int>(id);
    }
    LONG FindEntry(BYTE id, const wchar_t* text) {
        const OPTTYPE* type = Item(id).pOptType;
        for (WORD i = 0; type != nullptr && i < type->Count; ++i) {
            if (type->pOptParam[i].pData != nullptr && wcscmp(type->pOptParam[i].pData, text) == 0) return i;
        }
        return -1;
    }

    // The callback block the host builds, with `current` as the current item.
    CPSUICBPARAM Block(WORD reason, OPTITEM* current, HWND dialog = nullptr) {
        return {sizeof(CPSUICBPARAM), reason, dialog, items.data(), static_cast<WORD>(items.size()), 0, current};
    }
    // The item callback for `reason`.
    LONG Callback(WORD reason, OPTITEM* current = nullptr) {
        CPSUICBPARAM block = Block(reason, current);
        return param.OEMCUIPCallback(&block, &param);
    }
    // The user picks entry `selection`, or types `text`, in an item: SEL_CHANGED follows.
    LONG Choose(BYTE id, LONG selection) {
        Item(id).Sel = selection;
        return Callback(CPSUICB_REASON_SEL_CHANGED, &Item(id));
    }
    LONG Type(BYTE id, const wchar_t* text) {
        OPTITEM& item = Item(id);
        wcsncpy(item.pSel, text, kMeasureTextCapacity - 1);
        return Callback(CPSUICB_REASON_SEL_CHANGED, &item);
    }
    // The user presses a push button: its callback runs with the item as the current one.
    LONG Press(BYTE id, HWND dialog = nullptr) {
        CPSUICBPARAM block = Block(CPSUICB_REASON_PUSHBUTTON, &Item(id), dialog);
        return reinterpret_cast<_CPSUICALLBACK>(Item(id).pOptType->pOptParam[0].pData)(&block);
    }

    testenv::TestPrinter printer{L"Ozdk Tree"};
    testenv::HostHeap heap;
    OEMCUIPPARAM param = testenv::MakeParam(printer, heap.get());
    UIConfig* config = nullptr;
    std::vector<OPTITEM> items;
};

}  // namespace printeruitest
