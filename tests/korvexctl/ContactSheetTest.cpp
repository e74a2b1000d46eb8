#include "korvexctl/pictures/ContactSheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "korvexctl/PixelAt.h"
#include "korvexctl/pictures/Lettering.h"
#include "korvexctl/pictures/TextLines.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ContactSheet;
using korvexctl::KeptImageSet;
using korvexctl::Picture;
using korvexctl::ScaleDown;

Picture Plain(int width, int height, int channels, std::uint8_t value) {
    const auto size = static_cast<std::size_t>(width * height * channels);
    return {width, height, channels, std::vector<std::uint8_t>(size, value)};
}

TEST(ScaleDown, APixelIsTheMeanOfThoseItStandsFor) {
    const Picture grey{4, 2, 1, {10, 20, 0, 255, 30, 41, 0, 255}};
    EXPECT_EQ(ScaleDown(grey, 2, 1).bytes, (std::vector<std::uint8_t>{25, 128}));
    EXPECT_EQ(ScaleDown(grey, 4, 2).bytes, grey.bytes);
    const Picture color{2, 1, 3, {10, 20, 30, 30, 60, 90}};
    EXPECT_EQ(ScaleDown(color, 1, 1).bytes, (std::vector<std::uint8_t>{20, 40, 60}));
}

TEST(ScaleDown, SizesThatDoNotDivideUseEachPixelOnce) {
    const Picture grey{5, 1, 1, {0, 100, 200, 100, 0}};
    EXPECT_EQ(ScaleDown(grey, 2, 1).bytes, (std::vector<std::uint8_t>{50, 100}));
}

TEST(Lettering, WritesDotsOfALetterAndNothingOutside) {
    Picture picture = Plain(8, 9, 1, 0);
    korvexctl::DrawText(picture, 1, 1, "l", 1, 255);
    // A capital L: its left column and its bottom row.
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const bool dot = (x == 1 && y >= 1 && y <= 7) || (y == 7 && x >= 1 && x <= 5);
            EXPECT_EQ(picture.bytes[static_cast<std::size_t>(y * picture.width + x)], dot ? 255 : 0)
                << x << ',' << y;
        }
    }
    korvexctl::DrawText(picture, -3, 5, "88888888", 4, 9);
    EXPECT_EQ(picture.bytes.size(), 72U);
}

TEST(Lettering, EveryLetterAndDigitLooksDifferent) {
    const std::string letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ.,:;/- ";
    std::vector<std::vector<std::uint8_t>> shapes;
    for (const char letter : letters) {
        Picture picture = Plain(korvexctl::kLetterStep, korvexctl::kLetterHeight, 1, 0);
        korvexctl::DrawText(picture, 0, 0, std::string(1, letter), 1, 1);
        shapes.push_back(picture.bytes);
    }
    std::sort(shapes.begin(), shapes.end());
    EXPECT_EQ(std::adjacent_find(shapes.begin(), shapes.end()), shapes.end());
}

