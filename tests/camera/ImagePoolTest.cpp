#include "camera/ImagePool.h"

#include <gtest/gtest.h>

namespace Korvex3Sync {
namespace {

TEST(ImagePool, ReusesABufferOfTheSameSize) {
    ImagePool pool;
    unsigned char* const image = pool.Take(100);
    pool.Release(image);
    unsigned char* const other = pool.Take(50);
    EXPECT_NE(other, image);
    EXPECT_EQ(pool.Take(100), image);
    pool.Release(image);
    pool.Release(other);
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 2u);
}

TEST(ImagePool, ABufferGivenAwayIsFreedByItsNewOwner) {
    ImagePool pool;
    unsigned char* const image = pool.Take(100);
    pool.GiveAway(image);
    pool.Release(image);  // no longer the pool's: ignored
    EXPECT_EQ(pool.Free(), 0u);
    delete[] image;
}

TEST(ImagePool, IgnoresNullAndWhatItNeverLent) {
    ImagePool pool;
    unsigned char foreign = 0;
    pool.Release(nullptr);
    pool.Release(&foreign);
    EXPECT_EQ(pool.Free(), 0u);
}

TEST(ImagePool, GivesNullWhenThereIsNoMemory) {
    ImagePool pool;
    EXPECT_EQ(pool.Take(std::size_t{1} << 62), nullptr);
    EXPECT_EQ(pool.Lent(), 0u);
}

}  // namespace
}  // namespace Korvex3Sync
