#include "tests/native/trace_recorder.h"

#include <gtest/gtest.h>

#include "frame/trace_log.h"

// The other tests read trace lines through this rendering, so its Windows conventions
// must hold: %s and %ws wide, %S and %hs 8-bit, l meaning 32 bits.
TEST(TraceRecorder, RendersWindowsConventions) {
    EXPECT_EQ(trace_recorder::Render(u"A(): '%s'=%d\n", u"de_de", 2), "A(): 'de_de'=2\n");
    EXPECT_EQ(trace_recorder::Render(u"%ws|%S|%hs|%ls", u"w", "n", "h", u"l"), "w|n|h|l");
    EXPECT_EQ(trace_recorder::Render(u"%u %lu %d %x 100%%", 4294967295u, 7u, -3, 255u), "4294967295 7 -3 ff 100%");
    EXPECT_EQ(trace_recorder::Render(u"%.02f|%5s|%-3d|", 12.5, u"ab", 1), "12.50|   ab|1  |");
    EXPECT_EQ(trace_recorder::Render(u"%S", static_cast<const char*>(nullptr)), "(null)");
}

TEST(TraceRecorder, KeepsEachCallAsOneLine) {
    trace_recorder::Clear();
    Trace(W16("X(): n=%d\n"), 5);
    ASSERT_EQ(trace_recorder::Lines().size(), 1u);
    EXPECT_EQ(trace_recorder::Lines()[0].format, "X(): n=%d\n");
    EXPECT_TRUE(trace_recorder::Contains("X(): n=5\n"));
    trace_recorder::Clear();
    EXPECT_TRUE(trace_recorder::Lines().empty());
}
