// libFuzzer target: arbitrary bytes as the embosser's legacy settings reply.
//
// The reply is cut at the receive buffer's 4095 bytes and terminated, then parsed into a
// zeroed record and into one filled with a pattern. Checks what must hold for any reply:
// the result is 0 or 23, the texts are terminated within their buffers and free of the
// dropped characters, every word code is one the parser can give, a reply without the
// prefix changes nothing, and parsing is repeatable.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <vector>

#include "device/protocol/braille_tables.h"
#include "device/protocol/legacy_reply_parser.h"
#include "tests/native/trace_recorder.h"

namespace {

void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "legacy_reply_fuzzer: invariant broken: %s\n", what);
    std::abort();
}

void RequireCleanText(const WideChar (&text)[kTextCapacity], const char* what) {
    size_t length = 0;
    while (length < kTextCapacity && text[length] != 0) ++length;
    Require(length < kTextCapacity, what);
    for (size_t i = 0; i < length; ++i) {
        Require(text[i] != '"' && text[i] != '\r' && text[i] != '=' && text[i] != '\n' && text[i] <= 0xFF, what);
    }
}

bool SameText(const WideChar (&a)[kTextCapacity], const WideChar (&b)[kTextCapacity]) {
    for (size_t i = 0; i < kTextCapacity; ++i) {
        if (a[i] != b[i]) return false;
        if (a[i] == 0) return true;
    }
    return false;
}

bool OneOf(uint32_t value, std::initializer_list<uint32_t> codes) {
    for (uint32_t code : codes) {
        if (value == code) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMaxReply = kLegacyReplyCapacity - 1;
    if (size > kMaxReply) size = kMaxReply;
    std::vector<char> reply(data, data + size);
    reply.push_back('\0');
    const bool hasPrefix = std::strstr(reply.data(), "@PJL INFO LEGACY [23") != nullptr;

    trace_recorder::Clear();
    auto zeroed = std::make_unique<UIConfig>();
    std::memset(zeroed.get(), 0, sizeof(UIConfig));
    const int result = ParseInfoLegacySettings(*zeroed, reply.data());
    Require(result == 0 || result == kLegacyParmTotal, "result is 0 or 23");
    Require(hasPrefix || result == 0, "no prefix gives 0");
    Require(zeroed->LegacyParmCount == 0, "the parser leaves LegacyParmCount to its caller");

    RequireCleanText(zeroed->EmbsrBrailleTable, "braille table text");
    RequireCleanText(zeroed->SerialNumber, "serial number text");
    RequireCleanText(zeroed->ModelNumber, "model text");
    Require(zeroed->BrailleTableIndex <= kBrailleTableCount, "braille table code");
    if (hasPrefix) {
        Require(zeroed->EmbsrBrailleStandard <= 5, "spacing code");
        Require(OneOf(zeroed->EmbsrMediaType, {2, 3, 11, 12, 13, 17, 30}), "media code");
        Require(zeroed->EmbsrBrailleForce <= 2 && zeroed->EmbsrQuality <= 2 && zeroed->EmbsrDuplex <= 2, "word codes");
        Require(zeroed->EmbsrOutputFace == 1 || zeroed->EmbsrOutputFace == 2, "output face");
        Require(zeroed->EmbsrAutoCr <= 1 && zeroed->EmbsrGraphicsMode <= 1, "switches");
    }

    // A record full of a pattern: untouched without the prefix, else equal to the first.
    auto patterned = std::make_unique<UIConfig>();
    std::memset(patterned.get(), 0xA5, sizeof(UIConfig));
    auto before = std::make_unique<UIConfig>(*patterned);
    const int again = ParseInfoLegacySettings(*patterned, reply.data());
    Require(again == result, "parsing is repeatable");
    if (!hasPrefix) {
        Require(std::memcmp(patterned.get(), before.get(), sizeof(UIConfig)) == 0, "no prefix leaves the record");
    } else {
        Require(SameText(patterned->EmbsrBrailleTable, zeroed->EmbsrBrailleTable) &&
                    SameText(patterned->SerialNumber, zeroed->SerialNumber) &&
                    SameText(patterned->ModelNumber, zeroed->ModelNumber),
                "texts do not depend on what the record held");
        Require(patterned->EmbsrTopMargin == zeroed->EmbsrTopMargin &&
                    patterned->EmbsrPaperWidth == zeroed->EmbsrPaperWidth &&
                    patterned->FirmwareVersion == zeroed->FirmwareVersion &&
                    patterned->EmbsrMediaType == zeroed->EmbsrMediaType,
                "fields do not depend on what the record held");
    }
    return 0;
}
