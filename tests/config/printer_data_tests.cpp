#include <gtest/gtest.h>
#include <windows.h>

#include <cwchar>
#include <string>

#include "config/printer_data.h"
#include "config/registry.h"
#include "support/spooler_doubles.h"
#include "support/wine_environment.h"

using testenv::ReadPrinterData;
using testenv::RecordingSpooler;
using testenv::SpoolerSwap;
using testenv::TestPrinter;
using testenv::TraceLog;

namespace {

enum class Stored { Nothing, Dword, ShortDword, Text, Binary8 };

void Store(HANDLE printer, const wchar_t* key, const wchar_t* name, Stored what, DWORD value) {
    const wchar_t text[] = L"12";
    const BYTE eight[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    auto put = [&](DWORD type, const void* data, DWORD size) {
        if (key != nullptr) {
            SetPrinterDataExW(printer, key, name, type, (BYTE*)data, size);
        } else {
            SetPrinterDataW(printer, const_cast<wchar_t*>(name), type, (BYTE*)data, size);
        }
    };
    switch (what) {
    case Stored::Nothing: break;
    case Stored::Dword: put(REG_DWORD, &value, 4); break;
    case Stored::ShortDword: put(REG_DWORD, &value, 2); break;
    case Stored::Text: put(REG_SZ, text, sizeof(text)); break;
    case Stored::Binary8: put(REG_BINARY, eight, 8); break;
    }
}

}  // namespace

TEST(PrinterDataReaders, IntegersFallBackToTheirDefaultAndWriteItBack) {
    struct Case {
        Stored stored;
        uint32_t expected;
        bool rewritten;
    } const cases[] = {
        {Stored::Nothing, 256, true},    {Stored::Dword, 258, false}, {Stored::ShortDword, 256, true},
        {Stored::Text, 256, true},       {Stored::Binary8, 256, true},
    };
    for (bool topLevel : {false, true}) {
        for (const auto& c : cases) {
            TestPrinter printer;
            const wchar_t* key = topLevel ? nullptr : L"Config";
            Store(printer.handle(), key, L"MediaType", c.stored, 258);
            uint32_t value = 0xDEADBEEF;
            if (topLevel) {
                const DWORD status = GetPrinterDataInteger2(printer.handle(), L"MediaType", &value, 256);
                EXPECT_EQ(status, 0u) << "a read or a successful write-back both report 0";
            } else {
                GetPrinterDataInteger(printer.handle(), L"MediaType", &value, 256);
            }
            SCOPED_TRACE(testing::Message() << "top level " << topLevel << ", case " << int(c.stored));
            EXPECT_EQ(value, c.expected);
            const auto stored = ReadPrinterData(printer.handle(), key, L"MediaType");
            EXPECT_EQ(stored.type, DWORD(REG_DWORD));
            EXPECT_EQ(stored.data.size(), 4u);
            EXPECT_EQ(stored.AsDword(), c.expected);
        }
    }
}

TEST(PrinterDataReaders, IntegerReadOfTopLevelDataIsTraced) {
    TestPrinter printer;
    TraceLog log;
    Store(printer.handle(), nullptr, L"EmbsrTopMargin", Stored::Dword, 10);
    uint32_t value = 0;
    GetPrinterDataInteger2(printer.handle(), L"EmbsrTopMargin", &value, 5);
    GetPrinterDataInteger2(printer.handle(), L"EmbsrLeftMargin", &value, 5);
    EXPECT_TRUE(log.Contains("GetPrinterDataInteger2(): 0=GetPrinterData(), EmbsrTopMargin=10"));
    EXPECT_TRUE(log.Contains("GetPrinterDataInteger2(): 2=GetPrinterData(), EmbsrLeftMargin=10"))
        << "the destination as read, before the default";
    EXPECT_TRUE(log.Contains("SetPrinterDataInteger2(): 0=SetPrinterData(), EmbsrLeftMargin=5"));
}

TEST(PrinterDataReaders, StringsAreCutTerminatedAndNeverOverrun) {
    const std::wstring longText(400, L'q');
    struct Case {
        const wchar_t* description;
        const void* data;  // null: nothing stored
        DWORD size;
        DWORD type;
        std::wstring expected;
        bool defaulted;
    } const cases[] = {
        {L"absent", nullptr, 0, REG_SZ, L"C:\\Default.dat", true},
        {L"without terminator", L"Plain", 10, REG_SZ, L"Plain", false},
        {L"with terminator", L"Plain", 12, REG_SZ, L"Plain", false},
        {L"longer than the buffer", longText.c_str(), 800, REG_SZ, std::wstring(259, L'q'), false},
        {L"exactly the buffer", longText.c_str(), 520, REG_SZ, std::wstring(259, L'q'), false},
        {L"not a string", L"\x0102\x0304", 4, REG_DWORD, L"C:\\Default.dat", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.description));
        TestPrinter printer;
        if (c.data != nullptr) {
            SetPrinterDataExW(printer.handle(), L"Config", L"CustomPatternFileName", c.type, (BYTE*)c.data, c.size);
        }
        RecordingSpooler spooler;
        SpoolerSwap swap(&spooler);
        wchar_t buffer[300];
        wmemset(buffer, L'#', 300);
        GetPrinterDataString(printer.handle(), L"CustomPatternFileName", buffer, L"C:\\Default.dat", 520);
        EXPECT_EQ(std::wstring(buffer), c.expected);
        for (int i = 260; i < 300; ++i) ASSERT_EQ(buffer[i], L'#') << "written past the 260-character field";
        if (c.defaulted) {
            ASSERT_EQ(spooler.writes.size(), 1u);
            EXPECT_EQ(spooler.writes[0].type, DWORD(REG_SZ));
            EXPECT_EQ(spooler.writes[0].data.size(), 2 * wcslen(L"C:\\Default.dat")) << "no terminator is stored";
        } else {
            EXPECT_TRUE(spooler.writes.empty()) << "a readable value is not written back";
        }
    }
}

