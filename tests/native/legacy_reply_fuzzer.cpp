// libFuzzer target: arbitrary bytes as the embosser's legacy settings reply.
//
// The reply is cut at the receive buffer's 4095 bytes and terminated in a heap block of
// exactly its size, then parsed into a record filled with a pattern. Checks what must
// hold for any reply besides what the sanitizers watch: the result is 0 or 23, a reply
// without the prefix changes nothing, and otherwise the texts are terminated within their
// buffers and free of the dropped characters and every code is one the parser can give.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "device/protocol/braille_tables.h"
#include "device/protocol/legacy_reply_parser.h"
#include "tests/native/trace_recorder.h"

namespace {

void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "legacy_reply_fuzzer: invariant broken: %s\n", what);
    std::abort();
}

void RequireCleanText(const WideChar (&text)[kTextCapacity]) {
    const WideChar* end = std::find(text, text + kTextCapacity, 0);
    Require(end != text + kTextCapacity, "texts are terminated within their buffers");
    const auto dropped = [](WideChar c) { return c == '"' || c == '\r' || c == '=' || c == '\n' || c > 0xFF; };
    Require(std::none_of(text, end, dropped), "texts drop '\"', CR and '=', end at LF and widen single bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    size = std::min(size, kLegacyReplyCapacity - 1);
    const std::unique_ptr<char[]> reply(new char[size + 1]);
    std::memcpy(reply.get(), data, size);
    reply[size] = '\0';

    trace_recorder::Text().clear();
    auto config = std::make_unique<UIConfig>();
    std::memset(config.get(), 0xA5, sizeof(UIConfig));
    const auto before = std::make_unique<UIConfig>(*config);
    const int result = ParseInfoLegacySettings(*config, reply.get());
    Require(result == 0 || result == kLegacyParmTotal, "result is 0 or 23");
    Require(config->LegacyParmCount == before->LegacyParmCount, "the parser leaves LegacyParmCount to its caller");
    if (std::strstr(reply.get(), "@PJL INFO LEGACY [23") == nullptr) {
        Require(result == 0 && std::memcmp(config.get(), before.get(), sizeof(UIConfig)) == 0,
                "no prefix changes nothing");
        return 0;
    }
    const UIConfig& c = *config;
    RequireCleanText(c.EmbsrBrailleTable);
    RequireCleanText(c.SerialNumber);
    RequireCleanText(c.ModelNumber);
    Require(c.BrailleTableIndex <= kBrailleTableCount, "braille table code");
    Require(c.EmbsrBrailleStandard <= 5, "spacing code");
    const uint32_t kMediaCodes[] = {2, 3, 11, 12, 13, 17, 30};
    Require(std::count(kMediaCodes, kMediaCodes + 7, c.EmbsrMediaType) == 1, "media code");
    Require(c.EmbsrBrailleForce <= 2 && c.EmbsrQuality <= 2 && c.EmbsrDuplex <= 2, "word codes");
    Require(c.EmbsrOutputFace == 1 || c.EmbsrOutputFace == 2, "output face");
    Require(c.EmbsrAutoCr <= 1 && c.EmbsrGraphicsMode <= 1, "switches");
    return 0;
}