TEST(ContactSheet, ShowsImagesSideBySideBelowTheirLabel) {
    ContactSheet sheet;
    EXPECT_TRUE(sheet.Empty());
    KeptImageSet set;
    set.number = 7;
    set.key = 200;
    sheet.Add(set, {Plain(640, 480, 1, 100), Plain(640, 480, 1, 150), Plain(640, 480, 3, 220)});
    sheet.Add(set, {Plain(640, 480, 1, 101), Plain(640, 480, 1, 151)});
    EXPECT_FALSE(sheet.Empty());
    const Picture picture = sheet.Compose({});
    ASSERT_EQ(picture.width, 4 + 3 * 324);
    ASSERT_EQ(picture.height, 22 + 2 * (22 + 240) + 4);
    const auto grey = [](int value) { return std::vector<int>(3, value); };
    // Mono images are brightened, colour images are not.
    EXPECT_EQ(PixelAt(picture, 4, 44), grey(167));
    EXPECT_EQ(PixelAt(picture, 323, 283), grey(167));
    EXPECT_EQ(PixelAt(picture, 328, 44), grey(200));
    EXPECT_EQ(PixelAt(picture, 652, 44), grey(220));
    EXPECT_EQ(PixelAt(picture, 4, 44 + 262), grey(167));
    // Separators, and no picture where the second set has none.
    EXPECT_EQ(PixelAt(picture, 325, 100), grey(32));
    EXPECT_EQ(PixelAt(picture, 900, 500), grey(32));
    // Labels above the rows: number, key and time.
    Picture expected = Plain(picture.width, picture.height, 3, 32);
    korvexctl::DrawText(expected, 4, 26, "SET 7  KEY 200  0.00 S", 2, 230);
    for (int y = 26; y < 40; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            ASSERT_EQ(PixelAt(picture, x, y), PixelAt(expected, x, y)) << x << ',' << y;
        }
    }
}

/// The text of the line that begins at (4, y), as far as it is this one.
bool HasLine(const Picture& picture, int y, const std::string& text, int scale, int brightness) {
    Picture expected = Plain(picture.width, picture.height, 3, 32);
    korvexctl::DrawText(expected, 4, y, text, scale, static_cast<std::uint8_t>(brightness));
    for (int row = y; row < y + korvexctl::kLetterHeight * scale; ++row) {
        for (int x = 0; x < picture.width; ++x) {
            if (PixelAt(picture, x, row) != PixelAt(expected, x, row)) {
                return false;
            }
        }
    }
    return true;
}

TEST(ContactSheet, HasItsHeaderOnTopBrokenWhereItIsTooLong) {
    ContactSheet sheet;
    sheet.Add({}, {Plain(64, 48, 1, 100), Plain(64, 48, 1, 150)});
    const Picture plain = sheet.Compose({});
    // 22 letters fit.
    const Picture picture = sheet.Compose({"mode laser", "2026-11-22, sets 20 of 20"});
    EXPECT_EQ(picture.width, plain.width);
    EXPECT_EQ(picture.height, plain.height + 3 * 11);
    EXPECT_TRUE(HasLine(picture, 4, "mode laser", 1, 230));
    EXPECT_TRUE(HasLine(picture, 15, "2026-11-22, sets 20 of", 1, 230));
    EXPECT_TRUE(HasLine(picture, 26, "20", 1, 230));
    EXPECT_EQ(korvexctl::BreakLines({"abcdefgh ij"}, 3),
              (std::vector<std::string>{"abc", "def", "gh", "ij"}));
}

TEST(ContactSheet, SaysHowManyTriggersWereLostBeforeARow) {
    ContactSheet sheet;
    const std::vector<Picture> pictures{Plain(300, 48, 1, 100), Plain(300, 48, 1, 150)};
    for (const int lost : {1, 41, 41}) {
        KeptImageSet set;
        set.lost = lost;
        sheet.Add(set, pictures);
    }
    const Picture picture = sheet.Compose({});
    EXPECT_TRUE(HasLine(picture, 26, "SET 0  KEY 0  0.00 S  - 1 TRIGGER LOST BEFORE", 2, 230));
    EXPECT_TRUE(
        HasLine(picture, 26 + 70, "SET 0  KEY 0  0.00 S  - 40 TRIGGERS LOST BEFORE", 2, 230));
    EXPECT_TRUE(HasLine(picture, 26 + 140, "SET 0  KEY 0  0.00 S", 2, 230));
}

TEST(ContactSheet, WithoutColorHasTwoColumns) {
    ContactSheet sheet;
    sheet.Add({}, {Plain(64, 48, 1, 100), Plain(64, 48, 1, 150)});
    EXPECT_EQ(sheet.Compose({}).width, 4 + 2 * 68);
}

}  // namespace

}  // namespace Korvex3Sync::tests
