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
constexpr LegacyList ListOf(const uint16_t (&entries)[N], LegacyEntryMap shown, LegacyWordList words = {},
                            const LegacyEntryMap* builtFrom = nullptr, const LegacyEntryMap* refreshedFrom = nullptr) {
    return {entries, static_cast<uint8_t>(N), shown, builtFrom, refreshedFrom, words};
}
constexpr LegacyList kNoEntries(LegacyEntryMap shown) { return {nullptr, 0, shown}; }

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
    IDS_TABLE_CUSTOM,     IDS_TABLE_ENGLISH_US, IDS_TABLE_GERMAN,    IDS_TABLE_FRENCH,     IDS_TABLE_SPANISH,
    IDS_TABLE_ITALIAN,    IDS_TABLE_ARABIC,     IDS_TABLE_CZECH,     IDS_TABLE_DANISH,     IDS_TABLE_GREEK,
    IDS_TABLE_SWEDISH,    IDS_TABLE_LATVIAN,    IDS_TABLE_ICELANDIC, IDS_TABLE_NORWEGIAN,  IDS_TABLE_RUSSIAN,
    IDS_TABLE_ENGLISH_UK, IDS_TABLE_DUTCH,      IDS_TABLE_POLISH,    IDS_TABLE_PORTUGUESE, IDS_TABLE_JAPANESE};
constexpr uint16_t kDotHeightEntries[] = {IDS_HIGH, IDS_NORMAL, IDS_LOW};  // from high to low
constexpr uint16_t kQualityEntries[] = {IDS_DRAFT, IDS_STANDARD, IDS_BEST};
constexpr uint16_t kDuplexEntries[] = {IDS_SINGLE_SIDED, IDS_DOUBLE_SIDED};
constexpr uint16_t kFaceEntries[] = {IDS_FACE_UP, IDS_FACE_DOWN};

constexpr LegacyEntry kOffOn[] = {{0, 0}, {1, 1}};
constexpr LegacyEntry kOnOff[] = {{1, 0}, {0, 1}};  // the first entry means on
constexpr LegacyEntry kDots[] = {{6, 0}, {8, 1}};
constexpr LegacyEntry kStandards[] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}};
constexpr LegacyEntry kStandardsRefreshed[] = {{1, 1}, {2, 2}, {3, 2}, {4, 4}, {5, 5}};
constexpr LegacyEntry kMedia[] = {{13, 1}, {2, 2},   {3, 3},   {11, 4},  {17, 5},  {30, 6},  {31, 7},  {32, 8},
                                  {33, 9}, {34, 10}, {35, 11}, {36, 12}, {37, 13}, {38, 14}, {39, 15}};
constexpr LegacyEntry kQualities[] = {{0, 0}, {2, 2}};
constexpr LegacyEntry kDuplexModes[] = {{1, 1}, {2, 2}};
constexpr LegacyEntry kDuplexBuilt[] = {{0, 0}};
constexpr LegacyEntry kFaces[] = {{1, 0}, {2, 1}};
constexpr LegacyEntry kPaperSources[] = {{8, 1}, {9, 2}, {10, 3}, {11, 4}, {4, 5}};

// "CUSTOM" comes before the numbered custom media and is a prefix of each of them, so a
// reply's numbered custom medium reads as 30. The embosser's readers expect exactly this;
// keep the order.
constexpr LegacyWord kMediaWords[] = {
    {13, "LIGHTBRAILLE"}, {2, "PLAIN"},     {3, "PREMIUM"},   {11, "CARDSTOCK"}, {17, "CHINESE"},
    {30, "CUSTOM"},       {31, "CUSTOM8"},  {32, "CUSTOM9"},  {33, "CUSTOM10"},  {34, "CUSTOM11"},
    {35, "CUSTOM12"},     {36, "CUSTOM13"}, {37, "CUSTOM14"}, {38, "CUSTOM15"},  {39, "CUSTOM16"}};
constexpr LegacyWord kSpacingWords[] = {
    {1, "USLIBCONGRESS"}, {2, "USNATLIB"}, {3, "MICROBRAILLE"}, {4, "KOREANBRAILLE"}, {5, "JUMBOBRAILLE"}};
