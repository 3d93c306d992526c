#include "frame/trace_log.h"

#include <windows.h>
#include <shlobj.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>

#include "config/spooler.h"
#include "frame/heap_memory.h"
#include "frame/text_format.h"

namespace {

constexpr size_t kPathCapacity = 4096;

// The log's path: the common application-data folder does not move while the process
// runs, so it is looked up once. The file itself is still opened for every line.
struct LogPath {
    wchar_t text[kPathCapacity] = {};
    LogPath() {
        wchar_t folder[MAX_PATH] = {};
        if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder))) {
            FormatWide(text, kPathCapacity, L"%s\\Kestrova\\TavrolinUI.log", folder);
        } else {
            FormatWide(text, kPathCapacity, L"C:\\TavrolinUI.log");
        }
    }
};

const wchar_t* TraceLogPath() {
    static const LogPath path;
    return path.text;
}

// Writes one formatted line as 8-bit text in the file's text mode.
void WriteLine(FILE* file, const wchar_t* format, va_list args) {
    va_list measure;
    va_copy(measure, args);
    const int length = _vscwprintf(format, measure);
    va_end(measure);
    if (length <= 0) {
        return;
    }
    HeapBuffer wide((static_cast<size_t>(length) + 1) * sizeof(wchar_t));
    if (!wide) {
        return;
    }
    _vsnwprintf(wide.as<wchar_t>(), static_cast<size_t>(length) + 1, format, args);
    const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.as<wchar_t>(), length, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) {
        return;
    }
    HeapBuffer narrow(static_cast<size_t>(bytes) + 1);
    if (!narrow) {
        return;
    }
    WideCharToMultiByte(CP_ACP, 0, wide.as<wchar_t>(), length, narrow.as<char>(), bytes, nullptr, nullptr);
    fwrite(narrow.bytes(), 1, static_cast<size_t>(bytes), file);
}

}  // namespace

void Trace(const wchar_t* format, ...) {
    FILE* file = _wfopen(TraceLogPath(), L"a+");
    if (file == nullptr) {
        return;  // no maker folder: logging is off
    }
    va_list args;
    va_start(args, format);
    WriteLine(file, format, args);
    va_end(args);
    fclose(file);
}

namespace {

bool VersionFromDriver(HANDLE printer, wchar_t* text, size_t count) {
    DWORD needed = 0;
    Spool().GetPrinterDriverW(printer, nullptr, 6, nullptr, 0, &needed);
    if (needed == 0) {
        return false;
    }
    HeapBuffer info(needed);
    if (!info || !Spool().GetPrinterDriverW(printer, nullptr, 6, info.bytes(), needed, &needed)) {
        return false;
    }
    const DWORDLONG version = info.as<DRIVER_INFO_6W>()->dwlDriverVersion;
    FormatWide(text, count, L"%d.%d.%d.%d", static_cast<int>((version >> 48) & 0xFFFF),
               static_cast<int>((version >> 32) & 0xFFFF), static_cast<int>((version >> 16) & 0xFFFF),
               static_cast<int>(version & 0xFFFF));
    return true;
}

void VersionFromFile(wchar_t* text, size_t count) {
    wchar_t path[kPathCapacity] = {};
    DWORD needed = 0;
    if (!Spool().GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(path),
                                            sizeof(path) - 64, &needed)) {
        return;
    }
    wcsncat(path, L"\\3\\ozdkrnui.dll", kPathCapacity - wcslen(path) - 1);
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0) {
        return;
    }
    HeapBuffer block(size);
    if (!block || !GetFileVersionInfoW(path, 0, size, block.bytes())) {
        return;
    }
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.bytes(), L"\\", reinterpret_cast<void**>(&fixed), &length) || fixed == nullptr ||
        length < sizeof(VS_FIXEDFILEINFO)) {
        return;
    }
    FormatWide(text, count, L"%d.%d.%d.%d", HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS),
               HIWORD(fixed->dwFileVersionLS), LOWORD(fixed->dwFileVersionLS));
}

}  // namespace

const wchar_t* GetFileVersionString(const UIConfig* pConfig) {
    static wchar_t version[260];
    CopyWide(version, 260, L"0.0.0.0");
    Trace(L"GetFileVersionString(): %s\n", version);
    if (pConfig != nullptr && pConfig->hPrinter != nullptr &&
        VersionFromDriver(pConfig->hPrinter, version, 260)) {
        return version;
    }
    VersionFromFile(version, 260);
    return version;
}
