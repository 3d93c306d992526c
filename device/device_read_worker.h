// A read of the embosser's settings on a thread of its own, so that the page that asked
// for it goes on answering while a slow or silent embosser is waited for.
//
// The worker reads into a record of its own, a copy of the page's UIConfig taken when it
// starts; the page's thread takes the device's values from it only after the worker has
// ended. The worker calls nothing that shares state with the page's thread (no texts of
// the locale binding). Whoever starts a worker waits for its end before returning to the
// host (the destructor cancels and waits), so it never outlives the plug-in object.
#pragma once

#include <windows.h>

#include "base/cancel_signal.h"
#include "base/heap_memory.h"
#include "config/ui_config.h"

class DeviceReadWorker {
public:
    DeviceReadWorker() = default;
    ~DeviceReadWorker();
    DeviceReadWorker(const DeviceReadWorker&) = delete;
    DeviceReadWorker& operator=(const DeviceReadWorker&) = delete;

    // Starts reading the device of `config`. False when no worker could be started (no
    // memory, no thread); the caller then reads on its own thread.
    bool Start(const UIConfig& config);
    // Signalled when the worker has ended.
    HANDLE thread() const { return thread_; }
    // Asks the worker to stop at its next wait (within kCancelCheckMs).
    void Cancel();
    bool cancelled() const { return cancelled_; }
    // Waits for the worker's end.
    void Join();
    // Once the worker has ended (waits for it): the outcome into `config` as a first read by a page records it
    // (`caller` names the page's routine). A cancelled read counts as failed, takes
    // nothing of the record, and says so in the trace.
    void Finish(UIConfig& config, const wchar_t* caller);

private:
    static DWORD WINAPI Run(void* self);

    HeapBuffer record_;
    CancelSignal cancel_;
    HANDLE thread_ = nullptr;
    bool cancelled_ = false;
    volatile LONG known_ = 0;
};
