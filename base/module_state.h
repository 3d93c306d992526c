// Module-wide state of the plug-in: the module handle, the server lock count and the
// activation context made from the module's manifest.
#pragma once

#include <windows.h>

extern HINSTANCE ghInstance;
extern volatile LONG gObjectCount;  // never moved: objects are deliberately not counted
extern volatile LONG gLockCount;    // changed only by IClassFactory::LockServer

// The activation context built from the module's manifest (resource 2), created on
// first use and kept until the module unloads. INVALID_HANDLE_VALUE when it cannot be made.
HANDLE GetModuleActivationContext();
bool IsActivationContextValid(HANDLE context);
void ReleaseModuleActivationContext();

// The module's activation context, active for the life of the object when it could be
// made and activated; active() tells whether it is.
class ModuleContextScope {
public:
    ModuleContextScope();
    ~ModuleContextScope();
    ModuleContextScope(const ModuleContextScope&) = delete;
    ModuleContextScope& operator=(const ModuleContextScope&) = delete;

    bool active() const { return active_; }

private:
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

// LoadLibraryW inside the module's activation context.
HMODULE LoadLibraryInModuleContext(const wchar_t* path);
