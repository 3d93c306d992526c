#include "device/protocol/legacy_settings_table.h"

#include <cstring>
#include <string>

#include "device/protocol/ascii_text.h"
#include "device/protocol/braille_tables.h"
#include "resources/resource_ids.h"

namespace {

// Items that no branch of ours builds; the refresh, the rules and a change serve them
// where a tree holds them. Their numbers name no caption.
enum UnlistedItem : uint8_t {
    kItemCustomMediaMin = 55,
    kItemCustomMediaMax = 56,
    kItemPaperSource = 58,
    kItemAcceptedA = 77,
    kItemAcceptedB = 82,
    kItemDryTime = 175,
    kItemAutoLoad = 178,
};

#define LEGACY_FIELD(name) offsetof(UIConfig, name)

constexpr LegacySetting Row(uint8_t id, uint16_t caption, LegacyItemKind kind) {
    LegacySetting row{};
    row.id = id;
    row.caption = caption;
    row.kind = kind;
    row.inTree = true;
    row.field = kNoLegacyField;
    row.text = kNoLegacyField;
    return row;
}

constexpr LegacySetting Resetting(LegacySetting row, int32_t selection, const WideChar* text = nullptr) {
    row.resets = true;
    row.resetSelection = selection;
    row.resetText = text;
    return row;
}

constexpr LegacySetting Ruled(LegacySetting row, LegacyValueRule rule, int32_t lowest, int32_t highest = 0,
                              int32_t fallback = 0) {
    row.rule = rule;
    row.lowest = lowest;
    row.highest = highest;
    row.fallback = fallback;
    return row;
}

constexpr LegacySetting Traced(LegacySetting row, const WideChar* format) {
    row.changeTrace = format;
    return row;
}

constexpr LegacySetting Sent(LegacySetting row, size_t field, const WideChar* key, PjlValueForm form,
                             LegacyReplyForm reply) {
    row.field = field;
    row.key = key;
    row.form = form;
    row.reply = reply;
    return row;
}

constexpr LegacySetting Inches(uint16_t caption, size_t field, size_t text, const WideChar* key,
                               const WideChar* reset) {
    LegacySetting row = Sent(Row(static_cast<uint8_t>(caption), caption, LegacyItemKind::Inches), field, key,
                             PjlValueForm::Number, LegacyReplyForm::Number);
    row.text = text;
    return Resetting(row, 0, reset);
}

constexpr LegacySetting UpDown(uint16_t caption, size_t field, const WideChar* key, int32_t reset) {
    return Resetting(Ruled(Sent(Row(static_cast<uint8_t>(caption), caption, LegacyItemKind::UpDown), field, key,
                                PjlValueForm::Number, LegacyReplyForm::Number),
                           LegacyValueRule::AsIs, 20, 48),  // chars per line and lines per page alike
                     reset);
}

template <size_t N>
constexpr LegacyEntryMap Map(const LegacyEntry (&pairs)[N], int32_t otherSelection, uint32_t otherCode,
                             bool ignoreBit8 = false) {
    return {pairs, static_cast<uint8_t>(N), otherSelection, otherCode, ignoreBit8};
}
constexpr LegacyEntryMap kEntryIsCode = {nullptr, 0, 0, 0, false};

template <size_t N>
constexpr LegacyWordList Words(const LegacyWord (&words)[N], uint32_t otherCode, const char* otherWord) {
    return {words, static_cast<uint8_t>(N), otherCode, otherWord};
}

template <size_t N>
constexpr LegacySetting List(uint16_t caption, const uint16_t (&entries)[N], size_t field, const WideChar* key,
                             PjlValueForm form, LegacyReplyForm reply, LegacyEntryMap shown) {
    LegacySetting row =
        Sent(Row(static_cast<uint8_t>(caption), caption, LegacyItemKind::List), field, key, form, reply);
    row.entries = entries;
    row.entryCount = static_cast<uint8_t>(N);
    row.shown = shown;
    return row;
}

constexpr LegacySetting WithWords(LegacySetting row, LegacyWordList words) {
    row.words = words;
    return row;
}

// Entries that differ from `shown` when the branch is built or after a read.
constexpr LegacySetting Differing(LegacySetting row, const LegacyEntryMap* builtFrom,
                                  const LegacyEntryMap* refreshedFrom) {
    row.builtFrom = builtFrom;
    row.refreshedFrom = refreshedFrom;
    return row;
}

// The braille table: its code is kept in `field`, its name in `text`.
constexpr LegacySetting Named(LegacySetting row, size_t text) {
    row.text = text;
    row.carriesConfig = true;
    return row;
}

// A setting that no branch of ours builds: a selection or a text of another tree.
constexpr LegacySetting Unlisted(uint8_t id, LegacyItemKind kind, size_t field, const WideChar* key,
                                 LegacyEntryMap shown = kEntryIsCode) {
    LegacySetting row = Sent(Row(id, 0, kind), field, key, PjlValueForm::Number, LegacyReplyForm::None);
    row.inTree = false;
    row.shown = shown;
    return row;
}

constexpr LegacySetting Button(uint8_t id, uint16_t caption, LegacyButton button, uint16_t style) {
    LegacySetting row = Row(id, caption, LegacyItemKind::Button);
    row.carriesConfig = true;
    row.button = button;
    row.buttonStyle = style;
    return row;
}

constexpr uint16_t kTextGraphicsEntries[] = {IDS_TEXT, IDS_GRAPHICS};
constexpr uint16_t kDotsEntries[] = {IDS_DOTS_6, IDS_DOTS_8};
constexpr uint16_t kStandardEntries[] = {IDS_STANDARD_MARBURG,          IDS_STANDARD_LIBRARY_OF_CONGRESS,
                                         IDS_STANDARD_NATIONAL_LIBRARY, IDS_STANDARD_MICROBRAILLE,
                                         IDS_STANDARD_KOREAN,           IDS_STANDARD_JUMBO};
constexpr uint16_t kOnOffEntries[] = {IDS_ON, IDS_OFF};
constexpr uint16_t kMediaEntries[] = {
    IDS_MEDIA_DEFAULT_1, IDS_MEDIA_DEFAULT_2, IDS_MEDIA_DEFAULT_3, IDS_MEDIA_DEFAULT_4,
    IDS_MEDIA_DEFAULT_5, IDS_MEDIA_DEFAULT_6, IDS_CUSTOM,          IDS_MEDIA_CUSTOM_8,
    IDS_MEDIA_CUSTOM_9,  IDS_MEDIA_CUSTOM_10, IDS_MEDIA_CUSTOM_11, IDS_MEDIA_CUSTOM_12,
    IDS_MEDIA_CUSTOM_13, IDS_MEDIA_CUSTOM_14, IDS_MEDIA_CUSTOM_15, IDS_MEDIA_CUSTOM_16};
constexpr uint16_t kTableEntries[] = {
    IDS_TABLE_CUSTOM,    IDS_TABLE_ENGLISH_US, IDS_TABLE_GERMAN,     IDS_TABLE_FRENCH,   IDS_TABLE_SPANISH,
    IDS_TABLE_ITALIAN,   IDS_TABLE_ARABIC,     IDS_TABLE_CZECH,      IDS_TABLE_DANISH,   IDS_TABLE_GREEK,
    IDS_TABLE_SWEDISH,   IDS_TABLE_LATVIAN,    IDS_TABLE_ICELANDIC,  IDS_TABLE_NORWEGIAN, IDS_TABLE_RUSSIAN,
    IDS_TABLE_ENGLISH_UK, IDS_TABLE_DUTCH,     IDS_TABLE_POLISH,     IDS_TABLE_PORTUGUESE, IDS_TABLE_JAPANESE};
constexpr uint16_t kDotHeightEntries[] = {IDS_HIGH, IDS_NORMAL, IDS_LOW};  // from high to low
constexpr uint16_t kQualityEntries[] = {IDS_DRAFT, IDS_STANDARD, IDS_BEST};
constexpr uint16_t kDuplexEntries[] = {IDS_SINGLE_SIDED, IDS_DOUBLE_SIDED};
constexpr uint16_t kFaceEntries[] = {IDS_FACE_UP, IDS_FACE_DOWN};

constexpr LegacyEntry kOffOn[] = {{0, 0}, {1, 1}};
constexpr LegacyEntry kOnOff[] = {{1, 0}, {0, 1}};  // the first entry means on
constexpr LegacyEntry kDots[] = {{6, 0}, {8, 1}};
constexpr LegacyEntry kStandards[] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}};
constexpr LegacyEntry kStandardsRefreshed[] = {{1, 1}, {2, 2}, {3, 2}, {4, 4}, {5, 5}};
constexpr LegacyEntry kMedia[] = {{13, 1}, {2, 2},  {3, 3},  {11, 4}, {17, 5}, {30, 6},  {31, 7},  {32, 8},
                                  {33, 9}, {34, 10}, {35, 11}, {36, 12}, {37, 13}, {38, 14}, {39, 15}};
