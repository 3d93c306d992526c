#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "resources/resource_ids.h"

// The numbers are part of the contract (items are recognised by their caption's number),
// and the texts are the keys of the translations: both must hold exactly. A few
// representative entries of each kind.
TEST(StringTable, HoldsTheTextsAtTheirFixedNumbers) {
    const struct { UINT id; UINT number; const wchar_t* text; } cases[] = {
        {IDS_LEGACY_SETTINGS, 4, L"Legacy Settings"},
        {IDS_FORM_SIZE, 50, L"Form Size"},
        {IDS_TABLE_ICELANDIC, 213, L"Islandic"},
        {IDS_MEDIA_CUSTOM_16, 243, L"Custom 16"},
        {IDS_PAGE_QUORL, 196, L"Quorl"},
        {IDS_FORM_NAME_EXISTS, 156,
         L"This form could not be added because the name of this form already exists in the Printer Server "
         L"Properties.\r\nPlease use a different form name."},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.id, c.number);
        wchar_t text[1024] = {};
        const int length = LoadStringW(GetModuleHandleW(nullptr), c.number, text, 1024);
        EXPECT_EQ(std::wstring(text, length > 0 ? static_cast<size_t>(length) : 0), c.text) << c.number;
    }
}
