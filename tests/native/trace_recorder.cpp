#include "tests/native/trace_recorder.h"

#include <cstdarg>
#include <cstddef>
#include <vector>

#include "base/trace_log.h"

namespace trace_recorder {
namespace {

// At most this many lines are kept (the oldest go first) so that long runs stay bounded.
constexpr size_t kMaxLines = 4096;

std::vector<std::string>& Store() {
    static std::vector<std::string> lines;
    return lines;
}

void AppendNarrowed(std::string& out, const char16_t* text) {
    for (; text != nullptr && *text != 0; ++text) out += *text < 0x80 ? static_cast<char>(*text) : '?';
}

// The conversions the protocol core uses: %s (wide text), %S (8-bit text) and %d. Any
// other is copied as written, so a test that reads its line fails visibly.
std::string Render(const char16_t* format, va_list args) {
    std::string out;
    for (const char16_t* p = format; *p != 0; ++p) {
        if (p[0] != '%' || (p[1] != 's' && p[1] != 'S' && p[1] != 'd')) {
            out += *p < 0x80 ? static_cast<char>(*p) : '?';
            continue;
        }
        ++p;
        if (*p == 'd') {
            out += std::to_string(va_arg(args, int));
        } else if (*p == 's') {
            AppendNarrowed(out, va_arg(args, const char16_t*));
        } else if (const char* text = va_arg(args, const char*)) {
            out += text;
        }
    }
    return out;
}

}  // namespace

void Clear() { Store().clear(); }

bool Contains(const std::string& text) {
    for (const std::string& line : Store()) {
        if (line == text) return true;
    }
    return false;
}

}  // namespace trace_recorder

void Trace(const WideChar* format, ...) {
    if (format == nullptr) return;
    va_list args;
    va_start(args, format);
    std::vector<std::string>& lines = trace_recorder::Store();
    if (lines.size() >= trace_recorder::kMaxLines) lines.erase(lines.begin());
    lines.push_back(trace_recorder::Render(format, args));
    va_end(args);
}
