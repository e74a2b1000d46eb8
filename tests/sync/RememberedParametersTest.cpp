#include "sync/cameras/RememberedParameters.h"

#include <gtest/gtest.h>

#include <vector>

namespace Korvex3Sync::tests {
namespace {

TEST(OrdersToRestore, OrdersComeAscendingAndOnlyWhereBothWereSet) {
    RememberedParameters settings;
    EXPECT_TRUE(OrdersToRestore(settings).empty());
    settings.exposures = {{3, 1.5}, {0, 2.5}, {1, 3.5}};
    settings.gains = {{1, 6}, {2, 7}, {3, 8}};
    EXPECT_EQ(OrdersToRestore(settings), (std::vector<OrderSetting>{{1, 3.5, 6}, {3, 1.5, 8}}));
}

}  // namespace
}  // namespace Korvex3Sync::tests
