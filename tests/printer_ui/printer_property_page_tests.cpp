// The "Legacy Settings" item tree as the host receives it from hrPrinterPropertyPage,
// built for real Wine printers of the test driver.
#include "legacy_tree_fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "config/config_lifecycle.h"
#include "config/spooler.h"
#include "printer_ui/printer_property_page.h"
#include "printer_ui/printer_ui_callbacks.h"
#include "support/spooler_doubles.h"

using printeruitest::LegacyTree;

namespace {

std::vector<std::wstring> Entries(LegacyTree& tree, BYTE id) {
    std::vector<std::wstring> texts;
    const OPTITEM& item = tree.Item(id);
    for (WORD i = 0; item.pOptType != nullptr && i < item.pOptType->Count; ++i) {
        texts.push_back(tree.EntryText(id, i));
    }
    return texts;
}

// A printer whose paper names cannot be had.
class NoPaperNamesSpooler : public Spooler {
public:
    int DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                            const DEVMODEW* devmode) override {
        if (capability == DC_PAPERNAMES) {
            return -1;
        }
        return Spooler::DeviceCapabilitiesW(device, port, capability, output, devmode);
    }
};

}  // namespace

TEST(PrinterPropertyPage, SizingCallReportsTwentyTwoItemsAndBuildsNothing) {
    LegacyTree tree;
    OEMCUIPPARAM& param = tree.param();
    param.pOEMOptItems = nullptr;
    param.cOEMOptItems = 0;

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, tree.configSlot()), S_OK);

    EXPECT_EQ(param.cOEMOptItems, 22u);
    EXPECT_EQ(*tree.configSlot(), nullptr);
    EXPECT_EQ(param.pOEMUserData, nullptr);
    EXPECT_EQ(param.OEMCUIPCallback, nullptr);
    EXPECT_EQ(tree.heap().BusyBlocks(), 0);
}

TEST(PrinterPropertyPage, FailsWithInvalidParameterWhenNoRecordCanBeMade) {
    const struct {
        const char* what;
        bool withCallBlock;
    } cases[] = {
        {"a heap too small for the record", true},
        {"no call block", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        LegacyTree tree;
        HANDLE tiny = HeapCreate(0, 4096, 4096);
        ASSERT_NE(tiny, nullptr);
        OEMCUIPPARAM& param = tree.param();
        param.hOEMHeap = tiny;
        OPTITEM items[22] = {};
        param.pOEMOptItems = items;
        param.cOEMOptItems = 22;
        testenv::TraceLog log;

        SetLastError(0);
        EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, c.withCallBlock ? &param : nullptr, tree.configSlot()),
                  E_FAIL);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        EXPECT_EQ(*tree.configSlot(), nullptr);
        EXPECT_EQ(param.OEMCUIPCallback, nullptr);
        EXPECT_EQ(items[0].pName, nullptr);
        EXPECT_FALSE(log.Contains("hrPrinterPropertyPage(): property items n=22"));
        HeapDestroy(tiny);
    }
}

TEST(PrinterPropertyPage, FillsOnlyTheRoomTheHostMade) {
    LegacyTree tree;
    OEMCUIPPARAM& param = tree.param();
    OPTITEM items[8] = {};
    for (auto& item : items) item.HelpIndex = 0xABCD;  // marks an item nobody wrote
    param.pOEMOptItems = items;
    param.cOEMOptItems = 5;

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, tree.configSlot()), S_OK);

    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(items[i].cbSize, sizeof(OPTITEM)) << i;
        EXPECT_EQ(items[i].HelpIndex, 0u) << i;
        ASSERT_NE(items[i].pName, nullptr) << i;
    }
    EXPECT_STREQ(items[4].pName, L"Top Margin");
    for (int i = 5; i < 8; ++i) {
        EXPECT_EQ(items[i].HelpIndex, 0xABCDu) << i;
        EXPECT_EQ(items[i].cbSize, 0) << i;
    }
}

