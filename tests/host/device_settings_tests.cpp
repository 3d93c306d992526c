// The printer sheet's "Device Settings" page with the real plug-in: the item tree that
// CommonUIProp builds, read from a simulated network embosser when the page comes to the
// front, and written back as raw jobs when it is applied.
#include <winsock2.h>

#include "host/plugin_under_test.h"

#include <commctrl.h>
#include <compstui.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "embosser_simulator.h"
#include "tools/host/option_tree_page.h"

using hosttest::PluginUnderTest;

namespace {

// What the simulated embosser keeps: margins and layout that fit a letter page, so that
// applying sends no page-fit corrections of its own. The left margin (10) is not the
// lowest one the device takes (5).
std::string DeviceSettings() {
    std::string block = embosser_sim::SampleLegacyBlock();
    for (const auto& [from, to] : {std::pair<const char*, const char*>{"LEFTMARGIN=5\r", "LEFTMARGIN=10\r"},
                                   {"CHARSWIDTH=40\r", "CHARSWIDTH=30\r"}}) {
        const size_t at = block.find(from);
        if (at != std::string::npos) block.replace(at, std::strlen(from), to);
    }
    return block;
}

constexpr DWORD kLegacyItems = 22;
constexpr BYTE kFormSize = 50, kFormWidth = 52, kFormLength = 53, kLeftMargin = 41, kResetButton = 32;

std::string Pjl(const std::string& command) { return "\x1b%-12345X@PJL " + command + "\r\n"; }

// The real plug-in on a test printer whose port is a Standard TCP/IP port of a simulated
// embosser, with the printer sheet open and the "Device Settings" page behind the
// "Plug-in Calls" page.
class DeviceSettingsEndToEnd : public ::testing::Test {
protected:
    void Open(const char* address, embosser_sim::Behaviour behaviour) {
        printer.MakeNetworkPort(testenv::Widen(address), L"");
        embosser_sim::Options options;
        options.address = address;
        options.behaviour = behaviour;
        options.reply = embosser_sim::HttpReply(DeviceSettings());
        simulator = std::make_unique<embosser_sim::Simulator>(options);
        std::string error;
        ASSERT_TRUE(simulator->Start(&error)) << error;

        ASSERT_TRUE(library.Load(PluginUnderTest()));
        hostPrinter = std::make_unique<ozdkhost::HostPrinter>(&log);
        ASSERT_TRUE(hostPrinter->Open(printer.name()));
        object = std::make_unique<ozdkhost::PluginObject>(&log);
        ASSERT_EQ(object->Create(library), S_OK);
        hostPrinter->PrepareOemPrivatePart(object->get(), library.module());
        sheet = std::make_unique<ozdkhost::PropertySheetHost>(ozdkhost::SheetKind::Printer, *object, library.module(),
                                                              *hostPrinter, &log);
        sheet->Prepare();
        tree = sheet->AddOptionTreePage();
        ASSERT_NE(tree, nullptr) << Dump();
        auto callLog = ozdkhost::MakeCallLogPage(log);
        callLogPage = callLog.get();
        sheet->AddHostPage(std::move(callLog));
        ASSERT_NE(sheet->ShowModeless(), nullptr) << Dump();
    }

    void TearDown() override {
        if (sheet) sheet->Close();
        sheet.reset();
        if (object) object->Release();
        object.reset();
        hostPrinter.reset();
        if (simulator) simulator->Stop();
    }

    std::string Dump() const { return testenv::Narrow(log.Text()); }

    bool Activate() { return sheet->ShowHostPage(tree); }
    bool Leave() { return sheet->ShowHostPage(callLogPage); }

