#include <gtest/gtest.h>

#include <cwchar>
#include <memory>

#include "base/text_format.h"
#include "config/localisation.h"
#include "config_fixtures.h"
#include "resources/resource_ids.h"

using namespace configtest;

namespace {

// The locale library (a stand-in build, or none), the maker's folder, a "Locale" value
// (or none), and a record bound through PrepareLocale.
class Localised {
public:
    explicit Localised(const wchar_t* library, const wchar_t* locale = nullptr, bool localeFolder = true)
        : placed_(library != nullptr ? StandIn(std::wstring(L"locale_library\\") + library)
                                     : std::wstring(),
                  LocaleLibraryPath()),
          localeValue_(HKEY_LOCAL_MACHINE, kSetupKey, L"Locale"),
          config_(new UIConfig{}) {
        if (locale != nullptr) localeValue_.SetString(locale);
        config_->hModule = GetModuleHandleW(nullptr);
        CopyWide(config_->KSDir, kTextCapacity, (maker_.path() + (localeFolder ? L"" : L"\\elsewhere")).c_str());
        CopyWide(config_->DriverName, kTextCapacity, L"Test Embosser");
        PrepareLocale(heap_.get(), config_.get());
    }
    ~Localised() { PostpareLocale(config_.get()); }

    UIConfig* config() { return config_.get(); }
    const MakerFolder& maker() const { return maker_; }
    std::wstring String(UINT id) { return Take(LoadLocalString(config_.get(), heap_.get(), id)); }
    std::wstring Caption(UINT id) { return Take(LoadLocalCaption(config_.get(), heap_.get(), id)); }

private:
    std::wstring Take(wchar_t* text) {  // "(null)" stands for no text at all
        if (text == nullptr) return L"(null)";
        std::wstring copy = text;
        HeapFree(heap_.get(), 0, text);
        return copy;
    }

    MakerFolder maker_;
    PlacedFile placed_;
    RegistryValue localeValue_;
    HostHeap heap_;
    std::unique_ptr<UIConfig> config_;
};

}  // namespace

// The table has a "Caption" entry for Form Size but none for Form Width.
TEST(Localisation, TranslatesStringsCaptionsAndDialogsAndAMissingCaptionIsNull) {
    Localised localised(L"ozdkrnlcl.dll", L"de_de");
    ASSERT_NE(localised.config()->hLcl, nullptr);
    EXPECT_TRUE(localised.maker().WasAsked(L"Create " + localised.maker().LocaleFolder() + L"|ozdkrnui"));
    EXPECT_EQ(localised.String(IDS_FORM_SIZE), L"Formulargr\u00f6\u00dfe");
    EXPECT_EQ(localised.Caption(IDS_FORM_SIZE), L"Format");
    EXPECT_STREQ(GetLocalString(localised.config(), IDS_PAGE_LAYOUT), L"Seitenlayout");
    EXPECT_EQ(localised.Caption(IDS_FORM_WIDTH), L"(null)");
    EXPECT_EQ(localised.String(IDS_FORM_WIDTH), L"Form Width");
    EXPECT_STREQ(GetLocalString(localised.config(), IDS_FORM_WIDTH), L"Form Width");

    HWND window = CreateWindowW(L"STATIC", L"Layout", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(TranslateDialog(localised.config(), window));
    wchar_t text[64] = {};
    GetWindowTextW(window, text, 64);
    EXPECT_STREQ(text, L"Seitenlayout");
    DestroyWindow(window);
}

// "en_us" stands in only for a missing "Locale" value; one that is there, if empty, is taken.
TEST(Localisation, TheLocaleIsTheSetupValueAndEnglishUsOnlyWhenItIsMissing) {
    const struct { const wchar_t* value; const wchar_t* initialised; } cases[] = {
        {L"de_de", L"de_de"}, {nullptr, L"en_us"}, {L"", L""}};
    for (const auto& c : cases) {
        Localised localised(L"ozdkrnlcl.dll", c.value);
        for (const wchar_t* locale : {L"de_de", L"en_us", L""}) {
            const bool initialised = wcscmp(locale, c.initialised) == 0;
            EXPECT_EQ(localised.maker().WasAsked(std::wstring(L"InitLocale ") + locale), initialised)
                << testenv::Narrow(locale);
        }
    }
}

TEST(Localisation, WithoutAWorkingLibraryEveryLoaderGivesTheResourceText) {
    const struct { const char* what; const wchar_t* library; bool localeFolder, instance; } cases[] = {
        {"no library", nullptr, true, false},
        {"library without the string exports", L"ozdkrnlcl_partial.dll", true, true},
        {"library that makes no instance", L"ozdkrnlcl.dll", false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Localised localised(c.library, nullptr, c.localeFolder);
        EXPECT_EQ(localised.config()->hLcl != nullptr, c.instance);
        EXPECT_EQ(localised.String(IDS_FORM_SIZE), L"Form Size");
        EXPECT_EQ(localised.Caption(IDS_FORM_SIZE), L"Form Size");
        EXPECT_STREQ(GetLocalString(localised.config(), IDS_FORM_SIZE), L"Form Size");
        EXPECT_FALSE(TranslateDialog(localised.config(), GetDesktopWindow()));
        // A string the resources lack: no text, an empty caption, an empty shared buffer.
        EXPECT_EQ(localised.String(9999), L"(null)");
        EXPECT_EQ(localised.Caption(9999), L"");
        EXPECT_STREQ(GetLocalString(localised.config(), 9999), L"");
        if (c.library == nullptr) {
            const auto* slots = reinterpret_cast<void* const*>(&localised.config()->lcl);
            for (int i = 0; i < kLocaleFunctionCount; ++i) EXPECT_EQ(slots[i], nullptr) << i;
        }
    }
    // The resource texts are the translations' keys, and items are known by their caption's
    // number: a few of each kind, at their fixed numbers.
    Localised plain(nullptr);
    EXPECT_EQ(plain.String(4), L"Legacy Settings");
    EXPECT_EQ(plain.String(213), L"Islandic");
    EXPECT_EQ(plain.String(243), L"Custom 16");
    EXPECT_EQ(plain.String(196), L"Quorl");
    EXPECT_EQ(plain.String(156), L"This form could not be added because the name of this form already exists in the "
                                 L"Printer Server Properties.\r\nPlease use a different form name.");
}
