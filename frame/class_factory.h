// The class factory of the plug-in's one creatable class, and the reference counting
// both COM objects of the module share.
#pragma once

#include <windows.h>
#include <unknwn.h>

// Interlocked increment of a COM reference count; the new count. The factory and the
// plug-in object count their references the same way.
inline ULONG IncrementReferenceCount(volatile LONG* count) noexcept {
    return static_cast<ULONG>(InterlockedIncrement(count));
}

inline ULONG DecrementReferenceCount(volatile LONG* count) noexcept {
    return static_cast<ULONG>(InterlockedDecrement(count));
}

// QueryInterface of an object that gives IUnknown and one interface `own`, `self` being
// that interface's pointer.
inline HRESULT QueryOwnInterface(IUnknown* self, REFIID own, REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, own)) {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    *ppv = self;
    self->AddRef();
    return S_OK;
}

// One factory per DllGetClassObject call; it creates OemUIPlugin objects. Starts with
// one reference, owned by whoever created it.
class OemUIClassFactory final : public IClassFactory {
public:
    OemUIClassFactory() noexcept = default;
    OemUIClassFactory(const OemUIClassFactory&) = delete;
    OemUIClassFactory& operator=(const OemUIClassFactory&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) noexcept override;

private:
    ~OemUIClassFactory() = default;

    volatile LONG refCount_ = 1;
};
