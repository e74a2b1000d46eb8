#include <gtest/gtest.h>

#include "camera/images/ImagePool.h"
#include "camera/images/SplitPackedFrame.h"
#include "no_memory/FailingAllocation.h"
#include "support/Accounted.h"
#include "support/FramePixels.h"
#include "support/PackedFrames.h"
#include "sync/frames/FramePairing.h"
#include "sync/frames/FramePath.h"

namespace Korvex3Sync::tests {
namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;

TEST(ImagePoolWithoutMemory, GivesNothingAndLendsNothing) {
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        ImagePool pool;
        Image image;
        {
            const FailingAllocation failing(failures + 1);
            image = pool.Take(kPixels);
            failed = failing.Failed();
        }
        EXPECT_EQ(!image, failed) << failures;
        EXPECT_EQ(pool.Lent(), failed ? 0u : 1u) << failures;
    }
    EXPECT_GT(failures, 1);
}

TEST(ImagePoolWithoutMemory, TakesBackWhatItLent) {
    ImagePool pool;
    Image first = pool.Take(kPixels);
    Image second = pool.Take(kPixels);
    {
        const FailingAllocation failing(1);
        first.Release();
        second.Release();
        EXPECT_FALSE(failing.Failed());
    }
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 2u);
}

TEST(PackedFrameWithoutMemory, IsNotTakenApartAndLendsNothing) {
    for (const auto& raw :
         {support::MonoFrame(kPixels, 10, 11, 1), support::ColorFrame(kPixels, 30, 1)}) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed ? 1 : 0) {
            ImagePool pool;
            SplitFrame frame;
            bool apart = true;
            {
                const FailingAllocation failing(failures + 1);
                apart = SplitPackedFrame(frame, raw.data(), kWidth, kHeight, pool);
                failed = failing.Failed();
            }
            EXPECT_EQ(apart, !failed) << failures;
            EXPECT_EQ(frame.images.empty(), failed) << failures;
            EXPECT_EQ(frame.channels.empty(), failed) << failures;
            EXPECT_EQ(pool.Lent(), frame.images.size()) << failures;
        }
        EXPECT_GT(failures, 4);
    }
}

DecodedFrame Frame(std::vector<Image> images) {
    DecodedFrame frame;
    frame.key = 1;
    frame.width = kWidth;
    frame.widths.assign(images.size(), kWidth);
    frame.heights.assign(images.size(), kHeight);
    frame.channels.assign(images.size(), 1);
    frame.images = std::move(images);
    return frame;
}

DecodedFrame MonoFrame(ImagePool& pool) {
    std::vector<Image> images;
    images.push_back(pool.Take(kPixels));
    images.push_back(pool.Take(kPixels));
    return Frame(std::move(images));
}

DecodedFrame ColorFrame(ImagePool& pool) {
    std::vector<Image> images;
    images.push_back(pool.Take(kPixels));
    return Frame(std::move(images));
}

/// Allocates nothing.
class CountingSink : public FramePairing::Sink {
public:
    void Deliver(const std::vector<Image>&, int, int, const std::vector<int>&, bool) override {
        ++delivered;
    }
    void Lose(PairingLoss) override { ++lost; }

    int delivered = 0;
    int lost = 0;
};

TEST(PairingWithoutMemory, LosesTheNewSetAndCountsIt) {
    ImagePool pool;
    CountingSink sink;
    FramePairing pairing;
    DecodedFrame frame = MonoFrame(pool);
    {
        const FailingAllocation failing(1);
        pairing.TakeMono(frame, sink);
        EXPECT_TRUE(failing.Failed());
    }
    EXPECT_EQ(sink.lost, 1);
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pairing.Size(), 0u);
}

TEST(PairingWithoutMemory, DeliversAllTheSame) {
    ImagePool pool;
    CountingSink sink;
    DecodedFrame mono = MonoFrame(pool);
    DecodedFrame color = ColorFrame(pool);
    FramePairing pairing;
    pairing.TakeMono(mono, sink);
    {
        const FailingAllocation failing(1);
        pairing.TakeColor(color, sink);
        EXPECT_FALSE(failing.Failed()) << "the first set already finds all it needs";
    }
    EXPECT_EQ(sink.delivered, 1);
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(sink.lost, 0);
}

/// A scan callback that keeps nothing.
void CountSets(const void* const& context, std::vector<unsigned char*>&, const int&, const int&,
               std::vector<int>&) {
    ++*static_cast<int*>(const_cast<void*>(context));
}

TEST(FramePathWithoutMemory, LosesAndCountsTheFrameThatFindsNoneAndGoesOn) {
    constexpr int kRunningMode = 2;
    constexpr unsigned char kFrames = 4;
    std::uint64_t undecodable = 0;
    std::uint64_t dropped = 0;
    bool failed = true;
    for (int nth = 1; failed; ++nth) {
        FramePath path(nullptr);
        path.SetRoutes({{0, true, kWidth, kHeight}});
        path.Starts().Writing(kRunningMode);
        path.Starts().Written(true);
        for (unsigned char key = 0; key < kFrames; ++key) {
            auto frame = support::MonoFrame(kPixels, 10, 11, key);
            const FailingAllocation failing(key == 0 ? nth : 0);
            FramePath::OnFrame(&path, 0, frame.data(), kWidth, kHeight, 1);
            failed = key == 0 ? failing.Failed() : failed;
        }
        ScanStatistics statistics;
        path.GetScanStatistics(statistics);
        EXPECT_EQ(statistics.undecodableFrames + statistics.setsDropped, failed ? 1u : 0u) << nth;
        EXPECT_EQ(statistics.missingKeys, statistics.undecodableFrames) << nth;
        EXPECT_EQ(support::AccountedTriggers(statistics), kFrames) << nth;
        undecodable += statistics.undecodableFrames;
        dropped += statistics.setsDropped;
    }
    EXPECT_GT(undecodable, 0u) << "no memory for the images";
    EXPECT_GT(dropped, 0u) << "no memory for the set to wait in";
}

TEST(FramePathWithoutMemory, NeedsNoneOnceTheFirstSetsWentThrough) {
    FramePath path(nullptr);
    path.SetRoutes({{0, true, kWidth, kHeight}});
    int sets = 0;
    path.SetScanCallBackFunction(&CountSets, &sets);
    auto mono = support::MonoFrame(kPixels, 10, 11, 0);
    auto color = support::ColorFrame(kPixels, 30, 0);
    const auto take = [&path](std::vector<unsigned char>& frame) {
        FramePath::OnFrame(&path, 0, frame.data(), kWidth, kHeight, 1);
    };
    const auto round = [&] {
        take(mono);  // delivered with its colour image
        take(color);
        take(mono);  // without, by the next one
        take(mono);
        take(color);
    };
    round();
    {
        const FailingAllocation failing(1);
        for (int i = 0; i < 1000; ++i) {
            round();
        }
        EXPECT_FALSE(failing.Failed());
    }
    EXPECT_EQ(sets, 3 * 1001);
}

}  // namespace
}  // namespace Korvex3Sync::tests
