// Stand-in for the language-monitor extension library of the driver family. It shows no
// dialogs: it records what it was asked (see language_monitor_extension_record.h) and
// answers the error queries with what the tests stored.
#include <windows.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "language_monitor_extension_record.h"
#include "printer_ui/extension_services.h"

namespace {

class RecordKey {
public:
    RecordKey() {
        if (RegCreateKeyExW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key_, nullptr) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    ~RecordKey() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    RecordKey(const RecordKey&) = delete;
    RecordKey& operator=(const RecordKey&) = delete;

    void Count(const wchar_t* name) const {
        const DWORD calls = ReadDword(name, 0) + 1;
        SetDword(name, calls);
    }
    void SetDword(const wchar_t* name, DWORD value) const {
        if (key_ != nullptr) RegSetValueExW(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4);
    }
    void SetQword(const wchar_t* name, uint64_t value) const {
        if (key_ != nullptr) RegSetValueExW(key_, name, 0, REG_QWORD, reinterpret_cast<const BYTE*>(&value), 8);
    }
    void SetString(const wchar_t* name, const wchar_t* text) const {
        if (key_ == nullptr) return;
        const wchar_t* value = text != nullptr ? text : L"";
        RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                       static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t)));
    }
    void SetBytes(const wchar_t* name, const void* data, DWORD size) const {
        if (key_ != nullptr) RegSetValueExW(key_, name, 0, REG_BINARY, static_cast<const BYTE*>(data), size);
    }
    DWORD ReadDword(const wchar_t* name, DWORD fallback) const {
        DWORD value = 0;
        DWORD size = sizeof(value);
        DWORD type = REG_NONE;
        if (key_ == nullptr || RegQueryValueExW(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size) !=
                                   ERROR_SUCCESS ||
            type != REG_DWORD) {
            return fallback;
        }
        return value;
    }
    std::wstring ReadString(const wchar_t* name, const wchar_t* fallback) const {
        wchar_t text[1024] = {};
        DWORD size = sizeof(text) - sizeof(wchar_t);
        DWORD type = REG_NONE;
        if (key_ == nullptr ||
            RegQueryValueExW(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size) != ERROR_SUCCESS ||
            type != REG_SZ) {
            return fallback;
        }
        return text;
    }

private:
    HKEY key_ = nullptr;
};

// How many bytes of a request its service code defines.
size_t DefinedRequestBytes(uint32_t service) {
    switch (service) {
        case kServiceBrailleTable:
            return sizeof(BrailleTableServiceRequest);
        case kServiceSerialSettings:
            return sizeof(SerialSettingsServiceRequest);
        default:
            return sizeof(uint32_t);
    }
}

}  // namespace

extern "C" {

DWORD WINAPI DllExportPrinterService(HWND owner, const wchar_t* printerName, void* request) {
    RecordKey record;
    record.Count(L"ServiceCalls");
    record.SetQword(L"ServiceOwner", reinterpret_cast<uint64_t>(owner));
    record.SetString(L"ServicePrinter", printerName);
    if (request == nullptr) {
        record.SetBytes(L"ServiceRequest", nullptr, 0);
        return ERROR_INVALID_PARAMETER;
    }
    uint32_t service = 0;
    std::memcpy(&service, request, sizeof(service));
    record.SetBytes(L"ServiceRequest", request, static_cast<DWORD>(DefinedRequestBytes(service)));
    return ERROR_SUCCESS;
}

DWORD WINAPI DllExportGetPrinterError(HWND /*owner*/, const wchar_t* printerName, int32_t* record,
                                      DWORD fieldCount) {
    RecordKey key;
    key.Count(L"ErrorCalls");
    key.SetString(L"ErrorPrinter", printerName);
    key.SetDword(L"ErrorFieldCount", fieldCount);
    const DWORD result = key.ReadDword(L"AnswerErrorResult", 0);
    if (result == 0 && record != nullptr && fieldCount >= 1) {
        record[0] = static_cast<int32_t>(key.ReadDword(L"AnswerErrorCode", 0));
    }
    return result;
}

DWORD WINAPI DllExportGetPrinterErrorText(HWND /*owner*/, int32_t errorCode, wchar_t* text) {
    RecordKey key;
    key.Count(L"ErrorTextCalls");
    key.SetDword(L"ErrorTextCode", static_cast<DWORD>(errorCode));
    if (text == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::wstring answer = key.ReadString(L"AnswerErrorText", L"Stand-in error");
    const size_t length = answer.size() < kPrinterErrorTextCapacity - 1 ? answer.size() : kPrinterErrorTextCapacity - 1;
    std::memcpy(text, answer.data(), length * sizeof(wchar_t));
    text[length] = L'\0';
    return ERROR_SUCCESS;
}

}  // extern "C"

// The exports have exactly the plug-in's calling conventions.
static_assert(std::is_same<decltype(&DllExportPrinterService), PrinterServiceFunction>::value, "service");
static_assert(std::is_same<decltype(&DllExportGetPrinterError), GetPrinterErrorFunction>::value, "error");
static_assert(std::is_same<decltype(&DllExportGetPrinterErrorText), GetPrinterErrorTextFunction>::value, "text");
