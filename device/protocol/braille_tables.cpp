#include "device/protocol/braille_tables.h"

#include "device/protocol/ascii_text.h"
#include "base/trace_log.h"

namespace {

struct BrailleTableName {
    const WideChar* wide;
    const char* ansi;
};

// In code order: entry i has code i + 1.
constexpr BrailleTableName kTables[kBrailleTableCount] = {
    {W16("EN_US"), "EN_US"}, {W16("DE_DE"), "DE_DE"}, {W16("FR_FR"), "FR_FR"}, {W16("ES_ES"), "ES_ES"},
    {W16("IT_IT"), "IT_IT"}, {W16("AR_AE"), "AR_AE"}, {W16("CS_CZ"), "CS_CZ"}, {W16("DA_DK"), "DA_DK"},
    {W16("EL_GR"), "EL_GR"}, {W16("SV_SE"), "SV_SE"}, {W16("LV_LV"), "LV_LV"}, {W16("IS_IS"), "IS_IS"},
    {W16("NB_NO"), "NB_NO"}, {W16("RU_RU"), "RU_RU"}, {W16("EN_GB"), "EN_GB"}, {W16("NL_NL"), "NL_NL"},
    {W16("PL_PL"), "PL_PL"}, {W16("PT_PT"), "PT_PT"}, {W16("JA_JP"), "JA_JP"},
};
constexpr BrailleTableName kCustomTable = {W16("CUSTM"), "CUSTM"};
constexpr size_t kComparedChars = 5;

const BrailleTableName& TableOf(uint32_t code) {
    return (code >= 1 && code <= kBrailleTableCount) ? kTables[code - 1] : kCustomTable;
}

}  // namespace

uint32_t BrailleTableStringToInt(const WideChar* name) {
    uint32_t code = 0;
    if (name != nullptr) {
        for (uint32_t i = 0; i < kBrailleTableCount; ++i) {
            if (ozdk::EqualPrefixIgnoringAsciiCase(name, kTables[i].wide, kComparedChars)) {
                code = i + 1;
                break;
            }
        }
    }
    Trace(W16("BrailleTableStringToInt(): '%s'=%d\n"), name != nullptr ? name : W16(""), static_cast<int>(code));
    return code;
}

const WideChar* BrailleTableIntToString(uint32_t code) { return TableOf(code).wide; }

const char* BrailleTableIntToAnsiString(uint32_t code) { return TableOf(code).ansi; }
