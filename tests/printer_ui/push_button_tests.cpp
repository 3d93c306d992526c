// The two push buttons of the "Legacy Settings" tree: "Reset To Default", answered from a
// second thread as a user would answer its message box, and "Braille Tables", which
// hands over to the language-monitor extension stand-in.
#include "legacy_tree_fixture.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "standins/language_monitor_extension/language_monitor_extension_record.h"

using printeruitest::Default;
using printeruitest::kServiceUpdate;
using printeruitest::LegacyTree;
using testenv::TraceLog;

namespace {

struct AnsweredBox {
    bool found = false;
    HWND owner = nullptr;
    std::vector<std::wstring> texts;
    bool Shows(const wchar_t* text) const { return std::find(texts.begin(), texts.end(), text) != texts.end(); }
};

// Waits for the message box captioned `caption`, notes its owner and texts, and presses
// button `answer` (IDYES or IDNO).
void AnswerMessageBox(std::wstring caption, int answer, AnsweredBox* seen) {
    HWND box = nullptr;
    for (int tries = 0; box == nullptr && tries < 500; ++tries) {
        box = FindWindowW(L"#32770", caption.c_str());
        if (box == nullptr) Sleep(20);
    }
    if (box == nullptr) return;
    seen->found = true;
    seen->owner = GetWindow(box, GW_OWNER);
    EnumChildWindows(
        box,
        [](HWND child, LPARAM texts) -> BOOL {
            wchar_t text[512] = {};
            GetWindowTextW(child, text, 512);
            reinterpret_cast<std::vector<std::wstring>*>(texts)->push_back(text);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&seen->texts));
    PostMessageW(box, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(box, answer)));
}

// What the extension stand-in recorded under `name`, as bytes; empty when nothing was.
std::vector<BYTE> Recorded(const wchar_t* name) {
    std::vector<BYTE> bytes(1024);
    DWORD size = static_cast<DWORD>(bytes.size());
    if (RegGetValueW(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY, name, RRF_RT_ANY, nullptr, bytes.data(), &size) !=
        ERROR_SUCCESS) {
        size = 0;
    }
    bytes.resize(size);
    return bytes;
}

template <typename T>
std::vector<BYTE> BytesOf(const T* values, size_t count) {
    const auto* first = reinterpret_cast<const BYTE*>(values);
    return std::vector<BYTE>(first, first + count * sizeof(T));
}

std::wstring StandIn(const wchar_t* name) {
    return testenv::BuildFilePath(std::wstring(L"tests\\standins\\language_monitor_extension\\") + name);
}

}  // namespace

TEST(ResetToDefault, SendsTheDefaultsAtOnceWhicheverButtonIsPressed) {
    const struct {
        const char* address;
        int answer;
    } cases[] = {{"127.77.4.5", IDYES}, {"127.77.4.6", IDNO}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer == IDYES ? "Yes" : "No");
        auto embosser = printeruitest::StartEmbosser(c.address, printeruitest::ReplyUnlikeTheDefaults());
        LegacyTree tree(testenv::Widen(c.address).c_str());
        ASSERT_EQ(tree.Build(), S_OK);
        ASSERT_EQ(tree.Callback(CPSUICB_REASON_SETACTIVE), CPSUICB_ACTION_OPTIF_CHANGED);
        for (auto& item : tree.items()) item.Flags &= ~static_cast<DWORD>(OPTIF_CHANGED);
        tree.printer().ClearJobs();
        std::unique_ptr<std::remove_pointer_t<HWND>, decltype(&DestroyWindow)> page(
            CreateWindowExW(0, L"STATIC", L"page", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr,
                            GetModuleHandleW(nullptr), nullptr),
            &DestroyWindow);
        TraceLog log;

        AnsweredBox box;
        std::thread answerer(AnswerMessageBox, tree.printer().name(), c.answer, &box);
        const LONG action = tree.Press(32, page.get());
        answerer.join();

        EXPECT_EQ(action, CPSUICB_ACTION_OPTIF_CHANGED);
        ASSERT_TRUE(box.found);
        EXPECT_EQ(box.owner, page.get());
        EXPECT_TRUE(box.Shows(L"Click on Yes to reset all Legacy Settings to their default values."));
        EXPECT_TRUE(box.Shows(L"&Yes"));
        EXPECT_TRUE(box.Shows(L"&No"));
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
        tree.ExpectShown({{26, 0, nullptr},   {27, 0, nullptr},   {30, 0, L"0.00"},   {40, 0, L"0.50"},
                          {41, 0, L"0.25"},   {42, 0, nullptr},   {45, 1, nullptr},   {50, 0, nullptr},
                          {52, 0, L"8.50"},   {53, 0, L"11.00"},  {57, 0, nullptr},   {60, 1, nullptr},
                          {61, 1, nullptr},   {76, 0, L"0.25"},   {99, 1, nullptr},   {228, 0, nullptr},
                          {230, 32, nullptr}, {231, 25, nullptr}, {232, 1, nullptr}});
    }
}

TEST(BrailleTablesButton, AsksTheExtensionForTheBrailleTableServiceWithTheDeviceTable) {
    const struct {
        const wchar_t* table;
        uint32_t index;
    } cases[] = {{L"FR_FR", 3}, {L"ja_jp", 19}, {L"", 0}};
    testenv::PlacedCompanion extension(StandIn(L"ozdkrnlmex.dll"), testenv::ExtensionLibraryPath());
    ASSERT_TRUE(extension.placed());
    for (const auto& c : cases) {
        SCOPED_TRACE(testenv::Narrow(c.table));
        testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY);
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, c.table);

        EXPECT_EQ(tree.Press(74), 0);

        const DWORD calls = 1;
        const uint64_t owner = 0;
        const uint32_t request[] = {14, c.index};
        EXPECT_EQ(Recorded(L"ServiceCalls"), BytesOf(&calls, 1));
        EXPECT_EQ(Recorded(L"ServicePrinter"), BytesOf(tree.printer().name().c_str(), tree.printer().name().size() + 1));
        EXPECT_EQ(Recorded(L"ServiceOwner"), BytesOf(&owner, 1));
        EXPECT_EQ(Recorded(L"ServiceRequest"), BytesOf(request, 2));
    }
}

TEST(BrailleTablesButton, DoesNothingWithoutTheServiceExport) {
    for (const wchar_t* library : {L"ozdkrnlmex_noservice.dll", static_cast<const wchar_t*>(nullptr)}) {
        SCOPED_TRACE(library != nullptr ? "library without the export" : "no library");
        testenv::DeleteRegTree(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY);
        testenv::PlacedCompanion extension(library != nullptr ? StandIn(library) : std::wstring(),
                                           testenv::ExtensionLibraryPath());
        ASSERT_EQ(extension.placed(), library != nullptr);
        LegacyTree tree;
        ASSERT_EQ(tree.Build(), S_OK);
        wcscpy(tree.Config().EmbsrBrailleTable, L"EN_US");
        TraceLog log;

        EXPECT_EQ(tree.Press(74), 0);

        EXPECT_FALSE(testenv::RegKeyExists(HKEY_CURRENT_USER, OZDK_EXTENSION_RECORD_KEY));
        EXPECT_EQ(log.Contains("ExtDllLoadFunction(): function DllExportPrinterService not exported"),
                  library != nullptr);
    }
}
