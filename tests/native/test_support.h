// Shared helpers of the native protocol tests.
#pragma once

#include <cstring>
#include <memory>
#include <string>

#include "config/ui_config.h"

// A record as CreateConfig hands it out: zero-filled, with every byte set to `fill`.
inline std::unique_ptr<UIConfig> NewConfig(unsigned char fill = 0) {
    auto config = std::make_unique<UIConfig>();
    std::memset(config.get(), fill, sizeof(UIConfig));
    return config;
}

// 16-bit text as 8-bit for messages and comparisons; non-ASCII becomes '?'.
inline std::string Narrow(const WideChar* text) {
    std::string out;
    for (; text != nullptr && *text != 0; ++text) out += *text < 0x80 ? static_cast<char>(*text) : '?';
    return out;
}
