// The pages as people who see little meet them. Under a high-contrast theme every picture
// of the plug-in's pages stands out from its page by 3:1 at least, lies on the page's own
// background rather than on a box, and fills its control, at 100% and at 200% text size.
#include "support/embosser_fixtures.h"  // first: winsock2.h before windows.h

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "support/host_fixtures.h"
#include "tools/host/high_contrast.h"
#include "tools/host/picture_contrast.h"
#include "tools/host/text_fit.h"

using ozdkhost::HighContrastTheme;
using ozdkhost::SheetKind;

TEST(LowVision, EveryPictureStandsOutFromItsPageInTheBlackAndTheWhiteHighContrastThemes) {
    testenv::TestPrinter printer;  // of an embosser that answers, so that no read waits
    printer.MakeNetworkPort(L"127.0.0.46", L"");
    const auto embosser =
        devicetest::StartSimulator(devicetest::Simulating("127.0.0.46", embosser_sim::Behaviour::Answer));
    testenv::HostedPlugin plugin(printer.name());
    ASSERT_TRUE(plugin.ready) << testenv::Narrow(plugin.log.Text());
    double lowest = 21.0;
    std::string lowestWhere;
    for (const HighContrastTheme theme : {HighContrastTheme::Black, HighContrastTheme::White}) {
        const ozdkhost::HighContrastSession session(theme, plugin.library.module());
        EXPECT_TRUE(session.answering()) << "the plug-in never asks whether high contrast is on";
        size_t pictures = 0;
        for (const SheetKind kind : {SheetKind::Document, SheetKind::Printer}) {
            ozdkhost::PropertySheetHost sheet(kind, plugin.object, plugin.library.module(), plugin.printer,
                                              &plugin.log);
            sheet.Prepare();
            ASSERT_NE(sheet.ShowModeless(), nullptr) << testenv::Narrow(plugin.log.Text());
            for (size_t index = 0; index < sheet.pluginPages().size(); ++index) {
                const HWND page = sheet.ShowPluginPage(index);
                ASSERT_NE(page, nullptr);
                sheet.PumpMessages(100);
                for (const ozdkhost::PictureContrast& picture : ozdkhost::MeasurePictureContrast(page)) {
                    char where[96];
                    std::snprintf(where, sizeof(where), "%s theme, %s page %zu, picture %d, %zu pixels drawn",
                                  testenv::Narrow(ozdkhost::HighContrastThemeName(theme)).c_str(),
                                  testenv::Narrow(ozdkhost::SheetKindName(kind)).c_str(), index, picture.control,
                                  picture.drawn);
                    EXPECT_EQ(picture.commonest, picture.page) << where << ": it lies on a box";
                    EXPECT_GE(picture.ratio, 3.0) << where;
                    EXPECT_GE(picture.span, 0.65) << where << ": it leaves its control empty";
                    if (picture.ratio < lowest) {
                        lowest = picture.ratio;
                        lowestWhere = where;
                    }
                    ++pictures;
                }
            }
        }
        EXPECT_EQ(pictures, 7u) << "Layout: sides, collation, logo; Paper/Media and Service: logo; Quorl: two inks";
    }
    std::printf("lowest contrast ratio of a picture to its page: %.2f (%s)\n", lowest, lowestWhere.c_str());
}

// The same at 200%: text size is read when a program starts, so the program runs itself.
TEST(LowVision, PicturesGrowWithTheTextAndStandOutAt200Percent) {
    wchar_t self[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(nullptr, self, MAX_PATH), 0u);
    const ozdkhost::TextSizeScope size(192);
    ASSERT_TRUE(size.set());
    std::string output;
    const std::wstring child = L"\"" + std::wstring(self) + L"\" --gtest_filter=LowVision.EveryPicture*";
    EXPECT_EQ(ozdkhost::RunProgram(child, L"OZDK_TEXT_SIZE", L"192", 90000, output), 0) << output;
    const size_t figure = output.find("lowest contrast");
    std::printf("at 200%%: %s\n", figure != std::string::npos ? output.c_str() + figure : "no figure\n");
}
