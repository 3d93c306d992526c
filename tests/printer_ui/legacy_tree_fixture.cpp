#include "legacy_tree_fixture.h"

#include "config/config_lifecycle.h"
#include "printer_ui/printer_property_page.h"

namespace printeruitest {

std::string Default(const std::string& setting) { return "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n"; }
const char kServiceUpdate[] = "\x1b%-12345X@PJL SERVICE UPDATE\r\n";

std::string ReplyUnlikeTheDefaults() {
    return embosser_sim::HttpReply(
        "@PJL INFO LEGACY [23 ENTRIES]\r\n"
        "TOPMARGIN=12\r\nLEFTMARGIN=7\r\nRIGHTMARGIN=6\r\nBRAILLEDOTS=8\r\nCHARSWIDTH=38\r\nLINESLENGTH=27\r\n"
        "EXTRALINESPACE=4\r\nBRAILLETABLE=\"DE_DE\"\r\nAUTOCR=ON\r\nGRAPHICS=ON\r\nSPACING=MICROBRAILLE\r\n"
        "MEDIATYPE=CARDSTOCK\r\nPAPERLENGTH=7200\r\nPAPERWIDTH=8280\r\nBRAILLEFORCE=LIGHT\r\nQUALITY=BEST\r\n"
        "DUPLEXMODE=SHORTEDGE\r\nOUTPUTFACE=1\r\nFWPRIMARY=3.1.12\r\nSERIALNUMBER=\"QX-0042\"\r\n"
        "MODEL=\"Quorl 640\"\r\n");
}

std::string IncompleteReply() {
    std::string block = embosser_sim::SampleLegacyBlock();
    block.erase(block.find("MODEL="));
    return embosser_sim::HttpReply(block);
}

Embosser::Embosser(const char* address, const std::string& reply) {
    embosser_sim::Options options;
    options.address = address;
    options.behaviour = embosser_sim::Behaviour::Answer;
    options.reply = reply;
    simulator_ = std::make_unique<embosser_sim::Simulator>(options);
    std::string error;
    EXPECT_TRUE(simulator_->Start(&error)) << error;
}

LegacyTree::LegacyTree(const wchar_t* embosserAddress) : printer_(L"Ozdk Tree") {
    if (embosserAddress != nullptr) {
        printer_.MakeNetworkPort(embosserAddress, L"");
    }
    param_.cbSize = sizeof(param_);
    param_.hPrinter = printer_.handle();
    param_.pPrinterName = const_cast<wchar_t*>(printer_.name().c_str());
    param_.hModule = GetModuleHandleW(nullptr);
    param_.hOEMHeap = heap_.get();
}

LegacyTree::~LegacyTree() { DestroyConfig(config_); }

UIConfig& LegacyTree::Config() {
    if (config_ == nullptr) {
        CreateConfig(&param_, &config_);
    }
    return *config_;
}

HRESULT LegacyTree::Build() {
    param_.pOEMOptItems = nullptr;
    param_.cOEMOptItems = 0;
    const HRESULT sizing = hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param_, &config_);
    if (sizing != S_OK) {
        return sizing;
    }
    items_.assign(param_.cOEMOptItems, OPTITEM{});
    param_.pOEMOptItems = items_.data();
    return hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param_, &config_);
}

OPTITEM& LegacyTree::Item(BYTE id) {
    for (auto& item : items_) {
        if (item.UserItemID == id && (id != 0 || &item == &items_.front())) {
            return item;
        }
    }
    ADD_FAILURE() << "no item " << static_cast<int>(id);
    static OPTITEM none;
    none = OPTITEM{};
    return none;
}

std::wstring LegacyTree::EntryText(BYTE id, LONG index) {
    const OPTITEM& item = Item(id);
    if (item.pOptType == nullptr || index < 0 || index >= item.pOptType->Count) {
        return L"<no entry " + std::to_wstring(index) + L">";
    }
    const wchar_t* text = item.pOptType->pOptParam[index].pData;
    return text != nullptr ? text : L"<no text>";
}

std::wstring LegacyTree::SelectedText(BYTE id) { return EntryText(id, Item(id).Sel); }

CPSUICBPARAM LegacyTree::Block(WORD reason, OPTITEM* current, HWND dialog) {
    CPSUICBPARAM block = {};
    block.cbSize = sizeof(block);
    block.Reason = reason;
    block.hDlg = dialog;
    block.pOptItem = items_.data();
    block.cOptItem = static_cast<WORD>(items_.size());
    block.pCurItem = current;
    return block;
}

LONG LegacyTree::Callback(WORD reason, OPTITEM* current, HWND dialog) {
    CPSUICBPARAM block = Block(reason, current, dialog);
    if (param_.OEMCUIPCallback == nullptr) {
        ADD_FAILURE() << "no item callback registered";
        return -1;
    }
    return param_.OEMCUIPCallback(&block, &param_);
}

LONG LegacyTree::Choose(BYTE id, LONG selection) {
    OPTITEM& item = Item(id);
    item.Sel = selection;
    return Callback(CPSUICB_REASON_SEL_CHANGED, &item);
}

LONG LegacyTree::Type(BYTE id, const wchar_t* text) {
    OPTITEM& item = Item(id);
    if (item.pSel == nullptr) {
        ADD_FAILURE() << "item " << static_cast<int>(id) << " has no text";
        return -1;
    }
    wcsncpy(item.pSel, text, 15);
    item.pSel[15] = L'\0';
    return Callback(CPSUICB_REASON_SEL_CHANGED, &item);
}

LONG LegacyTree::Press(BYTE id, HWND dialog) {
    OPTITEM& item = Item(id);
    if (item.pOptType == nullptr || item.pOptType->Type != TVOT_PUSHBUTTON || item.pOptType->Count < 1 ||
        item.pOptType->pOptParam[0].Style != PUSHBUTTON_TYPE_CALLBACK) {
        ADD_FAILURE() << "item " << static_cast<int>(id) << " is no callback push button";
        return -1;
    }
    auto callback = reinterpret_cast<_CPSUICALLBACK>(item.pOptType->pOptParam[0].pData);
    CPSUICBPARAM block = Block(CPSUICB_REASON_PUSHBUTTON, &item, dialog);
    return callback(&block);
}

}  // namespace printeruitest
