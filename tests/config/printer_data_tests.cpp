#include <gtest/gtest.h>

#include <cwchar>

#include "config/printer_data.h"
#include "config/registry.h"
#include "config_fixtures.h"

using configtest::StoreValue;
using testenv::ReadPrinterData;
using testenv::SpoolerSwap;
using testenv::TestPrinter;
using testenv::TraceLog;

// A value that is absent, of the wrong size or unreadable takes the default, which is
// written back; a 4-byte value of another type is read as it stands.
TEST(PrinterDataReaders, IntegersTakeTheirDefaultUnlessFourBytesCanBeRead) {
    const DWORD number = 258;
    const BYTE two[2] = {2, 1};
    const wchar_t text[] = L"12";
    // REG_NONE: nothing stored; `traced`: the status and value the top-level reader traces.
    struct Case { DWORD type; const void* data; DWORD size; uint32_t expected; const char* traced; } const cases[] = {
        {REG_NONE, nullptr, 0, 256, "2=GetPrinterData(), MediaType=0"},
        {REG_DWORD, &number, 4, 258, "0=GetPrinterData(), MediaType=258"},
        {REG_BINARY, &number, 4, 258, "0=GetPrinterData(), MediaType=258"},
        {REG_DWORD, two, 2, 256, "0=GetPrinterData(), MediaType=258"},
        {REG_SZ, text, sizeof(text), 256, "234=GetPrinterData(), MediaType=0"},
    };
    for (bool topLevel : {false, true}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << "top level " << topLevel << ", type " << c.type << ", size " << c.size);
            TestPrinter printer;
            const wchar_t* key = topLevel ? nullptr : L"Config";
            if (c.data != nullptr) StoreValue(printer.handle(), key, L"MediaType", c.type, c.data, c.size);
            TraceLog log;
            uint32_t value = 0xDEADBEEF;
            if (topLevel) {
                EXPECT_EQ(GetPrinterDataInteger2(printer.handle(), L"MediaType", &value, 256), 0u)
                    << "a read or a successful write-back both report 0";
                EXPECT_EQ(log.Lines().at(0), std::string("GetPrinterDataInteger2(): ") + c.traced);
            } else {
                GetPrinterDataInteger(printer.handle(), L"MediaType", &value, 256);
            }
            EXPECT_EQ(value, c.expected);
            const auto stored = ReadPrinterData(printer.handle(), key, L"MediaType");
            EXPECT_EQ(stored.data.size(), 4u);
            EXPECT_EQ(stored.AsDword(), c.expected);
            EXPECT_EQ(stored.type, c.expected == 256 ? DWORD(REG_DWORD) : c.type) << "a readable value stays as it is";
        }
    }
}

// At most 520 bytes are read; anything else takes the default, written back without
// its terminator. Nothing is ever written past the 260-character field.
TEST(PrinterDataReaders, StringsReadInTheFieldOrTakeTheDefault) {
    const std::wstring longText(400, L'q');
    struct Case {
        const char* description;
        const void* data;  // null: nothing stored
        DWORD size;
        DWORD type;
        std::wstring expected;
        bool defaulted;
    } const cases[] = {
        {"absent", nullptr, 0, REG_SZ, L"C:\\Default.dat", true},
        {"without terminator", L"Plain", 10, REG_SZ, L"Plain", false},
        {"exactly the buffer", longText.c_str(), 520, REG_SZ, std::wstring(259, L'q'), false},
        {"longer than the buffer", longText.c_str(), 522, REG_SZ, L"C:\\Default.dat", true},
        {"not a string", L"\x0102\x0304", 4, REG_DWORD, L"C:\\Default.dat", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.description);
        TestPrinter printer;
        if (c.data != nullptr) StoreValue(printer.handle(), L"Config", L"CustomPatternFileName", c.type, c.data, c.size);
        testenv::TestSpooler spooler;
        SpoolerSwap swap(&spooler);
        wchar_t buffer[300];
        wmemset(buffer, L'#', 300);
        GetPrinterDataString(printer.handle(), L"CustomPatternFileName", buffer, L"C:\\Default.dat", 520);
        EXPECT_EQ(std::wstring(buffer), c.expected);
        for (int i = 260; i < 300; ++i) ASSERT_EQ(buffer[i], L'#') << "written past the 260-character field";
        if (c.defaulted) {
            ASSERT_EQ(spooler.writes.size(), 1u);
            EXPECT_EQ(spooler.writes[0].key, L"Config");
            EXPECT_EQ(spooler.writes[0].type, DWORD(REG_SZ));
            EXPECT_EQ(spooler.writes[0].data.size(), 2 * wcslen(L"C:\\Default.dat")) << "no terminator is stored";
        } else {
            EXPECT_TRUE(spooler.writes.empty()) << "a readable value is not written back";
        }
    }
}

