// The "Legacy Settings" item tree as the host receives it from hrPrinterPropertyPage,
// built for real Wine printers of the test driver.
#include "legacy_tree_fixture.h"

#include <cstdint>
#include <string>

#include "base/spooler.h"
#include "printer_ui/printer_ui_callbacks.h"  // OEMPrinterUICallBack
#include "support/spooler_doubles.h"

using printeruitest::LegacyTree;

TEST(PrinterPropertyPage, SizingCallReportsTwentyTwoItemsAndBuildsNothing) {
    LegacyTree tree;
    OEMCUIPPARAM& param = tree.param();

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, tree.configSlot()), S_OK);

    EXPECT_EQ(param.cOEMOptItems, 22u);
    EXPECT_EQ(*tree.configSlot(), nullptr);
    EXPECT_EQ(param.pOEMUserData, nullptr);
    EXPECT_EQ(param.OEMCUIPCallback, nullptr);
    EXPECT_EQ(tree.heap().BusyBlocks(), 0);
}

TEST(PrinterPropertyPage, FailsWithInvalidParameterWhenNoRecordCanBeMade) {
    for (bool withCallBlock : {true, false}) {  // a heap too small for the record; no call block
        SCOPED_TRACE(withCallBlock);
        LegacyTree tree;
        HANDLE tiny = HeapCreate(0, 4096, 4096);
        ASSERT_NE(tiny, nullptr);
        OEMCUIPPARAM& param = tree.param();
        param.hOEMHeap = tiny;
        OPTITEM items[22] = {};
        param.pOEMOptItems = items;
        param.cOEMOptItems = 22;

        SetLastError(0);
        EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, withCallBlock ? &param : nullptr, tree.configSlot()), E_FAIL);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        EXPECT_EQ(*tree.configSlot(), nullptr);
        EXPECT_EQ(param.OEMCUIPCallback, nullptr);
        EXPECT_EQ(items[0].pName, nullptr);
        HeapDestroy(tiny);
    }
}

TEST(PrinterPropertyPage, FillsOnlyTheRoomTheHostMade) {
    LegacyTree tree;
    OPTITEM items[8] = {};
    for (auto& item : items) item.HelpIndex = 0xABCD;  // marks an item nobody wrote
    tree.param().pOEMOptItems = items;
    tree.param().cOEMOptItems = 5;

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &tree.param(), tree.configSlot()), S_OK);

    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(items[i].cbSize, i < 5 ? sizeof(OPTITEM) : 0u) << i;
        EXPECT_EQ(items[i].HelpIndex, i < 5 ? 0u : 0xABCDu) << i;
    }
    ASSERT_NE(items[4].pName, nullptr);
    EXPECT_STREQ(items[4].pName, L"Top Margin");
}