TEST(PrinterDataWriters, StringIsStoredWithoutTerminatorAndReadsBackWhole) {
    TestPrinter printer;
    RecordingSpooler spooler;
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(SetPrinterDataString(printer.handle(), L"CustomMediaType", L"Heavy Card", 10), 0u);
    ASSERT_EQ(spooler.writes.size(), 1u);
    EXPECT_EQ(spooler.writes[0].key, L"Config");
    EXPECT_EQ(spooler.writes[0].data.size(), 20u);

    wchar_t buffer[260] = {};
    GetPrinterDataString(printer.handle(), L"CustomMediaType", buffer, L"", 520);
    EXPECT_STREQ(buffer, L"Heavy Card");
}

TEST(PrinterDataWriters, EveryWriterRetriesOnceThroughAFullAccessReopen) {
    const PaperDimensions a4 = {210000, 297000};
    struct Case {
        const char* writer;
        DWORD (*write)(HANDLE, const PaperDimensions&);
        const wchar_t* key;
        const wchar_t* name;
    } const cases[] = {
        {"SetPrinterDataInteger", [](HANDLE h, const PaperDimensions&) { return SetPrinterDataInteger(h, L"MediaType", 258); },
         L"Config", L"MediaType"},
        {"SetPrinterDataInteger2", [](HANDLE h, const PaperDimensions&) { return SetPrinterDataInteger2(h, L"EmbsrQuality", 2); },
         L"", L"EmbsrQuality"},
        {"SetPrinterDataString", [](HANDLE h, const PaperDimensions&) { return SetPrinterDataString(h, L"CustomMediaType", L"Card", 4); },
         L"Config", L"CustomMediaType"},
        {"paper size", [](HANDLE h, const PaperDimensions& s) { return SetPrinterDataPaperSize(h, L"ignored", &s, 3); },
         L"Config", L"PaperSize"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.writer);
        TestPrinter printer;
        RecordingSpooler spooler;
        spooler.refuseWritesThrough = printer.handle();
        SpoolerSwap swap(&spooler);
        EXPECT_EQ(c.write(printer.handle(), a4), 0u);
        ASSERT_EQ(spooler.writes.size(), 2u);
        EXPECT_EQ(spooler.writes[0].printer, printer.handle());
        EXPECT_EQ(spooler.writes[0].status, DWORD(ERROR_ACCESS_DENIED));
        EXPECT_NE(spooler.writes[1].printer, printer.handle()) << "the retry goes through a new handle";
        EXPECT_EQ(spooler.writes[1].status, 0u);
        EXPECT_EQ(spooler.writes[1].key, c.key);
        EXPECT_EQ(spooler.writes[1].name, c.name);
        EXPECT_EQ(spooler.writes[0].data, spooler.writes[1].data) << "the identical write is repeated";
    }
}

