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

ModuleContextScope::ModuleContextScope() {
    HANDLE context = GetModuleActivationContext();
    active_ = IsActivationContextValid(context) && ActivateActCtx(context, &cookie_);
}

ModuleContextScope::~ModuleContextScope() {
    if (active_) {
        DeactivateActCtx(0, cookie_);
    }
}

HMODULE LoadLibraryInModuleContext(const wchar_t* path) {
    const ModuleContextScope context;
    return LoadLibraryW(path);
}