TEST(PrinterPropertyPage, BuildsTheItemsInOrderWithTheirCaptionsKindsAndIdentifiers) {
    LegacyTree tree;
    testenv::TraceLog log;
    ASSERT_EQ(tree.Build(), S_OK);
    ASSERT_EQ(tree.items().size(), 22u);
    UIConfig* config = *tree.configSlot();
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(tree.param().pOEMUserData, config);
    EXPECT_EQ(tree.param().OEMCUIPCallback, &OEMPrinterUICallBack);
    EXPECT_TRUE(log.Contains("hrPrinterPropertyPage(): property items n=22"));

    const int kNone = -1;
    const struct {
        const wchar_t* caption;
        int id;
        int type;
        std::vector<std::wstring> entries;  // list boxes (the form sizes are checked elsewhere)
    } expected[] = {
        {L"Legacy Settings", 0, kNone, {}},
        {L"Form Size", 50, TVOT_LISTBOX, {}},
        {L"Form Width", 52, TVOT_EDITBOX, {}},
        {L"Form Length", 53, TVOT_EDITBOX, {}},
        {L"Top Margin", 40, TVOT_EDITBOX, {}},
        {L"Left Margin", 41, TVOT_EDITBOX, {}},
        {L"Right Margin", 76, TVOT_EDITBOX, {}},
        {L"Chars per line", 230, TVOT_UDARROW, {}},
        {L"Lines per page", 231, TVOT_UDARROW, {}},
        {L"Text/Graphics Mode", 42, TVOT_LISTBOX, {L"Text", L"Graphics"}},
        {L"Dots Per Character", 26, TVOT_LISTBOX, {L"6", L"8"}},
        {L"Braille Standard", 228, TVOT_LISTBOX,
         {L"Marburg", L"American Library of Congress", L"American National Library of the Blind",
          L"Japanese Standard (Microbraille)", L"Korean Standard", L"Jumbo"}},
        {L"Automatic Text Wrapping", 45, TVOT_LISTBOX, {L"On", L"Off"}},
        {L"Extra Line Spacing", 30, TVOT_EDITBOX, {}},
        {L"Media Type", 57, TVOT_LISTBOX,
         {L"Default 1 (Braille Paper)", L"Default 2 (Light Braille Paper)", L"Default 3 (Copy Paper)",
          L"Default 4 (Premium Copy Paper)", L"Default 5 (Card Stock)", L"Default 6 (Chinese)", L"Custom",
          L"Custom 8", L"Custom 9", L"Custom 10", L"Custom 11", L"Custom 12", L"Custom 13", L"Custom 14",
          L"Custom 15", L"Custom 16"}},
        {L"Braille Tables", 74, TVOT_PUSHBUTTON, {}},
        {L"Braille Table", 60, TVOT_LISTBOX,
         {L"Custom Table", L"English US", L"German", L"French", L"Spanish", L"Italian", L"Arabic", L"Czech",
          L"Danish", L"Greek", L"Swedish", L"Latvian", L"Islandic", L"Norwegian", L"Russian", L"English UK",
          L"Dutch", L"Polish", L"Portuguese", L"Japanese"}},
        {L"Braille Dot Height", 61, TVOT_LISTBOX, {L"High", L"Normal", L"Low"}},
        {L"Braille Quality", 232, TVOT_LISTBOX, {L"Draft", L"Standard", L"Best"}},
        {L"Duplex", 27, TVOT_LISTBOX, {L"Single Sided", L"Double Sided (Interpoint)"}},
        {L"Output Face", 99, TVOT_LISTBOX, {L"Face Up", L"Face Down"}},
        {L"Reset To Default", 32, TVOT_PUSHBUTTON, {}},
    };
    for (size_t i = 0; i < 22; ++i) {
        const auto& e = expected[i];
        const OPTITEM& item = tree.items()[i];
        SCOPED_TRACE(testing::Message() << "item " << i);
        EXPECT_EQ(item.cbSize, sizeof(OPTITEM));
        ASSERT_NE(item.pName, nullptr);
        EXPECT_STREQ(item.pName, e.caption);
        EXPECT_EQ(item.UserItemID, e.id);
        if (e.type == kNone) {
            EXPECT_EQ(item.pOptType, nullptr);
            continue;
        }
        ASSERT_NE(item.pOptType, nullptr);
        const OPTTYPE& type = *item.pOptType;
        EXPECT_EQ(type.cbSize, sizeof(OPTTYPE));
        EXPECT_EQ(type.Type, e.type);
        for (WORD p = 0; p < type.Count; ++p) {
            EXPECT_EQ(type.pOptParam[p].cbSize, sizeof(OPTPARAM));
        }
        if (!e.entries.empty()) {
            EXPECT_EQ(Entries(tree, item.UserItemID), e.entries);
        }
        if (e.type == TVOT_EDITBOX) {
            ASSERT_EQ(type.Count, 2);
            EXPECT_STREQ(type.pOptParam[0].pData, L"Inches");
            EXPECT_EQ(type.pOptParam[1].IconID, 16u);
            ASSERT_NE(item.pSel, nullptr);
            EXPECT_EQ(HeapSize(tree.heap().get(), 0, item.pSel), 16 * sizeof(wchar_t));
        }
        if (e.type == TVOT_UDARROW) {
            ASSERT_EQ(type.Count, 2);
            EXPECT_EQ(type.pOptParam[1].IconID, 20u);
            EXPECT_EQ(type.pOptParam[1].lParam, 48);
        }
    }

    const OPTITEM& tables = tree.Item(74);
    ASSERT_NE(tables.pOptType, nullptr);
    EXPECT_EQ(tables.pOptType->Count, 1);
    EXPECT_EQ(tables.pOptType->Style, 0);
    EXPECT_EQ(tables.pOptType->pOptParam[0].Style, PUSHBUTTON_TYPE_CALLBACK);
    EXPECT_EQ(reinterpret_cast<void*>(tables.pOptType->pOptParam[0].pData),
              reinterpret_cast<void*>(&OEMBrailleTableUIPushButtonCallback));
    const OPTITEM& reset = tree.Item(32);
    ASSERT_NE(reset.pOptType, nullptr);
    EXPECT_EQ(reset.pOptType->Count, 1);
    EXPECT_EQ(reset.pOptType->Style, OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT);
    EXPECT_EQ(reset.pOptType->pOptParam[0].Style, PUSHBUTTON_TYPE_CALLBACK);
    EXPECT_EQ(reinterpret_cast<void*>(reset.pOptType->pOptParam[0].pData),
              reinterpret_cast<void*>(&OEMResetToDefaultPushButtonCallback));
    for (BYTE id : {74, 60, 32}) {
        EXPECT_EQ(tree.Item(id).UserData, reinterpret_cast<ULONG_PTR>(config)) << static_cast<int>(id);
    }
}

