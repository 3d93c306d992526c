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

std::string FormatPjlServiceUpdate() { return std::string(kUniversalExit) + "@PJL SERVICE UPDATE\r\n"; }

PjlDefault PjlNumber(const WideChar* key, uint32_t value) {
    PjlDefault command{};
    command.key = key;
    command.form = PjlValueForm::Number;
    command.number = value;
    return command;
}

PjlDefault PjlSwitch(const WideChar* key, bool on) {
    PjlDefault command = PjlNumber(key, on ? 1 : 0);
    command.form = PjlValueForm::Switch;
    return command;
}

PjlDefault PjlWord(const WideChar* key, const char* word) {
    PjlDefault command = PjlNumber(key, 0);
    command.form = PjlValueForm::Word;
    if (word == nullptr) word = "";
    const char* end = std::find(word, word + kPjlWordCapacity - 1, '\0');
    std::copy(word, end, command.word);
    command.word[end - word] = '\0';
    return command;
}

std::string FormatPjlDefault(const PjlDefault& command) {
    if (command.key == nullptr) return std::string();
    switch (command.form) {
        case PjlValueForm::Number:
            return DefaultCommand(command.key, std::to_string(command.number));
        case PjlValueForm::Switch:
            return DefaultCommand(command.key, command.number != 0 ? "ON" : "OFF");
        case PjlValueForm::Word:
            break;
    }
    return DefaultCommand(command.key, PjlWordText(command));
}

std::string PjlWordText(const PjlDefault& command) {
    return std::string(command.word, std::find(command.word, command.word + kPjlWordCapacity - 1, '\0'));
}
