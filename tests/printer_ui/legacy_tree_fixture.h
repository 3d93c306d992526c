// The "Legacy Settings" tree as the driver's host drives it: a real printer, a heap of
// the host's kind, the host's call block, the item array the host hands over, and the
// callback block the host builds for each callback.
#pragma once

#include <winsock2.h>  // before windows.h, for the simulator
#include <windows.h>
#include <compstui.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "config/config_lifecycle.h"
#include "config/ui_config.h"
#include "embosser_simulator.h"
#include "base/printer_oem_ui.h"
#include "printer_ui/printer_property_page.h"
#include "support/host_fixtures.h"
#include "support/wine_environment.h"

namespace printeruitest {

inline std::string Default(const std::string& setting) { return "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n"; }
inline const char kServiceUpdate[] = "\x1b%-12345X@PJL SERVICE UPDATE\r\n";

// A device reply (inside an HTTP answer) whose every setting differs from the values the
// reset button restores.
inline std::string ReplyUnlikeTheDefaults() {
    return embosser_sim::HttpReply(
        "@PJL INFO LEGACY [23 ENTRIES]\r\n"
        "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
        "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=ON\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
        "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7200\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
        "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=1\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\n"
        "MODEL=\"Quorl 640\"\r\n");
}

// An embosser simulator on `address`:80, running when this returns.
inline std::unique_ptr<embosser_sim::Simulator> StartEmbosser(const char* address, const std::string& reply) {
    embosser_sim::Options options;
    options.address = address;
    options.reply = reply;
    auto simulator = std::make_unique<embosser_sim::Simulator>(options);
    std::string error;
    EXPECT_TRUE(simulator->Start(&error)) << error;
    return simulator;
}

class LegacyTree {
public:
    // A printer of its own; with an address, its port is a Standard TCP/IP port whose
    // host is that address.
    explicit LegacyTree(const wchar_t* embosserAddress = nullptr)
        : printer_(L"Ozdk Tree"), param_(testenv::MakeParam(printer_, heap_.get())) {
        if (embosserAddress != nullptr) printer_.MakeNetworkPort(embosserAddress, L"");
    }
    ~LegacyTree() { DestroyConfig(config_); }
    LegacyTree(const LegacyTree&) = delete;
    LegacyTree& operator=(const LegacyTree&) = delete;

    const testenv::TestPrinter& printer() const { return printer_; }
    const testenv::HostHeap& heap() const { return heap_; }
    OEMCUIPPARAM& param() { return param_; }
    UIConfig** configSlot() { return &config_; }
    std::vector<OPTITEM>& items() { return items_; }

    // The record, attached as the host's first building call would attach it; a test
    // may change its values before Build().
    UIConfig& Config() {
        if (config_ == nullptr) CreateConfig(&param_, &config_);
        return *config_;
    }

    // The host's sizing call and building call. May be called again to rebuild.
    HRESULT Build() {
        param_.pOEMOptItems = nullptr;
        param_.cOEMOptItems = 0;
        const HRESULT sizing = hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param_, &config_);
        if (sizing != S_OK) return sizing;
        items_.assign(param_.cOEMOptItems, OPTITEM{});
        param_.pOEMOptItems = items_.data();
        return hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param_, &config_);
    }

    // By UserItemID (0 is the head).
    OPTITEM& Item(BYTE id) {
        for (auto& item : items_) {
            if (item.UserItemID == id && (id != 0 || &item == &items_.front())) return item;
        }
        ADD_FAILURE() << "no item " << static_cast<int>(id);
        static OPTITEM none;
        none = OPTITEM{};
        return none;
    }
    std::wstring EntryText(BYTE id, LONG index) {
        const OPTITEM& item = Item(id);
        if (item.pOptType == nullptr || index < 0 || index >= item.pOptType->Count) {
            return L"<no entry " + std::to_wstring(index) + L">";
        }
        const wchar_t* text = item.pOptType->pOptParam[index].pData;
        return text != nullptr ? text : L"<no text>";
    }
    std::wstring SelectedText(BYTE id) { return EntryText(id, Item(id).Sel); }

    // Items show these selections, or texts (edit items).
    struct Shown {
        BYTE id;
        LONG selection;
        const wchar_t* text;
    };
    void ExpectShown(std::initializer_list<Shown> shown) {
        for (const Shown& s : shown) {
            const OPTITEM& item = Item(s.id);
            if (s.text != nullptr) {
                EXPECT_STREQ(item.pSel, s.text) << "item " << static_cast<int>(s.id);
            } else {
                EXPECT_EQ(item.Sel, s.selection) << "item " << static_cast<int>(s.id);
            }
        }
    }

    // The item callback for `reason`, with `current` as the current item.
    LONG Callback(WORD reason, OPTITEM* current = nullptr) {
        CPSUICBPARAM block = Block(reason, current, nullptr);
        return param_.OEMCUIPCallback(&block, &param_);
    }
    // The user picks entry `selection`, or types `text`, in an item: SEL_CHANGED follows.
    LONG Choose(BYTE id, LONG selection) {
        Item(id).Sel = selection;
        return Callback(CPSUICB_REASON_SEL_CHANGED, &Item(id));
    }
    LONG Type(BYTE id, const wchar_t* text) {
        OPTITEM& item = Item(id);
        wcsncpy(item.pSel, text, kMeasureTextCapacity - 1);
        item.pSel[kMeasureTextCapacity - 1] = L'\0';
        return Callback(CPSUICB_REASON_SEL_CHANGED, &item);
    }
    // The user presses a push button: its callback runs with the item as the current one.
    LONG Press(BYTE id, HWND dialog = nullptr) {
        OPTITEM& item = Item(id);
        CPSUICBPARAM block = Block(CPSUICB_REASON_PUSHBUTTON, &item, dialog);
        return reinterpret_cast<_CPSUICALLBACK>(item.pOptType->pOptParam[0].pData)(&block);
    }

private:
    CPSUICBPARAM Block(WORD reason, OPTITEM* current, HWND dialog) {
        CPSUICBPARAM block = {};
        block.cbSize = sizeof(block);
        block.Reason = reason;
        block.hDlg = dialog;
        block.pOptItem = items_.data();
        block.cOptItem = static_cast<WORD>(items_.size());
        block.pCurItem = current;
        return block;
    }

    testenv::TestPrinter printer_;
    testenv::HostHeap heap_;
    OEMCUIPPARAM param_ = {};
    UIConfig* config_ = nullptr;
    std::vector<OPTITEM> items_;
};

}  // namespace printeruitest
