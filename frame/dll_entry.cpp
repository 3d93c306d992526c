// Library entry points of ozdkrnui.dll.
#include <windows.h>

#include <new>

#include "frame/class_factory.h"
#include "base/module_state.h"
#include "base/printer_oem_ui.h"

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

// Objects and factories are not counted, so only an outstanding LockServer(TRUE) keeps
// the library loaded.
extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return (gObjectCount != 0 || gLockCount != 0) ? S_FALSE : S_OK;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (!IsEqualCLSID(rclsid, CLSID_OEMUI)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    OemUIClassFactory* factory = new (std::nothrow) OemUIClassFactory();
    if (factory == nullptr) {
        return E_OUTOFMEMORY;
    }
    // A failed query frees the factory; a successful one leaves it to the caller.
    const HRESULT hr = factory->QueryInterface(riid, ppv);
    factory->Release();
    return hr;
}
