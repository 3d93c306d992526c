#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "device/protocol/pjl_commands.h"
#include "tests/native/test_support.h"

namespace {

PjlDefault Command(const WideChar* key, PjlValueForm form, uint32_t number, const char* word = "") {
    PjlDefault command{};
    command.key = key;
    command.form = form;
    command.number = number;
    std::strncpy(command.word, word, sizeof command.word - 1);
    return command;
}

TEST(PjlCommands, BytesAreExact) {
    struct Case {
        std::string bytes;
        std::string expected;
    } const cases[] = {
        {FormatPjlDefaultNumber(u"CHARSWIDTH", 32), "\x1b%-12345X@PJL DEFAULT CHARSWIDTH=32\r\n"},
        {FormatPjlDefaultNumber(u"TOPMARGIN", 0xFFFFFFFFu), "\x1b%-12345X@PJL DEFAULT TOPMARGIN=4294967295\r\n"},
        {FormatPjlDefaultSwitch(u"AUTOCR", true), "\x1b%-12345X@PJL DEFAULT AUTOCR=ON\r\n"},
        {FormatPjlDefaultSwitch(u"GRAPHICS", false), "\x1b%-12345X@PJL DEFAULT GRAPHICS=OFF\r\n"},
        {FormatPjlDefaultWord(u"MEDIATYPE", "CUSTOM8"), "\x1b%-12345X@PJL DEFAULT MEDIATYPE=CUSTOM8\r\n"},
        {FormatPjlDefaultWord(u"K\u00e9Y", nullptr), "\x1b%-12345X@PJL DEFAULT K?Y=\r\n"},
        {FormatPjlServiceUpdate(), "\x1b%-12345X@PJL SERVICE UPDATE\r\n"},
        {FormatPjlDefault(Command(u"AUTOLOAD", PjlValueForm::Number, 1)), "\x1b%-12345X@PJL DEFAULT AUTOLOAD=1\r\n"},
        {FormatPjlDefault(Command(u"AUTOCR", PjlValueForm::Switch, 7)), "\x1b%-12345X@PJL DEFAULT AUTOCR=ON\r\n"},
        {FormatPjlDefault(Command(u"QUALITY", PjlValueForm::Word, 0, "BEST")), "\x1b%-12345X@PJL DEFAULT QUALITY=BEST\r\n"},
        {FormatPjlDefault(Command(nullptr, PjlValueForm::Number, 1)), ""},
    };
    for (const Case& c : cases) EXPECT_EQ(c.bytes, c.expected);
    EXPECT_EQ(std::string(kPjlMediaForceCommand, kPjlMediaForceCommandLength),
              "\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n");
}

TEST(PjlCommands, LongTextIsCutAtCapacity) {
    const std::u16string longKey = Widen(std::string(5000, 'K'));
    EXPECT_EQ(FormatPjlDefaultNumber(longKey.c_str(), 1).size(), kPjlCommandCapacity);
    EXPECT_EQ(FormatPjlDefaultWord(u"W", std::string(5000, 'w').c_str()).size(), kPjlCommandCapacity);

    PjlDefault unterminated = Command(u"W", PjlValueForm::Word, 0);
    std::memset(unterminated.word, 'x', sizeof unterminated.word);  // no terminator at all
    EXPECT_EQ(FormatPjlDefault(unterminated), "\x1b%-12345X@PJL DEFAULT W=" + std::string(15, 'x') + "\r\n");
}

}  // namespace