TEST(PrinterPropertyPage, DisablesTheSettingsUntilTheDeviceHasAnswered) {
    const struct {
        int32_t parmCount;
        DWORD settingFlags;
    } cases[] = {
        {0, OPTIF_CALLBACK | OPTIF_DISABLED},   // not read yet
        {-1, OPTIF_CALLBACK | OPTIF_DISABLED},  // the read failed
        {23, OPTIF_CALLBACK},                   // known
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "LegacyParmCount " << c.parmCount);
        LegacyTree tree;
        tree.Config().LegacyParmCount = c.parmCount;
        ASSERT_EQ(tree.Build(), S_OK);
        const OPTITEM& head = tree.items()[0];
        EXPECT_EQ(head.Level, 1);
        EXPECT_EQ(head.Flags, 0u);
        EXPECT_EQ(head.Sel, 64062);
        for (size_t i = 1; i < tree.items().size(); ++i) {
            EXPECT_EQ(tree.items()[i].Level, 2) << i;
            EXPECT_EQ(tree.items()[i].Flags, c.settingFlags) << i;
        }
    }
}

TEST(PrinterPropertyPage, InitialSelectionsAndTextsFollowTheRecord) {
    struct Case {
        const char* what;
        void (*set)(UIConfig&);
        BYTE id;
        LONG selection;           // list boxes and up-down items
        const wchar_t* shown;     // the selected entry's text, or an edit item's text
    };
    const Case cases[] = {
        {"media 0x0D", [](UIConfig& c) { c.EmbsrMediaType = 0x0D; }, 57, 1, L"Default 2 (Light Braille Paper)"},
        {"media 0x10D", [](UIConfig& c) { c.EmbsrMediaType = 0x10D; }, 57, 1, L"Default 2 (Light Braille Paper)"},
        {"media 0x20 (0x120 - 0x118)", [](UIConfig& c) { c.EmbsrMediaType = 0x20; }, 57, 8, L"Custom 9"},
        {"media 0x127", [](UIConfig& c) { c.EmbsrMediaType = 0x127; }, 57, 15, L"Custom 16"},
        {"media 0x128 unknown", [](UIConfig& c) { c.EmbsrMediaType = 0x128; }, 57, 0, L"Default 1 (Braille Paper)"},
        {"standard 6", [](UIConfig& c) { c.EmbsrBrailleStandard = 6; }, 228, 0, L"Marburg"},
        {"standard 3", [](UIConfig& c) { c.EmbsrBrailleStandard = 3; }, 228, 3, L"Japanese Standard (Microbraille)"},
        {"graphics 2", [](UIConfig& c) { c.EmbsrGraphicsMode = 2; }, 42, 0, L"Text"},
        {"dots 7", [](UIConfig& c) { c.EmbsrBrailleDots = 7; }, 26, 0, L"6"},
        {"wrapping on", [](UIConfig& c) { c.EmbsrAutoCr = 3; }, 45, 0, L"On"},
        {"duplex short edge", [](UIConfig& c) { c.EmbsrDuplex = 2; }, 27, 1, L"Double Sided (Interpoint)"},
        {"face down", [](UIConfig& c) { c.EmbsrOutputFace = 2; }, 99, 1, L"Face Down"},
        {"quality 7", [](UIConfig& c) { c.EmbsrQuality = 7; }, 232, 1, L"Standard"},
        {"light dots show low", [](UIConfig& c) { c.EmbsrBrailleForce = 2; }, 61, 2, L"Low"},
        {"table index", [](UIConfig& c) { c.BrailleTableIndex = 13; }, 60, 13, L"Norwegian"},
        {"chars per line", [](UIConfig& c) { c.EmbsrCharsWidth = 41; }, 230, 41, nullptr},
        {"lines per page", [](UIConfig& c) { c.EmbsrLinesLength = 29; }, 231, 29, nullptr},
        {"width text", [](UIConfig& c) { wcscpy(c.PaperWidthText, L"8.55"); }, 52, 0, L"8.55"},
        {"length text", [](UIConfig& c) { wcscpy(c.PaperLengthText, L"13.00"); }, 53, 0, L"13.00"},
        {"top text", [](UIConfig& c) { wcscpy(c.TopMarginText, L"0.60"); }, 40, 0, L"0.60"},
        {"left text", [](UIConfig& c) { wcscpy(c.LeftMarginText, L"0.35"); }, 41, 0, L"0.35"},
        {"right text", [](UIConfig& c) { wcscpy(c.RightMarginText, L"0.30"); }, 76, 0, L"0.30"},
        {"spacing text", [](UIConfig& c) { wcscpy(c.LineSpacingText, L"0.20"); }, 30, 0, L"0.20"},
    };
    LegacyTree tree;
    UIConfig& config = tree.Config();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.set(config);
        ASSERT_EQ(tree.Build(), S_OK);
        const OPTITEM& item = tree.Item(c.id);
        ASSERT_NE(item.pOptType, nullptr);
        if (item.pOptType->Type == TVOT_EDITBOX) {
            ASSERT_NE(item.pSel, nullptr);
            EXPECT_STREQ(item.pSel, c.shown);
            continue;
        }
        EXPECT_EQ(item.Sel, c.selection);
        if (c.shown != nullptr) {
            EXPECT_EQ(tree.SelectedText(c.id), c.shown);
        }
    }
}

