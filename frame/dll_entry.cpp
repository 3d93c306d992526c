// Library entry points of ozdkrnui.dll.
#include <windows.h>

#include "frame/module_state.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        ghInstance = instance;
        break;
    case DLL_PROCESS_DETACH:
        ReleaseModuleActivationContext();
        break;
    default:
        break;
    }
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return (gObjectCount != 0 || gLockCount != 0) ? S_FALSE : S_OK;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID /*rclsid*/, REFIID /*riid*/, void** ppv) {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    return CLASS_E_CLASSNOTAVAILABLE;
}