// A write the spooler refuses on the host's handle is repeated once through a new
// full-access handle, and each attempt leaves its trace line (status 5, then 0).
TEST(PrinterDataWriters, EveryWriterRetriesOnceThroughAFullAccessReopen) {
    struct Case {
        DWORD (*write)(HANDLE);
        const wchar_t* key;  // null: top-level data
        const wchar_t* name;
        std::string tracePrefix, traceSuffix;  // around the status; empty: no trace line
    } const cases[] = {
        {[](HANDLE h) { return SetPrinterDataInteger(h, L"MediaType", 258); }, L"Config", L"MediaType",
         "SetPrinterDataInteger(): ", "=SetPrinterDataEx(), MediaType=258"},
        {[](HANDLE h) { return SetPrinterDataInteger2(h, L"EmbsrQuality", 2); }, nullptr, L"EmbsrQuality",
         "SetPrinterDataInteger2(): ", "=SetPrinterData(), EmbsrQuality=2"},
        {[](HANDLE h) { return SetPrinterDataString(h, L"CustomMediaType", L"Card", 4); }, L"Config",
         L"CustomMediaType", "SetPrinterDataString(): ", "=SetPrinterDataEx(), CustomMediaType=Card"},
        {[](HANDLE h) {
             const PaperDimensions a4 = {210000, 297000};
             return SetPrinterDataPaperSize(h, L"ignored", &a4, 3);
         },
         L"Config", L"PaperSize", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.name));
        TestPrinter printer;
        TraceLog log;
        testenv::TestSpooler spooler;
        spooler.refuseWritesThrough = printer.handle();
        SpoolerSwap swap(&spooler);
        EXPECT_EQ(c.write(printer.handle()), 0u);
        ASSERT_EQ(spooler.writes.size(), 2u);
        EXPECT_EQ(spooler.writes[0].printer, printer.handle());
        EXPECT_EQ(spooler.writes[0].status, DWORD(ERROR_ACCESS_DENIED));
        EXPECT_NE(spooler.writes[1].printer, printer.handle()) << "the retry goes through a new handle";
        EXPECT_EQ(spooler.writes[1].status, 0u);
        EXPECT_EQ(spooler.writes[1].key, c.key != nullptr ? c.key : L"");
        EXPECT_EQ(spooler.writes[1].name, c.name);
        EXPECT_EQ(spooler.writes[0].data, spooler.writes[1].data) << "the identical write is repeated";
        const std::vector<std::string> traced = {c.tracePrefix + "5" + c.traceSuffix, c.tracePrefix + "0" + c.traceSuffix};
        EXPECT_EQ(log.Lines(), c.tracePrefix.empty() ? std::vector<std::string>{} : traced);
    }
}

// Refused for real (a registry ACL on "Config"): tried twice, the failure reported. With
// a reopen that fails: tried once, the first status reported.
TEST(PrinterDataWriters, AWriteThatCannotBeMadeReportsItsFailure) {
    TestPrinter printer;
    SetPrinterDataInteger(printer.handle(), L"MediaType", 256);
    {
        TraceLog log;
        testenv::RegistryKeyAccess denied(HKEY_LOCAL_MACHINE, testenv::PrinterRegistryPath(printer.name()) + L"\\Config",
                                          L"D:(D;;0x2;;;WD)(A;;KA;;;WD)");
        EXPECT_EQ(SetPrinterDataInteger(printer.handle(), L"MediaType", 258), DWORD(ERROR_ACCESS_DENIED));
        EXPECT_EQ(log.Count("SetPrinterDataInteger(): 5=SetPrinterDataEx(), MediaType=258"), 2);
    }
    TraceLog log;
    testenv::TestSpooler spooler;
    spooler.refuseFullAccess = true;
    spooler.refuseWritesThrough = printer.handle();
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(SetPrinterDataInteger2(printer.handle(), L"EmbsrQuality", 2), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(spooler.writes.size(), 1u) << "no second write without a second handle";
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"SetPrinterDataInteger2(): 5=SetPrinterData(), EmbsrQuality=2"}));
}

