#include "camera/images/ImagePool.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

namespace Korvex3Sync::tests {
namespace {

TEST(ImagePool, ReusesABufferOfTheSameSize) {
    ImagePool pool;
    Image image = pool.Take(100);
    unsigned char* const pixels = image.Pixels();
    image.Release();
    const Image other = pool.Take(50);
    EXPECT_NE(other.Pixels(), pixels);
    EXPECT_EQ(pool.Take(100).Pixels(), pixels);
    EXPECT_EQ(pool.Lent(), 1u);
    EXPECT_EQ(pool.Free(), 1u);
}

TEST(ImagePool, GivesEmptyImagesWhenThereIsNoMemory) {
    ImagePool pool;
    const Image image = pool.Take(std::size_t{1} << 62);
    EXPECT_FALSE(image);
    EXPECT_EQ(image.Pixels(), nullptr);
    EXPECT_EQ(pool.Lent(), 0u);
}

TEST(ImagePool, TakesImagesBackFromSeveralThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 1000;
    ImagePool pool;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&pool] {
            for (int round = 0; round < kRounds; ++round) {
                Image image = pool.Take(16);
                *image.Pixels() = 1;  // the thread sanitizer sees a buffer that two threads got
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_GE(pool.Free(), 1u);
    EXPECT_LE(pool.Free(), std::size_t{kThreads});
}

TEST(Image, ReturnsToItsPoolAtTheEndOfItsLife) {
    ImagePool pool;
    {
        const Image image = pool.Take(100);
        EXPECT_EQ(pool.Lent(), 1u);
    }
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 1u);
}

TEST(Image, HasOneOwnerWhenItIsMoved) {
    ImagePool pool;
    Image image = pool.Take(100);
    unsigned char* const pixels = image.Pixels();
    Image owner = std::move(image);
    EXPECT_EQ(owner.Pixels(), pixels);
    image = pool.Take(100);  // a moved-from image may be used again
    EXPECT_NE(image.Pixels(), pixels);
    EXPECT_EQ(pool.Lent(), 2u);
    image = std::move(owner);
    EXPECT_EQ(image.Pixels(), pixels);
    EXPECT_EQ(pool.Lent(), 1u) << "what it held before went back";
    EXPECT_EQ(pool.Free(), 1u);
}

TEST(Image, IsReleasedOnce) {
    ImagePool pool;
    Image image = pool.Take(100);
    image.Release();
    EXPECT_FALSE(image);
    image.Release();
    Image().Release();
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 1u);
}

TEST(Image, ABufferGivenAwayIsFreedByItsNewOwner) {
    ImagePool pool;
    Image image = pool.Take(100);
    unsigned char* const pixels = image.GiveAway();
    EXPECT_NE(pixels, nullptr);
    EXPECT_FALSE(image);
    EXPECT_EQ(image.GiveAway(), nullptr);
    image.Release();  // no longer the pool's: nothing happens
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 0u);
    delete[] pixels;
}

}  // namespace
}  // namespace Korvex3Sync::tests
