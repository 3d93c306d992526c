// What the tests meet under Wine: the run's scratch folder, real printers of the test
// driver, registry values and the plug-in's trace log.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <string>
#include <vector>

namespace testenv {

// The Windows view of a Unix path (drive Z:).
std::wstring WindowsPath(const std::string& unixPath);

// The run's scratch folder (created by the prefix set-up), as a Windows path.
std::wstring WorkDirectory();

// A name no other test of this run uses.
std::wstring UniqueName(const wchar_t* stem);

std::string Narrow(const std::wstring& text);
std::wstring Widen(const std::string& text);

// Registry.
void WriteRegString(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& value);
void WriteRegBytes(HKEY root, const std::wstring& path, const wchar_t* name, DWORD type, const void* data,
                   DWORD size);
void DeleteRegTree(HKEY root, const std::wstring& path);

// The machine registry key that holds a printer's data.
std::wstring PrinterRegistryPath(const std::wstring& printerName);

// A printer-data value as the spooler gives it back.
struct StoredValue {
    DWORD status = ERROR_FILE_NOT_FOUND;
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
    DWORD AsDword() const;
    std::wstring AsString() const;
};
StoredValue ReadPrinterData(HANDLE printer, const wchar_t* key, const wchar_t* name);  // key null: top level

// A printer of the test driver whose raw jobs are appended to a file of its own.
// Created for one test and deleted with it. With `embosser` (a loopback address) its
// port also delivers each job to that address's raw print port (9100), as a Standard
// TCP/IP port does: the pipe runs the build's native raw_job_sender.
class TestPrinter {
public:
    explicit TestPrinter(const wchar_t* stem = L"Ozdk Test", const char* embosser = nullptr);
    ~TestPrinter();
    TestPrinter(const TestPrinter&) = delete;
    TestPrinter& operator=(const TestPrinter&) = delete;

    const std::wstring& name() const { return name_; }
    const std::wstring& portName() const { return port_; }
    HANDLE handle() const { return handle_; }  // opened with full access

    // The bytes of every raw job received so far.
    std::string Jobs() const;
    void ClearJobs() const;

    // Registers the printer's port as a Standard TCP/IP port with these values
    // (an empty text leaves the value out).
    void MakeNetworkPort(const std::wstring& hostName, const std::wstring& ipAddress) const;

private:
    std::wstring name_;
    std::wstring port_;
    std::wstring jobsFile_;
    HANDLE handle_ = nullptr;
};

std::wstring StandardTcpIpPortPath(const std::wstring& portName);

// The Unix path of the native sender a raw-port printer's pipe runs.
std::string RawJobSenderPath();

// The plug-in's trace log in the common application-data folder. The constructor starts
// each test with an empty log.
class TraceLog {
public:
    TraceLog();
    static std::wstring Folder();
    static std::wstring Path();
    std::vector<std::string> Lines() const;
    bool Contains(const std::string& line) const;  // a whole line, without its line end
    int Count(const std::string& line) const;
    std::string Text() const;
};

// Moves the maker's folder out of the way for the life of the object.
class MakerFolderHidden {
public:
    MakerFolderHidden();
    ~MakerFolderHidden();

private:
    std::wstring hidden_;
};

}  // namespace testenv