TEST(PrinterDataWriters, RetryThroughTheReopenShowsTwoTraceLines) {
    TestPrinter printer;
    TraceLog log;
    RecordingSpooler spooler;
    spooler.refuseWritesThrough = printer.handle();
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(SetPrinterDataInteger(printer.handle(), L"MediaType", 258), 0u);
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"SetPrinterDataInteger(): 5=SetPrinterDataEx(), MediaType=258",
                                                     "SetPrinterDataInteger(): 0=SetPrinterDataEx(), MediaType=258"}));
    EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config", L"MediaType").AsDword(), 258u);
}

TEST(PrinterDataWriters, WriteRefusedForRealIsTriedTwiceAndReportsTheFailure) {
    TestPrinter printer;
    SetPrinterDataInteger(printer.handle(), L"MediaType", 256);
    TraceLog log;
    testenv::RegistryKeyAccess denied(HKEY_LOCAL_MACHINE, testenv::PrinterRegistryPath(printer.name()) + L"\\Config",
                                      L"D:(D;;0x2;;;WD)(A;;KA;;;WD)");
    EXPECT_EQ(SetPrinterDataInteger(printer.handle(), L"MediaType", 258), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(log.Count("SetPrinterDataInteger(): 5=SetPrinterDataEx(), MediaType=258"), 2);
}

namespace {
// A printer that cannot be opened again (its key denied to this user): Wine's spooler
// keeps printers it has opened cached, so the refusal is produced here.
class NoReopenSpooler : public RecordingSpooler {
public:
    BOOL OpenPrinterW(const wchar_t*, HANDLE*, PRINTER_DEFAULTSW*) override {
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return FALSE;
    }
};
}  // namespace

TEST(PrinterDataWriters, FailedReopenReportsTheFirstStatus) {
    TestPrinter printer;
    TraceLog log;
    NoReopenSpooler spooler;
    spooler.refuseWritesThrough = printer.handle();
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(SetPrinterDataInteger2(printer.handle(), L"EmbsrQuality", 2), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(spooler.writes.size(), 1u) << "no second write without a second handle";
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"SetPrinterDataInteger2(): 5=SetPrinterData(), EmbsrQuality=2"}));
}

namespace {
// Wine's spooler cannot delete printer data: this one records the deletion instead.
class DeletingSpooler : public RecordingSpooler {
public:
    HANDLE deletedThrough = nullptr;
    std::wstring deletedKey, deletedName;
    DWORD DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* name) override {
        deletedThrough = printer;
        deletedKey = key;
        deletedName = name;
        return ERROR_SUCCESS;
    }
};

UIConfig* NewConfig(const std::wstring& printerName, HANDLE printer) {
    static UIConfig config;
    config = UIConfig{};
    wcsncpy(config.PrinterName, printerName.c_str(), 259);
    config.hPrinter = printer;
    return &config;
}
}  // namespace

TEST(MediaTypes, EnumerateToADoubleTerminatedList) {
    TestPrinter printer;
    TraceLog log;
    SetCurrentMediaTypeConfig(NewConfig(printer.name(), printer.handle()));
    ASSERT_EQ(SetConfigMediaType(L"A", 0x0802), 0u);
    ASSERT_EQ(SetConfigMediaType(L"BC", 0x1003), 0u);
    SetCurrentMediaTypeConfig(nullptr);
    EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config\\MediaTypes", L"BC").AsDword(), 0x1003u);

    const UIConfig* config = NewConfig(printer.name(), printer.handle());
    DWORD bytes = 99;
    EXPECT_EQ(EnumConfigMediaTypes(config, nullptr, &bytes), 12u);
    EXPECT_EQ(bytes, 12u);
    wchar_t list[8];
    wmemset(list, L'#', 8);
    EXPECT_EQ(EnumConfigMediaTypes(config, list, nullptr), 12u);
    EXPECT_EQ(std::wstring(list, 6), std::wstring(L"A\0BC\0\0", 6));
    EXPECT_EQ(list[6], L'#');
    EXPECT_TRUE(log.Contains("EnumConfigMediaTypes(): BC"));
    EXPECT_TRUE(log.Contains("EnumConfigMediaTypes(): cbReturned=12"));
}