constexpr LegacyEntry kQualities[] = {{0, 0}, {2, 2}};
constexpr LegacyEntry kDuplexModes[] = {{1, 1}, {2, 2}};
constexpr LegacyEntry kDuplexBuilt[] = {{0, 0}};
constexpr LegacyEntry kFaces[] = {{1, 0}, {2, 1}};
constexpr LegacyEntry kPaperSources[] = {{8, 1}, {9, 2}, {10, 3}, {11, 4}, {4, 5}};

constexpr LegacyEntryMap kStandardsRefreshedMap = Map(kStandardsRefreshed, 0, 0);
constexpr LegacyEntryMap kDuplexBuiltMap = Map(kDuplexBuilt, 1, 0);

// "CUSTOM" comes before the numbered custom media and is a prefix of each of them, so a
// reply's numbered custom medium reads as 30. The embosser's readers expect exactly this;
// keep the order.
constexpr LegacyWord kMediaWords[] = {
    {13, "LIGHTBRAILLE"}, {2, "PLAIN"},     {3, "PREMIUM"},    {11, "CARDSTOCK"}, {17, "CHINESE"},
    {30, "CUSTOM"},       {31, "CUSTOM8"},  {32, "CUSTOM9"},   {33, "CUSTOM10"},  {34, "CUSTOM11"},
    {35, "CUSTOM12"},     {36, "CUSTOM13"}, {37, "CUSTOM14"},  {38, "CUSTOM15"},  {39, "CUSTOM16"}};