    testenv::TestPrinter printer;
    std::unique_ptr<embosser_sim::Simulator> simulator;
    ozdkhost::HostLog log;
    ozdkhost::PluginLibrary library{&log};
    std::unique_ptr<ozdkhost::HostPrinter> hostPrinter;
    std::unique_ptr<ozdkhost::PluginObject> object;
    std::unique_ptr<ozdkhost::PropertySheetHost> sheet;
    ozdkhost::OptionTreePage* tree = nullptr;
    ozdkhost::HostPage* callLogPage = nullptr;
};

// Answers "No" to the first message box captioned with the printer's name.
struct MessageBoxAnswer {
    static void CALLBACK Tick(HWND, UINT, UINT_PTR timer, DWORD) {
        const HWND box = FindWindowW(L"#32770", caption.c_str());
        if (box == nullptr) return;
        wchar_t text[512] = {};
        GetDlgItemTextW(box, 0xFFFF, text, 512);  // the message's static
        shownText = text;
        KillTimer(nullptr, timer);
        SendMessageW(box, WM_COMMAND, MAKEWPARAM(IDNO, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(box, IDNO)));
        answered = true;
    }
    static std::wstring caption;
    static std::wstring shownText;
    static bool answered;
};
std::wstring MessageBoxAnswer::caption;
std::wstring MessageBoxAnswer::shownText;
bool MessageBoxAnswer::answered = false;

}  // namespace

TEST_F(DeviceSettingsEndToEnd, TheEmbossersSettingsAreReadOnceShownAndOnlyEditedOnesAreSent) {
    ASSERT_NO_FATAL_FAILURE(Open("127.0.0.40", embosser_sim::Behaviour::Answer));
    const ozdkhost::CollectedItems& items = sheet->items();
    ASSERT_EQ(items.count, kLegacyItems) << Dump();
    EXPECT_EQ(items.items[0].Flags & OPTIF_DISABLED, 0u) << "the head";
    for (DWORD i = 1; i < items.count; ++i) {
        EXPECT_NE(items.items[i].Flags & OPTIF_DISABLED, 0u) << "item " << i << " before the page was active";
    }
    EXPECT_EQ(tree->CountCallbacks(CPSUICB_REASON_SETACTIVE), 0) << "the sheet opens on another page";

    ASSERT_TRUE(Activate());
    ASSERT_TRUE(Leave());
    ASSERT_TRUE(Activate());
    EXPECT_EQ(tree->CountCallbacks(CPSUICB_REASON_SETACTIVE), 2);
    EXPECT_EQ(simulator->RequestCount(), 1) << "the device is read at the first activation only";

    // A sample of each kind of item: lists, numbers, measurements, the button.
    const struct {
        BYTE id;
        const wchar_t* text;
    } shown[] = {
        {kFormSize, L"Letter Small"},  // the last paper size of 8.5 x 11 inches
        {kFormWidth, L"8.50"},
        {kFormLength, L"11.00"},
        {kLeftMargin, L"0.50"},
        {230, L"30"},
        {228, L"American Library of Congress"},
        {57, L"Default 3 (Copy Paper)"},
        {60, L"English US"},
        {99, L"Face Up"},
        {kResetButton, L"Reset To Default"},
    };
    for (const auto& row : shown) {
        SCOPED_TRACE(testing::Message() << "item " << static_cast<int>(row.id));
        EXPECT_EQ(tree->ControlText(row.id), row.text);
        EXPECT_TRUE(tree->ControlUsable(row.id));
    }

    ASSERT_TRUE(sheet->Apply());
    EXPECT_EQ(printer.Jobs(), "") << "nothing was edited";

    // A paper size fills width and length, rounded up to a tenth of an inch.
    const struct {
        const wchar_t* form;
        const wchar_t* width;
        const wchar_t* length;
    } forms[] = {{L"A4", L"8.30", L"11.70"}, {L"Letter", L"8.50", L"11.00"}};
    for (const auto& form : forms) {
        SCOPED_TRACE(testenv::Narrow(form.form));
        const LONG entry = tree->FindEntry(kFormSize, form.form);
        ASSERT_GE(entry, 0);
        ASSERT_TRUE(tree->Choose(kFormSize, entry));
        EXPECT_EQ(tree->ControlText(kFormWidth), form.width);
        EXPECT_EQ(tree->ControlText(kFormLength), form.length);
    }

    // Back at the device's size, only the left margin differs: it is sent (0.1 inch is
    // below the lowest margin, 5/20 inch) and committed.
    ASSERT_TRUE(tree->Type(kLeftMargin, L"0.1"));
    ASSERT_TRUE(sheet->Apply());
    EXPECT_EQ(printer.Jobs(), Pjl("DEFAULT LEFTMARGIN=5") + Pjl("SERVICE UPDATE")) << Dump();
    EXPECT_TRUE(log.Contains(L"plug-in: OEMCUIPCallback(CPSUICB_REASON_APPLYNOW) = 4 CPSUICB_ACTION_ITEMS_APPLIED"))
        << Dump();
}

