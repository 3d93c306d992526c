// Stand-in for the locale library of the driver family: translations come from a table
// file in the locale folder, and every call of interest is appended to a log there
// (see locale_library_files.h).
#include <windows.h>

#include <map>
#include <string>

#include "locale_library_files.h"

namespace {

struct Instance {
    std::wstring folder;
    std::wstring section;
    std::wstring locale;
    std::wstring locales;
    std::map<std::wstring, std::wstring> answers;  // keeps returned texts alive
};

std::wstring TablePath(const std::wstring& folder) { return folder + L"\\" + OZDK_LOCALE_TABLE_FILE; }

void Record(const std::wstring& folder, const std::wstring& line) {
    const std::wstring path = folder + L"\\" + OZDK_LOCALE_REQUESTS_FILE;
    HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    const std::wstring text = line + L"\n";
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), nullptr, 0,
                                          nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), &utf8[0], bytes, nullptr, nullptr);
    DWORD written = 0;
    WriteFile(file, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr);
    CloseHandle(file);
}

// The table's entry, or false when the section has no such key.
bool Lookup(const Instance& instance, const wchar_t* section, const wchar_t* key, std::wstring* value) {
    static const wchar_t kMissing[] = L"\x01missing";
    wchar_t buffer[4096] = {};
    GetPrivateProfileStringW(section, key, kMissing, buffer, 4096, TablePath(instance.folder).c_str());
    if (lstrcmpW(buffer, kMissing) == 0) {
        return false;
    }
    *value = buffer;
    return true;
}

const wchar_t* Answer(Instance* instance, const wchar_t* section, const wchar_t* key) {
    if (instance == nullptr || section == nullptr || key == nullptr) {
        return nullptr;
    }
    std::wstring value;
    if (!Lookup(*instance, section, key, &value)) {
        return nullptr;
    }
    if (value == L"@key") {
        return key;
    }
    std::wstring& kept = instance->answers[std::wstring(section) + L"\x01" + key];
    kept = value;
    return kept.c_str();
}

Instance* Make(const wchar_t* folder, const wchar_t* section) {
    if (folder == nullptr || section == nullptr) {
        return nullptr;
    }
    if (GetFileAttributesW(TablePath(folder).c_str()) == INVALID_FILE_ATTRIBUTES) {
        return nullptr;
    }
    auto* instance = new Instance;
    instance->folder = folder;
    instance->section = section;
    return instance;
}

BOOL CALLBACK TranslateChild(HWND window, LPARAM instance) {
    wchar_t text[1024] = {};
    GetWindowTextW(window, text, 1024);
    const wchar_t* translated = Answer(reinterpret_cast<Instance*>(instance), L"Strings", text);
    if (translated != nullptr && text[0] != L'\0') {
        SetWindowTextW(window, translated);
    }
    return TRUE;
}

}  // namespace

extern "C" {

void* Create(const wchar_t* folder, const wchar_t* section) {
    if (folder != nullptr) {
        Record(folder, std::wstring(L"Create ") + folder + L"|" + (section != nullptr ? section : L"(null)"));
    }
    return Make(folder, section);
}

void* CreateEx(const wchar_t* folder, const wchar_t* section, const wchar_t* locale) {
    if (folder != nullptr) {
        Record(folder, std::wstring(L"CreateEx ") + folder + L"|" + (section != nullptr ? section : L"(null)") + L"|" +
                           (locale != nullptr ? locale : L"(null)"));
    }
    Instance* instance = Make(folder, section);
    if (instance != nullptr && locale != nullptr) {
        instance->locale = locale;
    }
    return instance;
}

void Dispose(void* handle) {
    auto* instance = static_cast<Instance*>(handle);
    if (instance != nullptr) {
        Record(instance->folder, L"Dispose");
        delete instance;
    }
}

int EnumLocales(void* handle, const wchar_t** list) {
    auto* instance = static_cast<Instance*>(handle);
    if (instance == nullptr) {
        return 0;
    }
    Record(instance->folder, L"EnumLocales");
    instance->locales.clear();
    Lookup(*instance, L"Locales", L"List", &instance->locales);
    if (list != nullptr) {
        *list = instance->locales.c_str();
    }
    if (instance->locales.empty()) {
        return 0;
    }
    int count = 1;
    for (wchar_t c : instance->locales) {
        count += c == L',' ? 1 : 0;
    }
    return count;
}

int InitLocale(void* handle, const wchar_t* name) {
    auto* instance = static_cast<Instance*>(handle);
    if (instance == nullptr || name == nullptr) {
        return 1;
    }
    Record(instance->folder, std::wstring(L"InitLocale ") + name);
    std::wstring locales;
    Lookup(*instance, L"Locales", L"List", &locales);
    const std::wstring wanted = L"," + locales + L",";
    if (wanted.find(L"," + std::wstring(name) + L",") == std::wstring::npos) {
        return 1;
    }
    instance->locale = name;
    return 0;
}

int EnumLocaleStrings(void* /*handle*/, const wchar_t** list) {
    if (list != nullptr) {
        *list = L"";
    }
    return 0;
}

const wchar_t* GetActiveLocale(void* handle) {
    auto* instance = static_cast<Instance*>(handle);
    return instance != nullptr ? instance->locale.c_str() : nullptr;
}

const wchar_t* GetString(void* handle, const wchar_t* key) {
    return Answer(static_cast<Instance*>(handle), L"Strings", key);
}

const wchar_t* GetSectionString(void* handle, const wchar_t* section, const wchar_t* key) {
    return Answer(static_cast<Instance*>(handle), section, key);
}

int TranslateDialog(void* handle, void* window) {
    auto* instance = static_cast<Instance*>(handle);
    if (instance == nullptr || window == nullptr) {
        return 0;
    }
    Record(instance->folder, L"TranslateDialog");
    const HWND dialog = static_cast<HWND>(window);
    TranslateChild(dialog, reinterpret_cast<LPARAM>(instance));
    EnumChildWindows(dialog, TranslateChild, reinterpret_cast<LPARAM>(instance));
    return 1;
}

int TranslateMenu(void* handle, void* /*menu*/) {
    auto* instance = static_cast<Instance*>(handle);
    if (instance == nullptr) {
        return 0;
    }
    Record(instance->folder, L"TranslateMenu");
    return 1;
}

}  // extern "C"
