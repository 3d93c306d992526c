// The host's "Device Settings" page on an item array made here: how it draws the items,
// what it hands the callbacks, and how it shows their answers.
#include <windows.h>
#include <commctrl.h>
#include <compstui.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/wine_environment.h"
#include "tools/host/option_tree_page.h"

namespace {

using ozdkhost::OptionTreePage;

enum ItemId : BYTE {
    kHead = 0,
    kList = 10,
    kEdit = 11,
    kNumber = 12,
    kButton = 13,
    kDisabled = 14,
    kHidden = 15,
    kQuiet = 16,  // asks for no callback
};

constexpr size_t kEditCapacity = 8;
constexpr wchar_t kGuard = L'#';

// What a callback saw: the block and the current item's value at the time of the call.
struct SeenCall {
    CPSUICBPARAM block = {};
    LONG currentSel = 0;
    std::wstring currentText;
    std::wstring oldText;
    POEMCUIPPARAM oemParam = nullptr;
};

// The item array and the callbacks' behaviour for one test.
class Items {
public:
    Items() {
        static const wchar_t* const kEntries[] = {L"One", L"Two", L"Three"};
        for (int i = 0; i < 3; ++i) listParams_[i] = Param(kEntries[i]);
        listType_ = Type(TVOT_LISTBOX, listParams_, 3);
        editParams_[0] = Param(L"Inches");
        editParams_[1] = Param(nullptr);
        editParams_[1].IconID = kEditCapacity;
        editType_ = Type(TVOT_EDITBOX, editParams_, 2);
        numberParams_[0] = Param(nullptr);
        numberParams_[1] = Param(nullptr);
        numberParams_[1].IconID = 20;
        numberParams_[1].lParam = 48;
        numberType_ = Type(TVOT_UDARROW, numberParams_, 2);
        buttonParams_[0] = Param(reinterpret_cast<const wchar_t*>(&Items::ButtonCallback));
        buttonParams_[0].Style = PUSHBUTTON_TYPE_CALLBACK;
        buttonType_ = Type(TVOT_PUSHBUTTON, buttonParams_, 1);

        items_.reserve(8);
        wcscpy(editText_, L"0.25");
        std::fill(editText_ + 5, editText_ + kEditCapacity + 4, kGuard);
        quietText_[0] = L'\0';

        Add(kHead, L"Settings", 1, 0, nullptr);
        Add(kList, L"Count", 2, OPTIF_CALLBACK, &listType_).Sel = 1;
        Add(kEdit, L"Margin", 2, OPTIF_CALLBACK, &editType_).pSel = editText_;
        Add(kNumber, L"Lines", 2, OPTIF_CALLBACK, &numberType_).Sel = 30;
        OPTITEM& button = Add(kButton, L"Table", 2, OPTIF_CALLBACK, &buttonType_);
        button.UserData = 0x5151;
        Add(kDisabled, L"Locked", 2, OPTIF_CALLBACK | OPTIF_DISABLED, &listType_).Sel = 0;
        Add(kHidden, L"Secret", 2, OPTIF_CALLBACK | OPTIF_HIDE, &listType_).Sel = 0;
        Add(kQuiet, L"Note", 2, 0, &editType_).pSel = quietText_;

        collected_.items = items_.data();
        collected_.count = static_cast<DWORD>(items_.size());
        collected_.param.cbSize = sizeof(OEMCUIPPARAM);
        collected_.param.pOEMOptItems = items_.data();
        collected_.param.cOEMOptItems = collected_.count;
        collected_.param.pOEMUserData = &userData_;
        collected_.param.OEMCUIPCallback = &Items::ItemCallback;
        current_ = this;
    }
    ~Items() { current_ = nullptr; }

    ozdkhost::CollectedItems& collected() { return collected_; }
    OPTITEM& item(BYTE id) {
        for (auto& each : items_) {
            if (each.UserItemID == id && (id == kHead || each.pOptType != nullptr)) return each;
        }
        return items_.front();
    }
    const wchar_t* editBuffer() const { return editText_; }
    void* userData() { return &userData_; }

