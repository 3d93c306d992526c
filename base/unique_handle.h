// Small owners for Win32 handles: each closes its handle exactly once.
#pragma once

#include <windows.h>

template <typename T, void (*Close)(T), T Invalid>
class UniqueHandle {
public:
    UniqueHandle() = default;
    explicit UniqueHandle(T handle) : handle_(handle) {}
    ~UniqueHandle() { reset(); }
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;

    T get() const { return handle_; }
    T* put() {
        reset();
        return &handle_;
    }
    T release() {
        T handle = handle_;
        handle_ = Invalid;
        return handle;
    }
    void reset(T handle = Invalid) {
        if (handle_ != Invalid) {
            Close(handle_);
        }
        handle_ = handle;
    }
    explicit operator bool() const { return handle_ != Invalid; }

private:
    T handle_ = Invalid;
};

namespace unique_handle_detail {
inline void CloseRegistryKey(HKEY key) { RegCloseKey(key); }
inline void CloseLibrary(HMODULE module) { FreeLibrary(module); }
}  // namespace unique_handle_detail

using UniqueRegKey = UniqueHandle<HKEY, unique_handle_detail::CloseRegistryKey, nullptr>;
using UniqueLibrary = UniqueHandle<HMODULE, unique_handle_detail::CloseLibrary, nullptr>;
