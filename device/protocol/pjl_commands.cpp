#include "device/protocol/pjl_commands.h"

#include <algorithm>

#include "device/protocol/ascii_text.h"

namespace {

constexpr char kUniversalExit[] = "\x1b%-12345X";

std::string DefaultCommand(const WideChar* key, const std::string& value) {
    std::string command = kUniversalExit;
    command += "@PJL DEFAULT ";
    command += ozdk::NarrowAscii(key, kPjlCommandCapacity);
    command += '=';
    command += value;
    command += "\r\n";
    if (command.size() > kPjlCommandCapacity) command.resize(kPjlCommandCapacity);
    return command;
}

}  // namespace

std::string FormatPjlDefaultNumber(const WideChar* key, uint32_t value) {
    return DefaultCommand(key, std::to_string(value));
}

std::string FormatPjlDefaultSwitch(const WideChar* key, bool on) { return DefaultCommand(key, on ? "ON" : "OFF"); }

std::string FormatPjlDefaultWord(const WideChar* key, const char* word) {
    std::string value;
    if (word != nullptr) {
        for (size_t i = 0; i < kPjlCommandCapacity && word[i] != '\0'; ++i) value += word[i];
    }
    return DefaultCommand(key, value);
}

std::string FormatPjlServiceUpdate() { return std::string(kUniversalExit) + "@PJL SERVICE UPDATE\r\n"; }

std::string FormatPjlDefault(const PjlDefault& command) {
    if (command.key == nullptr) return std::string();
    switch (command.form) {
        case PjlValueForm::Number:
            return FormatPjlDefaultNumber(command.key, command.number);
        case PjlValueForm::Switch:
            return FormatPjlDefaultSwitch(command.key, command.number != 0);
        case PjlValueForm::Word:
            break;
    }
    // The word array may have been filled by hand: never read past its 15 characters.
    const char* end = std::find(command.word, command.word + kPjlWordCapacity - 1, '\0');
    return FormatPjlDefaultWord(command.key, std::string(command.word, end).c_str());
}
