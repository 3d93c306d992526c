#include "device/protocol/legacy_setting_rules.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "device/protocol/ascii_text.h"
#include "device/protocol/braille_tables.h"
#include "device/protocol/decimal_text.h"
#include "base/trace_log.h"

namespace {

// Identifiers of the device-setting items (the string numbers of their captions).
enum LegacyItemId : uint32_t {
    kItemBrailleDots = 26,
    kItemDuplex = 27,
    kItemExtraLineSpace = 30,
    kItemTopMargin = 40,
    kItemLeftMargin = 41,
    kItemGraphics = 42,
    kItemAutoCr = 45,
    kItemPaperWidth = 52,
    kItemPaperLength = 53,
    kItemCustomMediaMin = 55,
    kItemCustomMediaMax = 56,
    kItemMediaType = 57,
    kItemPaperSource = 58,
    kItemBrailleTable = 60,
    kItemBrailleForce = 61,
    kItemRightMargin = 76,
    kItemOutputFace = 99,
    kItemDryTime = 175,
    kItemAutoLoad = 178,
    kItemSpacing = 228,
    kItemCharsWidth = 230,
    kItemLinesLength = 231,
    kItemQuality = 232,
};

constexpr double kTwentiethsPerInch = 20.0;
constexpr uint32_t kDeviceUnitsPerTwentieth = 36;  // the embosser measures in 1/720 inch
constexpr uint32_t kMaxLineSpaceHundredths = 1250;
constexpr uint32_t kHundredthsPerTwentieth = 5;
constexpr int32_t kMinLeftMargin = 5;
constexpr int32_t kMinRightMargin = 5;
constexpr int32_t kWideFormWidth = 220;
constexpr uint32_t kForcedPaperSource = 7;
constexpr int32_t kDefaultDryTime = 8;
constexpr int32_t kMinDryTime = 1;
constexpr int32_t kMaxDryTime = 16;

PjlDefault NumberCommand(const WideChar* key, uint32_t value) {
    PjlDefault command{};
    command.key = key;
    command.form = PjlValueForm::Number;
    command.number = value;
    return command;
}

PjlDefault SwitchCommand(const WideChar* key, bool on) {
    PjlDefault command = NumberCommand(key, on ? 1 : 0);
    command.form = PjlValueForm::Switch;
    return command;
}

PjlDefault WordCommand(const WideChar* key, const char* word) {
    PjlDefault command = NumberCommand(key, 0);
    command.form = PjlValueForm::Word;
    const size_t length = std::min(std::strlen(word), kPjlWordCapacity - 1);
    std::memcpy(command.word, word, length);
    command.word[length] = '\0';
    return command;
}

// Stores `value` in `field` when they differ and records the command to send.
template <typename Field>
void Update(LegacyItemUpdate& update, Field& field, Field value, const PjlDefault& command) {
    if (field == value) return;
    field = value;
    update.changed = true;
    update.command = command;
}

// Inches typed in an item, in 1/20 inch.
int32_t TwentiethsOf(const WideChar* text) { return ozdk::TruncateToInt32(ozdk::ReadDecimal(text) * kTwentiethsPerInch); }

// Extra line spacing typed in inches, in hundredths, truncated and taken as unsigned:
// anything above 12.50 inches, and so any negative hundredth, becomes 12.50.
uint32_t LineSpaceHundredthsOf(const WideChar* text) {
    const int32_t hundredths = ozdk::TruncateToInt32(ozdk::ReadDecimal(text) * 100.0);
    if (hundredths < 0) return kMaxLineSpaceHundredths;
    return std::min(static_cast<uint32_t>(hundredths), kMaxLineSpaceHundredths);
}

// "%.02f" of hundredths / 100, made from the integer so no locale can change the point.
void FormatHundredths(uint32_t hundredths, WideChar (&text)[kMeasureTextCapacity]) {
    const std::string digits = std::to_string(hundredths / 100) + "." +
                               static_cast<char>('0' + hundredths % 100 / 10) +
                               static_cast<char>('0' + hundredths % 10);
    size_t i = 0;
    for (; i < digits.size() && i + 1 < kMeasureTextCapacity; ++i) text[i] = static_cast<WideChar>(digits[i]);
    text[i] = 0;
}

uint32_t MediaCodeOfSelection(int32_t selection) {
    switch (selection) {
        case 1: return 13;
        case 2: return 2;
        case 3: return 3;
        case 4: return 11;
        case 5: return 17;
        default:
            if (selection >= 6 && selection <= 15) return static_cast<uint32_t>(selection) + 24;
            return 12;
    }
}

const char* MediaWordOf(uint32_t code) {
    static const char* const kCustomWords[] = {"CUSTOM",   "CUSTOM8",  "CUSTOM9",  "CUSTOM10", "CUSTOM11",
                                               "CUSTOM12", "CUSTOM13", "CUSTOM14", "CUSTOM15", "CUSTOM16"};
    switch (code) {
        case 13: return "LIGHTBRAILLE";
        case 2: return "PLAIN";
        case 3: return "PREMIUM";
        case 11: return "CARDSTOCK";
        case 17: return "CHINESE";
        default:
            if (code >= 30 && code <= 39) return kCustomWords[code - 30];
            return "BRAILLE";
    }
}

const char* SpacingWordOf(uint32_t code) {
    static const char* const kWords[] = {"MARBURG",       "USLIBCONGRESS", "USNATLIB",
                                         "MICROBRAILLE",  "KOREANBRAILLE", "JUMBOBRAILLE"};
    return code <= 5 ? kWords[code] : kWords[0];
}

const char* DuplexWordOf(uint32_t code) { return code == 1 ? "LONGEDGE" : code == 2 ? "SHORTEDGE" : "SIMPLEX"; }
const char* ForceWordOf(uint32_t code) { return code == 0 ? "HEAVY" : code == 2 ? "LIGHT" : "NORMAL"; }
const char* QualityWordOf(uint32_t code) { return code == 0 ? "DRAFT" : code == 2 ? "BEST" : "STANDARD"; }

void ApplyBrailleTable(LegacyItemUpdate& update, UIConfig& config, int32_t selection) {
    const uint32_t code = static_cast<uint32_t>(selection);
    const WideChar* name = BrailleTableIntToString(code);
    // The name is short and terminated, so the comparison never runs past the field.
    if (ozdk::EqualPrefixIgnoringAsciiCase(name, config.EmbsrBrailleTable, kTextCapacity)) return;
    ozdk::CopyWideText(config.EmbsrBrailleTable, kTextCapacity, name);
    update.changed = true;
    update.command = WordCommand(W16("BRAILLETABLE"), BrailleTableIntToAnsiString(code));
    Trace(W16("ApplyLegacyChanges(): @PJL DEFAULT BRAILLETABLE=%S\n"), update.command.word);
}

}  // namespace