constexpr LegacyWord kForceWords[] = {{0, "HEAVY"}, {2, "LIGHT"}};
constexpr LegacyWord kQualityWords[] = {{0, "DRAFT"}, {2, "BEST"}};
constexpr LegacyWord kDuplexWords[] = {{1, "LONGEDGE"}, {2, "SHORTEDGE"}};
constexpr LegacyWord kFaceWords[] = {{2, "2"}};  // read as a word, sent as a number

// The lists' mappings are not all inverse of each other, and each difference is kept on
// purpose:
//  - the braille standard's code 3 (Microbraille) is built as its own entry, but a read
//    shows it as entry 2 (American National Library of the Blind), which an apply then
//    sends as USNATLIB;
//  - duplex is built as single or double sided (any non-zero code is entry 1), while a
//    read shows SHORTEDGE as entry 2, which the list does not have, and an apply sends
//    what the entry says only when the entry changes;
//  - the braille table is built from the table's code kept with the settings, while a
//    read shows the code of the name the embosser gave;
//  - the extra line spacing is typed in hundredths of an inch and kept in twentieths, so
//    a read shows it truncated to the twentieth below (0.33 comes back as 0.30).
constexpr LegacyEntryMap kStandardsRefreshedMap = Map(kStandardsRefreshed, 0, 0);
constexpr LegacyEntryMap kDuplexBuiltMap = Map(kDuplexBuilt, 1, 0);
constexpr LegacyList kTextGraphicsList = ListOf(kTextGraphicsEntries, Map(kOffOn, 0, 0));
constexpr LegacyList kDotsList = ListOf(kDotsEntries, Map(kDots, 0, 8));
constexpr LegacyList kStandardList =
    ListOf(kStandardEntries, Map(kStandards, 0, 0), Words(kSpacingWords, 0, "MARBURG"), nullptr, &kStandardsRefreshedMap);
constexpr LegacyList kAutoCrList = ListOf(kOnOffEntries, Map(kOnOff, 0, 0));
constexpr LegacyList kMediaList = ListOf(kMediaEntries, Map(kMedia, 0, 12, true), Words(kMediaWords, 12, "BRAILLE"));
constexpr LegacyList kTableList = ListOf(kTableEntries, kEntryIsCode);
constexpr LegacyList kDotHeightList = ListOf(kDotHeightEntries, kEntryIsCode, Words(kForceWords, 1, "NORMAL"));
constexpr LegacyList kQualityList = ListOf(kQualityEntries, Map(kQualities, 1, 1), Words(kQualityWords, 1, "STANDARD"));
constexpr LegacyList kDuplexList =
    ListOf(kDuplexEntries, Map(kDuplexModes, 0, 0), Words(kDuplexWords, 0, "SIMPLEX"), &kDuplexBuiltMap);
constexpr LegacyList kFaceList = ListOf(kFaceEntries, Map(kFaces, 0, 2), Words(kFaceWords, 1, nullptr));
constexpr LegacyList kPaperSourceList = kNoEntries(Map(kPaperSources, 0, 0));
constexpr LegacyList kAutoLoadList = kNoEntries(Map(kOnOff, 0, 0));

using Kind = LegacyItemKind;
using Form = PjlValueForm;
using Reply = LegacyReplyForm;
using Rule = LegacyValueRule;

