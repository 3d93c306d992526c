// The PJL command text sent to the embosser as raw jobs: 8-bit bytes, each command
// opened by the universal exit language sequence ESC "%-12345X" and ended by CR LF.
// Keys arrive as 16-bit text and go out as 8-bit (non-ASCII characters become '?').
// A command longer than kPjlCommandCapacity bytes is cut there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "config/ui_config.h"

inline constexpr size_t kPjlCommandCapacity = 4096;
inline constexpr size_t kPjlWordCapacity = 16;  // 15 characters and the terminator

// The media test pattern request, sent as it stands (34 bytes, without the terminator).
inline constexpr char kPjlMediaForceCommand[] = "\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n";
inline constexpr size_t kPjlMediaForceCommandLength = sizeof(kPjlMediaForceCommand) - 1;
static_assert(kPjlMediaForceCommandLength == 34, "media force command is 34 bytes");

// ESC "%-12345X@PJL SERVICE UPDATE" CR LF: the embosser commits its defaults.
std::string FormatPjlServiceUpdate();

// How the value of one "DEFAULT" command is written.
enum class PjlValueForm : uint8_t {
    Number,  // decimal unsigned
    Switch,  // "ON" when `number` is non-zero, else "OFF"
    Word,    // `word`
};

// One "DEFAULT" command to send; `key` null means there is nothing to send.
struct PjlDefault {
    const WideChar* key;
    PjlValueForm form;
    uint32_t number;
    char word[kPjlWordCapacity];
};

// The three forms; a word longer than 15 characters is cut there.
PjlDefault PjlNumber(const WideChar* key, uint32_t value);
PjlDefault PjlSwitch(const WideChar* key, bool on);
PjlDefault PjlWord(const WideChar* key, const char* word);

// The word of a Word command, never read past its 15 characters (the array may have been
// filled by hand).
std::string PjlWordText(const PjlDefault& command);

// ESC "%-12345X@PJL DEFAULT KEY=VALUE" CR LF with VALUE a decimal unsigned number,
// "ON"/"OFF", or the word (empty when the key is null).
std::string FormatPjlDefault(const PjlDefault& command);
