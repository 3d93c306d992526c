#include "config/extension_library.h"

#include <cwchar>

#include "base/module_state.h"
#include "base/spooler.h"
#include "base/text_format.h"
#include "base/trace_log.h"

namespace {

constexpr DWORD kDriverDirectoryChars = 4096;

}  // namespace

FARPROC ExtDllLoadFunction(UIConfig& config, const char* exportName) {
    if (config.ExtLibraryHandle == nullptr) {
        wchar_t path[kDriverDirectoryChars + 32] = {};
        DWORD needed = 0;
        if (!Spool().GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(path),
                                                kDriverDirectoryChars * sizeof(wchar_t), &needed)) {
            Trace(L"ExtDllLoadFunction(): %d=GetPrinterDriverDirectory()\n", static_cast<int>(GetLastError()));
            return nullptr;
        }
        path[kDriverDirectoryChars - 1] = L'\0';
        const size_t used = wcslen(path);
        CopyWide(path + used, kDriverDirectoryChars + 32 - used, kExtensionLibraryPath);
        HMODULE library = LoadLibraryInModuleContext(path);
        if (library == nullptr) {
            Trace(L"ExtDllLoadFunction(): %d=LoadLibrary(%ws)\n", static_cast<int>(GetLastError()), path);
            return nullptr;
        }
        config.ExtLibraryHandle = library;
        Trace(L"ExtDllLoadFunction(): lib=0x%p %ws was loaded\n", static_cast<void*>(library), path);
    }
    if (exportName == nullptr) {
        return nullptr;
    }
    FARPROC function = GetProcAddress(static_cast<HMODULE>(config.ExtLibraryHandle), exportName);
    if (function != nullptr) {
        Trace(L"ExtDllLoadFunction(): function %S found\n", exportName);
    } else {
        Trace(L"ExtDllLoadFunction(): function %S not exported\n", exportName);
    }
    return function;
}

void ReleaseExtensionLibrary(UIConfig& config) {
    if (config.ExtLibraryHandle != nullptr) {
        Trace(L"DestroyConfig(): freeing hExtDLL\n");
        Trace(L"ExtDllUnloadFunction(): lib was unloaded\n");
        FreeLibrary(static_cast<HMODULE>(config.ExtLibraryHandle));
        config.ExtLibraryHandle = nullptr;
    }
}