constexpr LegacyWord kSpacingWords[] = {
    {1, "USLIBCONGRESS"}, {2, "USNATLIB"}, {3, "MICROBRAILLE"}, {4, "KOREANBRAILLE"}, {5, "JUMBOBRAILLE"}};
constexpr LegacyWord kForceWords[] = {{0, "HEAVY"}, {2, "LIGHT"}};
constexpr LegacyWord kQualityWords[] = {{0, "DRAFT"}, {2, "BEST"}};
constexpr LegacyWord kDuplexWords[] = {{1, "LONGEDGE"}, {2, "SHORTEDGE"}};
constexpr LegacyWord kFaceWords[] = {{2, "2"}};  // read as a word, sent as a number

constexpr uint16_t kResetButtonStyle = 0x60;  // OTS_PUSH_INCL_SETUP_TITLE | OTS_PUSH_NO_DOT_DOT_DOT

// The rows in the branch's order. The mappings are not all inverse of each other, and
// each difference is kept on purpose:
//  - the braille standard's code 3 (Microbraille) is built as its own entry, but a read
//    shows it as entry 2 (American National Library of the Blind), which an apply then
//    sends as USNATLIB;
//  - duplex is built as single or double sided (any non-zero code is entry 1), while a
//    read shows SHORTEDGE as entry 2, which the list does not have; an apply sends what
//    the entry says only when the entry changes;
//  - the braille table is built from the table's code kept with the settings, a read
//    shows the code of the name the embosser gave;
//  - the extra line spacing is typed in hundredths of an inch and kept in twentieths, so
//    a read shows it truncated to the twentieth below (0.33 comes back as 0.30).
constexpr LegacySetting kSettings[] = {
    Row(kLegacyHeadId, IDS_LEGACY_SETTINGS, LegacyItemKind::Head),
    Resetting(Row(IDS_FORM_SIZE, IDS_FORM_SIZE, LegacyItemKind::FormSize), 0),
    Traced(Ruled(Inches(IDS_FORM_WIDTH, LEGACY_FIELD(EmbsrPaperWidth), LEGACY_FIELD(PaperWidthText),
                        W16("PAPERWIDTH"), W16("8.50")),
                 LegacyValueRule::DeviceLength, 0),
           W16("ApplyLegacyChanges(): paper width=%d\n")),
    Ruled(Inches(IDS_FORM_LENGTH, LEGACY_FIELD(EmbsrPaperLength), LEGACY_FIELD(PaperLengthText),
                 W16("PAPERLENGTH"), W16("11.00")),
          LegacyValueRule::DeviceLength, 0),
    Inches(IDS_TOP_MARGIN, LEGACY_FIELD(EmbsrTopMargin), LEGACY_FIELD(TopMarginText), W16("TOPMARGIN"),
           W16("0.50")),
    Ruled(Inches(IDS_LEFT_MARGIN, LEGACY_FIELD(EmbsrLeftMargin), LEGACY_FIELD(LeftMarginText), W16("LEFTMARGIN"),
                 W16("0.25")),
          LegacyValueRule::AtLeastLowest, 5),
    Ruled(Inches(IDS_RIGHT_MARGIN, LEGACY_FIELD(EmbsrRightMargin), LEGACY_FIELD(RightMarginText),
                 W16("RIGHTMARGIN"), W16("0.25")),
          LegacyValueRule::AtLeastLowestOnWideForms, 5, 220),
    UpDown(IDS_CHARS_PER_LINE, LEGACY_FIELD(EmbsrCharsWidth), W16("CHARSWIDTH"), 32),
    UpDown(IDS_LINES_PER_PAGE, LEGACY_FIELD(EmbsrLinesLength), W16("LINESLENGTH"), 25),
    Resetting(List(IDS_TEXT_GRAPHICS_MODE, kTextGraphicsEntries, LEGACY_FIELD(EmbsrGraphicsMode), W16("GRAPHICS"),
                   PjlValueForm::Switch, LegacyReplyForm::Switch, Map(kOffOn, 0, 0)),
              0),
    Resetting(List(IDS_DOTS_PER_CHARACTER, kDotsEntries, LEGACY_FIELD(EmbsrBrailleDots), W16("BRAILLEDOTS"),
                   PjlValueForm::Number, LegacyReplyForm::Number, Map(kDots, 0, 8)),
              0),
    Differing(Resetting(WithWords(List(IDS_BRAILLE_STANDARD, kStandardEntries, LEGACY_FIELD(EmbsrBrailleStandard),
                                       W16("SPACING"), PjlValueForm::Word, LegacyReplyForm::Word, Map(kStandards, 0, 0)),
                                  Words(kSpacingWords, 0, "MARBURG")),
                        0),
              nullptr, &kStandardsRefreshedMap),
    Resetting(List(IDS_AUTOMATIC_TEXT_WRAPPING, kOnOffEntries, LEGACY_FIELD(EmbsrAutoCr), W16("AUTOCR"),
                   PjlValueForm::Switch, LegacyReplyForm::Switch, Map(kOnOff, 0, 0)),
              1),
    Ruled(Inches(IDS_EXTRA_LINE_SPACING, LEGACY_FIELD(EmbsrLineSpacing), LEGACY_FIELD(LineSpacingText),
                 W16("EXTRALINESPACE"), W16("0.00")),
          LegacyValueRule::LineSpacing, 0, 1250),
    Traced(Resetting(WithWords(List(IDS_MEDIA_TYPE, kMediaEntries, LEGACY_FIELD(EmbsrMediaType), W16("MEDIATYPE"),
                                    PjlValueForm::Word, LegacyReplyForm::Word, Map(kMedia, 0, 12, true)),
                               Words(kMediaWords, 12, "BRAILLE")),
                     0),
           W16("ApplyLegacyChanges(): media type=%d\n")),
    Button(IDS_TABLE, IDS_BRAILLE_TABLES, LegacyButton::BrailleTables, 0),
    Named(Resetting(Ruled(List(IDS_BRAILLE_TABLE, kTableEntries, LEGACY_FIELD(BrailleTableIndex), W16("BRAILLETABLE"),
                               PjlValueForm::Word, LegacyReplyForm::Text, kEntryIsCode),
                          LegacyValueRule::BrailleTableName, 0),
                    1),
          LEGACY_FIELD(EmbsrBrailleTable)),
    Resetting(WithWords(List(IDS_BRAILLE_DOT_HEIGHT, kDotHeightEntries, LEGACY_FIELD(EmbsrBrailleForce),
                             W16("BRAILLEFORCE"), PjlValueForm::Word, LegacyReplyForm::Word, kEntryIsCode),
                        Words(kForceWords, 1, "NORMAL")),
              1),
    Resetting(WithWords(List(IDS_BRAILLE_QUALITY, kQualityEntries, LEGACY_FIELD(EmbsrQuality), W16("QUALITY"),
                             PjlValueForm::Word, LegacyReplyForm::Word, Map(kQualities, 1, 1)),
                        Words(kQualityWords, 1, "STANDARD")),
              1),
    Differing(Resetting(WithWords(List(IDS_DUPLEX, kDuplexEntries, LEGACY_FIELD(EmbsrDuplex), W16("DUPLEXMODE"),
                                       PjlValueForm::Word, LegacyReplyForm::Word, Map(kDuplexModes, 0, 0)),
                                  Words(kDuplexWords, 0, "SIMPLEX")),
                        0),
              &kDuplexBuiltMap, nullptr),
    Resetting(WithWords(List(IDS_OUTPUT_FACE, kFaceEntries, LEGACY_FIELD(EmbsrOutputFace), W16("OUTPUTFACE"),
                             PjlValueForm::Number, LegacyReplyForm::Word, Map(kFaces, 0, 2)),
                        Words(kFaceWords, 1, nullptr)),
              1),
    Button(IDS_RESET_TO_DEFAULT, IDS_RESET_TO_DEFAULT, LegacyButton::ResetToDefault, kResetButtonStyle),

    Ruled(Unlisted(kItemCustomMediaMin, LegacyItemKind::List, LEGACY_FIELD(EmbsrCustomMediaMin),
                   W16("CUSTOMMEDIAMIN")),
          LegacyValueRule::LowByte, 0),
    Ruled(Unlisted(kItemCustomMediaMax, LegacyItemKind::List, LEGACY_FIELD(EmbsrCustomMediaMax),
                   W16("CUSTOMMEDIAMAX")),
          LegacyValueRule::LowByte, 0),
    Ruled(Unlisted(kItemPaperSource, LegacyItemKind::List, LEGACY_FIELD(PaperSourceCode), W16("PAPERSOURCE"),
                   Map(kPaperSources, 0, 0)),
          LegacyValueRule::Forced, 0, 0, 7),
    Ruled(Unlisted(kItemDryTime, LegacyItemKind::Seconds, LEGACY_FIELD(DryTime), W16("DRYTIME")),
          LegacyValueRule::FallbackOutside, 1, 16, 8),
    Unlisted(kItemAutoLoad, LegacyItemKind::List, LEGACY_FIELD(AutoLoadPaper), W16("AUTOLOAD"), Map(kOnOff, 0, 0)),
    Unlisted(kItemAcceptedA, LegacyItemKind::Accepted, kNoLegacyField, nullptr),
    Unlisted(kItemAcceptedB, LegacyItemKind::Accepted, kNoLegacyField, nullptr),
};

