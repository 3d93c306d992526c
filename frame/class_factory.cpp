#include "frame/class_factory.h"

#include <new>

#include "base/module_state.h"
#include "frame/oem_ui_plugin.h"

HRESULT STDMETHODCALLTYPE OemUIClassFactory::QueryInterface(REFIID riid, void** ppv) noexcept {
    return QueryOwnInterface(static_cast<IClassFactory*>(this), IID_IClassFactory, riid, ppv);
}

ULONG STDMETHODCALLTYPE OemUIClassFactory::AddRef() noexcept {
    return IncrementReferenceCount(&refCount_);
}

ULONG STDMETHODCALLTYPE OemUIClassFactory::Release() noexcept {
    const ULONG count = DecrementReferenceCount(&refCount_);
    if (count == 0) {
        delete this;
    }
    return count;
}

HRESULT STDMETHODCALLTYPE OemUIClassFactory::CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (pUnkOuter != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    OemUIPlugin* object = new (std::nothrow) OemUIPlugin();
    if (object == nullptr) {
        return E_OUTOFMEMORY;
    }
    // A request for an interface the object does not give destroys it at once.
    const HRESULT hr = object->QueryInterface(riid, ppv);
    object->Release();
    return hr;
}

HRESULT STDMETHODCALLTYPE OemUIClassFactory::LockServer(BOOL fLock) noexcept {
    if (fLock) {
        InterlockedIncrement(&gLockCount);
    } else {
        InterlockedDecrement(&gLockCount);
    }
    return S_OK;
}
