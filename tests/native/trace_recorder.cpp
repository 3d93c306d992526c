#include "tests/native/trace_recorder.h"

#include <cstdarg>

#include "base/trace_log.h"

void Trace(const WideChar* format, ...) {
    va_list args;
    va_start(args, format);
    std::string& out = trace_recorder::Text();
    for (const WideChar* p = format; p != nullptr && *p != 0; ++p) {
        if (p[0] != '%' || (p[1] != 'd' && p[1] != 's' && p[1] != 'S')) {
            out += *p < 0x80 ? static_cast<char>(*p) : '?';  // any other conversion is copied as written
        } else if (*++p == 'd') {
            out += std::to_string(va_arg(args, int));
        } else if (*p == 'S') {
            out += va_arg(args, const char*);
        } else {
            for (const WideChar* s = va_arg(args, const WideChar*); *s != 0; ++s) out += *s < 0x80 ? char(*s) : '?';
        }
    }
    va_end(args);
}
