#include "platform/text/Printable.h"

#include <gtest/gtest.h>

#include <string>

namespace Korvex3Sync::tests {

namespace {

using text::Printable;

TEST(Printable, LeavesOrdinaryTextAsItIs) {
    for (const char* text : {"", "KV00A1001  1280 x 1024", "C:\\x1B", "~", "\xC3\xA9t\xC3\xA9",
                             "\xC2\xA0", "\xE2\x82\xAC", "\xF0\x9F\x94\xA6", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(Printable(text), text);
    }
}

TEST(Printable, EscapesControlCharacters) {
    EXPECT_EQ(Printable("\033[2J\r\n\t"), "\\x1B[2J\\x0D\\x0A\\x09");
    EXPECT_EQ(Printable(std::string(1, '\0') + "\x7F"), "\\x00\\x7F");
    // Those of 8 bits: an escape sequence can begin with one.
    EXPECT_EQ(Printable("\xC2\x9B"
                        "31m"),
              "\\xC2\\x9B31m");
    EXPECT_EQ(Printable("\x9B"
                        "31m"),
              "\\x9B31m");
}

TEST(Printable, EscapesWhatIsNotUtf8) {
    EXPECT_EQ(Printable("\xFF"
                        "a"),
              "\\xFFa");
    EXPECT_EQ(Printable("\xC3"), "\\xC3") << "cut off";
    EXPECT_EQ(Printable("\xC3"
                        "a"),
              "\\xC3a");
    EXPECT_EQ(Printable("\xC1\x9B"), "\\xC1\\x9B") << "an ASCII letter in two bytes";
    EXPECT_EQ(Printable("\xE0\x82\x9B"), "\\xE0\\x82\\x9B") << "a control character in three";
    EXPECT_EQ(Printable("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "half of a pair";
    EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "above the last one";
}

TEST(Printable, MayBeDoneTwice) {
    const std::string once = Printable("\033[31m\xFF");
    EXPECT_EQ(Printable(once), once);
}

}  // namespace

}  // namespace Korvex3Sync::tests
