// The native stand-in for the plug-in's trace log: every Trace call is kept in memory,
// with its format and a rendering that follows the Windows conventions (%s and %ws wide,
// %S and %hs 8-bit, l for 32 bits). Wide characters outside ASCII render as '?'.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace trace_recorder {

struct Line {
    std::string format;  // the format as given, narrowed
    std::string text;    // the formatted line
};

// Forgets every line kept so far.
void Clear();

// The lines since the last Clear, oldest first. At most kMaxLines are kept (the oldest
// go first) so that long runs do not grow without bound.
inline constexpr size_t kMaxLines = 4096;
const std::vector<Line>& Lines();

// True when some line's text is exactly `text`.
bool Contains(const std::string& text);

// Renders one format with its arguments as Trace would; for tests of the rendering.
std::string Render(const char16_t* format, ...);

}  // namespace trace_recorder
