#include "tests/native/trace_recorder.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "frame/trace_log.h"

namespace trace_recorder {
namespace {

std::vector<Line>& Store() {
    static std::vector<Line> lines;
    return lines;
}

std::string Narrow(const char16_t* text, long maxChars) {
    std::string out;
    for (long i = 0; text[i] != 0 && (maxChars < 0 || i < maxChars); ++i) {
        out += text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    return out;
}

std::string Pad(std::string text, long width, bool left) {
    if (width > 0 && static_cast<size_t>(width) > text.size()) {
        const std::string fill(static_cast<size_t>(width) - text.size(), ' ');
        text = left ? text + fill : fill + text;
    }
    return text;
}

std::string RenderList(const char16_t* format, va_list args) {
    std::string out;
    for (const char16_t* p = format; *p != 0; ++p) {
        if (*p != '%') {
            out += *p < 0x80 ? static_cast<char>(*p) : '?';
            continue;
        }
        const char16_t* start = p++;
        if (*p == '%') {
            out += '%';
            continue;
        }
        std::string spec = "%";
        bool left = false;
        while (*p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0') {
            left = left || *p == '-';
            spec += static_cast<char>(*p++);
        }
        long width = 0;
        if (*p == '*') {
            width = va_arg(args, int);
            spec += std::to_string(width);
            ++p;
        }
        for (; *p >= '0' && *p <= '9'; ++p) {
            width = width * 10 + (*p - '0');
            spec += static_cast<char>(*p);
        }
        long precision = -1;
        if (*p == '.') {
            spec += '.';
            precision = 0;
            ++p;
            if (*p == '*') {
                precision = va_arg(args, int);
                spec += std::to_string(precision);
                ++p;
            }
            for (; *p >= '0' && *p <= '9'; ++p) {
                precision = precision * 10 + (*p - '0');
                spec += static_cast<char>(*p);
            }
        }
        // Windows sizes: h short or 8-bit text, l and w 32-bit or wide text, ll and I64 64-bit.
        int size = 0;  // -1 narrow/short, 0 default, 1 wide/long, 2 64-bit
        if (*p == 'h') { size = -1; ++p; }
        else if (*p == 'w') { size = 1; ++p; }
        else if (*p == 'l') { size = 1; ++p; if (*p == 'l') { size = 2; ++p; } }
        else if (p[0] == 'I' && p[1] == '6' && p[2] == '4') { size = 2; p += 3; }
        char buffer[512];
        switch (*p) {
            case 'd': case 'i':
                if (size == 2) std::snprintf(buffer, sizeof buffer, (spec + "lld").c_str(), va_arg(args, long long));
                else std::snprintf(buffer, sizeof buffer, (spec + "d").c_str(), va_arg(args, int));
                out += buffer;
                break;
            case 'u': case 'x': case 'X': case 'o': {
                const char conversion = static_cast<char>(*p);
                if (size == 2) std::snprintf(buffer, sizeof buffer, (spec + "ll" + conversion).c_str(), va_arg(args, unsigned long long));
                else std::snprintf(buffer, sizeof buffer, (spec + conversion).c_str(), va_arg(args, unsigned));
                out += buffer;
                break;
            }
            case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': {
                const char conversion = static_cast<char>(*p);
                std::snprintf(buffer, sizeof buffer, (spec + conversion).c_str(), va_arg(args, double));
                out += buffer;
                break;
            }
            case 'p':
                std::snprintf(buffer, sizeof buffer, "%p", va_arg(args, void*));
                out += buffer;
                break;
            case 'c':
                out += static_cast<char>(va_arg(args, int));
                break;
            case 's': case 'S': {
                const bool wide = (*p == 's') ? size >= 0 : size > 0;
                std::string text;
                if (wide) {
                    const char16_t* arg = va_arg(args, const char16_t*);
                    text = arg ? Narrow(arg, precision) : "(null)";
                } else {
                    const char* arg = va_arg(args, const char*);
                    text = arg ? std::string(arg) : "(null)";
                    if (precision >= 0 && text.size() > static_cast<size_t>(precision)) text.resize(static_cast<size_t>(precision));
                }
                out += Pad(text, width, left);
                break;
            }
            default:  // unknown conversion: keep it as written
                for (const char16_t* q = start; q <= p && *q != 0; ++q) out += static_cast<char>(*q);
                if (*p == 0) return out;
                break;
        }
    }
    return out;
}

}  // namespace

void Clear() { Store().clear(); }

const std::vector<Line>& Lines() { return Store(); }

bool Contains(const std::string& text) {
    for (const Line& line : Store()) {
        if (line.text == text) return true;
    }
    return false;
}

std::string Render(const char16_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = RenderList(format, args);
    va_end(args);
    return text;
}

}  // namespace trace_recorder

void Trace(const WideChar* format, ...) {
    if (format == nullptr) return;
    va_list args;
    va_start(args, format);
    std::vector<trace_recorder::Line>& lines = trace_recorder::Store();
    if (lines.size() >= trace_recorder::kMaxLines) lines.erase(lines.begin());
    lines.push_back({trace_recorder::Narrow(format, -1), trace_recorder::RenderList(format, args)});
    va_end(args);
}
