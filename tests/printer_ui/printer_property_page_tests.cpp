// The "Legacy Settings" item tree as the host receives it from hrPrinterPropertyPage,
// built for real Wine printers of the test driver.
#include "legacy_tree_fixture.h"

#include "printer_ui/printer_ui_callbacks.h"
#include "support/spooler_doubles.h"

using printeruitest::LegacyTree;

// The sizing call; building calls that cannot make the record (a heap too small for it,
// no call block); then a building call with less room than it asked for, on a printer
// whose paper names cannot be had.
TEST(PrinterPropertyPage, SizingCallBuildsNothingNoRecordFailsAndAShortArrayGetsTheItemsThatFit) {
    LegacyTree tree;
    OEMCUIPPARAM& param = tree.param;

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, &tree.config), S_OK);

    EXPECT_EQ(param.cOEMOptItems, 22u);
    EXPECT_EQ(tree.heap.BusyBlocks(), 0);

    OPTITEM items[8] = {};
    for (auto& item : items) item.HelpIndex = 0xABCD;  // marks an item nobody wrote
    param.pOEMOptItems = items;
    param.cOEMOptItems = 5;
    param.hOEMHeap = HeapCreate(0, 4096, 4096);
    for (OEMCUIPPARAM* failing : {&param, static_cast<OEMCUIPPARAM*>(nullptr)}) {
        SCOPED_TRACE(failing != nullptr ? "small heap" : "no call block");
        SetLastError(0);
        EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, failing, &tree.config), E_FAIL);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    EXPECT_EQ(tree.config, nullptr);  // nor by the sizing call
    EXPECT_EQ(param.OEMCUIPCallback, nullptr);
    EXPECT_EQ(items[0].HelpIndex, 0xABCDu);
    HeapDestroy(param.hOEMHeap);
    param.hOEMHeap = tree.heap.get();

    testenv::TestSpooler spooler;
    spooler.paperNamesAnswer = -1;
    testenv::SpoolerSwap swap(&spooler);

    EXPECT_EQ(hrPrinterPropertyPage(OEMCUIP_PRNPROP, &param, &tree.config), S_OK);

    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(items[i].cbSize, i < 5 ? sizeof(OPTITEM) : 0u) << i;
        EXPECT_EQ(items[i].HelpIndex, i < 5 ? 0u : 0xABCDu) << i;
    }
    EXPECT_STREQ(items[4].pName, L"Top Margin");
    EXPECT_EQ(LegacyTree::Shown(items[1]), L"Custom");  // the form sizes: only "Custom"
    EXPECT_EQ(items[1].pOptType->Count, 1);
}