constexpr size_t CountTreeItems() {
    size_t count = 0;
    for (const LegacySetting& row : kSettings) count += row.inTree ? 1 : 0;
    return count;
}
static_assert(CountTreeItems() == 22, "the branch has its head and 21 settings");

int32_t SelectionOfCode(const LegacyEntryMap& map, uint32_t code) {
    if (map.count == 0) return static_cast<int32_t>(code);
    const uint32_t forced = map.ignoreBit8 ? 0x100u : 0u;
    for (uint8_t i = 0; i < map.count; ++i) {
        if ((map.pairs[i].code | forced) == (code | forced)) return map.pairs[i].selection;
    }
    return map.otherSelection;
}

const char* WordOfCode(const LegacyWordList& list, uint32_t code) {
    for (uint8_t i = 0; i < list.count; ++i) {
        if (list.words[i].code == code) return list.words[i].word;
    }
    return list.otherWord != nullptr ? list.otherWord : "";
}

template <typename T>
T& At(UIConfig& config, size_t offset) {
    return *reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(&config) + offset);
}
template <typename T>
const T& At(const UIConfig& config, size_t offset) {
    return *reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&config) + offset);
}

}  // namespace

LegacySettingRows LegacySettings() { return {kSettings, kSettings + sizeof(kSettings) / sizeof(kSettings[0])}; }

