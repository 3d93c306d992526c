#include "config_fixtures.h"

#include <winspool.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace configtest {

OEMCUIPPARAM MakeParam(const testenv::TestPrinter& printer, HANDLE heap, DEVMODEW* publicDevMode) {
    OEMCUIPPARAM param = {};
    param.cbSize = sizeof(param);
    param.hPrinter = printer.handle();
    param.pPrinterName = const_cast<wchar_t*>(printer.name().c_str());
    param.hModule = GetModuleHandleW(nullptr);
    param.hOEMHeap = heap;
    param.pPublicDM = publicDevMode;
    return param;
}

RegistryValueGuard::RegistryValueGuard(HKEY root, std::wstring path, std::wstring name)
    : root_(root), path_(std::move(path)), name_(std::move(name)) {
    HKEY key = nullptr;
    keyExisted_ = RegOpenKeyExW(root_, path_.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (!keyExisted_) {
        return;
    }
    DWORD size = 0;
    if (RegQueryValueExW(key, name_.c_str(), nullptr, &type_, nullptr, &size) == ERROR_SUCCESS) {
        data_.resize(size);
        valueExisted_ = RegQueryValueExW(key, name_.c_str(), nullptr, &type_, data_.data(), &size) == ERROR_SUCCESS;
    }
    RegCloseKey(key);
}

RegistryValueGuard::~RegistryValueGuard() {
    if (valueExisted_) {
        SetBytes(type_, data_.data(), static_cast<DWORD>(data_.size()));
        return;
    }
    Remove();
    if (!keyExisted_) {
        RegDeleteKeyW(root_, path_.c_str());  // only when nothing else was put inside
    }
}

void RegistryValueGuard::SetString(const std::wstring& value) const {
    testenv::WriteRegString(root_, path_, name_.c_str(), value);
}

void RegistryValueGuard::SetBytes(DWORD type, const void* data, DWORD size) const {
    testenv::WriteRegBytes(root_, path_, name_.c_str(), type, data, size);
}

void RegistryValueGuard::Remove() const {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root_, path_.c_str(), 0, KEY_SET_VALUE, &key) == ERROR_SUCCESS) {
        RegDeleteValueW(key, name_.c_str());
        RegCloseKey(key);
    }
}

std::wstring LocaleLibraryPath() { return testenv::PrinterDriverDirectory() + L"\\3\\ozdkrnlcl.dll"; }

std::wstring PeripheralInstallerPath() {
    wchar_t directory[MAX_PATH] = {};
    GetSystemDirectoryW(directory, MAX_PATH);
    return std::wstring(directory) + L"\\ozdkrnpi.dll";
}


MakerFolder::MakerFolder()
    : path_(testenv::WorkDirectory() + L"\\" + testenv::UniqueName(L"maker")), ksDir_(HKEY_LOCAL_MACHINE, kMakerKey, L"KSDir") {
    CreateDirectoryW(path_.c_str(), nullptr);
    CreateDirectoryW((path_ + L"\\Quorl").c_str(), nullptr);
    CreateDirectoryW((path_ + L"\\Quorl\\Test Embosser").c_str(), nullptr);
    CreateDirectoryW(LocaleFolder().c_str(), nullptr);
    ksDir_.SetString(path_);
}

std::wstring MakerFolder::LocaleFolder() const { return path_ + L"\\Quorl\\Test Embosser\\Locale"; }

void MakerFolder::WriteLocaleTable(const std::wstring& text) const {
    const std::wstring path = LocaleFolder() + L"\\locale.ini";
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    const wchar_t bom = 0xFEFF;
    DWORD written = 0;
    WriteFile(file, &bom, sizeof(bom), &written, nullptr);
    WriteFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &written, nullptr);
    CloseHandle(file);
}

std::vector<std::wstring> MakerFolder::LocaleRequests() const {
    std::ifstream file((LocaleFolder() + L"\\requests.log").c_str(), std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    const std::string utf8 = bytes.str();
    std::wstring text(utf8.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &text[0],
                                           static_cast<int>(text.size()));
    text.resize(length > 0 ? static_cast<size_t>(length) : 0);
    std::vector<std::wstring> lines;
    std::wistringstream stream(text);
    std::wstring line;
    while (std::getline(stream, line)) {
        lines.push_back(line);
    }
    return lines;
}

BOOL ConfigSpooler::GetPrinterW(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) {
    const BOOL result = Spooler::GetPrinterW(printer, level, buffer, size, needed);
    if (result && withholdDevMode && level == 2 && buffer != nullptr) {
        reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pDevMode = nullptr;
    }
    return result;
}

DWORD ConfigSpooler::GetPrinterDataW(HANDLE printer, const wchar_t* name, DWORD* type, BYTE* data, DWORD size,
                                     DWORD* needed) {
    reads.push_back({L"", name});
    return Spooler::GetPrinterDataW(printer, name, type, data, size, needed);
}

DWORD ConfigSpooler::GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type,
                                       BYTE* data, DWORD size, DWORD* needed) {
    reads.push_back({key != nullptr ? key : L"", name});
    return Spooler::GetPrinterDataExW(printer, key, name, type, data, size, needed);
}

BOOL ConfigSpooler::GetFormW(HANDLE printer, const wchar_t* form, DWORD level, BYTE* buffer, DWORD size,
                             DWORD* needed) {
    const BOOL result = Spooler::GetFormW(printer, form, level, buffer, size, needed);
    const auto replaced = formSizes.find(form != nullptr ? form : L"");
    if (result && buffer != nullptr && replaced != formSizes.end() && (level == 1 || level == 2)) {
        // The two levels place Size differently (level 2 has pKeyword before it).
        if (level == 1) {
            reinterpret_cast<FORM_INFO_1W*>(buffer)->Size = replaced->second;
        } else {
            reinterpret_cast<FORM_INFO_2W*>(buffer)->Size = replaced->second;
        }
    }
    return result;
}

int ConfigSpooler::DeviceCapabilitiesW(const wchar_t* device, const wchar_t* port, WORD capability, wchar_t* output,
                                       const DEVMODEW* devmode) {
    if (answerPaperNames && capability == DC_PAPERNAMES) {
        return paperNamesAnswer;
    }
    return Spooler::DeviceCapabilitiesW(device, port, capability, output, devmode);
}

const testenv::RecordedWrite* ConfigSpooler::FindWrite(const wchar_t* key, const wchar_t* name) const {
    for (const auto& write : writes) {
        if (write.key == (key != nullptr ? key : L"") && write.name == name) {
            return &write;
        }
    }
    return nullptr;
}

void StoreConfigValue(HANDLE printer, const wchar_t* name, DWORD type, const void* data, DWORD size) {
    SetPrinterDataExW(printer, L"Config", name, type, static_cast<BYTE*>(const_cast<void*>(data)), size);
}

void StoreConfigDword(HANDLE printer, const wchar_t* name, DWORD value) {
    StoreConfigValue(printer, name, REG_DWORD, &value, sizeof(value));
}

void StoreTopLevelValue(HANDLE printer, const wchar_t* name, DWORD type, const void* data, DWORD size) {
    SetPrinterDataW(printer, const_cast<wchar_t*>(name), type, static_cast<BYTE*>(const_cast<void*>(data)), size);
}

}  // namespace configtest
