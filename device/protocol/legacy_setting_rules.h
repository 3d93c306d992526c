// The rules by which the device-settings tree changes the embosser's stored settings.
//
// ApplyLegacyChanges walks the tree's items in list order and hands each one to
// ApplyLegacyItem; where the result says `changed` it sends `command` (number, ON/OFF or
// word, see PjlDefault) and remembers that something was sent; where it says
// `rewriteText` it replaces the item's text with `text` and marks the item changed.
// When anything was sent, UpdateNvRamData sends the corrections of CheckNvRamLayout
// and then the "SERVICE UPDATE" command.
#pragma once

#include <cstdint>

#include "config/ui_config.h"
#include "device/protocol/pjl_commands.h"

// What applying one item did.
struct LegacyItemUpdate {
    bool known;          // the item is a device setting; false: pass it over
    bool changed;        // the field differed and now holds the new value: send `command`
    PjlDefault command;  // set when `changed`
    bool rewriteText;    // the item's text becomes `text` (extra line spacing, always)
    WideChar text[kMeasureTextCapacity];
};

// Computes the new value of item `userItemId` by its row of the settings table: from its
// list `selection` or, for the edit boxes (inches and seconds), from its NUL-terminated
// `text` (null reads as empty); compares it with its field of `config` and stores it
// when it differs. Lengths typed in inches become 1/20 inch, truncated toward zero and
// saturated at the int32 limits. Later items see the fields as earlier items left them
// (the right margin rule reads EmbsrPaperWidth). Traces ApplyLegacyChanges' lines for
// the paper width, the media type and the braille table when they change.
LegacyItemUpdate ApplyLegacyItem(UIConfig& config, uint32_t userItemId, int32_t selection, const WideChar* text);

// What UpdateNvRamData sends before committing: the characters per line and the lines
// per page that fit the page when the stored ones do not. The corrections are sent only;
// the fields keep their values.
struct NvRamLayoutCheck {
    int32_t widthGood;   // usable width minus the width of the characters, 1/20 inch
    int32_t heightGood;  // length below the top margin minus the height of the lines
    bool correctCharsWidth;
    PjlDefault charsWidth;  // "CHARSWIDTH", sent before the width is traced
    bool correctLinesLength;
    PjlDefault linesLength;  // "LINESLENGTH", sent after it
};

// Checks the stored layout of `config`; traces nothing. All arithmetic is exact; results
// saturate at the int32 limits. A line height of 0 (extra space -8 in text mode) fits no
// line count, so no LINESLENGTH correction is made then.
NvRamLayoutCheck CheckNvRamLayout(const UIConfig& config);