    std::vector<SeenCall> calls;
    // What the item callback does, by reason; answers CPSUICB_ACTION_NONE otherwise.
    std::function<LONG(PCPSUICBPARAM)> onItem;
    std::function<LONG(PCPSUICBPARAM)> onButton;

private:
    static OPTPARAM Param(const wchar_t* text) {
        OPTPARAM param = {};
        param.cbSize = sizeof(param);
        param.pData = const_cast<wchar_t*>(text);
        return param;
    }
    static OPTTYPE Type(BYTE kind, OPTPARAM* params, WORD count) {
        OPTTYPE type = {};
        type.cbSize = sizeof(type);
        type.Type = kind;
        type.Count = count;
        type.pOptParam = params;
        return type;
    }
    OPTITEM& Add(BYTE id, const wchar_t* name, BYTE level, DWORD flags, OPTTYPE* type) {
        OPTITEM item = {};
        item.cbSize = sizeof(item);
        item.Level = level;
        item.Flags = flags;
        item.pName = const_cast<wchar_t*>(name);
        item.pOptType = type;
        item.UserItemID = id;
        items_.push_back(item);
        return items_.back();
    }
    static SeenCall See(PCPSUICBPARAM block) {
        SeenCall seen;
        seen.block = *block;
        if (block->pCurItem != nullptr) {
            seen.currentSel = block->pCurItem->Sel;
            const OPTTYPE* type = block->pCurItem->pOptType;
            if (type != nullptr && type->Type == TVOT_EDITBOX && block->pCurItem->pSel != nullptr) {
                seen.currentText = block->pCurItem->pSel;
                if (block->Reason == CPSUICB_REASON_SEL_CHANGED && block->pOldSel != nullptr) {
                    seen.oldText = block->pOldSel;
                }
            }
        }
        return seen;
    }
    static LONG APIENTRY ItemCallback(PCPSUICBPARAM block, POEMCUIPPARAM param) {
        SeenCall seen = See(block);
        seen.oemParam = param;
        current_->calls.push_back(seen);
        return current_->onItem ? current_->onItem(block) : CPSUICB_ACTION_NONE;
    }
    static LONG APIENTRY ButtonCallback(PCPSUICBPARAM block) {
        current_->calls.push_back(See(block));
        return current_->onButton ? current_->onButton(block) : CPSUICB_ACTION_NONE;
    }

    static Items* current_;
    OPTPARAM listParams_[3];
    OPTPARAM editParams_[2];
    OPTPARAM numberParams_[2];
    OPTPARAM buttonParams_[1];
    OPTTYPE listType_, editType_, numberType_, buttonType_;
    wchar_t editText_[kEditCapacity + 4];  // the last four are a guard the page must not touch
    wchar_t quietText_[kEditCapacity];
    int userData_ = 0;
    std::vector<OPTITEM> items_;
    ozdkhost::CollectedItems collected_;
};

Items* Items::current_ = nullptr;

// A modeless sheet with a plain page in front and the tree page behind it.
class Sheet {
public:
    Sheet(Items& items, ozdkhost::HostLog& log) : tree_(items.collected(), &log, CPSUIF_UPDATE_PERMISSION) {
        INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES};
        InitCommonControlsEx(&controls);
        other_ = ozdkhost::MakeCallLogPage(log);
        HPROPSHEETPAGE pages[] = {other_->CreatePage(), tree_.CreatePage()};
        PROPSHEETHEADERW header = {};
        header.dwSize = sizeof(header);
        header.dwFlags = PSH_MODELESS;
        header.pszCaption = L"Tree Page Test";
        header.nPages = 2;
        header.phpage = pages;
        window_ = reinterpret_cast<HWND>(PropertySheetW(&header));
        pages_[0] = pages[0];
        pages_[1] = pages[1];
    }
    ~Sheet() {
        if (window_ != nullptr) DestroyWindow(window_);
    }
    HWND window() const { return window_; }
    OptionTreePage& tree() { return tree_; }
    bool ShowTree() { return PropSheet_SetCurSel(window_, pages_[1], 0) != FALSE; }
    bool ShowOther() { return PropSheet_SetCurSel(window_, pages_[0], 0) != FALSE; }
    bool Apply() { return SendMessageW(window_, PSM_APPLY, 0, 0) != 0; }

private:
    OptionTreePage tree_;
    std::unique_ptr<ozdkhost::HostPage> other_;
    HPROPSHEETPAGE pages_[2] = {};
    HWND window_ = nullptr;
};

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

}  // namespace