TEST(PrinterPropertyPage, BuildsTheItemsInOrderWithTheirCaptionsKindsAndIdentifiers) {
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    ASSERT_EQ(tree.items().size(), 22u);
    UIConfig* config = *tree.configSlot();
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(tree.param().pOEMUserData, config);
    EXPECT_EQ(tree.param().OEMCUIPCallback, &OEMPrinterUICallBack);

    const int kNone = -1;
    const struct {
        const wchar_t* caption;
        int id;
        int type;
        int entries;  // list boxes; the form sizes depend on the printer
    } expected[] = {
        {L"Legacy Settings", 0, kNone, 0},          {L"Form Size", 50, TVOT_LISTBOX, 0},
        {L"Form Width", 52, TVOT_EDITBOX, 0},        {L"Form Length", 53, TVOT_EDITBOX, 0},
        {L"Top Margin", 40, TVOT_EDITBOX, 0},        {L"Left Margin", 41, TVOT_EDITBOX, 0},
        {L"Right Margin", 76, TVOT_EDITBOX, 0},      {L"Chars per line", 230, TVOT_UDARROW, 0},
        {L"Lines per page", 231, TVOT_UDARROW, 0},   {L"Text/Graphics Mode", 42, TVOT_LISTBOX, 2},
        {L"Dots Per Character", 26, TVOT_LISTBOX, 2}, {L"Braille Standard", 228, TVOT_LISTBOX, 6},
        {L"Automatic Text Wrapping", 45, TVOT_LISTBOX, 2}, {L"Extra Line Spacing", 30, TVOT_EDITBOX, 0},
        {L"Media Type", 57, TVOT_LISTBOX, 16},       {L"Braille Tables", 74, TVOT_PUSHBUTTON, 0},
        {L"Braille Table", 60, TVOT_LISTBOX, 20},    {L"Braille Dot Height", 61, TVOT_LISTBOX, 3},
        {L"Braille Quality", 232, TVOT_LISTBOX, 3},  {L"Duplex", 27, TVOT_LISTBOX, 2},
        {L"Output Face", 99, TVOT_LISTBOX, 2},       {L"Reset To Default", 32, TVOT_PUSHBUTTON, 0},
    };
    for (size_t i = 0; i < 22; ++i) {
        const auto& e = expected[i];
        const OPTITEM& item = tree.items()[i];
        SCOPED_TRACE(testing::Message() << "item " << i);
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
            EXPECT_TRUE(e.type != TVOT_LISTBOX || type.pOptParam[p].pData != nullptr) << p;
        }
        EXPECT_TRUE(e.entries == 0 || type.Count == e.entries) << type.Count;
        if (e.type == TVOT_EDITBOX) {
            ASSERT_EQ(type.Count, 2);
            EXPECT_STREQ(type.pOptParam[0].pData, L"Inches");
            EXPECT_EQ(type.pOptParam[1].IconID, 16u);
            ASSERT_NE(item.pSel, nullptr);
            EXPECT_EQ(HeapSize(tree.heap().get(), 0, item.pSel), 16 * sizeof(wchar_t));
        }
        if (e.type == TVOT_PUSHBUTTON) {
            EXPECT_EQ(type.Count, 1);
            EXPECT_EQ(type.pOptParam[0].Style, PUSHBUTTON_TYPE_CALLBACK);
        }
        if (e.type == TVOT_UDARROW) {
            ASSERT_EQ(type.Count, 2);
            EXPECT_EQ(type.pOptParam[1].IconID, 20u);
            EXPECT_EQ(type.pOptParam[1].lParam, 48);
        }
    }
    // Both buttons call back; "Reset To Default" carries the setup title without dots.
    EXPECT_EQ(tree.Item(74).pOptType->Style, 0);
    EXPECT_EQ(tree.Item(32).pOptType->Style, OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT);
    for (BYTE id : {74, 60, 32}) {
        EXPECT_EQ(tree.Item(id).UserData, reinterpret_cast<ULONG_PTR>(config)) << static_cast<int>(id);
    }
}

TEST(PrinterPropertyPage, DisablesTheSettingsUntilTheDeviceHasAnswered) {
    // 0: not read yet; -1: the read failed; 23: known.
    for (int32_t parmCount : {0, -1, 23}) {
        SCOPED_TRACE(testing::Message() << "LegacyParmCount " << parmCount);
        LegacyTree tree;
        tree.Config().LegacyParmCount = parmCount;
        ASSERT_EQ(tree.Build(), S_OK);
        const DWORD settingFlags = OPTIF_CALLBACK | (parmCount > 0 ? 0 : OPTIF_DISABLED);
        EXPECT_EQ(tree.items()[0].Level, 1);
        EXPECT_EQ(tree.items()[0].Flags, 0u);
        EXPECT_EQ(tree.items()[0].Sel, 64062);
        for (size_t i = 1; i < tree.items().size(); ++i) {
            EXPECT_EQ(tree.items()[i].Level, 2) << i;
            EXPECT_EQ(tree.items()[i].Flags, settingFlags) << i;
        }
    }
}

