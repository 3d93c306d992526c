// Short-lived buffers of the plug-in: one allocate/free pair on the process heap,
// zero-filled, released by the routine that took them.
#pragma once

#include <windows.h>

#include <cstddef>

inline void* MemAlloc(size_t bytes) {
    return HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, bytes == 0 ? 1 : bytes);
}

inline void MemFree(void* block) {
    if (block != nullptr) {
        HeapFree(GetProcessHeap(), 0, block);
    }
}

// Owns one MemAlloc block.
class HeapBuffer {
public:
    HeapBuffer() = default;
    explicit HeapBuffer(size_t bytes) : data_(MemAlloc(bytes)), size_(data_ ? bytes : 0) {}
    ~HeapBuffer() { MemFree(data_); }
    HeapBuffer(HeapBuffer&& other) noexcept : data_(other.data_), size_(other.size_) {
        other.data_ = nullptr;
        other.size_ = 0;
    }
    HeapBuffer& operator=(HeapBuffer&& other) noexcept {
        if (this != &other) {
            MemFree(data_);
            data_ = other.data_;
            size_ = other.size_;
            other.data_ = nullptr;
            other.size_ = 0;
        }
        return *this;
    }
    HeapBuffer(const HeapBuffer&) = delete;
    HeapBuffer& operator=(const HeapBuffer&) = delete;

    explicit operator bool() const { return data_ != nullptr; }
    size_t size() const { return size_; }
    BYTE* bytes() const { return static_cast<BYTE*>(data_); }
    template <typename T>
    T* as() const {
        return static_cast<T*>(data_);
    }

private:
    void* data_ = nullptr;
    size_t size_ = 0;
};
