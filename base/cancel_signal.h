// A request to stop, given by one thread and noticed by another at its next wait: the
// page's thread cancels a read of the embosser that a worker is waiting on.
#pragma once

#include <windows.h>

class CancelSignal {
public:
    CancelSignal() : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~CancelSignal() {
        if (event_ != nullptr) {
            CloseHandle(event_);
        }
    }
    CancelSignal(const CancelSignal&) = delete;
    CancelSignal& operator=(const CancelSignal&) = delete;

    // False when the system gave no event: such a signal can never be raised, and waits
    // on it are plain sleeps.
    bool valid() const { return event_ != nullptr; }
    void Raise() {
        if (event_ != nullptr) {
            SetEvent(event_);
        }
    }
    bool IsRaised() const { return event_ != nullptr && WaitForSingleObject(event_, 0) == WAIT_OBJECT_0; }
    // Waits `milliseconds` unless the signal comes first; true when it did.
    bool WaitFor(DWORD milliseconds) const {
        if (event_ == nullptr) {
            Sleep(milliseconds);
            return false;
        }
        return WaitForSingleObject(event_, milliseconds) == WAIT_OBJECT_0;
    }

private:
    HANDLE event_;
};

// True when `signal` is given and raised.
inline bool IsCancelled(const CancelSignal* signal) { return signal != nullptr && signal->IsRaised(); }

// Sleeps `milliseconds`, or less when `signal` is given and raised meanwhile; true then.
inline bool SleepUnlessCancelled(const CancelSignal* signal, DWORD milliseconds) {
    if (signal == nullptr) {
        Sleep(milliseconds);
        return false;
    }
    return signal->WaitFor(milliseconds);
}
