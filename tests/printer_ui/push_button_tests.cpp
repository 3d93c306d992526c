// The two push buttons of the "Legacy Settings" tree: "Reset To Default", answered from a
// second thread as a user would answer its message box, and "Braille Tables", which
// hands over to the language-monitor extension stand-in.
#include "legacy_tree_fixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "standins/language_monitor_extension/language_monitor_extension_record.h"

using printeruitest::Default;
using printeruitest::Embosser;
using printeruitest::kServiceUpdate;
using printeruitest::LegacyTree;
using testenv::TraceLog;

namespace {

// Waits for the message box captioned `caption`, notes its texts and owner, and presses
// button `answer` (IDYES or IDNO).
class MessageBoxAnswerer {
public:
    MessageBoxAnswerer(std::wstring caption, int answer)
        : caption_(std::move(caption)), answer_(answer), thread_([this] { Run(); }) {}
    ~MessageBoxAnswerer() {
        if (thread_.joinable()) thread_.join();
    }
    void Join() {
        if (thread_.joinable()) thread_.join();
    }
    bool found() const { return found_; }
    HWND owner() const { return owner_; }
    const std::vector<std::wstring>& texts() const { return texts_; }

private:
    void Run() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        HWND box = nullptr;
        while (box == nullptr && std::chrono::steady_clock::now() < deadline) {
            box = FindWindowW(L"#32770", caption_.c_str());
            if (box == nullptr) Sleep(20);
        }
        if (box == nullptr) return;
        found_ = true;
        owner_ = GetWindow(box, GW_OWNER);
        EnumChildWindows(
            box,
            [](HWND child, LPARAM self) -> BOOL {
                wchar_t text[512] = {};
                GetWindowTextW(child, text, 512);
                reinterpret_cast<MessageBoxAnswerer*>(self)->texts_.push_back(text);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(this));
        PostMessageW(box, WM_COMMAND, MAKEWPARAM(answer_, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(box, answer_)));
    }

    std::wstring caption_;
    int answer_;
    bool found_ = false;
    HWND owner_ = nullptr;
    std::vector<std::wstring> texts_;
    std::thread thread_;
};

// A plain window standing for the property page that owns the box.
class PageWindow {
public:
    PageWindow() : window_(CreateWindowExW(0, L"STATIC", L"page", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr,
                                           GetModuleHandleW(nullptr), nullptr)) {}
    ~PageWindow() { DestroyWindow(window_); }
    HWND get() const { return window_; }

private:
    HWND window_;
};

bool Contains(const std::vector<std::wstring>& texts, const std::wstring& text) {
    for (const auto& t : texts) {
        if (t == text) return true;
    }
    return false;
}

// What the extension stand-in recorded.
struct ExtensionRecord {
    DWORD serviceCalls = 0;
    std::wstring printer;
    uint64_t owner = ~0ull;
    std::vector<BYTE> request;

    static void Clear() { testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY); }
    static ExtensionRecord Read() {
        ExtensionRecord record;
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, 0, KEY_READ, &key) != ERROR_SUCCESS) {
            return record;
        }
        DWORD size = sizeof(record.serviceCalls);
        RegQueryValueExW(key, L"ServiceCalls", nullptr, nullptr, reinterpret_cast<BYTE*>(&record.serviceCalls), &size);
        wchar_t printer[512] = {};
        size = sizeof(printer) - sizeof(wchar_t);
        if (RegQueryValueExW(key, L"ServicePrinter", nullptr, nullptr, reinterpret_cast<BYTE*>(printer), &size) ==
            ERROR_SUCCESS) {
            record.printer = printer;
        }
        size = sizeof(record.owner);
        RegQueryValueExW(key, L"ServiceOwner", nullptr, nullptr, reinterpret_cast<BYTE*>(&record.owner), &size);
        BYTE request[64] = {};
        size = sizeof(request);
        if (RegQueryValueExW(key, L"ServiceRequest", nullptr, nullptr, request, &size) == ERROR_SUCCESS) {
            record.request.assign(request, request + size);
        }
        RegCloseKey(key);
        return record;
    }
};

std::vector<BYTE> TwoFields(uint32_t first, uint32_t second) {
    std::vector<BYTE> bytes(8);
    memcpy(bytes.data(), &first, 4);
    memcpy(bytes.data() + 4, &second, 4);
    return bytes;
}

std::wstring StandIn(const wchar_t* name) {
    return testenv::BuildFilePath(std::wstring(L"tests\\standins\\language_monitor_extension\\") + name);
}

}  // namespace