// The rows in the branch's order, then the items it does not build. Lengths are in
// 1/20 inch; up-down items have their range in `lowest` and `highest`.
constexpr LegacySetting kSettings[] = {
    // id, caption, kind, field, key, form, reply, list, reset selection, reset text,
    // text, rule, lowest, highest, fallback, change trace
    {kLegacyHeadId, IDS_LEGACY_SETTINGS, Kind::Head},
    {IDS_FORM_SIZE, IDS_FORM_SIZE, Kind::FormSize, kNoLegacyField, nullptr, Form::Number, Reply::None, nullptr, 0},
    {IDS_FORM_WIDTH, IDS_FORM_WIDTH, Kind::Inches, LEGACY_FIELD(EmbsrPaperWidth), W16("PAPERWIDTH"), Form::Number,
     Reply::Number, nullptr, 0, W16("8.50"), LEGACY_FIELD(PaperWidthText), Rule::DeviceLength, 0, 0, 0,
     W16("ApplyLegacyChanges(): paper width=%d\n")},
    {IDS_FORM_LENGTH, IDS_FORM_LENGTH, Kind::Inches, LEGACY_FIELD(EmbsrPaperLength), W16("PAPERLENGTH"), Form::Number,
     Reply::Number, nullptr, 0, W16("11.00"), LEGACY_FIELD(PaperLengthText), Rule::DeviceLength},
    {IDS_TOP_MARGIN, IDS_TOP_MARGIN, Kind::Inches, LEGACY_FIELD(EmbsrTopMargin), W16("TOPMARGIN"), Form::Number,
     Reply::Number, nullptr, 0, W16("0.50"), LEGACY_FIELD(TopMarginText)},
    {IDS_LEFT_MARGIN, IDS_LEFT_MARGIN, Kind::Inches, LEGACY_FIELD(EmbsrLeftMargin), W16("LEFTMARGIN"), Form::Number,
     Reply::Number, nullptr, 0, W16("0.25"), LEGACY_FIELD(LeftMarginText), Rule::AtLeastLowest, 5},
    {IDS_RIGHT_MARGIN, IDS_RIGHT_MARGIN, Kind::Inches, LEGACY_FIELD(EmbsrRightMargin), W16("RIGHTMARGIN"),
     Form::Number, Reply::Number, nullptr, 0, W16("0.25"), LEGACY_FIELD(RightMarginText),
     Rule::AtLeastLowestOnWideForms, 5, 220},
    {IDS_CHARS_PER_LINE, IDS_CHARS_PER_LINE, Kind::UpDown, LEGACY_FIELD(EmbsrCharsWidth), W16("CHARSWIDTH"),
     Form::Number, Reply::Number, nullptr, 32, nullptr, kNoLegacyField, Rule::AsIs, 20, 48},
    {IDS_LINES_PER_PAGE, IDS_LINES_PER_PAGE, Kind::UpDown, LEGACY_FIELD(EmbsrLinesLength), W16("LINESLENGTH"),
     Form::Number, Reply::Number, nullptr, 25, nullptr, kNoLegacyField, Rule::AsIs, 20, 48},  // the same range
    {IDS_TEXT_GRAPHICS_MODE, IDS_TEXT_GRAPHICS_MODE, Kind::List, LEGACY_FIELD(EmbsrGraphicsMode), W16("GRAPHICS"),
     Form::Switch, Reply::Switch, &kTextGraphicsList, 0},
    {IDS_DOTS_PER_CHARACTER, IDS_DOTS_PER_CHARACTER, Kind::List, LEGACY_FIELD(EmbsrBrailleDots), W16("BRAILLEDOTS"),
     Form::Number, Reply::Number, &kDotsList, 0},
    {IDS_BRAILLE_STANDARD, IDS_BRAILLE_STANDARD, Kind::List, LEGACY_FIELD(EmbsrBrailleStandard), W16("SPACING"),
     Form::Word, Reply::Word, &kStandardList, 0},
    {IDS_AUTOMATIC_TEXT_WRAPPING, IDS_AUTOMATIC_TEXT_WRAPPING, Kind::List, LEGACY_FIELD(EmbsrAutoCr), W16("AUTOCR"),
     Form::Switch, Reply::Switch, &kAutoCrList, 1},
    {IDS_EXTRA_LINE_SPACING, IDS_EXTRA_LINE_SPACING, Kind::Inches, LEGACY_FIELD(EmbsrLineSpacing),
     W16("EXTRALINESPACE"), Form::Number, Reply::Number, nullptr, 0, W16("0.00"), LEGACY_FIELD(LineSpacingText),
     Rule::LineSpacing, 0, 1250},
    {IDS_MEDIA_TYPE, IDS_MEDIA_TYPE, Kind::List, LEGACY_FIELD(EmbsrMediaType), W16("MEDIATYPE"), Form::Word,
     Reply::Word, &kMediaList, 0, nullptr, kNoLegacyField, Rule::AsIs, 0, 0, 0,
     W16("ApplyLegacyChanges(): media type=%d\n")},
    {IDS_TABLE, IDS_BRAILLE_TABLES, Kind::BrailleTablesButton},
    {IDS_BRAILLE_TABLE, IDS_BRAILLE_TABLE, Kind::List, LEGACY_FIELD(BrailleTableIndex), W16("BRAILLETABLE"),
     Form::Word, Reply::Text, &kTableList, 1, nullptr, LEGACY_FIELD(EmbsrBrailleTable), Rule::BrailleTableName},
    {IDS_BRAILLE_DOT_HEIGHT, IDS_BRAILLE_DOT_HEIGHT, Kind::List, LEGACY_FIELD(EmbsrBrailleForce),
     W16("BRAILLEFORCE"), Form::Word, Reply::Word, &kDotHeightList, 1},
    {IDS_BRAILLE_QUALITY, IDS_BRAILLE_QUALITY, Kind::List, LEGACY_FIELD(EmbsrQuality), W16("QUALITY"), Form::Word,
     Reply::Word, &kQualityList, 1},
    {IDS_DUPLEX, IDS_DUPLEX, Kind::List, LEGACY_FIELD(EmbsrDuplex), W16("DUPLEXMODE"), Form::Word, Reply::Word,
     &kDuplexList, 0},
    {IDS_OUTPUT_FACE, IDS_OUTPUT_FACE, Kind::List, LEGACY_FIELD(EmbsrOutputFace), W16("OUTPUTFACE"), Form::Number,
     Reply::Word, &kFaceList, 1},
    {IDS_RESET_TO_DEFAULT, IDS_RESET_TO_DEFAULT, Kind::ResetButton},

    {kItemCustomMediaMin, 0, Kind::List, LEGACY_FIELD(EmbsrCustomMediaMin), W16("CUSTOMMEDIAMIN"), Form::Number,
     Reply::None, nullptr, -1, nullptr, kNoLegacyField, Rule::LowByte},
    {kItemCustomMediaMax, 0, Kind::List, LEGACY_FIELD(EmbsrCustomMediaMax), W16("CUSTOMMEDIAMAX"), Form::Number,
     Reply::None, nullptr, -1, nullptr, kNoLegacyField, Rule::LowByte},
    {kItemPaperSource, 0, Kind::List, LEGACY_FIELD(PaperSourceCode), W16("PAPERSOURCE"), Form::Number, Reply::None,
     &kPaperSourceList, -1, nullptr, kNoLegacyField, Rule::Forced, 0, 0, 7},
    {kItemDryTime, 0, Kind::Seconds, LEGACY_FIELD(DryTime), W16("DRYTIME"), Form::Number, Reply::None, nullptr, -1,
     nullptr, kNoLegacyField, Rule::FallbackOutside, 1, 16, 8},
    {kItemAutoLoad, 0, Kind::List, LEGACY_FIELD(AutoLoadPaper), W16("AUTOLOAD"), Form::Number, Reply::None,
     &kAutoLoadList},
    {kItemAcceptedA, 0, Kind::Accepted},
    {kItemAcceptedB, 0, Kind::Accepted},
};

