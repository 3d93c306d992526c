// Stand-in for the maker's ink toolbox program: it writes the command line it was started
// with and the folder it was started in, one per line (UTF-8), to the file named by the
// environment variable OZDK_TOOLBOX_RECORD, and ends.
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

std::string Utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(size > 0 ? size - 1 : 0, '\0');
    if (size > 1) WideCharToMultiByte(CP_UTF8, 0, text, -1, &narrow[0], size, nullptr, nullptr);
    return narrow;
}

}  // namespace

int main() {
    wchar_t record[MAX_PATH] = {};
    wchar_t folder[MAX_PATH] = {};
    if (GetEnvironmentVariableW(L"OZDK_TOOLBOX_RECORD", record, MAX_PATH) == 0 ||
        GetCurrentDirectoryW(MAX_PATH, folder) == 0) {
        return 1;
    }
    const std::string text = Utf8(GetCommandLineW()) + "\n" + Utf8(folder) + "\n";
    FILE* file = _wfopen(record, L"wb");
    if (file == nullptr) return 1;
    fwrite(text.data(), 1, text.size(), file);
    fclose(file);
    return 0;
}
