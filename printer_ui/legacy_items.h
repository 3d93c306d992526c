// What the "Legacy Settings" item tree and its callbacks share besides the settings
// table (device/protocol/legacy_settings_table.h), which describes every item.
#pragma once

#include <windows.h>

#include <cstdint>

#include "config/paper_sizes.h"
#include "config/ui_config.h"

inline constexpr LONG kLegacyHeadIcon = 64062;      // platform icon number, passed on as it is
inline constexpr int kLegacyEditCapacity = 16;      // characters of an edit item's buffer
inline constexpr uint32_t kFormSizeDivisor = 1270;  // micrometres per 1/20 inch

// True when a form of `form` (micrometres) is about the embosser's paper size.
inline bool IsDeviceFormSize(const PaperDimensions& form, const UIConfig& config) {
    const PaperDimensions twentieths = {form.cx / static_cast<int32_t>(kFormSizeDivisor),
                                        form.cy / static_cast<int32_t>(kFormSizeDivisor)};
    return IsFormAboutSize(twentieths, {config.EmbsrPaperWidth, config.EmbsrPaperLength});
}