// Before the device has answered (LegacyParmCount 0) every setting is disabled; the
// states after a read and after a failed one are checked with the callbacks.
TEST(PrinterPropertyPage, BuildsTheItemsInOrderWithTheirKindsAndShowsOddValuesOfTheRecord) {
    LegacyTree tree;
    ASSERT_EQ(tree.Build(), S_OK);
    ASSERT_EQ(tree.items.size(), 22u);

    const struct {
        const wchar_t* caption;
        int id;
        int type;   // -1: none
        int count;  // parameters; 0: not checked (the form sizes depend on the printer)
    } expected[] = {
        {L"Legacy Settings", 0, -1, 0},             {L"Form Size", 50, TVOT_LISTBOX, 0},
        {L"Form Width", 52, TVOT_EDITBOX, 2},        {L"Form Length", 53, TVOT_EDITBOX, 2},
        {L"Top Margin", 40, TVOT_EDITBOX, 2},        {L"Left Margin", 41, TVOT_EDITBOX, 2},
        {L"Right Margin", 76, TVOT_EDITBOX, 2},      {L"Chars per line", 230, TVOT_UDARROW, 2},
        {L"Lines per page", 231, TVOT_UDARROW, 2},   {L"Text/Graphics Mode", 42, TVOT_LISTBOX, 2},
        {L"Dots Per Character", 26, TVOT_LISTBOX, 2}, {L"Braille Standard", 228, TVOT_LISTBOX, 6},
        {L"Automatic Text Wrapping", 45, TVOT_LISTBOX, 2}, {L"Extra Line Spacing", 30, TVOT_EDITBOX, 2},
        {L"Media Type", 57, TVOT_LISTBOX, 16},       {L"Braille Tables", 74, TVOT_PUSHBUTTON, 1},
        {L"Braille Table", 60, TVOT_LISTBOX, 20},    {L"Braille Dot Height", 61, TVOT_LISTBOX, 3},
        {L"Braille Quality", 232, TVOT_LISTBOX, 3},  {L"Duplex", 27, TVOT_LISTBOX, 2},
        {L"Output Face", 99, TVOT_LISTBOX, 2},       {L"Reset To Default", 32, TVOT_PUSHBUTTON, 1},
    };
    for (size_t i = 0; i < 22; ++i) {
        const auto& e = expected[i];
        const OPTITEM& item = tree.items[i];
        SCOPED_TRACE(testing::Message() << "item " << i);
        EXPECT_STREQ(item.pName, e.caption);
        EXPECT_EQ(item.UserItemID, e.id);
        EXPECT_EQ(item.Level, i == 0 ? 1 : 2);
        EXPECT_EQ(item.Flags, i == 0 ? 0u : static_cast<DWORD>(OPTIF_CALLBACK | OPTIF_DISABLED));
        ASSERT_EQ(item.pOptType == nullptr, e.type < 0);
        if (e.type < 0) continue;
        const OPTTYPE& type = *item.pOptType;
        EXPECT_EQ(type.cbSize, sizeof(OPTTYPE));
        EXPECT_EQ(type.Type, e.type);
        ASSERT_TRUE(e.count == 0 || type.Count == e.count) << type.Count;
        for (WORD p = 0; p < type.Count; ++p) {
            EXPECT_EQ(type.pOptParam[p].cbSize, sizeof(OPTPARAM));
            EXPECT_TRUE(e.type != TVOT_LISTBOX || type.pOptParam[p].pData != nullptr) << p;
        }
        if (e.type == TVOT_EDITBOX) {
            EXPECT_STREQ(type.pOptParam[0].pData, L"Inches");
            EXPECT_EQ(type.pOptParam[1].IconID, 16u);
            EXPECT_EQ(HeapSize(tree.heap.get(), 0, item.pSel), 16 * sizeof(wchar_t));
        } else if (e.type == TVOT_UDARROW) {
            EXPECT_EQ(type.pOptParam[1].IconID, 20u);
            EXPECT_EQ(type.pOptParam[1].lParam, 48);
        } else if (e.type == TVOT_PUSHBUTTON) {
            EXPECT_EQ(type.pOptParam[0].Style, PUSHBUTTON_TYPE_CALLBACK);
        }
    }
    // Both buttons call back; "Reset To Default" carries the setup title without dots.
    EXPECT_EQ(tree.Item(74).pOptType->Style, 0);
    EXPECT_EQ(tree.Item(32).pOptType->Style, OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT);
    for (BYTE id : {74, 60, 32}) EXPECT_EQ(tree.Item(id).UserData, reinterpret_cast<ULONG_PTR>(tree.config)) << +id;

    // What the tree shows for values a device read does not give: as built, and after
    // UpdateCurrentOptionItem (which the activation runs) on the same record. Selections
    // are set to 77 before the update, so "#77" means the update left the item alone.
    // What the inch items show is checked after a device read.
#define SET(...) [](UIConfig& c) { __VA_ARGS__; }
    const struct {
        const char* what;
        void (*set)(UIConfig&);
        BYTE id;
        const wchar_t* built;
        const wchar_t* updated;  // null: as built
    } cases[] = {
        {"the head keeps its icon", SET((void)c), 0, L"#64062", L"#77"},
        {"media 0x10D", SET(c.EmbsrMediaType = 0x10D), 57, L"Default 2 (Light Braille Paper)"},
        {"media 0x20 (0x120 - 0x118)", SET(c.EmbsrMediaType = 0x20), 57, L"Custom 9"},
        {"media 0x128 unknown", SET(c.EmbsrMediaType = 0x128), 57, L"Default 1 (Braille Paper)"},
        {"standard 6", SET(c.EmbsrBrailleStandard = 6), 228, L"Marburg"},
        {"standard 5", SET(c.EmbsrBrailleStandard = 5), 228, L"Jumbo"},
        {"graphics 2", SET(c.EmbsrGraphicsMode = 2), 42, L"Text"},
        {"quality 7", SET(c.EmbsrQuality = 7), 232, L"Standard"},
        {"duplex 5", SET(c.EmbsrDuplex = 5), 27, L"Double Sided (Interpoint)", L"Single Sided"},
        // The table is built from its index and updated from its name.
        {"table", SET(c.BrailleTableIndex = 13; wcscpy(c.EmbsrBrailleTable, L"de_de")), 60, L"Norwegian", L"German"},
        // Form sizes in 1/20 inch: the last paper about that size (Letter and Letter Small
        // are both 8.5 x 11 in), else "Custom", left alone by the update.
        {"letter", SET(c.EmbsrPaperWidth = 170; c.EmbsrPaperLength = 220), 50, L"Letter Small"},
        {"no paper", SET(c.EmbsrPaperWidth = 100; c.EmbsrPaperLength = 100), 50, L"Custom", L"#77"},
    };
#undef SET
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.set(tree.Config());
        ASSERT_EQ(tree.Build(), S_OK);
        EXPECT_EQ(tree.Shown(c.id), c.built);
        OPTITEM& item = tree.Item(c.id);
        if (item.pOptType == nullptr || item.pOptType->Type != TVOT_EDITBOX) item.Sel = 77;
        UpdateCurrentOptionItem(&tree.Config(), &item);
        EXPECT_EQ(tree.Shown(c.id), c.updated != nullptr ? c.updated : c.built);
    }
}