size_t LegacyTreeItemCount() { return CountTreeItems(); }

const LegacySetting* FindLegacySetting(uint32_t id) {
    for (const LegacySetting& row : kSettings) {
        if (row.id == id) return &row;
    }
    return nullptr;
}

uint32_t& LegacyFieldRef(const LegacySetting& setting, UIConfig& config) {
    // Every setting is one 32-bit field, signed or not; both are read through uint32_t.
    return At<uint32_t>(config, setting.field);
}

uint32_t LegacyFieldOf(const LegacySetting& setting, const UIConfig& config) {
    return setting.field == kNoLegacyField ? 0 : At<uint32_t>(config, setting.field);
}

const WideChar* LegacyTextOf(const LegacySetting& setting, const UIConfig& config) {
    if (setting.text == kNoLegacyField) return W16("");
    return &At<WideChar>(config, setting.text);
}

int32_t LegacySelectionOf(const LegacySetting& setting, const UIConfig& config, LegacyMoment moment) {
    if (setting.rule == LegacyValueRule::BrailleTableName && moment == LegacyMoment::Refresh) {
        return static_cast<int32_t>(BrailleTableStringToInt(LegacyTextOf(setting, config)));
    }
    const LegacyEntryMap* map = moment == LegacyMoment::Build ? setting.builtFrom : setting.refreshedFrom;
    return SelectionOfCode(map != nullptr ? *map : setting.shown, LegacyFieldOf(setting, config));
}

