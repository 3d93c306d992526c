// The host's "Device Settings" page on an item array made here: the block it hands the
// item callback, with a person's change already in the item.
#include <windows.h>
#include <commctrl.h>
#include <compstui.h>
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "support/wine_environment.h"
#include "tools/host/option_tree_page.h"

namespace {

constexpr BYTE kList = 10, kEdit = 11;

// What the item callback saw: the block and the current item's value at the time.
struct SeenCall {
    CPSUICBPARAM block;
    LONG currentSel;
    std::wstring currentText;
    std::wstring oldText;
    POEMCUIPPARAM oemParam;
};
std::vector<SeenCall> gCalls;

LONG APIENTRY ItemCallback(PCPSUICBPARAM block, POEMCUIPPARAM param) {
    const OPTITEM* item = block->pCurItem;
    const bool edit = item != nullptr && item->pOptType != nullptr && item->pOptType->Type == TVOT_EDITBOX;
    const bool changed = edit && block->Reason == CPSUICB_REASON_SEL_CHANGED && block->pOldSel != nullptr;
    // Sel and pSel share their place: an edit item's value is its text.
    gCalls.push_back({*block, item != nullptr && !edit ? item->Sel : 0, edit ? item->pSel : L"",
                      changed ? block->pOldSel : L"", param});
    return CPSUICB_ACTION_NONE;
}

OPTPARAM Param(const wchar_t* text, WORD iconId = 0) {
    OPTPARAM param = {};
    param.cbSize = sizeof(param);
    param.pData = const_cast<wchar_t*>(text);
    param.IconID = iconId;
    return param;
}

OPTTYPE Type(BYTE kind, OPTPARAM* params, WORD count) {
    OPTTYPE type = {};
    type.cbSize = sizeof(type);
    type.Type = kind;
    type.Count = count;
    type.pOptParam = params;
    return type;
}

OPTITEM Item(BYTE id, const wchar_t* name, OPTTYPE* type) {
    OPTITEM item = {};
    item.cbSize = sizeof(item);
    item.Level = type != nullptr ? 2 : 1;
    item.Flags = type != nullptr ? OPTIF_CALLBACK : 0;
    item.pName = const_cast<wchar_t*>(name);
    item.pOptType = type;
    item.UserItemID = id;
    return item;
}

}  // namespace

TEST(DeviceSettingsPage, CallbacksGetAFullBlockAndAChangeIsInTheItemBeforeTheCallbackSeesIt) {
    OPTPARAM listParams[] = {Param(L"One"), Param(L"Two"), Param(L"Three")};
    OPTPARAM editParams[] = {Param(L"Inches"), Param(nullptr, 8)};
    OPTTYPE listType = Type(TVOT_LISTBOX, listParams, 3);
    OPTTYPE editType = Type(TVOT_EDITBOX, editParams, 2);
    wchar_t editText[8] = L"0.25";
    int userData = 0;
    OPTITEM items[] = {Item(0, L"Settings", nullptr), Item(kList, L"Count", &listType),
                       Item(kEdit, L"Margin", &editType)};
    items[1].Sel = 1;
    items[2].pSel = editText;

    ozdkhost::CollectedItems collected;
    collected.items = items;
    collected.count = 3;
    collected.param.cbSize = sizeof(OEMCUIPPARAM);
    collected.param.pOEMOptItems = items;
    collected.param.cOEMOptItems = 3;
    collected.param.pOEMUserData = &userData;
    collected.param.OEMCUIPCallback = &ItemCallback;
    gCalls.clear();

    // A modeless sheet with a plain page in front and the tree page behind it.
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);
    ozdkhost::HostLog log;
    ozdkhost::OptionTreePage tree(collected, &log, CPSUIF_UPDATE_PERMISSION);
    std::unique_ptr<ozdkhost::HostPage> other = ozdkhost::MakeCallLogPage(log);
    HPROPSHEETPAGE pages[] = {other->CreatePage(), tree.CreatePage()};
    PROPSHEETHEADERW header = {};
    header.dwSize = sizeof(header);
    header.dwFlags = PSH_MODELESS;
    header.pszCaption = L"Tree Page Test";
    header.nPages = 2;
    header.phpage = pages;
    const HWND sheet = reinterpret_cast<HWND>(PropertySheetW(&header));
    ASSERT_NE(sheet, nullptr);

    ASSERT_TRUE(PropSheet_SetCurSel(sheet, pages[1], 0));
    ASSERT_TRUE(tree.Choose(kList, 2));
    ASSERT_TRUE(tree.Type(kEdit, L"0.1"));
    ASSERT_TRUE(SendMessageW(sheet, PSM_APPLY, 0, 0));
    EXPECT_EQ(items[1].Sel, 2);
    EXPECT_STREQ(editText, L"0.1");

    // The sheet may ask the page to let go before it applies and to come back after.
    std::vector<SeenCall> calls;
    for (const auto& call : gCalls) {
        const bool again = !calls.empty() && call.block.Reason == CPSUICB_REASON_SETACTIVE;
        if (call.block.Reason != CPSUICB_REASON_KILLACTIVE && !again) calls.push_back(call);
    }
    const struct {
        WORD reason;
        const OPTITEM* current;
        LONG sel;
        const wchar_t* text;
        LONG oldSel;  // list items and page events
        const wchar_t* oldText;
    } expected[] = {
        {CPSUICB_REASON_SETACTIVE, &items[0], 0, L"", 0, L""},
        {CPSUICB_REASON_SEL_CHANGED, &items[1], 2, L"", 1, L""},
        {CPSUICB_REASON_SEL_CHANGED, &items[2], 0, L"0.1", 0, L"0.25"},
        {CPSUICB_REASON_APPLYNOW, &items[0], 0, L"", -1, L""},
    };
    ASSERT_EQ(calls.size(), std::size(expected)) << testenv::Narrow(log.Text());
    for (size_t i = 0; i < calls.size(); ++i) {
        const auto& call = calls[i];
        SCOPED_TRACE(testing::Message() << "call " << i << ", reason " << call.block.Reason);
        EXPECT_EQ(call.block.Reason, expected[i].reason);
        EXPECT_EQ(call.block.cbSize, sizeof(CPSUICBPARAM));
        EXPECT_EQ(call.block.hDlg, tree.window());
        EXPECT_EQ(call.block.pOptItem, items);
        EXPECT_EQ(call.block.cOptItem, 3u);
        EXPECT_EQ(call.block.Flags, CPSUIF_UPDATE_PERMISSION);
        EXPECT_EQ(call.block.pCurItem, expected[i].current);
        EXPECT_EQ(call.block.UserData, reinterpret_cast<ULONG_PTR>(&userData));
        EXPECT_EQ(call.oemParam, &collected.param);
        EXPECT_EQ(call.currentSel, expected[i].sel);
        EXPECT_EQ(call.currentText, expected[i].text);
        EXPECT_EQ(call.oldText, expected[i].oldText);
        if (call.block.pCurItem != &items[2] && expected[i].reason != CPSUICB_REASON_SETACTIVE) {
            EXPECT_EQ(call.block.OldSel, expected[i].oldSel);
        }
    }
    DestroyWindow(sheet);
}