LegacyItemUpdate ApplyLegacyItem(UIConfig& config, uint32_t userItemId, int32_t selection, const WideChar* text) {
    LegacyItemUpdate update{};
    update.known = true;
    const uint32_t unsignedSelection = static_cast<uint32_t>(selection);

    switch (userItemId) {
        case kItemBrailleDots: {
            const uint32_t dots = selection == 0 ? 6 : 8;
            Update(update, config.EmbsrBrailleDots, dots, NumberCommand(W16("BRAILLEDOTS"), dots));
            break;
        }
        case kItemDuplex: {
            const uint32_t duplex = selection == 2 ? 2 : selection == 1 ? 1 : 0;
            Update(update, config.EmbsrDuplex, duplex, WordCommand(W16("DUPLEXMODE"), DuplexWordOf(duplex)));
            break;
        }
        case kItemExtraLineSpace: {
            const uint32_t hundredths = LineSpaceHundredthsOf(text);
            update.rewriteText = true;
            FormatHundredths(hundredths, update.text);
            const int32_t space = static_cast<int32_t>(hundredths / kHundredthsPerTwentieth);
            Update(update, config.EmbsrLineSpacing, space,
                   NumberCommand(W16("EXTRALINESPACE"), static_cast<uint32_t>(space)));
            break;
        }
        case kItemTopMargin: {
            const int32_t margin = TwentiethsOf(text);
            Update(update, config.EmbsrTopMargin, margin, NumberCommand(W16("TOPMARGIN"), static_cast<uint32_t>(margin)));
            break;
        }
        case kItemLeftMargin: {
            const int32_t margin = std::max(TwentiethsOf(text), kMinLeftMargin);
            Update(update, config.EmbsrLeftMargin, margin,
                   NumberCommand(W16("LEFTMARGIN"), static_cast<uint32_t>(margin)));
            break;
        }
        case kItemGraphics: {
            const uint32_t graphics = selection == 1 ? 1 : 0;
            Update(update, config.EmbsrGraphicsMode, graphics, SwitchCommand(W16("GRAPHICS"), graphics != 0));
            break;
        }
        case kItemAutoCr: {
            const uint32_t autoCr = selection == 0 ? 1 : 0;  // the first choice means on
            Update(update, config.EmbsrAutoCr, autoCr, SwitchCommand(W16("AUTOCR"), autoCr != 0));
            break;
        }
        case kItemPaperWidth:
        case kItemPaperLength: {
            const bool width = userItemId == kItemPaperWidth;
            int32_t& field = width ? config.EmbsrPaperWidth : config.EmbsrPaperLength;
            const int32_t size = TwentiethsOf(text);
            // Sent in 1/720 inch; the product wraps modulo 2^32 as the "%u" form shows it.
            const uint32_t deviceSize = static_cast<uint32_t>(size) * kDeviceUnitsPerTwentieth;
            Update(update, field, size,
                   NumberCommand(width ? W16("PAPERWIDTH") : W16("PAPERLENGTH"), deviceSize));
            if (update.changed && width) Trace(W16("ApplyLegacyChanges(): paper width=%d\n"), static_cast<int>(size));
            break;
        }
        case kItemCustomMediaMin:
        case kItemCustomMediaMax: {
            const bool min = userItemId == kItemCustomMediaMin;
            const uint32_t value = unsignedSelection & 0xFFu;
            Update(update, min ? config.EmbsrCustomMediaMin : config.EmbsrCustomMediaMax, value,
                   NumberCommand(min ? W16("CUSTOMMEDIAMIN") : W16("CUSTOMMEDIAMAX"), value));
            break;
        }
        case kItemMediaType: {
            const uint32_t media = MediaCodeOfSelection(selection);
            Update(update, config.EmbsrMediaType, media, WordCommand(W16("MEDIATYPE"), MediaWordOf(media)));
            if (update.changed) Trace(W16("ApplyLegacyChanges(): media type=%d\n"), static_cast<int>(media));
            break;
        }
        case kItemPaperSource:
            Update(update, config.PaperSourceCode, kForcedPaperSource,
                   NumberCommand(W16("PAPERSOURCE"), kForcedPaperSource));
            break;
        case kItemBrailleTable:
            ApplyBrailleTable(update, config, selection);
            break;
        case kItemBrailleForce:
            Update(update, config.EmbsrBrailleForce, unsignedSelection,
                   WordCommand(W16("BRAILLEFORCE"), ForceWordOf(unsignedSelection)));
            break;
        case kItemRightMargin: {
            int32_t margin = TwentiethsOf(text);
            if (config.EmbsrPaperWidth > kWideFormWidth && margin < kMinRightMargin) margin = kMinRightMargin;
            Update(update, config.EmbsrRightMargin, margin,
                   NumberCommand(W16("RIGHTMARGIN"), static_cast<uint32_t>(margin)));
            break;
        }
        case kItemOutputFace: {
            const uint32_t face = selection == 0 ? 1 : 2;
            Update(update, config.EmbsrOutputFace, face, NumberCommand(W16("OUTPUTFACE"), face));
            break;
        }
        case kItemDryTime: {
            int32_t seconds = ozdk::ReadInteger(text);
            if (seconds < kMinDryTime || seconds > kMaxDryTime) seconds = kDefaultDryTime;
            Update(update, config.DryTime, seconds, NumberCommand(W16("DRYTIME"), static_cast<uint32_t>(seconds)));
            break;
        }
        case kItemAutoLoad: {
            const uint32_t autoLoad = selection == 0 ? 1 : 0;
            Update(update, config.AutoLoadPaper, autoLoad, NumberCommand(W16("AUTOLOAD"), autoLoad));
            break;
        }
        case kItemSpacing: {
            const uint32_t spacing = (selection >= 1 && selection <= 5) ? unsignedSelection : 0;
            Update(update, config.EmbsrBrailleStandard, spacing, WordCommand(W16("SPACING"), SpacingWordOf(spacing)));
            break;
        }
        case kItemCharsWidth:
            Update(update, config.EmbsrCharsWidth, selection, NumberCommand(W16("CHARSWIDTH"), unsignedSelection));
            break;
        case kItemLinesLength:
            Update(update, config.EmbsrLinesLength, selection, NumberCommand(W16("LINESLENGTH"), unsignedSelection));
            break;
        case kItemQuality: {
            const uint32_t quality = selection == 2 ? 2 : selection == 0 ? 0 : 1;
            Update(update, config.EmbsrQuality, quality, WordCommand(W16("QUALITY"), QualityWordOf(quality)));
            break;
        }
        default:
            update.known = false;
            break;
    }
    return update;
}

