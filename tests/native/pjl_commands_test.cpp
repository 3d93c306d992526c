#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "device/protocol/pjl_commands.h"

namespace {

const std::string kExit = "\x1b%-12345X";

TEST(PjlCommands, BytesAreExact) {
    EXPECT_EQ(FormatPjlDefaultNumber(u"CHARSWIDTH", 32), kExit + "@PJL DEFAULT CHARSWIDTH=32\r\n");
    EXPECT_EQ(FormatPjlDefaultSwitch(u"GRAPHICS", false), kExit + "@PJL DEFAULT GRAPHICS=OFF\r\n");
    EXPECT_EQ(FormatPjlDefaultWord(u"K\u00e9Y", nullptr), kExit + "@PJL DEFAULT K?Y=\r\n");
    EXPECT_EQ(FormatPjlServiceUpdate(), kExit + "@PJL SERVICE UPDATE\r\n");
    EXPECT_EQ(std::string(kPjlMediaForceCommand, kPjlMediaForceCommandLength), kExit + "@PJL SERVICE MEDIAFORCE\r\n");

    PjlDefault command{u"AUTOCR", PjlValueForm::Switch, 7, ""};
    EXPECT_EQ(FormatPjlDefault(command), kExit + "@PJL DEFAULT AUTOCR=ON\r\n");
    command.key = nullptr;
    EXPECT_EQ(FormatPjlDefault(command), "");
}

TEST(PjlCommands, LongTextIsCutAtCapacity) {
    const std::u16string longKey(5000, u'K');
    EXPECT_EQ(FormatPjlDefaultNumber(longKey.c_str(), 1).size(), kPjlCommandCapacity);
    EXPECT_EQ(FormatPjlDefaultWord(u"W", std::string(5000, 'w').c_str()).size(), kPjlCommandCapacity);

    PjlDefault unterminated{u"W", PjlValueForm::Word, 0, ""};
    std::memset(unterminated.word, 'x', sizeof unterminated.word);  // no terminator at all
    EXPECT_EQ(FormatPjlDefault(unterminated), kExit + "@PJL DEFAULT W=" + std::string(15, 'x') + "\r\n");
}

}  // namespace
