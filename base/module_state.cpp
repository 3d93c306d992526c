#include "base/module_state.h"

HINSTANCE ghInstance = nullptr;
volatile LONG gObjectCount = 0;
volatile LONG gLockCount = 0;

namespace {
HANDLE gActivationContext = INVALID_HANDLE_VALUE;
bool gActivationContextTried = false;
}  // namespace

bool IsActivationContextValid(HANDLE context) {
    return context != nullptr && context != INVALID_HANDLE_VALUE;
}

HANDLE GetModuleActivationContext() {
    if (!gActivationContextTried) {
        gActivationContextTried = true;
        wchar_t path[MAX_PATH] = {};
        if (GetModuleFileNameW(ghInstance, path, MAX_PATH) != 0) {
            ACTCTXW context = {};
            context.cbSize = sizeof(context);
            context.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
            context.lpSource = path;
            context.lpResourceName = MAKEINTRESOURCEW(2);
            context.hModule = ghInstance;
            gActivationContext = CreateActCtxW(&context);
        }
    }
    return gActivationContext;
}

void ReleaseModuleActivationContext() {
    if (gActivationContext != INVALID_HANDLE_VALUE) {
        ReleaseActCtx(gActivationContext);
        gActivationContext = INVALID_HANDLE_VALUE;
    }
    gActivationContextTried = false;
}

HMODULE LoadLibraryInModuleContext(const wchar_t* path) {
    HANDLE context = GetModuleActivationContext();
    ULONG_PTR cookie = 0;
    const bool activated = IsActivationContextValid(context) && ActivateActCtx(context, &cookie);
    HMODULE module = LoadLibraryW(path);
    if (activated) {
        DeactivateActCtx(0, cookie);
    }
    return module;
}
