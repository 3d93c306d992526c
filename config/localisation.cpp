#include "config/localisation.h"

#include <cwchar>

#include "config/registry.h"
#include "base/spooler.h"
#include "base/module_state.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

constexpr const wchar_t* kLocaleLibrary = L"\\3\\ozdkrnlcl.dll";
constexpr const wchar_t* kSection = L"ozdkrnui";  // this plug-in's base name
constexpr const wchar_t* kCaptionSection = L"Caption";
constexpr const wchar_t* kSetupKey = L"QuorlSetup";
constexpr const wchar_t* kDefaultLocale = L"en_us";
constexpr DWORD kLocaleNameBytes = 4096;

wchar_t gLocalString[kLocalStringCapacity];

HINSTANCE ResourceModule(const UIConfig* pConfig) {
    return pConfig != nullptr && pConfig->hModule != nullptr ? static_cast<HINSTANCE>(pConfig->hModule)
                                                              : ghInstance;
}

bool HasLocale(const UIConfig* pConfig) { return pConfig != nullptr && pConfig->hLcl != nullptr; }

// Loads resource string `id` into `buffer`; the number of characters, 0 when it is missing.
int LoadResourceText(const UIConfig* pConfig, UINT id, wchar_t* buffer, int capacity) {
    buffer[0] = L'\0';
    const int length = LoadStringW(ResourceModule(pConfig), id, buffer, capacity);
    if (length < 1) {
        buffer[0] = L'\0';
        return 0;
    }
    return length;
}

wchar_t* HeapCopy(HANDLE heap, const wchar_t* text) {
    if (heap == nullptr || text == nullptr) {
        return nullptr;
    }
    const size_t length = wcslen(text);
    auto* copy = static_cast<wchar_t*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, (length + 1) * sizeof(wchar_t)));
    if (copy != nullptr) {
        CopyMemory(copy, text, length * sizeof(wchar_t));
    }
    return copy;
}

template <typename Function>
void Bind(HMODULE library, const char* name, Function& slot) {
    slot = reinterpret_cast<Function>(GetProcAddress(library, name));
}

// The language chosen at installation: "Locale" of the setup key; "en_us" only when the
// key or the value is missing (a value that cannot be read gives an empty name).
void ReadLocaleName(wchar_t* name, wchar_t* keyPath, size_t keyPathCapacity) {
    FormatWide(keyPath, keyPathCapacity, L"%s\\%s", kMakerKey, kSetupKey);
    HKEY key = nullptr;
    name[0] = L'\0';
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath, 0, KEY_READ, &key) != ERROR_SUCCESS ||
        ReadRegistryString(L"Locale", name, kLocaleNameBytes, key) == ERROR_FILE_NOT_FOUND) {
        CopyWide(name, kLocaleNameBytes / sizeof(wchar_t), kDefaultLocale);
    }
}

}  // namespace

void PrepareLocale(HANDLE /*hHeap*/, UIConfig* pConfig) {
    if (pConfig == nullptr) {
        return;
    }
    wchar_t directory[MAX_PATH] = {};
    wchar_t path[MAX_PATH + 32] = {};
    DWORD needed = 0;
    const bool haveDirectory = Spool().GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory),
                                                                  sizeof(directory), &needed) != FALSE;
    if (haveDirectory) {
        directory[MAX_PATH - 1] = L'\0';
        FormatWide(path, sizeof(path) / sizeof(path[0]), L"%s%s", directory, kLocaleLibrary);
    }

    pConfig->LocaleDLL = haveDirectory ? LoadLibraryInModuleContext(path) : nullptr;
    pConfig->hLcl = nullptr;
    Trace(L"PrepareLocale(): %s\n", path);
    if (pConfig->LocaleDLL == nullptr) {
        Trace(L"PrepareLocale(): loading LocaleDLL failed\n");
        return;
    }
    Trace(L"PrepareLocale(): loading LocaleDLL, hModule=0x%p\n", pConfig->LocaleDLL);
    const auto library = static_cast<HMODULE>(pConfig->LocaleDLL);
    LocaleFunctions& lcl = pConfig->lcl;
    Bind(library, "Create", lcl.Create);
    Bind(library, "CreateEx", lcl.CreateEx);
    Bind(library, "Dispose", lcl.Dispose);
    Bind(library, "InitLocale", lcl.InitLocale);
    Bind(library, "EnumLocales", lcl.EnumLocales);
    Bind(library, "EnumLocaleStrings", lcl.EnumLocaleStrings);
    Bind(library, "GetActiveLocale", lcl.GetActiveLocale);
    Bind(library, "GetString", lcl.GetString);
    Bind(library, "GetSectionString", lcl.GetSectionString);
    Bind(library, "TranslateDialog", lcl.TranslateDialog);
    Bind(library, "TranslateMenu", lcl.TranslateMenu);

    wchar_t folder[2 * kTextCapacity + 32] = {};
    FormatWide(folder, sizeof(folder) / sizeof(folder[0]), L"%s\\Quorl\\%s\\Locale", pConfig->KSDir,
               pConfig->DriverName);
    wchar_t localeName[kLocaleNameBytes / sizeof(wchar_t)];
    wchar_t setupKey[64];
    ReadLocaleName(localeName, setupKey, sizeof(setupKey) / sizeof(setupKey[0]));
    Trace(L"PrepareLocale(): buffer=%s %s\n", setupKey, localeName);
    Trace(L"PrepareLocale(): folder=%s\\%s\n", folder, kSection);
    Trace(L"PrepareLocale(): pConfig->lcl.CreateEx=0x%p\n", reinterpret_cast<void*>(lcl.CreateEx));

    if (lcl.Create != nullptr) {
        pConfig->hLcl = lcl.Create(folder, kSection);
    }
    Trace(L"PrepareLocale(): hLcl=0x%p\n", pConfig->hLcl);
    if (pConfig->hLcl == nullptr) {
        return;
    }
    if (lcl.EnumLocales != nullptr) {
        const wchar_t* locales = nullptr;
        const int count = lcl.EnumLocales(pConfig->hLcl, &locales);
        Trace(L"PrepareLocale(): n=%d, locales=%s\n", count, locales != nullptr ? locales : L"");
    }
    if (lcl.InitLocale != nullptr && lcl.InitLocale(pConfig->hLcl, localeName) == 0) {
        Trace(L"PrepareLocale(): success InitLocale( %s )\n", localeName);
    }
}