TEST(PrinterPropertyPage, FormSizeListSelectsTheLastPaperAboutTheDeviceFormElseCustom) {
    const struct {
        int32_t width, length;  // 1/20 inch
        const wchar_t* selected;
    } cases[] = {
        {170, 220, L"Letter Small"},  // Letter and Letter Small are both 8.5 x 11 in: the later wins
        {220, 170, L"Letter Small"},
        {171, 221, L"Letter Small"},
        {165, 234, L"A4"},  // 210 000 x 297 000 is 165 x 233 in whole twentieths
        {170, 280, L"Legal"},
        {100, 100, L"Custom"},
        {172, 220, L"Custom"},
    };
    LegacyTree tree;
    UIConfig& config = tree.Config();
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.length);
        config.EmbsrPaperWidth = c.width;
        config.EmbsrPaperLength = c.length;
        ASSERT_EQ(tree.Build(), S_OK);
        EXPECT_EQ(tree.SelectedText(50), c.selected);
    }

    // Every paper carries its form's size; "Custom" is last and has none.
    const std::vector<std::wstring> names = Entries(tree, 50);
    ASSERT_EQ(names.size(), 5u);
    EXPECT_EQ(names.back(), L"Custom");
    const OPTTYPE& type = *tree.Item(50).pOptType;
    for (size_t i = 0; i + 1 < names.size(); ++i) {
        SCOPED_TRACE(testenv::Narrow(names[i]));
        const auto* size = reinterpret_cast<const uint32_t*>(type.pOptParam[i].lParam);
        ASSERT_NE(size, nullptr);
        EXPECT_EQ(HeapSize(tree.heap().get(), 0, size), 8u);
        std::vector<BYTE> buffer(4096);
        DWORD needed = 0;
        ASSERT_TRUE(GetFormW(tree.printer().handle(), const_cast<wchar_t*>(names[i].c_str()), 1, buffer.data(),
                             static_cast<DWORD>(buffer.size()), &needed));
        const auto* form = reinterpret_cast<const FORM_INFO_1W*>(buffer.data());
        EXPECT_EQ(size[0], static_cast<uint32_t>(form->Size.cx));
        EXPECT_EQ(size[1], static_cast<uint32_t>(form->Size.cy));
    }
    EXPECT_EQ(type.pOptParam[names.size() - 1].lParam, 0);
}

TEST(PrinterPropertyPage, FormSizeListIsOnlyCustomWhenThePaperNamesCannotBeHad) {
    LegacyTree tree;
    tree.Config().EmbsrPaperWidth = 170;
    tree.Config().EmbsrPaperLength = 220;
    NoPaperNamesSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);

    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(Entries(tree, 50), std::vector<std::wstring>{L"Custom"});
    EXPECT_EQ(tree.Item(50).Sel, 0);
}