uint32_t LegacyCodeOfSelection(const LegacySetting& setting, int32_t selection) {
    const LegacyEntryMap& map = setting.shown;
    if (map.count == 0) return static_cast<uint32_t>(selection);
    for (uint8_t i = 0; i < map.count; ++i) {
        if (map.pairs[i].selection == selection) return map.pairs[i].code;
    }
    return map.otherCode;
}

uint32_t LegacyCodeOfReply(const LegacySetting& setting, const char* block) {
    const std::string prefix = ozdk::NarrowAscii(setting.key) + "=";
    for (uint8_t i = 0; i < setting.words.count; ++i) {
        if (std::strstr(block, (prefix + setting.words.words[i].word).c_str()) != nullptr) {
            return setting.words.words[i].code;
        }
    }
    return setting.words.otherCode;
}

PjlDefault LegacyCommandOf(const LegacySetting& setting, uint32_t code) {
    switch (setting.form) {
        case PjlValueForm::Number:
            // Lengths go in 1/720 inch, wrapping modulo 2^32 as the "%u" form shows them.
            return PjlNumber(setting.key,
                             setting.rule == LegacyValueRule::DeviceLength ? code * kDeviceUnitsPerTwentieth : code);
        case PjlValueForm::Switch:
            return PjlSwitch(setting.key, code != 0);
        case PjlValueForm::Word:
            break;
    }
    return PjlWord(setting.key, setting.rule == LegacyValueRule::BrailleTableName ? BrailleTableIntToAnsiString(code)
                                                                                   : WordOfCode(setting.words, code));
}