constexpr size_t CountTreeItems() {
    size_t count = 0;
    for (const LegacySetting& row : kSettings) count += row.caption != 0 ? 1 : 0;
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
    if (setting.list == nullptr) return static_cast<int32_t>(LegacyFieldOf(setting, config));
    const LegacyList& list = *setting.list;
    const LegacyEntryMap* map = moment == LegacyMoment::Build ? list.builtFrom : list.refreshedFrom;
    return SelectionOfCode(map != nullptr ? *map : list.shown, LegacyFieldOf(setting, config));
}

uint32_t LegacyCodeOfSelection(const LegacySetting& setting, int32_t selection) {
    if (setting.list == nullptr || setting.list->shown.count == 0) return static_cast<uint32_t>(selection);
    const LegacyEntryMap& map = setting.list->shown;
    for (uint8_t i = 0; i < map.count; ++i) {
        if (map.pairs[i].selection == selection) return map.pairs[i].code;
    }
    return map.otherCode;
}

uint32_t LegacyCodeOfReply(const LegacySetting& setting, const char* block) {
    const LegacyWordList& words = setting.list != nullptr ? setting.list->words : LegacyWordList{};
    const std::string prefix = ozdk::NarrowAscii(setting.key) + "=";
    for (uint8_t i = 0; i < words.count; ++i) {
        if (std::strstr(block, (prefix + words.words[i].word).c_str()) != nullptr) return words.words[i].code;
    }
    return words.otherCode;
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
                                                                                   : WordOfCode(setting.list->words, code));
}
