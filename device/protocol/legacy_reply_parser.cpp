#include "device/protocol/legacy_reply_parser.h"

#include <cstring>
#include <string>

#include "device/protocol/ascii_text.h"
#include "device/protocol/braille_tables.h"
#include "device/protocol/decimal_text.h"
#include "device/protocol/legacy_settings_table.h"
#include "base/trace_log.h"

namespace {

constexpr char kReplyPrefix[] = "@PJL INFO LEGACY [23";

// The value of KEY=VALUE starts one character past the key (the '='); a key at the very
// end of the text has no value.
const char* ValueAfterKey(const char* keyFound, size_t keyLength) {
    const char* end = keyFound + keyLength;
    return *end != '\0' ? end + 1 : end;
}

// Numeric key: the field becomes 0, then the number after the key. Counts 1 when found.
int ReadNumberKey(const char* block, const char* key, uint32_t& field) {
    field = 0;
    const char* found = std::strstr(block, key);
    if (found == nullptr) return 0;
    field = static_cast<uint32_t>(ozdk::ReadInteger(ValueAfterKey(found, std::strlen(key))));
    return 1;
}

// Text key: copies the rest of the line after the key, dropping '"', CR and '=' and
// cutting at the buffer's capacity.
int ReadTextKey(const char* block, const char* key, WideChar (&field)[kTextCapacity]) {
    field[0] = 0;
    const char* found = std::strstr(block, key);
    if (found == nullptr) return 0;
    size_t length = 0;
    for (const char* p = found + std::strlen(key); *p != '\0' && *p != '\n'; ++p) {
        if (*p == '"' || *p == '\r' || *p == '=') continue;
        if (length == kTextCapacity - 1) break;
        field[length++] = static_cast<WideChar>(static_cast<unsigned char>(*p));
    }
    field[length] = 0;
    return 1;
}

// Switch key: off for a value beginning with OFF, FALSE, NO or 0 (any case), else on.
int ReadSwitchKey(const char* block, const char* key, uint32_t& field) {
    field = 0;
    const char* found = std::strstr(block, key);
    if (found == nullptr) return 0;
    const char* value = ValueAfterKey(found, std::strlen(key));
    const bool off = ozdk::StartsWithIgnoringAsciiCase(value, "OFF") ||
                     ozdk::StartsWithIgnoringAsciiCase(value, "FALSE") ||
                     ozdk::StartsWithIgnoringAsciiCase(value, "NO") ||
                     ozdk::StartsWithIgnoringAsciiCase(value, "0");
    field = off ? 0 : 1;
    return 1;
}

// Firmware "FWPRIMARY=major.minor.build", read as "%u.%u.%u" from 10 characters past the
// key's start. Returns how many of the three numbers were read.
int ReadFirmwareKey(const char* block, uint32_t& firmwareVersion) {
    static constexpr char kKey[] = "FWPRIMARY";
    uint32_t parts[3] = {0, 0, 0};
    int read = 0;
    if (const char* found = std::strstr(block, kKey)) {
        read = ozdk::ReadDottedNumbers(ValueAfterKey(found, sizeof(kKey) - 1), parts, 3);
    }
    firmwareVersion = (parts[0] << 16) | (parts[1] << 8) | parts[2];
    return read;
}

}  // namespace

int ParseInfoLegacySettings(UIConfig& config, const char* reply) {
    if (reply == nullptr) reply = "";
    Trace(W16("ParseInfoLegacySettings(): %S\n"), reply);

    const char* block = std::strstr(reply, kReplyPrefix);
    if (block == nullptr) return 0;

    int count = 0;
    for (const LegacySetting& row : LegacySettings()) {
        if (row.reply == LegacyReplyForm::None) continue;
        const std::string key = ozdk::NarrowAscii(row.key);
        uint32_t& field = LegacyFieldRef(row, config);
        switch (row.reply) {
            case LegacyReplyForm::Number:
                count += ReadNumberKey(block, key.c_str(), field);
                if (row.rule == LegacyValueRule::DeviceLength) {
                    field = static_cast<uint32_t>(static_cast<int32_t>(field) / kDeviceUnitsPerTwentieth);
                }
                break;
            case LegacyReplyForm::Switch:
                count += ReadSwitchKey(block, key.c_str(), field);
                break;
            case LegacyReplyForm::Word:
                field = LegacyCodeOfReply(row, block);  // a word the embosser does not use is its default
                ++count;
                break;
            case LegacyReplyForm::Text:  // the braille table's name, then its code
                count += ReadTextKey(block, key.c_str(), config.EmbsrBrailleTable);
                field = BrailleTableStringToInt(config.EmbsrBrailleTable);
                break;
            case LegacyReplyForm::None:
                break;
        }
    }

    count += ReadFirmwareKey(block, config.FirmwareVersion);
    count += ReadTextKey(block, "SERIALNUMBER", config.SerialNumber);
    count += ReadTextKey(block, "MODEL", config.ModelNumber);

    return count == kLegacyParmTotal ? kLegacyParmTotal : 0;
}
