#include "base/trace_log.h"

#include <windows.h>
#include <shlobj.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>

#include "base/heap_memory.h"
#include "base/text_format.h"

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

// A page's thread and the worker that reads the embosser may trace at the same time:
// one line is written whole before the next file opening.
SRWLOCK gTraceLock = SRWLOCK_INIT;

}  // namespace

void Trace(const wchar_t* format, ...) {
    AcquireSRWLockExclusive(&gTraceLock);
    FILE* file = _wfopen(TraceLogPath(), L"a+");
    if (file != nullptr) {  // without the maker's folder logging is off
        va_list args;
        va_start(args, format);
        WriteLine(file, format, args);
        va_end(args);
        fclose(file);
    }
    ReleaseSRWLockExclusive(&gTraceLock);
}
