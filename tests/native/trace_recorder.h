// The native stand-in for the plug-in's trace log: every Trace call is kept in memory as
// the line it renders, following the Windows conventions of the core's formats (%s wide,
// %S 8-bit). Wide characters outside ASCII render as '?'.
#pragma once

#include <string>

namespace trace_recorder {

// Forgets every line kept so far.
void Clear();

// True when some line since the last Clear is exactly `text`.
bool Contains(const std::string& text);

}  // namespace trace_recorder