TEST(ResetToDefault, SendsTheDefaultsAtOnceWhicheverButtonIsPressed) {
    const struct {
        const char* what;
        const char* address;
        int answer;
    } cases[] = {
        {"Yes", "127.77.4.5", IDYES},
        {"No", "127.77.4.6", IDNO},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Embosser embosser(c.address, printeruitest::ReplyUnlikeTheDefaults());
        LegacyTree tree(testenv::Widen(c.address).c_str());
        ASSERT_EQ(tree.Build(), S_OK);
        ASSERT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);
        for (auto& item : tree.items()) item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        tree.printer().ClearJobs();
        PageWindow page;
        TraceLog log;

        MessageBoxAnswerer answerer(tree.printer().name(), c.answer);
        const LONG action = tree.Press(32, page.get());
        answerer.Join();

        EXPECT_EQ(action, CPSUICB_ACTION_OPTIF_CHANGED);
        ASSERT_TRUE(answerer.found());
        EXPECT_EQ(answerer.owner(), page.get());
        EXPECT_TRUE(Contains(answerer.texts(), L"Click on Yes to reset all Legacy Settings to their default values."));
        EXPECT_TRUE(Contains(answerer.texts(), L"&Yes"));
        EXPECT_TRUE(Contains(answerer.texts(), L"&No"));
        EXPECT_TRUE(log.Contains("OEMResetToDefaultPushButtonCallback(): " + std::to_string(c.answer) +
                                 "=MessageBox()"));

        EXPECT_EQ(tree.printer().Jobs(),
                  Default("PAPERWIDTH=6120") + Default("PAPERLENGTH=7920") + Default("TOPMARGIN=10") +
                      Default("LEFTMARGIN=5") + Default("RIGHTMARGIN=5") + Default("CHARSWIDTH=32") +
                      Default("LINESLENGTH=25") + Default("GRAPHICS=OFF") + Default("BRAILLEDOTS=6") +
                      Default("SPACING=MARBURG") + Default("AUTOCR=OFF") + Default("EXTRALINESPACE=0") +
                      Default("MEDIATYPE=BRAILLE") + Default("BRAILLETABLE=EN_US") + Default("BRAILLEFORCE=NORMAL") +
                      Default("QUALITY=STANDARD") + Default("DUPLEXMODE=SIMPLEX") + Default("OUTPUTFACE=2") +
                      kServiceUpdate);

        for (size_t i = 0; i < tree.items().size(); ++i) {
            EXPECT_TRUE(tree.items()[i].Flags & OPTIF_CHANGED) << i;
        }
        const struct {
            BYTE id;
            LONG selection;
            const wchar_t* text;
        } defaults[] = {
            {26, 0, nullptr},  {27, 0, nullptr},  {30, 0, L"0.00"},  {40, 0, L"0.50"},  {41, 0, L"0.25"},
            {42, 0, nullptr},  {45, 1, nullptr},  {50, 0, nullptr},  {52, 0, L"8.50"},  {53, 0, L"11.00"},
            {57, 0, nullptr},  {60, 1, nullptr},  {61, 1, nullptr},  {76, 0, L"0.25"},  {99, 1, nullptr},
            {228, 0, nullptr}, {230, 32, nullptr}, {231, 25, nullptr}, {232, 1, nullptr},
        };
        for (const auto& d : defaults) {
            SCOPED_TRACE(static_cast<int>(d.id));
            if (d.text != nullptr) {
                EXPECT_STREQ(tree.Item(d.id).pSel, d.text);
            } else {
                EXPECT_EQ(tree.Item(d.id).Sel, d.selection);
            }
        }
    }
}

TEST(BrailleTablesButton, AsksTheExtensionForTheBrailleTableServiceWithTheDeviceTable) {
    const struct {
        const wchar_t* table;
        uint32_t index;
    } cases[] = {
        {L"FR_FR", 3},
        {L"ja_jp", 19},
        {L"", 0},
    };
    testenv::PlacedCompanion extension(StandIn(L"ozdkrnlmex.dll"), testenv::ExtensionLibraryPath());
    ASSERT_TRUE(extension.placed());
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.table));
        ExtensionRecord::Clear();
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, c.table);

        EXPECT_EQ(tree.Press(74), 0);

        const ExtensionRecord record = ExtensionRecord::Read();
        EXPECT_EQ(record.serviceCalls, 1u);
        EXPECT_EQ(record.printer, tree.printer().name());
        EXPECT_EQ(record.owner, 0u);
        EXPECT_EQ(record.request, TwoFields(14, c.index));
    }
}

TEST(BrailleTablesButton, DoesNothingWithoutTheServiceExport) {
    const struct {
        const char* what;
        const wchar_t* library;  // null: no library at all
    } cases[] = {
        {"library without the export", L"ozdkrnlmex_noservice.dll"},
        {"no library", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ExtensionRecord::Clear();
        testenv::PlacedCompanion extension(c.library != nullptr ? StandIn(c.library) : std::wstring(),
                                           testenv::ExtensionLibraryPath());
        ASSERT_EQ(extension.placed(), c.library != nullptr);
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, L"EN_US");
        TraceLog log;

        EXPECT_EQ(tree.Press(74), 0);

        EXPECT_EQ(ExtensionRecord::Read().serviceCalls, 0u);
        EXPECT_FALSE(testenv::RegKeyExists(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY));
        EXPECT_EQ(log.Contains("ExtDllLoadFunction(): function DllExportPrinterService not exported"),
                  c.library != nullptr);
    }
}
