// The braille table codes shared by the reply parser, the device-settings tree and the
// setting rules. Codes 1..19 name the tables the embosser knows; every other code is a
// custom table, named "CUSTM".
#pragma once

#include <cstdint>

#include "config/ui_config.h"

inline constexpr uint32_t kBrailleTableCount = 19;

// Code of the first table whose name matches the first 5 characters of `name`, ignoring
// case ("en_us-extra" gives 1); 0 when none does or `name` is null.
// Traces "BrailleTableStringToInt(): '%s'=%d\n".
uint32_t BrailleTableStringToInt(const WideChar* name);

// Name of `code` ("EN_US" ... "JA_JP"), or "CUSTM" for a code without one. Static text.
const WideChar* BrailleTableIntToString(uint32_t code);

// The same name as 8-bit text, as it goes to the embosser.
const char* BrailleTableIntToAnsiString(uint32_t code);