TEST(MediaTypes, WithoutTheKeyNothingIsListedAndTheBufferIsUntouched) {
    TestPrinter printer;
    const UIConfig* config = NewConfig(printer.name(), printer.handle());
    wchar_t list[4] = {L'#', L'#', L'#', L'#'};
    DWORD bytes = 99;
    EXPECT_EQ(EnumConfigMediaTypes(config, list, &bytes), 0u);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(std::wstring(list, 4), L"####");
    EXPECT_EQ(SetConfigMediaType(L"A", 1), DWORD(ERROR_INVALID_HANDLE)) << "no dialog has made a printer current";
}

TEST(MediaTypes, RemovalAlwaysGoesThroughAFullAccessReopen) {
    TestPrinter printer;
    TraceLog log;
    DeletingSpooler spooler;
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(RemoveConfigMediaType(L"Heavy", printer.handle()), 0u);
    EXPECT_NE(spooler.deletedThrough, nullptr);
    EXPECT_NE(spooler.deletedThrough, printer.handle());
    EXPECT_EQ(spooler.deletedKey, L"Config\\MediaTypes");
    EXPECT_EQ(spooler.deletedName, L"Heavy");
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "RemoveConfigMediaType(): reopening printer " + testenv::Narrow(printer.name()),
                               "RemoveConfigMediaType(): removing Heavy 0"}));
}

TEST(SetPrinterAsAdminTest, RewritesLevelTwoThroughAFullAccessHandle) {
    TestPrinter printer;
    TraceLog log;
    DWORD needed = 0;
    GetPrinterW(printer.handle(), 2, nullptr, 0, &needed);
    std::vector<BYTE> info(needed);
    ASSERT_TRUE(GetPrinterW(printer.handle(), 2, info.data(), needed, &needed));
    auto* level2 = reinterpret_cast<PRINTER_INFO_2W*>(info.data());
    level2->pComment = const_cast<wchar_t*>(L"Embosser in room 4");
    EXPECT_TRUE(SetPrinterAsAdmin(printer.handle(), 2, level2));
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("SetPrinterAsAdmin(): 1=SetPrinter( ", 0), 0u) << lines[0];

    DWORD again = 0;
    GetPrinterW(printer.handle(), 2, nullptr, 0, &again);
    std::vector<BYTE> after(again);
    ASSERT_TRUE(GetPrinterW(printer.handle(), 2, after.data(), again, &again));
    EXPECT_STREQ(reinterpret_cast<PRINTER_INFO_2W*>(after.data())->pComment, L"Embosser in room 4");
}

TEST(RegistryStringReader, CutsWhatDoesNotFitAndClosesTheKey) {
    const std::wstring path = L"Software\\OzdkTests\\" + testenv::UniqueName(L"reader");
    const std::wstring longText(300, L'k');
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Unterminated", REG_SZ, L"Quorl", 10);
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Long", REG_SZ, longText.c_str(), 600);
    testenv::WriteRegDword(HKEY_CURRENT_USER, path, L"Number", 7);
    struct Case {
        const wchar_t* name;
        LONG status;
        std::wstring expected;
    } const cases[] = {
        {L"Unterminated", ERROR_SUCCESS, L"Quorl"},
        {L"Long", ERROR_SUCCESS, std::wstring(259, L'k')},
        {L"Number", ERROR_INVALID_DATA, L""},
        {L"Missing", ERROR_FILE_NOT_FOUND, L""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.name));
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
        wchar_t buffer[270];
        wmemset(buffer, L'#', 270);
        EXPECT_EQ(ReadRegistryString(c.name, buffer, 520, key), c.status);
        EXPECT_EQ(std::wstring(buffer), c.expected);
        EXPECT_EQ(buffer[260], L'#');
        EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE) << "the reader closed the key";
    }
    testenv::DeleteRegTree(HKEY_CURRENT_USER, path);
}