TEST(DeviceSettingsPage, DrawsEachItemAsItsKindOfLabelledControl) {
    Items items;
    ozdkhost::HostLog log;
    Sheet sheet(items, log);
    ASSERT_NE(sheet.window(), nullptr);
    EXPECT_EQ(sheet.tree().window(), nullptr) << "the page is made when first shown";
    ASSERT_TRUE(sheet.ShowTree());
    ASSERT_NE(sheet.tree().window(), nullptr);

    struct Expected {
        BYTE id;
        const wchar_t* controlClass;
        const wchar_t* label;
        const wchar_t* shows;
        bool usable;
    };
    const Expected expected[] = {
        {kList, L"ComboBox", L"Count", L"Two", true},
        {kEdit, L"Edit", L"Margin", L"0.25", true},
        {kNumber, L"Edit", L"Lines", L"30", true},
        {kButton, L"Button", nullptr, L"Table...", true},
        {kDisabled, L"ComboBox", L"Locked", L"One", false},
        {kHidden, L"ComboBox", L"Secret", L"One", false},
        {kQuiet, L"Edit", L"Note", L"", true},
    };
    for (const auto& row : expected) {
        SCOPED_TRACE(testing::Message() << "item " << static_cast<int>(row.id));
        const HWND control = sheet.tree().Control(row.id);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(_wcsicmp(ClassOf(control).c_str(), row.controlClass), 0) << testenv::Narrow(ClassOf(control));
        EXPECT_EQ(sheet.tree().ControlText(row.id), row.shows);
        EXPECT_EQ(sheet.tree().ControlUsable(row.id), row.usable);
        EXPECT_NE(GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP, 0);
        if (row.label != nullptr) {
            // Screen readers name a control after the static text created right before it.
            const HWND before = GetWindow(control, GW_HWNDPREV);
            EXPECT_EQ(before, sheet.tree().Label(row.id));
            EXPECT_EQ(_wcsicmp(ClassOf(before).c_str(), L"Static"), 0);
            wchar_t text[64] = {};
            GetWindowTextW(before, text, 64);
            EXPECT_STREQ(text, row.label);
        }
    }
    EXPECT_FALSE(IsWindowEnabled(sheet.tree().Label(kDisabled))) << "a disabled row's label is greyed too";
    EXPECT_FALSE(IsWindowVisible(sheet.tree().Label(kHidden)));
    // The number's arrows are bound to it and keep to the item's range.
    const HWND arrows = GetWindow(sheet.tree().Control(kNumber), GW_HWNDNEXT);
    EXPECT_EQ(reinterpret_cast<HWND>(SendMessageW(arrows, UDM_GETBUDDY, 0, 0)), sheet.tree().Control(kNumber));
    int low = 0, high = 0;
    SendMessageW(arrows, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low), reinterpret_cast<LPARAM>(&high));
    EXPECT_EQ(low, 20);
    EXPECT_EQ(high, 48);
}

