#include "support/wine_environment.h"

#include "tools/host/host_library.h"

#include <shlobj.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace testenv {

namespace {

std::string ReadWholeFile(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string WorkDirectoryUnix() {
    const char* value = std::getenv("OZDK_WORK_DIR");
    return value != nullptr ? value : "/tmp";
}

}  // namespace

std::wstring WindowsPath(const std::string& unixPath) {
    std::wstring path = L"Z:" + Widen(unixPath);
    for (auto& c : path) {
        if (c == L'/') c = L'\\';
    }
    return path;
}

std::string Narrow(const std::wstring& text) {
    std::string out;
    for (wchar_t c : text) out.push_back(static_cast<char>(c < 0x80 ? c : '?'));
    return out;
}

std::wstring Widen(const std::string& text) {
    std::wstring out;
    for (char c : text) out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
    return out;
}

std::wstring WorkDirectory() { return WindowsPath(WorkDirectoryUnix()); }

std::wstring UniqueName(const wchar_t* stem) {
    static int counter = 0;
    return std::wstring(stem) + L" " + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
}

void WriteRegBytes(HKEY root, const std::wstring& path, const wchar_t* name, DWORD type, const void* data,
                   DWORD size) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) == ERROR_SUCCESS) {
        RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size);
        RegCloseKey(key);
    }
}

void WriteRegString(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& value) {
    WriteRegBytes(root, path, name, REG_SZ, value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

void DeleteRegTree(HKEY root, const std::wstring& path) { RegDeleteTreeW(root, path.c_str()); RegDeleteKeyW(root, path.c_str()); }

std::wstring PrinterRegistryPath(const std::wstring& printerName) {
    return L"SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\" + printerName;
}

std::wstring StandardTcpIpPortPath(const std::wstring& portName) {
    return L"SYSTEM\\CurrentControlSet\\Control\\Print\\Monitors\\Standard TCP/IP Port\\Ports\\" + portName;
}

DWORD StoredValue::AsDword() const {
    DWORD value = 0;
    if (data.size() >= sizeof(value)) memcpy(&value, data.data(), sizeof(value));
    return value;
}

std::wstring StoredValue::AsString() const {  // up to the first terminator, if any
    return std::wstring(reinterpret_cast<const wchar_t*>(data.data()), data.size() / sizeof(wchar_t)).c_str();
}

StoredValue ReadPrinterData(HANDLE printer, const wchar_t* key, const wchar_t* name) {
    StoredValue value;
    DWORD needed = 0;
    BYTE probe[1] = {};
    auto read = [&](BYTE* buffer, DWORD size) {
        return key != nullptr
                   ? GetPrinterDataExW(printer, key, name, &value.type, buffer, size, &needed)
                   : GetPrinterDataW(printer, const_cast<wchar_t*>(name), &value.type, buffer, size, &needed);
    };
    value.status = read(probe, 0);
    if (value.status == ERROR_MORE_DATA || (value.status == ERROR_SUCCESS && needed > 0)) {
        value.data.resize(needed);
        value.status = read(value.data.data(), needed);
        value.data.resize(needed);
    }
    return value;
}

std::string RawJobSenderPath() {
    const char* build = std::getenv("OZDK_BUILD_DIR");
    return std::string(build != nullptr ? build : "") + "/native/raw_job_sender";
}

TestPrinter::TestPrinter(const wchar_t* stem, const char* embosser) : name_(UniqueName(stem)) {
    static int jobFiles = 0;
    const std::string jobs = WorkDirectoryUnix() + "/jobs-" + std::to_string(GetCurrentProcessId()) + "-" +
                             std::to_string(++jobFiles) + ".prn";
    jobsFile_ = WindowsPath(jobs);
    DeleteFileW(jobsFile_.c_str());
    port_ = embosser == nullptr ? L"|cat >> " + Widen(jobs)
                                : L"|" + Widen(RawJobSenderPath() + " " + embosser + ":9100 --copy " + jobs);

    ozdkhost::AddPrinterOfDriver(name_, L"Test Embosser", port_);
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(const_cast<wchar_t*>(name_.c_str()), &handle_, &defaults);
}

TestPrinter::~TestPrinter() {
    DeleteRegTree(HKEY_LOCAL_MACHINE, StandardTcpIpPortPath(port_));
    if (handle_ != nullptr) {
        DeletePrinter(handle_);
        ClosePrinter(handle_);
    }
    DeleteRegTree(HKEY_LOCAL_MACHINE, PrinterRegistryPath(name_));
    DeleteFileW(jobsFile_.c_str());
}

std::string TestPrinter::Jobs() const { return ReadWholeFile(jobsFile_); }

void TestPrinter::ClearJobs() const { DeleteFileW(jobsFile_.c_str()); }

void TestPrinter::MakeNetworkPort(const std::wstring& hostName, const std::wstring& ipAddress) const {
    ozdkhost::RegisterStandardTcpIpPort(port_, hostName, nullptr, ipAddress);
}

std::wstring TraceLog::Folder() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
    return std::wstring(folder) + L"\\Kestrova";
}

std::wstring TraceLog::Path() { return Folder() + L"\\TavrolinUI.log"; }

TraceLog::TraceLog() {
    CreateDirectoryW(Folder().c_str(), nullptr);
    DeleteFileW(Path().c_str());
}

std::string TraceLog::Text() const { return ReadWholeFile(Path()); }

std::vector<std::string> TraceLog::Lines() const {
    std::vector<std::string> lines;
    std::istringstream text(Text());
    std::string line;
    while (std::getline(text, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

int TraceLog::Count(const std::string& line) const {
    const auto lines = Lines();
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

bool TraceLog::Contains(const std::string& line) const { return Count(line) > 0; }

MakerFolderHidden::MakerFolderHidden() : hidden_(TraceLog::Folder() + L".hidden") {
    RemoveDirectoryW(hidden_.c_str());
    MoveFileW(TraceLog::Folder().c_str(), hidden_.c_str());
}

MakerFolderHidden::~MakerFolderHidden() { MoveFileW(hidden_.c_str(), TraceLog::Folder().c_str()); }

}  // namespace testenv