TEST_F(DeviceSettingsEndToEnd, AnEmbosserThatCannotBeReachedLeavesTheItemsDisabled) {
    ASSERT_NO_FATAL_FAILURE(Open("127.0.0.41", embosser_sim::Behaviour::Refuse));
    ASSERT_TRUE(Activate());
    ASSERT_TRUE(Leave());
    ASSERT_TRUE(Activate());
    for (const auto& call : tree->callbacks()) {
        EXPECT_EQ(call.answer, CPSUICB_ACTION_NONE) << "reason " << call.reason;
    }
    const ozdkhost::CollectedItems& items = sheet->items();
    ASSERT_EQ(items.count, kLegacyItems);
    for (DWORD i = 1; i < items.count; ++i) {
        const BYTE id = items.items[i].UserItemID;
        EXPECT_NE(items.items[i].Flags & OPTIF_DISABLED, 0u) << "item " << static_cast<int>(id);
        EXPECT_FALSE(tree->ControlUsable(id)) << "item " << static_cast<int>(id);
    }
    EXPECT_FALSE(tree->Type(kLeftMargin, L"0.1"));
    ASSERT_TRUE(sheet->Apply());
    EXPECT_EQ(printer.Jobs(), "");
}

TEST_F(DeviceSettingsEndToEnd, ResetToDefaultSendsTheDefaultsAtOnceEvenWhenTheAnswerIsNo) {
    ASSERT_NO_FATAL_FAILURE(Open("127.0.0.42", embosser_sim::Behaviour::Answer));
    ASSERT_TRUE(Activate());
    ASSERT_TRUE(tree->ControlUsable(kResetButton)) << Dump();

    MessageBoxAnswer::caption = printer.name();
    MessageBoxAnswer::answered = false;
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, &MessageBoxAnswer::Tick);
    ASSERT_TRUE(tree->Press(kResetButton));
    KillTimer(nullptr, timer);
    EXPECT_TRUE(MessageBoxAnswer::answered) << "the reset asks first";
    EXPECT_EQ(MessageBoxAnswer::shownText, L"Click on Yes to reset all Legacy Settings to their default values.");

    // The defaults that differ from the device's settings, in the tree's order, then the
    // commit; sent before any apply.
    EXPECT_EQ(printer.Jobs(), Pjl("DEFAULT LEFTMARGIN=5") + Pjl("DEFAULT CHARSWIDTH=32") +
                                  Pjl("DEFAULT SPACING=MARBURG") + Pjl("DEFAULT AUTOCR=OFF") +
                                  Pjl("DEFAULT MEDIATYPE=BRAILLE") + Pjl("DEFAULT OUTPUTFACE=2") +
                                  Pjl("SERVICE UPDATE"))
        << Dump();
    EXPECT_EQ(tree->ControlText(kLeftMargin), L"0.25");
    EXPECT_EQ(tree->ControlText(230), L"32");
    EXPECT_EQ(tree->ControlText(99), L"Face Down");
}
