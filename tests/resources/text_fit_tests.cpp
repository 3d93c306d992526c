// Every text of every dialog has room in its control at 100%, 150% and 200% text size.
// The text size is read when a process starts, so the program runs itself once per size.
#include <gtest/gtest.h>
#include <windows.h>

#include "base/module_state.h"
#include "resources/document_dialog_ids.h"
#include "support/wine_environment.h"
#include "tools/dialog_lint/dialog_lint.h"
#include "tools/host/dialog_driver.h"
#include "tools/host/text_fit.h"

// Runs only in the process TextFit starts, which names its text size in OZDK_TEXT_FIT_DPI.
// Each dialog is made with the module's common controls, as the pages are; then one
// caption at a time is made longer and must be the one control reported.
TEST(TextFitChild, EveryTextFitsItsControl) {
    wchar_t dpi[8] = {};
    if (GetEnvironmentVariableW(L"OZDK_TEXT_FIT_DPI", dpi, 8) == 0) return;
    HDC screen = GetDC(nullptr);
    ASSERT_EQ(GetDeviceCaps(screen, LOGPIXELSY), _wtoi(dpi));
    ReleaseDC(nullptr, screen);
    ModuleContextScope context;
    std::vector<ozdkhost::TextFit> all;
    const std::wstring folder = testenv::WindowsPath(OZDK_SOURCE_DIR "/resources");
    for (const ozdklint::Dialog& dialog : ozdklint::ReadFolder(testenv::Narrow(folder)).dialogs) {
        for (const ozdkhost::TextFit& fit : ozdkhost::MeasureDialog(nullptr, dialog.id, testenv::Widen(dialog.name))) {
            EXPECT_TRUE(fit.fits()) << ozdkhost::Describe(fit);
            all.push_back(fit);
        }
    }
    ASSERT_GT(all.size(), 100u);
    std::printf("tightest fit at %ls dpi: %s\n", dpi, ozdkhost::Describe(*ozdkhost::Tightest(all)).c_str());
    const struct { int dialog, control; } longer[] = {
        {IDD_LAYOUT_PAGE, IDC_COLLATE}, {IDD_LAYOUT_PAGE, IDC_INSERT_EMPTY_PAGE}, {IDD_CUSTOM_FORM, IDC_METRIC},
        {IDD_LAYOUT_PAGE, IDC_ORIENTATION_GROUP}, {IDD_PAPER_PAGE, IDC_PAPER_SIZE_LABEL},
        {IDD_PAPER_ADVANCED, IDC_ADD_CUSTOM_FORM}};
    for (const auto& c : longer) {
        const auto lengthen = [&c](HWND box) {
            const std::wstring text = ozdkhost::Text(box, c.control) + L" with words that leave it no room at all";
            SetDlgItemTextW(box, c.control, text.c_str());
        };
        std::vector<int> unfit;
        for (const ozdkhost::TextFit& fit : ozdkhost::MeasureDialog(nullptr, c.dialog, L"", lengthen)) {
            if (!fit.fits()) unfit.push_back(fit.id);
        }
        EXPECT_EQ(unfit, std::vector<int>{c.control}) << c.dialog;
    }
}

// Prints the tightest fit the child found at each size.
TEST(TextFit, EveryTextFitsAt100150And200Percent) {
    wchar_t self[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(nullptr, self, MAX_PATH), 0u);
    for (DWORD dpi : {96, 144, 192}) {
        const ozdkhost::TextSizeScope size(dpi);
        ASSERT_TRUE(size.set());
        std::string output;
        const std::wstring child = L"\"" + std::wstring(self) + L"\" --gtest_filter=TextFitChild.*";
        EXPECT_EQ(ozdkhost::RunProgram(child, L"OZDK_TEXT_FIT_DPI", std::to_wstring(dpi), 60000, output), 0) << output;
        const size_t line = output.find("tightest fit");
        if (line != std::string::npos) std::printf("%s\n", output.substr(line, output.find('\n', line) - line).c_str());
    }
}
