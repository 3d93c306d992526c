#include "device/protocol/legacy_reply_parser.h"

#include <cstring>

#include "device/protocol/ascii_text.h"
#include "device/protocol/braille_tables.h"
#include "device/protocol/decimal_text.h"
#include "base/trace_log.h"

namespace {

constexpr char kReplyPrefix[] = "@PJL INFO LEGACY [23";

struct WordCode {
    const char* text;  // the whole KEY=WORD
    uint32_t code;
};

// The value of KEY=VALUE starts one character past the key (the '='); a key at the very
// end of the text has no value.
const char* ValueAfterKey(const char* keyFound, size_t keyLength) {
    const char* end = keyFound + keyLength;
    return *end != '\0' ? end + 1 : end;
}

// Numeric key: the field becomes 0, then the number after the key. Counts 1 when found.
int ReadNumberKey(const char* block, const char* key, int32_t& field) {
    field = 0;
    const char* found = std::strstr(block, key);
    if (found == nullptr) return 0;
    field = ozdk::ReadInteger(ValueAfterKey(found, std::strlen(key)));
    return 1;
}

int ReadNumberKey(const char* block, const char* key, uint32_t& field) {
    int32_t value = 0;
    const int found = ReadNumberKey(block, key, value);
    field = static_cast<uint32_t>(value);
    return found;
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

// Word key: the first KEY=WORD of the list found anywhere in the block decides.
template <size_t N>
uint32_t ReadWordKey(const char* block, const WordCode (&words)[N], uint32_t otherwise) {
    for (const WordCode& word : words) {
        if (std::strstr(block, word.text) != nullptr) return word.code;
    }
    return otherwise;
}

constexpr WordCode kSpacingWords[] = {
    {"SPACING=USLIBCONGRESS", 1}, {"SPACING=USNATLIB", 2},      {"SPACING=MICROBRAILLE", 3},
    {"SPACING=KOREANBRAILLE", 4}, {"SPACING=JUMBOBRAILLE", 5},
};

// "MEDIATYPE=CUSTOM" comes before the numbered custom media and is a prefix of each of
// them, so every numbered custom medium reads as 30. The embosser's readers expect
// exactly this; keep the order.
constexpr WordCode kMediaWords[] = {
    {"MEDIATYPE=LIGHTBRAILLE", 13}, {"MEDIATYPE=PLAIN", 2},     {"MEDIATYPE=PREMIUM", 3},
    {"MEDIATYPE=CARDSTOCK", 11},    {"MEDIATYPE=CHINESE", 17},  {"MEDIATYPE=CUSTOM", 30},
    {"MEDIATYPE=CUSTOM8", 31},      {"MEDIATYPE=CUSTOM9", 32},  {"MEDIATYPE=CUSTOM10", 33},
    {"MEDIATYPE=CUSTOM11", 34},     {"MEDIATYPE=CUSTOM12", 35}, {"MEDIATYPE=CUSTOM13", 36},
    {"MEDIATYPE=CUSTOM14", 37},     {"MEDIATYPE=CUSTOM15", 38}, {"MEDIATYPE=CUSTOM16", 39},
};
constexpr uint32_t kBraillePaperMedia = 12;

constexpr WordCode kForceWords[] = {{"BRAILLEFORCE=HEAVY", 0}, {"BRAILLEFORCE=LIGHT", 2}};
constexpr WordCode kQualityWords[] = {{"QUALITY=DRAFT", 0}, {"QUALITY=BEST", 2}};
constexpr WordCode kDuplexWords[] = {{"DUPLEXMODE=LONGEDGE", 1}, {"DUPLEXMODE=SHORTEDGE", 2}};
constexpr WordCode kOutputFaceWords[] = {{"OUTPUTFACE=2", 2}};

constexpr int32_t kDeviceUnitsPerTwentieth = 36;  // the embosser measures in 1/720 inch

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
    count += ReadNumberKey(block, "TOPMARGIN", config.EmbsrTopMargin);
    count += ReadNumberKey(block, "LEFTMARGIN", config.EmbsrLeftMargin);
    count += ReadNumberKey(block, "RIGHTMARGIN", config.EmbsrRightMargin);
    count += ReadNumberKey(block, "BRAILLEDOTS", config.EmbsrBrailleDots);
    count += ReadNumberKey(block, "CHARSWIDTH", config.EmbsrCharsWidth);
    count += ReadNumberKey(block, "LINESLENGTH", config.EmbsrLinesLength);
    count += ReadNumberKey(block, "EXTRALINESPACE", config.EmbsrLineSpacing);

    count += ReadTextKey(block, "BRAILLETABLE", config.EmbsrBrailleTable);
    config.BrailleTableIndex = BrailleTableStringToInt(config.EmbsrBrailleTable);

    count += ReadSwitchKey(block, "AUTOCR", config.EmbsrAutoCr);
    count += ReadSwitchKey(block, "GRAPHICS", config.EmbsrGraphicsMode);

    config.EmbsrBrailleStandard = ReadWordKey(block, kSpacingWords, 0);
    config.EmbsrMediaType = ReadWordKey(block, kMediaWords, kBraillePaperMedia);
    count += 2;

    count += ReadNumberKey(block, "PAPERLENGTH", config.EmbsrPaperLength);
    count += ReadNumberKey(block, "PAPERWIDTH", config.EmbsrPaperWidth);
    config.EmbsrPaperLength /= kDeviceUnitsPerTwentieth;
    config.EmbsrPaperWidth /= kDeviceUnitsPerTwentieth;

    config.EmbsrBrailleForce = ReadWordKey(block, kForceWords, 1);
    config.EmbsrQuality = ReadWordKey(block, kQualityWords, 1);
    config.EmbsrDuplex = ReadWordKey(block, kDuplexWords, 0);
    config.EmbsrOutputFace = ReadWordKey(block, kOutputFaceWords, 1);
    count += 4;

    count += ReadFirmwareKey(block, config.FirmwareVersion);
    count += ReadTextKey(block, "SERIALNUMBER", config.SerialNumber);
    count += ReadTextKey(block, "MODEL", config.ModelNumber);

    return count == kLegacyParmTotal ? kLegacyParmTotal : 0;
}
