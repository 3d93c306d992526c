// Stand-in for the locale library of the driver family: a fixed German table, and a log
// of the calls the tests look for (see locale_library_files.h).
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

#include "locale_library_files.h"

namespace {

// An instance is the locale folder it was created for.
using Instance = std::wstring;

struct Entry { const wchar_t* section; const wchar_t* key; const wchar_t* text; };
const Entry kTable[] = {
    {L"Strings", L"Form Size", L"Formulargr\u00f6\u00dfe"},
    {L"Strings", L"Layout", L"Seitenlayout"},
    {L"Caption", L"Form Size", L"Format"},
    {L"Caption", L"Layout", L"Seite"},
    {L"Caption", L"Paper/Media", L"Papier/Medien"},
};

void Record(const Instance* folder, const std::wstring& line) {
    FILE* file = _wfopen((*folder + L"\\" OZDK_LOCALE_REQUESTS_FILE).c_str(), L"ab");
    if (file == nullptr) return;
    for (wchar_t c : line + L"\n") fputc(c < 0x80 ? static_cast<char>(c) : '?', file);
    fclose(file);
}

const wchar_t* Lookup(const wchar_t* section, const wchar_t* key) {
    for (const Entry& entry : kTable) {
        if (section && key && wcscmp(entry.section, section) == 0 && wcscmp(entry.key, key) == 0) return entry.text;
    }
    return nullptr;
}

BOOL CALLBACK TranslateWindow(HWND window, LPARAM) {
    wchar_t text[1024] = {};
    GetWindowTextW(window, text, 1024);
    if (const wchar_t* translated = Lookup(L"Strings", text)) SetWindowTextW(window, translated);
    return TRUE;
}

}  // namespace

extern "C" {

// No instance without the locale folder.
void* Create(const wchar_t* folder, const wchar_t* section) {
    if (folder == nullptr || GetFileAttributesW(folder) == INVALID_FILE_ATTRIBUTES) return nullptr;
    auto* instance = new Instance(folder);
    Record(instance, std::wstring(L"Create ") + folder + L"|" + (section != nullptr ? section : L"(null)"));
    return instance;
}

void Dispose(void* handle) {
    if (handle == nullptr) return;
    Record(static_cast<Instance*>(handle), L"Dispose");
    delete static_cast<Instance*>(handle);
}

int EnumLocales(void* handle, const wchar_t** list) {
    if (list != nullptr) *list = L"en_us,de_de";
    return handle != nullptr ? 2 : 0;
}

int InitLocale(void* handle, const wchar_t* name) {
    if (handle == nullptr || name == nullptr) return 1;
    Record(static_cast<Instance*>(handle), std::wstring(L"InitLocale ") + name);
    return wcscmp(name, L"en_us") != 0 && wcscmp(name, L"de_de") != 0;
}

const wchar_t* GetString(void*, const wchar_t* key) { return Lookup(L"Strings", key); }

const wchar_t* GetSectionString(void*, const wchar_t* section, const wchar_t* key) { return Lookup(section, key); }

int TranslateDialog(void* handle, void* window) {
    if (handle == nullptr || window == nullptr) return 0;
    TranslateWindow(static_cast<HWND>(window), 0);
    EnumChildWindows(static_cast<HWND>(window), TranslateWindow, 0);
    return 1;
}

}  // extern "C"
