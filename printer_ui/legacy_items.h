// What the "Legacy Settings" item tree and its callbacks share: the number of items, the
// head's icon, and the map from the embosser's media code to the media list's entry.
//
// Items are told apart by UserItemID, the string number of their caption (the IDS_*
// numbers of resources/resource_ids.h); the one exception is the braille-table button,
// which carries IDS_TABLE while its caption is IDS_BRAILLE_TABLES.
#pragma once

#include <windows.h>

#include <cstdint>

inline constexpr DWORD kLegacyItemCount = 22;    // head + 21 settings
inline constexpr LONG kLegacyHeadIcon = 64062;   // platform icon number, passed on as it is
inline constexpr int kLegacyEditCapacity = 16;   // characters of an edit item's buffer
inline constexpr LONG kLegacyUpDownLowest = 20;  // chars per line and lines per page alike
inline constexpr LONG kLegacyUpDownHighest = 48;
inline constexpr WORD kResetButtonStyle = 0x60;  // OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT
inline constexpr uint32_t kFormSizeDivisor = 1270;  // micrometres per 1/20 inch

// Entry of the 16-entry media list for an embosser media code: the code is taken with
// bit 8 forced on, so that 0x0D and 0x10D both give entry 1.
inline LONG MediaTypeSelection(uint32_t mediaCode) {
    const uint32_t code = mediaCode | 0x100u;
    switch (code) {
        case 0x102u:
            return 2;
        case 0x103u:
            return 3;
        case 0x10Bu:
            return 4;
        case 0x10Du:
            return 1;
        case 0x111u:
            return 5;
        default:
            break;
    }
    if (code >= 0x11Eu && code <= 0x127u) {
        return static_cast<LONG>(code - 0x118u);
    }
    return 0;
}