TEST(DeviceSettingsPage, PageEventsReachTheItemCallbackWithAFullBlock) {
    Items items;
    ozdkhost::HostLog log;
    Sheet sheet(items, log);
    // On activation the plug-in enables the locked item and asks for a redraw.
    items.onItem = [&](PCPSUICBPARAM block) -> LONG {
        if (block->Reason != CPSUICB_REASON_SETACTIVE) return CPSUICB_ACTION_NONE;
        items.item(kDisabled).Flags &= ~static_cast<DWORD>(OPTIF_DISABLED);
        items.item(kDisabled).Sel = 2;
        return CPSUICB_ACTION_OPTIF_CHANGED;
    };
    ASSERT_TRUE(sheet.ShowTree());
    ASSERT_TRUE(sheet.ShowOther());
    ASSERT_TRUE(sheet.ShowTree());
    ASSERT_TRUE(sheet.Apply());

    const std::vector<WORD> reasons = {CPSUICB_REASON_SETACTIVE, CPSUICB_REASON_KILLACTIVE, CPSUICB_REASON_SETACTIVE,
                                       CPSUICB_REASON_APPLYNOW};
    ASSERT_GE(items.calls.size(), reasons.size()) << testenv::Narrow(log.Text());
    std::vector<WORD> seen;
    for (const auto& call : items.calls) seen.push_back(call.block.Reason);
    // The sheet may ask the page in front to let go before it applies, and to come back
    // after.
    if (!seen.empty() && seen.back() == CPSUICB_REASON_SETACTIVE) seen.pop_back();
    if (seen.size() >= 2 && seen[seen.size() - 2] == CPSUICB_REASON_KILLACTIVE &&
        seen.back() == CPSUICB_REASON_APPLYNOW) {
        seen.erase(seen.end() - 2);
    }
    EXPECT_EQ(seen, reasons) << testenv::Narrow(log.Text());
    for (const auto& call : items.calls) {
        SCOPED_TRACE(testing::Message() << "reason " << call.block.Reason);
        EXPECT_EQ(call.block.cbSize, sizeof(CPSUICBPARAM));
        EXPECT_EQ(call.block.hDlg, sheet.tree().window());
        EXPECT_EQ(call.block.pOptItem, items.collected().items);
        EXPECT_EQ(call.block.cOptItem, items.collected().count);
        EXPECT_EQ(call.block.Flags, CPSUIF_UPDATE_PERMISSION);
        EXPECT_EQ(call.block.pCurItem, items.collected().items) << "page events name the first item";
        EXPECT_EQ(call.block.UserData, reinterpret_cast<ULONG_PTR>(items.userData()));
        EXPECT_EQ(call.oemParam, &items.collected().param);
        if (call.block.Reason == CPSUICB_REASON_APPLYNOW) {
            EXPECT_EQ(call.block.OldSel, -1);
        }
    }
    EXPECT_TRUE(sheet.tree().ControlUsable(kDisabled)) << "enabled by the activation's answer";
    EXPECT_EQ(sheet.tree().ControlText(kDisabled), L"Three");
    EXPECT_EQ(items.item(kDisabled).Flags & OPTIF_CHANGED, 0u);
    EXPECT_TRUE(log.Contains(L"plug-in: OEMCUIPCallback(CPSUICB_REASON_SETACTIVE) = 1 CPSUICB_ACTION_OPTIF_CHANGED"))
        << testenv::Narrow(log.Text());
}

