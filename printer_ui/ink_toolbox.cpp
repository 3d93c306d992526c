#include "printer_ui/ink_toolbox.h"

#include <shlobj.h>

#include <cstdio>
#include <cwctype>

#include "base/text_format.h"
#include "base/trace_log.h"
#include "config/localisation.h"
#include "config/registry.h"
#include "resources/resource_ids.h"

namespace {

constexpr DWORD kFolderCapacity = 4096;  // wide characters of the folders and the path
constexpr DWORD kReasonCapacity = 1024;  // wide characters of the system's error text

const InkToolboxSystem kSystem = {&SHGetFolderPathW, &CreateProcessW};
const InkToolboxSystem* gSystem = &kSystem;

// The folder that holds the maker's programs, ending in a backslash. On failure the
// folder is left empty and the result is the system's reason.
HRESULT GetQuorlFolder(wchar_t* folder) {
    wchar_t installed[kFolderCapacity] = {};
    HKEY key = nullptr;
    const LONG opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMakerKey, 0, KEY_READ, &key);
    const LONG read = opened == ERROR_SUCCESS ? ReadRegistryString(L"KSDir", installed, sizeof(installed), key) : opened;
    if (read == ERROR_SUCCESS && installed[0] != L'\0') {
        FormatWide(folder, kFolderCapacity, L"%s\\Quorl\\", installed);
        return S_OK;
    }
    // Without it the path would lead from the drive's root, where anyone may put a program.
    wchar_t programs[MAX_PATH] = {};
    const HRESULT found = gSystem->getFolderPath(nullptr, CSIDL_PROGRAM_FILES, nullptr, SHGFP_TYPE_CURRENT, programs);
    Trace(L"LaunchInkToolbox(): 0x%08X=SHGetFolderPath(%s)\n", static_cast<unsigned>(found), programs);
    if (FAILED(found) || programs[0] == L'\0') {
        return FAILED(found) ? found : E_FAIL;
    }
    FormatWide(folder, kFolderCapacity, L"%s\\Kestrova\\Quorl\\", programs);
    return S_OK;
}

// Tells the person that the toolbox did not start, with the system's text for `error`
// (a Windows error code or an HRESULT) after the program's path when it is known.
void TellNotStarted(HWND owner, const UIConfig& config, const wchar_t* program, DWORD error) {
    if (HRESULT_FACILITY(error) == FACILITY_WIN32) {
        error = HRESULT_CODE(error);  // the system's texts are those of the Windows error
    }
    wchar_t reason[kReasonCapacity] = {};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                  reason, kReasonCapacity, nullptr);
    while (length > 0 && iswspace(reason[length - 1])) {
        reason[--length] = L'\0';
    }
    if (length == 0) {
        FormatWide(reason, kReasonCapacity, L"0x%08X", static_cast<unsigned>(error));
    }
    wchar_t caption[256] = {};
    CopyWide(caption, 256, GetLocalString(&config, IDS_PAGE_SERVICE));
    wchar_t message[kFolderCapacity + kReasonCapacity + 256] = {};
    const wchar_t* format = program[0] != L'\0' ? L"%s\r\n%s\r\n\r\n%s" : L"%s%s\r\n\r\n%s";
    FormatWide(message, sizeof(message) / sizeof(message[0]), format, GetLocalString(&config, IDS_TOOLBOX_NOT_STARTED),
               program, reason);
    Trace(L"LaunchInkToolbox(): %s\n", message);
    MessageBoxW(owner, message, caption, MB_OK | MB_ICONERROR);
}

}  // namespace

bool LaunchInkToolbox(HWND owner, const UIConfig& config) {
    wchar_t folder[kFolderCapacity] = {};
    const HRESULT found = GetQuorlFolder(folder);
    if (FAILED(found)) {
        TellNotStarted(owner, config, L"", static_cast<DWORD>(found));
        return false;
    }
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

    // The program is named apart from the command line as well, so that a path with
    // spaces can never start "C:\Program.exe"; CreateProcessW may write into the line.
    wchar_t commandLine[2 * kFolderCapacity] = {};
    FormatWide(commandLine, 2 * kFolderCapacity, L"\"%s\" --printer \"%s\"", program, config.PrinterName);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const BOOL started = gSystem->createProcess(program, commandLine, nullptr, nullptr, FALSE, DETACHED_PROCESS,
                                                nullptr, toolboxFolder, &startup, &process);
    const DWORD error = started ? 0 : GetLastError();
    Trace(L"LaunchInkToolbox(): %d=CreateProcess(%s), error %u\n", started ? 1 : 0, commandLine,
          static_cast<unsigned>(error));
    if (!started) {
        TellNotStarted(owner, config, program, error);
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

void SetInkToolboxSystemForTesting(const InkToolboxSystem* replacement) {
    gSystem = replacement != nullptr ? replacement : &kSystem;
}