TEST(PrinterPropertyPage, InitialSelectionsAndTextsFollowTheRecord) {
    const struct {
        const char* what;
        void (*set)(UIConfig&);
        BYTE id;
        LONG selection;        // list boxes and up-down items
        const wchar_t* shown;  // the selected entry's text, or an edit item's text
    } cases[] = {
        {"media 0x0D", [](UIConfig& c) { c.EmbsrMediaType = 0x0D; }, 57, 1, L"Default 2 (Light Braille Paper)"},
        {"media 0x10D", [](UIConfig& c) { c.EmbsrMediaType = 0x10D; }, 57, 1, L"Default 2 (Light Braille Paper)"},
        {"media 0x20 (0x120 - 0x118)", [](UIConfig& c) { c.EmbsrMediaType = 0x20; }, 57, 8, L"Custom 9"},
        {"media 0x128 unknown", [](UIConfig& c) { c.EmbsrMediaType = 0x128; }, 57, 0, L"Default 1 (Braille Paper)"},
        {"standard 6", [](UIConfig& c) { c.EmbsrBrailleStandard = 6; }, 228, 0, L"Marburg"},
        {"standard 3", [](UIConfig& c) { c.EmbsrBrailleStandard = 3; }, 228, 3, L"Japanese Standard (Microbraille)"},
        {"graphics 2", [](UIConfig& c) { c.EmbsrGraphicsMode = 2; }, 42, 0, L"Text"},
        {"quality 7", [](UIConfig& c) { c.EmbsrQuality = 7; }, 232, 1, L"Standard"},
        {"light dots show low", [](UIConfig& c) { c.EmbsrBrailleForce = 2; }, 61, 2, L"Low"},
        {"table index", [](UIConfig& c) { c.BrailleTableIndex = 13; }, 60, 13, L"Norwegian"},
        {"chars per line", [](UIConfig& c) { c.EmbsrCharsWidth = 41; }, 230, 41, nullptr},
        {"width text", [](UIConfig& c) { wcscpy(c.PaperWidthText, L"8.55"); }, 52, 0, L"8.55"},
    };
    LegacyTree tree;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.set(tree.Config());
        ASSERT_EQ(tree.Build(), S_OK);
        const OPTITEM& item = tree.Item(c.id);
        if (item.pOptType->Type == TVOT_EDITBOX) {
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
        {100, 100, L"Custom"},
        {172, 220, L"Custom"},
    };
    LegacyTree tree;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.length);
        tree.Config().EmbsrPaperWidth = c.width;
        tree.Config().EmbsrPaperLength = c.length;
        ASSERT_EQ(tree.Build(), S_OK);
        EXPECT_EQ(tree.SelectedText(50), c.selected);
    }
    // "Custom" is last and has no size.
    const OPTTYPE& type = *tree.Item(50).pOptType;
    EXPECT_EQ(tree.EntryText(50, type.Count - 1), L"Custom");
    EXPECT_EQ(type.pOptParam[type.Count - 1].lParam, 0);
}

namespace {
// A printer whose paper names cannot be had.
class NoPaperNamesSpooler : public Spooler {
public:
    int DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                            const DEVMODEW* devmode) override {
        return capability == DC_PAPERNAMES ? -1 : Spooler::DeviceCapabilitiesW(device, port, capability, output, devmode);
    }
};
}  // namespace

TEST(PrinterPropertyPage, FormSizeListIsOnlyCustomWhenThePaperNamesCannotBeHad) {
    LegacyTree tree;
    tree.Config().EmbsrPaperWidth = 170;
    tree.Config().EmbsrPaperLength = 220;
    NoPaperNamesSpooler spooler;
    testenv::SpoolerSwap swap(&spooler);

    ASSERT_EQ(tree.Build(), S_OK);

    EXPECT_EQ(tree.Item(50).pOptType->Count, 1);
    EXPECT_EQ(tree.SelectedText(50), L"Custom");
}
