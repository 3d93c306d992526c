#include "device/protocol/ascii_text.h"

namespace ozdk {

bool EqualPrefixIgnoringAsciiCase(const WideChar* a, const WideChar* b, size_t count) {
    static const WideChar kEmpty[1] = {0};
    if (a == nullptr) a = kEmpty;
    if (b == nullptr) b = kEmpty;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t ca = ToAsciiUpper(static_cast<uint32_t>(a[i]));
        const uint32_t cb = ToAsciiUpper(static_cast<uint32_t>(b[i]));
        if (ca != cb) return false;
        if (ca == 0) return true;
    }
    return true;
}

bool StartsWithIgnoringAsciiCase(const char* text, const char* prefix) {
    for (; *prefix != '\0'; ++text, ++prefix) {
        const uint32_t ct = ToAsciiUpper(static_cast<unsigned char>(*text));
        if (ct != ToAsciiUpper(static_cast<unsigned char>(*prefix))) return false;
    }
    return true;
}

std::string NarrowAscii(const WideChar* text, size_t maxChars) {
    std::string narrow;
    if (text == nullptr) return narrow;
    for (size_t i = 0; i < maxChars && text[i] != 0; ++i) {
        const uint32_t c = static_cast<uint32_t>(text[i]);
        narrow += c < 0x80 ? static_cast<char>(c) : '?';
    }
    return narrow;
}

void CopyWideText(WideChar* target, size_t capacity, const WideChar* source) {
    if (capacity == 0) return;
    size_t n = 0;
    if (source != nullptr) {
        for (; n + 1 < capacity && source[n] != 0; ++n) target[n] = source[n];
    }
    target[n] = 0;
}

}  // namespace ozdk
