#include "camera/ColorMode.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

struct Row {
    int mode;
    int channels;
    int splitChannels;
    bool color;
};

class ColorModes : public testing::TestWithParam<Row> {};

TEST_P(ColorModes, MeanWhatTheTableSays) {
    const Row row = GetParam();
    const zr3DCamera::ZR_IMG_FORMAT mode{row.mode};
    EXPECT_EQ(CallbackChannels(mode), row.channels);
    EXPECT_EQ(SplitChannels(row.mode), row.splitChannels);
    EXPECT_EQ(IsColorCamera(mode), row.color);
}

INSTANTIATE_TEST_SUITE_P(All, ColorModes,
                         testing::Values(Row{1, 1, 1, false}, Row{2, 2, 2, false},
                                         Row{16, 1, 1, true}, Row{17, 3, 3, true},
                                         Row{18, 1, 6, true}, Row{0, 1, 1, false},
                                         Row{-7, 1, 1, false}, Row{99, 1, 1, false}),
                         [](const auto& row) {
                             const int mode = row.param.mode;
                             return "Mode" + std::string(mode < 0 ? "Minus" : "") +
                                    std::to_string(std::abs(mode));
                         });

}  // namespace
}  // namespace Korvex3Sync::tests
