#include "device/protocol/legacy_setting_rules.h"

#include <algorithm>
#include <limits>
#include <string>

#include "device/protocol/ascii_text.h"
#include "device/protocol/braille_tables.h"
#include "device/protocol/decimal_text.h"
#include "device/protocol/legacy_settings_table.h"
#include "base/trace_log.h"

namespace {

constexpr double kTwentiethsPerInch = 20.0;
constexpr uint32_t kHundredthsPerTwentieth = 5;

// Stores `value` in `field` when they differ and records the command to send.
void Update(LegacyItemUpdate& update, uint32_t& field, uint32_t value, const PjlDefault& command) {
    if (field == value) return;
    field = value;
    update.changed = true;
    update.command = command;
}

// Inches typed in an item, in 1/20 inch.
int32_t TwentiethsOf(const WideChar* text) { return ozdk::TruncateToInt32(ozdk::ReadDecimal(text) * kTwentiethsPerInch); }

// Extra line spacing typed in inches, in hundredths, truncated and taken as unsigned:
// anything above `highest`, and so any negative hundredth, becomes `highest`.
uint32_t LineSpaceHundredthsOf(const WideChar* text, uint32_t highest) {
    const int32_t hundredths = ozdk::TruncateToInt32(ozdk::ReadDecimal(text) * 100.0);
    if (hundredths < 0) return highest;
    return std::min(static_cast<uint32_t>(hundredths), highest);
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

// The value a typed text stands for.
int32_t ValueOfText(const LegacySetting& row, const UIConfig& config, const WideChar* text, LegacyItemUpdate& update) {
    switch (row.rule) {
        case LegacyValueRule::LineSpacing: {
            const uint32_t hundredths = LineSpaceHundredthsOf(text, static_cast<uint32_t>(row.highest));
            update.rewriteText = true;
            FormatHundredths(hundredths, update.text);
            return static_cast<int32_t>(hundredths / kHundredthsPerTwentieth);
        }
        case LegacyValueRule::FallbackOutside: {
            const int32_t value = ozdk::ReadInteger(text);
            return value < row.lowest || value > row.highest ? row.fallback : value;
        }
        case LegacyValueRule::AtLeastLowest:
            return std::max(TwentiethsOf(text), row.lowest);
        case LegacyValueRule::AtLeastLowestOnWideForms: {
            // The form's width as earlier items of the same walk left it.
            const int32_t value = TwentiethsOf(text);
            return config.EmbsrPaperWidth > row.highest && value < row.lowest ? row.lowest : value;
        }
        default:
            return row.kind == LegacyItemKind::Seconds ? ozdk::ReadInteger(text) : TwentiethsOf(text);
    }
}

// The code a chosen entry stands for.
uint32_t ValueOfSelection(const LegacySetting& row, int32_t selection) {
    switch (row.rule) {
        case LegacyValueRule::Forced:
            return static_cast<uint32_t>(row.fallback);
        case LegacyValueRule::LowByte:
            return static_cast<uint32_t>(selection) & 0xFFu;
        default:
            return LegacyCodeOfSelection(row, selection);
    }
}

// The braille table is kept by name: a name equal but for case is no change.
void ApplyBrailleTable(LegacyItemUpdate& update, const LegacySetting& row, UIConfig& config, int32_t selection) {
    const uint32_t code = static_cast<uint32_t>(selection);
    const WideChar* name = BrailleTableIntToString(code);
    // The name is short and terminated, so the comparison never runs past the field.
    if (ozdk::EqualPrefixIgnoringAsciiCase(name, config.EmbsrBrailleTable, kTextCapacity)) return;
    ozdk::CopyWideText(config.EmbsrBrailleTable, kTextCapacity, name);
    update.changed = true;
    update.command = LegacyCommandOf(row, code);
    Trace(W16("ApplyLegacyChanges(): @PJL DEFAULT BRAILLETABLE=%S\n"), update.command.word);
}

}  // namespace

LegacyItemUpdate ApplyLegacyItem(UIConfig& config, uint32_t userItemId, int32_t selection, const WideChar* text) {
    LegacyItemUpdate update{};
    const LegacySetting* row = FindLegacySetting(userItemId);
    if (row == nullptr || row->key == nullptr) return update;
    update.known = true;
    if (row->rule == LegacyValueRule::BrailleTableName) {
        ApplyBrailleTable(update, *row, config, selection);
        return update;
    }
    const bool typed = row->kind == LegacyItemKind::Inches || row->kind == LegacyItemKind::Seconds;
    const uint32_t value =
        typed ? static_cast<uint32_t>(ValueOfText(*row, config, text, update)) : ValueOfSelection(*row, selection);
    Update(update, LegacyFieldRef(*row, config), value, LegacyCommandOf(*row, value));
    if (update.changed && row->changeTrace != nullptr) Trace(row->changeTrace, static_cast<int>(value));
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
        check.charsWidth = PjlNumber(W16("CHARSWIDTH"), static_cast<uint32_t>(Saturate(usableWidth / cellWidth)));
    }

    const int64_t lineHeight = graphics ? 6 : int64_t{config.EmbsrLineSpacing} + 8;
    const int64_t usableLength = int64_t{config.EmbsrPaperLength} - config.EmbsrTopMargin;
    const int64_t heightGood = usableLength - int64_t{config.EmbsrLinesLength} * lineHeight;
    check.widthGood = Saturate(widthGood);
    check.heightGood = Saturate(heightGood);

    if (heightGood < 0 && lineHeight != 0) {
        check.correctLinesLength = true;
        check.linesLength =
            PjlNumber(W16("LINESLENGTH"), static_cast<uint32_t>(Saturate(usableLength / lineHeight)));
    }
    return check;
}
