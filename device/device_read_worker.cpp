#include "device/device_read_worker.h"

#include <cstring>

#include "base/trace_log.h"
#include "device/device_settings_store.h"

DeviceReadWorker::~DeviceReadWorker() {
    Cancel();
    Join();
}

bool DeviceReadWorker::Start(const UIConfig& config) {
    if (thread_ != nullptr || !cancel_.valid()) {
        return false;
    }
    record_ = HeapBuffer(sizeof(UIConfig));
    if (!record_) {
        return false;
    }
    memcpy(record_.bytes(), &config, sizeof(UIConfig));
    thread_ = CreateThread(nullptr, 0, &DeviceReadWorker::Run, this, 0, nullptr);
    if (thread_ == nullptr) {
        Trace(L"DeviceReadWorker(): %d=CreateThread()\n", static_cast<int>(GetLastError()));
        return false;
    }
    return true;
}

DWORD WINAPI DeviceReadWorker::Run(void* self) {
    auto* worker = static_cast<DeviceReadWorker*>(self);
    const bool known = GetQuorlSettings(*worker->record_.as<UIConfig>(), &worker->cancel_);
    InterlockedExchange(&worker->known_, known ? 1 : 0);
    return 0;
}

void DeviceReadWorker::Cancel() {
    if (thread_ != nullptr && !cancelled_) {
        cancelled_ = true;
        cancel_.Raise();
    }
}

void DeviceReadWorker::Join() {
    if (thread_ != nullptr) {
        WaitForSingleObject(thread_, INFINITE);
        CloseHandle(thread_);
        thread_ = nullptr;
    }
}

void DeviceReadWorker::Finish(UIConfig& config, const wchar_t* caller) {
    Join();
    if (cancelled_) {
        RecordDeviceRead(config, false, caller);
        Trace(L"%s(): reading the embosser was cancelled\n", caller);
        return;
    }
    if (!record_) {
        return;
    }
    TakeDeviceSettings(config, *record_.as<UIConfig>());
    RecordDeviceRead(config, InterlockedCompareExchange(&known_, 0, 0) != 0, caller);
}