TEST(MediaTypes, AreWrittenEnumeratedWithinTheBufferAsADoubleTerminatedListAndRemovedThroughAReopen) {
    TestPrinter printer;
    wchar_t list[16];  // room for what an unbounded fill would write
    wmemset(list, L'#', 16);
    DWORD bytes = 99;
    UIConfig record = {};
    wcsncpy(record.PrinterName, printer.name().c_str(), kTextCapacity - 1);
    record.hPrinter = printer.handle();
    EXPECT_EQ(EnumConfigMediaTypes(&record, list, &bytes), 0u) << "no key yet";
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(list[0], L'#') << "not even a terminator";
    EXPECT_EQ(SetConfigMediaType(nullptr, L"A", 1), DWORD(ERROR_INVALID_HANDLE)) << "no printer";

    ASSERT_EQ(SetConfigMediaType(printer.handle(), L"A", 0x0802), 0u);
    ASSERT_EQ(SetConfigMediaType(printer.handle(), L"BC", 0x1003), 0u);
    EXPECT_EQ(ReadPrinterData(printer.handle(), L"Config\\MediaTypes", L"BC").AsDword(), 0x1003u);
    EXPECT_EQ(EnumConfigMediaTypes(&record, nullptr, &bytes), 12u);
    EXPECT_EQ(bytes, 12u);
    EXPECT_EQ(EnumConfigMediaTypes(&record, list, nullptr), 12u);
    EXPECT_EQ(std::wstring(list, 7), std::wstring(L"A\0BC\0\0#", 7));
    ASSERT_EQ(SetConfigMediaType(printer.handle(), L"D", 0x0802), 0u);  // added after the sizing call
    wmemset(list, L'#', 16);
    EXPECT_EQ(EnumConfigMediaTypes(&record, list, bytes, nullptr), 12u);
    EXPECT_EQ(std::wstring(list, 7), std::wstring(L"A\0BC\0\0#", 7)) << "filled within the size asked for";

    testenv::TestSpooler spooler;
    SpoolerSwap swap(&spooler);
    EXPECT_EQ(RemoveConfigMediaType(L"BC", printer.handle()), 0u);
    ASSERT_EQ(spooler.deletions.size(), 1u);
    EXPECT_NE(spooler.deletions[0].printer, printer.handle()) << "through a reopened handle";
    EXPECT_EQ(spooler.deletions[0].key, L"Config\\MediaTypes");
    EXPECT_EQ(spooler.deletions[0].name, L"BC");
}

TEST(SetPrinterAsAdminTest, RewritesLevelTwoThroughAFullAccessHandle) {
    TestPrinter printer;
    BYTE info[8192] = {};
    DWORD needed = 0;
    ASSERT_TRUE(GetPrinterW(printer.handle(), 2, info, sizeof(info), &needed));
    auto* level2 = reinterpret_cast<PRINTER_INFO_2W*>(info);
    level2->pComment = const_cast<wchar_t*>(L"Embosser in room 4");
    EXPECT_TRUE(SetPrinterAsAdmin(printer.handle(), 2, level2));
    BYTE after[8192] = {};
    ASSERT_TRUE(GetPrinterW(printer.handle(), 2, after, sizeof(after), &needed));
    EXPECT_STREQ(reinterpret_cast<PRINTER_INFO_2W*>(after)->pComment, L"Embosser in room 4");
}

// The query's own status: a value longer than the buffer cannot be read.
TEST(RegistryStringReader, ReturnsTheQuerysStatusTerminatesAndClosesTheKey) {
    const std::wstring path = L"Software\\OzdkTests\\" + testenv::UniqueName(L"reader");
    const std::wstring longText(300, L'k');
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Unterminated", REG_SZ, L"Quorl", 10);
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Full", REG_SZ, longText.c_str(), 520);
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Long", REG_SZ, longText.c_str(), 600);
    const DWORD seven = 7;
    testenv::WriteRegBytes(HKEY_CURRENT_USER, path, L"Number", REG_DWORD, &seven, 4);
    struct Case { const wchar_t* name; LONG status; std::wstring expected; } const cases[] = {
        {L"Unterminated", ERROR_SUCCESS, L"Quorl"},
        {L"Full", ERROR_SUCCESS, std::wstring(259, L'k')},
        {L"Long", ERROR_MORE_DATA, L""},
        {L"Number", ERROR_SUCCESS, L""},
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
