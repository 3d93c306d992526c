#include "config/version_string.h"

#include <windows.h>

#include <cwchar>

#include "base/heap_memory.h"
#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

constexpr size_t kPathCapacity = 4096;

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
