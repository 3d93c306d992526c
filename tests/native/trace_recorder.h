// The native stand-in for the plug-in's trace log: every Trace call is kept in memory as
// the line it renders, following the Windows conventions of the core's formats (%s wide,
// %S 8-bit, %d). Wide characters outside ASCII render as '?'.
#pragma once

#include <string>

namespace trace_recorder {

// Every line traced since it was last cleared.
inline std::string& Text() {
    static std::string text;
    return text;
}

// True when some line of Text() is exactly `line` (which ends with its "\n").
inline bool Contains(const std::string& line) { return ("\n" + Text()).find("\n" + line) != std::string::npos; }

}  // namespace trace_recorder