TEST(DeviceSettingsPage, APersonsChangeIsInTheItemBeforeTheCallbackSeesIt) {
    Items items;
    ozdkhost::HostLog log;
    Sheet sheet(items, log);
    ASSERT_TRUE(sheet.ShowTree());

    struct Case {
        const char* what;
        BYTE id;
        LONG choose;                // >= 0: Choose(), else Type(text)
        const wchar_t* text;
        bool accepted;
        LONG expectSel;             // list and number items
        const wchar_t* expectText;  // edit items: the buffer afterwards
        LONG expectOldSel;
        const wchar_t* expectOldText;
    };
    const Case cases[] = {
        {"list entry", kList, 2, nullptr, true, 2, nullptr, 1, nullptr},
        {"number by its arrows", kNumber, 31, nullptr, true, 31, nullptr, 30, nullptr},
        {"number typed", kNumber, -1, L"44", true, 44, nullptr, 31, nullptr},
        {"edit text", kEdit, -1, L"0.1", true, 0, L"0.1", 0, L"0.25"},
        {"edit text cut to the item's buffer", kEdit, -1, L"123456789012", true, 0, L"1234567", 0, L"0.1"},
        {"number out of range", kNumber, 60, nullptr, false, 44, nullptr, 0, nullptr},
        {"disabled item", kDisabled, 1, nullptr, false, 0, nullptr, 0, nullptr},
        {"hidden item", kHidden, 1, nullptr, false, 0, nullptr, 0, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        items.calls.clear();
        const bool done = c.choose >= 0 ? sheet.tree().Choose(c.id, c.choose) : sheet.tree().Type(c.id, c.text);
        EXPECT_EQ(done, c.accepted);
        const OPTITEM& item = items.item(c.id);
        if (c.expectText != nullptr) {
            EXPECT_STREQ(item.pSel, c.expectText);
        } else {
            EXPECT_EQ(item.Sel, c.expectSel);
        }
        if (!c.accepted) {
            EXPECT_TRUE(items.calls.empty());
            continue;
        }
        ASSERT_EQ(items.calls.size(), 1u);
        const SeenCall& call = items.calls[0];
        EXPECT_EQ(call.block.Reason, CPSUICB_REASON_SEL_CHANGED);
        EXPECT_EQ(call.block.pCurItem, &item);
        if (c.expectText != nullptr) {
            EXPECT_EQ(call.currentText, c.expectText);
            EXPECT_EQ(call.oldText, c.expectOldText);
        } else {
            EXPECT_EQ(call.currentSel, c.expectSel);
            EXPECT_EQ(call.block.OldSel, c.expectOldSel);
        }
    }
    for (size_t i = kEditCapacity; i < kEditCapacity + 4; ++i) {
        EXPECT_EQ(items.editBuffer()[i], kGuard) << "written past the item's buffer at " << i;
    }

    // An item without OPTIF_CALLBACK takes the change without a callback.
    items.calls.clear();
    EXPECT_TRUE(sheet.tree().Type(kQuiet, L"abc"));
    EXPECT_STREQ(items.item(kQuiet).pSel, L"abc");
    EXPECT_TRUE(items.calls.empty());
}

TEST(DeviceSettingsPage, CallbackAnswersRedrawTheItemsTheyChanged) {
    Items items;
    ozdkhost::HostLog log;
    Sheet sheet(items, log);
    ASSERT_TRUE(sheet.ShowTree());

    // Choosing in the list rewrites the edit item's text, as a form size fills width and
    // length; the answer asks for the redraw.
    items.onItem = [&](PCPSUICBPARAM block) -> LONG {
        if (block->Reason != CPSUICB_REASON_SEL_CHANGED || block->pCurItem->UserItemID != kList)
            return CPSUICB_ACTION_NONE;
        wcscpy(items.item(kEdit).pSel, L"8.50");
        items.item(kEdit).Flags |= OPTIF_CHANGED;
        items.item(kHidden).Flags &= ~static_cast<DWORD>(OPTIF_HIDE);
        return CPSUICB_ACTION_OPTIF_CHANGED;
    };
    items.calls.clear();
    ASSERT_TRUE(sheet.tree().Choose(kList, 0));
    EXPECT_EQ(sheet.tree().ControlText(kEdit), L"8.50");
    EXPECT_TRUE(sheet.tree().ControlUsable(kHidden)) << "shown once the plug-in took OPTIF_HIDE away";
    EXPECT_EQ(items.calls.size(), 1u) << "the redraw itself reports no change";

    // A push button calls its own callback with the button as the current item and the
    // button's user data; its answer is shown the same way.
    items.calls.clear();
    items.onButton = [&](PCPSUICBPARAM) -> LONG {
        items.item(kNumber).Sel = 25;
        items.item(kList).Sel = 2;
        return CPSUICB_ACTION_OPTIF_CHANGED;
    };
    ASSERT_TRUE(sheet.tree().Press(kButton));
    ASSERT_EQ(items.calls.size(), 1u);
    EXPECT_EQ(items.calls[0].block.Reason, CPSUICB_REASON_PUSHBUTTON);
    EXPECT_EQ(items.calls[0].block.pCurItem, &items.item(kButton));
    EXPECT_EQ(items.calls[0].block.UserData, 0x5151u);
    EXPECT_EQ(items.calls[0].block.hDlg, sheet.tree().window());
    EXPECT_EQ(sheet.tree().ControlText(kNumber), L"25");
    EXPECT_EQ(sheet.tree().ControlText(kList), L"Three");

    // An answer that does not ask for a redraw still shows the items marked changed.
    items.onItem = [&](PCPSUICBPARAM block) -> LONG {
        if (block->Reason != CPSUICB_REASON_APPLYNOW) return CPSUICB_ACTION_NONE;
        wcscpy(items.item(kEdit).pSel, L"12.50");
        items.item(kEdit).Flags |= OPTIF_CHANGED;
        items.item(kNumber).Sel = 40;  // not marked: stays as shown
        return CPSUICB_ACTION_ITEMS_APPLIED;
    };
    ASSERT_TRUE(sheet.Apply());
    EXPECT_EQ(sheet.tree().ControlText(kEdit), L"12.50");
    EXPECT_EQ(sheet.tree().ControlText(kNumber), L"25");
    EXPECT_TRUE(log.Contains(L"host: the plug-in applied its items"));

    // A refused apply keeps the sheet from applying.
    items.onItem = [](PCPSUICBPARAM block) -> LONG {
        return block->Reason == CPSUICB_REASON_APPLYNOW ? CPSUICB_ACTION_NO_APPLY_EXIT : CPSUICB_ACTION_NONE;
    };
    EXPECT_FALSE(sheet.Apply());
}
