#include "printer_ui/ink_toolbox.h"

#include <shlobj.h>

#include <cstdio>

#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/registry.h"

namespace {

constexpr DWORD kFolderCapacity = 4096;  // wide characters of the folders and the path

// The folder that holds the maker's programs, ending in a backslash.
void GetQuorlFolder(wchar_t* folder) {
    wchar_t installed[kFolderCapacity] = {};
    HKEY key = nullptr;
    const LONG opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMakerKey, 0, KEY_READ, &key);
    const LONG read = opened == ERROR_SUCCESS ? ReadRegistryString(L"KSDir", installed, sizeof(installed), key) : opened;
    if (read == ERROR_SUCCESS && installed[0] != L'\0') {
        FormatWide(folder, kFolderCapacity, L"%s\\Quorl\\", installed);
        return;
    }
    wchar_t programs[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES, nullptr, SHGFP_TYPE_CURRENT, programs);
    FormatWide(folder, kFolderCapacity, L"%s\\Kestrova\\Quorl\\", programs);
}

}  // namespace

bool LaunchInkToolbox(HWND owner, const wchar_t* printerName) {
    wchar_t folder[kFolderCapacity] = {};
    GetQuorlFolder(folder);
    wchar_t toolboxFolder[kFolderCapacity] = {};
    FormatWide(toolboxFolder, kFolderCapacity, L"%sKestrova Tavrolin Color Pigmora", folder);
    wchar_t program[kFolderCapacity] = {};
    FormatWide(program, kFolderCapacity, L"%s\\TavrolinColorInkToolbox.exe", toolboxFolder);

    FILE* file = _wfopen(program, L"r");
    if (file == nullptr) {
        wchar_t message[kFolderCapacity + 32] = {};
        FormatWide(message, kFolderCapacity + 32, L"%s does not exist!", program);
        Trace(L"LaunchInkToolbox(): %s\n", message);
        MessageBoxW(owner, message, L"KS", MB_OK);
        return false;
    }
    fclose(file);

    // CreateProcessW may write into the command line.
    wchar_t commandLine[2 * kFolderCapacity] = {};
    FormatWide(commandLine, 2 * kFolderCapacity, L"\"%s\" --printer \"%s\"", program, printerName);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const BOOL started = CreateProcessW(nullptr, commandLine, nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                                        toolboxFolder, &startup, &process);
    Trace(L"LaunchInkToolbox(): %d=CreateProcess(%s), error %d\n", started ? 1 : 0, commandLine,
          started ? 0 : static_cast<int>(GetLastError()));
    if (started) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return started != FALSE;
}