namespace {

int32_t Saturate(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

}  // namespace

NvRamLayoutCheck CheckNvRamLayout(const UIConfig& config) {
    NvRamLayoutCheck check{};
    const bool graphics = config.EmbsrGraphicsMode != 0;

    const int64_t usableWidth = int64_t{config.EmbsrPaperWidth} - config.EmbsrRightMargin - config.EmbsrLeftMargin;
    const int64_t cellWidth = graphics ? 4 : 5;
    const int64_t widthGood = usableWidth - int64_t{config.EmbsrCharsWidth} * cellWidth;
    if (widthGood < 0) {
        check.correctCharsWidth = true;
        check.charsWidth = NumberCommand(W16("CHARSWIDTH"), static_cast<uint32_t>(Saturate(usableWidth / cellWidth)));
    }

    const int64_t lineHeight = graphics ? 6 : int64_t{config.EmbsrLineSpacing} + 8;
    const int64_t usableLength = int64_t{config.EmbsrPaperLength} - config.EmbsrTopMargin;
    const int64_t heightGood = usableLength - int64_t{config.EmbsrLinesLength} * lineHeight;
    check.widthGood = Saturate(widthGood);
    check.heightGood = Saturate(heightGood);

    if (heightGood < 0 && lineHeight != 0) {
        check.correctLinesLength = true;
        check.linesLength =
            NumberCommand(W16("LINESLENGTH"), static_cast<uint32_t>(Saturate(usableLength / lineHeight)));
    }
    return check;
}