void PostpareLocale(UIConfig* pConfig) {
    if (pConfig == nullptr) {
        return;
    }
    if (pConfig->hLcl != nullptr) {
        Trace(L"PostpareLocale(): hLcl=0x%p\n", pConfig->hLcl);
        if (pConfig->lcl.Dispose != nullptr) {
            pConfig->lcl.Dispose(pConfig->hLcl);
        }
        pConfig->hLcl = nullptr;
    }
    if (pConfig->LocaleDLL != nullptr) {
        Trace(L"PostpareLocale(): unloading LocaleDLL=0x%p\n", pConfig->LocaleDLL);
        FreeLibrary(static_cast<HMODULE>(pConfig->LocaleDLL));
        pConfig->LocaleDLL = nullptr;
    }
    pConfig->lcl = LocaleFunctions{};
}

wchar_t* LoadLocalString(const UIConfig* pConfig, HANDLE heap, UINT id) {
    wchar_t text[kLocalStringCapacity];
    if (LoadResourceText(pConfig, id, text, kLocalStringCapacity) < 1) {
        return nullptr;
    }
    if (HasLocale(pConfig) && pConfig->lcl.GetString != nullptr) {
        const wchar_t* translated = pConfig->lcl.GetString(pConfig->hLcl, text);
        if (translated != nullptr) {
            Trace(L"\t%s = %s\n", text, translated);
            return HeapCopy(heap, translated);
        }
    }
    return HeapCopy(heap, text);
}

wchar_t* LoadLocalCaption(const UIConfig* pConfig, HANDLE heap, UINT id) {
    wchar_t text[kLocalStringCapacity];
    const int length = LoadResourceText(pConfig, id, text, kLocalStringCapacity);
    if (length >= 1 && HasLocale(pConfig) && pConfig->lcl.GetSectionString != nullptr) {
        const wchar_t* translated = pConfig->lcl.GetSectionString(pConfig->hLcl, kCaptionSection, text);
        if (translated == nullptr) {
            return nullptr;  // unlike the plain loader: a caption the section lacks stays empty
        }
        Trace(L"\t%s = %s\n", text, translated);
        return HeapCopy(heap, translated);
    }
    return HeapCopy(heap, text);
}

const wchar_t* GetLocalString(const UIConfig* pConfig, UINT id) {
    if (LoadResourceText(pConfig, id, gLocalString, kLocalStringCapacity) < 1) {
        return gLocalString;
    }
    if (!HasLocale(pConfig) || pConfig->lcl.GetString == nullptr) {
        return gLocalString;
    }
    const wchar_t* translated = pConfig->lcl.GetString(pConfig->hLcl, gLocalString);
    if (translated == nullptr || translated == gLocalString) {
        return gLocalString;
    }
    // The translation may live anywhere, even inside the buffer: copy forward, bounded.
    size_t i = 0;
    for (; i + 1 < kLocalStringCapacity && translated[i] != L'\0'; ++i) {
        gLocalString[i] = translated[i];
    }
    gLocalString[i] = L'\0';
    return gLocalString;
}

bool TranslateDialog(const UIConfig* pConfig, HWND dialog) {
    if (!HasLocale(pConfig) || pConfig->lcl.TranslateDialog == nullptr || dialog == nullptr) {
        return false;
    }
    pConfig->lcl.TranslateDialog(pConfig->hLcl, dialog);
    return true;
}
