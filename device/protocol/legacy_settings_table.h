// The embosser's stored settings as the "Legacy Settings" branch of the printer's
// properties shows them: one row per item, read by the tree's build and its refresh
// after a read, by the reply parser, by the rules that turn an item into a PJL "DEFAULT"
// command, and by "Reset To Default". A new setting is one row in the table of
// legacy_settings_table.cpp plus its caption in the string table.
//
// Items are told apart by their id (UserItemID), the string number of their caption;
// the braille-table button alone carries another number than its caption.
#pragma once

#include <cstddef>
#include <cstdint>

#include "config/ui_config.h"
#include "device/protocol/pjl_commands.h"

inline constexpr int32_t kDeviceUnitsPerTwentieth = 36;  // the embosser measures lengths in 1/720 inch
inline constexpr uint8_t kLegacyHeadId = 0;              // the branch's title carries no caption number
inline constexpr size_t kNoLegacyField = SIZE_MAX;

// How an item shows its setting.
enum class LegacyItemKind : uint8_t {
    Head,                 // the branch's title
    FormSize,             // the printer's paper sizes, then "Custom"; a choice fills width and length
    List,                 // list entries; the setting is a code shown as an entry
    UpDown,               // a number between `lowest` and `highest`
    Inches,               // an edit box of inches with two decimals; the setting is kept in 1/20 inch
    Seconds,              // an edit box of whole seconds
    BrailleTablesButton,  // asks the extension library for its braille-table dialog
    ResetButton,          // "Reset To Default"
    Accepted,             // no value of its own: a change only marks the settings changed
};

// What a typed or chosen value becomes before it is compared and stored.
enum class LegacyValueRule : uint8_t {
    AsIs,
    AtLeastLowest,             // below `lowest` becomes `lowest`
    AtLeastLowestOnWideForms,  // the same, only on forms wider than `highest` (1/20 inch)
    LineSpacing,               // hundredths up to `highest`, kept in fifths; the text is rewritten
    DeviceLength,              // sent in 1/720 inch
    FallbackOutside,           // outside `lowest`..`highest` becomes `fallback`
    Forced,                    // always `fallback`, whatever was chosen
    LowByte,                   // only the low 8 bits of the selection count
    BrailleTableName,          // the setting is the table's name (`text`), compared ignoring case
};

// How the embosser's reply carries a setting.
enum class LegacyReplyForm : uint8_t { None, Number, Switch, Word, Text };

// A stored code and the list entry that shows it.
struct LegacyEntry {
    uint32_t code;
    int32_t selection;
};

// Both directions between stored codes and list entries; the first listed pair that
// matches decides. With no pairs the entry is the code itself.
struct LegacyEntryMap {
    const LegacyEntry* pairs;
    uint8_t count;
    int32_t otherSelection;  // entry of a code not listed
    uint32_t otherCode;      // code of an entry not listed
    bool ignoreBit8;         // codes compare with bit 8 (0x100) forced on
};

// A stored code and the word the embosser uses for it, in the order the reply is searched.
struct LegacyWord {
    uint32_t code;
    const char* word;
};

struct LegacyWordList {
    const LegacyWord* words;
    uint8_t count;
    uint32_t otherCode;     // a reply without any listed word
    const char* otherWord;  // a code not listed
};

// What a list shows: its entries (string numbers), how they map to codes, and the
// embosser's words for the codes.
struct LegacyList {
    const uint16_t* entries;
    uint8_t entryCount;
    LegacyEntryMap shown;                           // entries after a read, and entries to codes
    const LegacyEntryMap* builtFrom = nullptr;      // entries when the branch is built, where they differ
    const LegacyEntryMap* refreshedFrom = nullptr;  // entries after a read, where they differ
    LegacyWordList words = {};
};

struct LegacySetting {
    uint8_t id;         // UserItemID
    uint16_t caption;   // string number of the caption; 0: not built into the branch
    LegacyItemKind kind;
    size_t field = kNoLegacyField;  // offset in UIConfig of the 32-bit setting
    const WideChar* key = nullptr;  // PJL variable, also the reply's key; null: nothing is sent
    PjlValueForm form = PjlValueForm::Number;
    LegacyReplyForm reply = LegacyReplyForm::None;
    const LegacyList* list = nullptr;  // null: the entry is the code itself
    int32_t resetSelection = -1;       // "Reset To Default" sets it; -1: not reset
    const WideChar* resetText = nullptr;  // the reset text of an edit box
    size_t text = kNoLegacyField;  // offset of the edit box's starting text, or of the table's name
    LegacyValueRule rule = LegacyValueRule::AsIs;
    int32_t lowest = 0;
    int32_t highest = 0;
    int32_t fallback = 0;
    const WideChar* changeTrace = nullptr;  // traced with the new value when it changes
};

// The rows in the branch's order, then the items the branch does not build.
struct LegacySettingRows {
    const LegacySetting* first;
    const LegacySetting* last;
    const LegacySetting* begin() const { return first; }
    const LegacySetting* end() const { return last; }
};
LegacySettingRows LegacySettings();

// The number of items the branch builds (the head included).
size_t LegacyTreeItemCount();

// The row of item `id`, or null.
const LegacySetting* FindLegacySetting(uint32_t id);

// When the entry of a list or up-down item is taken.
enum class LegacyMoment : uint8_t { Build, Refresh };

// The entry or number the item shows for the setting in `config`.
int32_t LegacySelectionOf(const LegacySetting& setting, const UIConfig& config, LegacyMoment moment);

// The code an entry stands for.
uint32_t LegacyCodeOfSelection(const LegacySetting& setting, int32_t selection);

// The row's 32-bit setting (signed or not) and the row's text (empty when none).
uint32_t& LegacyFieldRef(const LegacySetting& setting, UIConfig& config);
uint32_t LegacyFieldOf(const LegacySetting& setting, const UIConfig& config);
const WideChar* LegacyTextOf(const LegacySetting& setting, const UIConfig& config);

// The code the reply's words give: the first listed "KEY=WORD" found in `block` decides.
uint32_t LegacyCodeOfReply(const LegacySetting& setting, const char* block);

// The "DEFAULT" command that sends `code` for the row (the word of a code, the switch,
// or the number in the device's unit).
PjlDefault LegacyCommandOf(const LegacySetting& setting, uint32_t code);
