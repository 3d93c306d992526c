// The host's "Device Settings" page: the option items a plug-in added through
// CommonUIProp, drawn one row per item the way the printer's device settings page shows
// them, with the plug-in's callbacks called the way the common property sheet UI calls
// them (Wine's cannot: it neither shows OPTITEM trees nor calls item callbacks).
//
// A row is a label from pName (indented by Level) and, by option type, a drop-down list
// (list box and combo box items), an edit box with its unit, a number with up-down
// arrows, or a push button. Items without an option type are headings. OPTIF_DISABLED
// disables a row, OPTIF_HIDE hides it.
//
// Callbacks: the item callback (OEMCUIPPARAM::OEMCUIPCallback) gets
// CPSUICB_REASON_SETACTIVE when the page comes to the front, CPSUICB_REASON_KILLACTIVE
// when it goes, CPSUICB_REASON_APPLYNOW on apply, and CPSUICB_REASON_SEL_CHANGED after a
// person changed an item that asks for callbacks (OPTIF_CALLBACK), with the new value
// already in the item. A push button of the callback kind calls its own callback with
// CPSUICB_REASON_PUSHBUTTON. CPSUICBPARAM::UserData is the current item's UserData, or
// the plug-in's user data (pOEMUserData) when the item has none. After
// CPSUICB_ACTION_OPTIF_CHANGED (or CPSUICB_ACTION_REINIT_ITEMS) every row is read again
// from its item; after any other answer the rows whose items the callback marked
// OPTIF_CHANGED are. The flag is cleared once the row shows the item.
//
// Every call and answer goes to the host log as "plug-in: ..." lines.
#pragma once

#include <windows.h>
#include <compstui.h>

#include <memory>
#include <string>
#include <vector>

#include "tools/host/dialog_template.h"
#include "tools/host/host_library.h"

namespace ozdkhost {

// One callback the page made and what it answered.
struct ItemCallbackRecord {
    WORD reason = 0;
    int item = -1;            // index of pCurItem in the item array
    bool pushButton = false;  // a push button's own callback, not the item callback
    LONG answer = 0;
};

class OptionTreePage final : public HostPage {
public:
    static constexpr const wchar_t* kTitle = L"Device Settings";
    // Items beyond this many are left out of the page (the callbacks still get them all).
    static constexpr DWORD kMostRows = 256;

    // `items` (the plug-in's array and its call block) must outlive the page; `log` may be
    // null.
    // `callbackFlags` becomes CPSUICBPARAM::Flags (CPSUIF_UPDATE_PERMISSION when the
    // person may change the settings).
    OptionTreePage(CollectedItems& items, HostLog* log, WORD callbackFlags);
    ~OptionTreePage() override;
    OptionTreePage(const OptionTreePage&) = delete;
    OptionTreePage& operator=(const OptionTreePage&) = delete;

    HPROPSHEETPAGE CreatePage() override;
    bool LeadsPluginPages() const override { return true; }

    // The page's dialog while it exists (it is created when first shown).
    HWND window() const { return dialog_; }

    // The first item with this UserItemID that has an option type; -1 when none.
    int FindItem(BYTE userItemId) const;
    // The row's control of that item (drop-down list, edit box, the number of an up-down
    // item, push button) and its label; null when the page or the row does not exist.
    HWND Control(BYTE userItemId) const;
    HWND Label(BYTE userItemId) const;
    // What the control shows: the chosen entry's text, the edit box's text, the number,
    // the button's caption.
    std::wstring ControlText(BYTE userItemId) const;
    // Enabled and visible, so a person could use it.
    bool ControlUsable(BYTE userItemId) const;
    // The selection (parameter index) of the list entry that reads `text`; -1 when none.
    LONG FindEntry(BYTE userItemId, const std::wstring& text) const;

    // What a person does, through the control, so that the control's own notification
    // reaches the page. False when the control cannot be used (disabled, hidden, of
    // another kind) or has no such entry.
    bool Choose(BYTE userItemId, LONG selection);        // list entry or up-down number
    bool Type(BYTE userItemId, const std::wstring& text);  // edit box or up-down number
    bool Press(BYTE userItemId);                          // push button
    // The list entry that reads `value`, else `value` typed.
    bool ChooseOrType(BYTE userItemId, const std::wstring& value);

    const std::vector<ItemCallbackRecord>& callbacks() const { return callbacks_; }
    int CountCallbacks(WORD reason) const;

private:
    enum class RowKind { Heading, List, Edit, UpDown, PushButton, Unsupported };
    struct Row {
        int item = -1;
        RowKind kind = RowKind::Heading;
        WORD labelId = 0;
        WORD controlId = 0;
        WORD arrowsId = 0;  // up-down arrows
        WORD unitId = 0;
    };

    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void BuildRows();
    void Populate();
    void OnCommand(WORD id, WORD code, HWND control);
    LRESULT OnNotify(const NMHDR& header);
    void OnListChanged(const Row& row);
    void OnTextChanged(const Row& row);
    void OnNumberChanged(const Row& row);
    void OnPushButton(const Row& row);

    LONG CallItemCallback(WORD reason, int item, LONG oldSel, const wchar_t* oldText);
    void ActOnAnswer(LONG answer);
    void ShowItem(const Row& row);
    void ShowItems(bool everyItem, bool clearChanged);

    const Row* RowOfControl(WORD id) const;
    const Row* RowOfItem(BYTE userItemId) const;
    OPTITEM* Item(int index) const;
    std::wstring Text(const wchar_t* text) const;  // a string or a string-resource number
    std::wstring ItemName(int index) const;
    std::wstring WindowText(HWND window) const;
    void SetTextIfDifferent(HWND window, const std::wstring& text);

    CollectedItems& items_;
    HostLog unloggedLines_;  // where the lines go when the page was given no log
    HostLog* log_;
    WORD callbackFlags_;
    std::vector<Row> rows_;
    std::vector<ItemCallbackRecord> callbacks_;
    std::vector<std::unique_ptr<DialogTemplate>> templates_;  // one per created page, kept for its life
    HWND dialog_ = nullptr;
    HFONT headingFont_ = nullptr;
    int updating_ = 0;      // the page itself is setting controls: no notifications
    int inCallback_ = 0;    // a callback is running (it may show a modal box): controls wait
};

}  // namespace ozdkhost
