#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "resources/resource_ids.h"

namespace {

std::wstring Load(UINT id) {
    wchar_t text[1024] = {};
    const int length = LoadStringW(GetModuleHandleW(nullptr), id, text, 1024);
    return std::wstring(text, length > 0 ? static_cast<size_t>(length) : 0);
}

}  // namespace

// The numbers are part of the contract (items are recognised by their caption's number),
// and the texts are the keys of the translations: both must hold exactly.
TEST(StringTable, HoldsTheTextsAtTheirFixedNumbers) {
    const struct {
        UINT id;
        UINT number;
        const wchar_t* text;
    } cases[] = {
        {IDS_LEGACY_SETTINGS, 4, L"Legacy Settings"},
        {IDS_TABLE, 74, L"Table"},
        {IDS_BRAILLE_TABLES, 188, L"Braille Tables"},
        {IDS_FORM_SIZE, 50, L"Form Size"},
        {IDS_CUSTOM, 51, L"Custom"},
        {IDS_INCHES, 39, L"Inches"},
        {IDS_DOTS_6, 48, L"6"},
        {IDS_TEXT_GRAPHICS_MODE, 42, L"Text/Graphics Mode"},
        {IDS_TABLE_ICELANDIC, 213, L"Islandic"},
        {IDS_MEDIA_DEFAULT_6, 146, L"Default 6 (Chinese)"},
        {IDS_MEDIA_CUSTOM_8, 235, L"Custom 8"},
        {IDS_MEDIA_CUSTOM_16, 243, L"Custom 16"},
        {IDS_PAGE_LAYOUT, 194, L"Layout"},
        {IDS_PAGE_PAPER_MEDIA, 195, L"Paper/Media"},
        {IDS_PAGE_QUORL, 196, L"Quorl"},
        {IDS_PAGE_SERVICE, 198, L"Service"},
        {IDS_DRIVER_VERSION, 70, L"Driver Version:"},
        {IDS_SOURCE_LANDSCAPE, 234, L"Auto Sheet Feeder (Landscape)"},
        {IDS_PATTERN_FILES, 248, L"Pattern Files"},
        {IDS_PRIVILEGE_WARNING, 152,
         L"Access to some Printer settings may be denied because of insufficient user privileges. The Security "
         L"token 'Manage Printer' is not enabled for current user.\nContact your System Administrator."},
        {IDS_FORM_NAME_EXISTS, 156,
         L"This form could not be added because the name of this form already exists in the Printer Server "
         L"Properties.\r\nPlease use a different form name."},
        {IDS_TWO_IN_ONE_WARNING, 177,
         L"Enabling this option will change your print output. When 2 In 1 mode is enabled the printer will combine "
         L"an odd and even page from your current layout together as emboss and print onto one single sheet of "
         L"paper.\r\nWould you like to enable 2 In 1 mode?"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.id, c.number);
        EXPECT_EQ(Load(c.number), c.text) << c.number;
    }
}
