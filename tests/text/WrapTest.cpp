#include "platform/text/Wrap.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {

namespace {

using text::Wrapped;

TEST(Wrapped, LeavesLinesThatFit) {
    EXPECT_EQ(Wrapped("", 10), "");
    EXPECT_EQ(Wrapped("0123456789\n\n  abc\n", 10), "0123456789\n\n  abc\n");
    EXPECT_EQ(Wrapped("no end", 10), "no end\n");
}

TEST(Wrapped, BreaksBetweenWords) {
    EXPECT_EQ(Wrapped("one two three four\n", 9), "one two\nthree\nfour\n");
    EXPECT_EQ(Wrapped("one two\n", 7), "one two\n");
    EXPECT_EQ(Wrapped("one two\n", 6), "one\ntwo\n");
}

TEST(Wrapped, ContinuesInTheColumnOfTheText) {
    EXPECT_EQ(Wrapped("  one two three\n", 9), "  one two\n  three\n");
    EXPECT_EQ(Wrapped("  --a N   one two three\n", 20), "  --a N   one two\n          three\n");
    // Too far to the right.
    EXPECT_EQ(Wrapped("  --a-long-one N   one two three\n", 24),
              "  --a-long-one N   one\n  two three\n");
}

TEST(Wrapped, LeavesALongWordWhole) {
    EXPECT_EQ(Wrapped("a 0123456789 b\n", 5), "a\n0123456789\nb\n");
    EXPECT_EQ(Wrapped("0123456789\n", 5), "0123456789\n");
}

TEST(Wrapped, MakesSeveralEmptyLinesOne) {
    EXPECT_EQ(Wrapped("a\n\n\n\nb\n", 10), "a\n\nb\n");
}

}  // namespace

}  // namespace Korvex3Sync::tests
