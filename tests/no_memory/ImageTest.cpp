#include <gtest/gtest.h>

#include "camera/ImagePool.h"
#include "camera/PhysicalCameraThread.h"
#include "no_memory/FailingAllocation.h"
#include "recorder/Recorder.h"
#include "support/PackedFrames.h"
#include "sync/FramePairing.h"
#include "sync/Ledger.h"

namespace Korvex3Sync {
namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;
constexpr std::size_t kPixels = 32;

TEST(ImagePoolWithoutMemory, GivesNothingAndLendsNothing) {
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        ImagePool pool;
        unsigned char* image = nullptr;
        {
            const FailingAllocation failing(failures + 1);
            image = pool.Take(kPixels);
            failed = failing.Failed();
        }
        EXPECT_EQ(image == nullptr, failed) << failures;
        EXPECT_EQ(pool.Lent(), failed ? 0u : 1u) << failures;
        pool.Release(image);
    }
    EXPECT_GT(failures, 1);
}

TEST(ImagePoolWithoutMemory, TakesBackWhatItLent) {
    ImagePool pool;
    unsigned char* const first = pool.Take(kPixels);
    unsigned char* const second = pool.Take(kPixels);
    {
        const FailingAllocation failing(1);
        pool.Release(first);
        pool.Release(second);
        EXPECT_FALSE(failing.Failed());
    }
    EXPECT_EQ(pool.Lent(), 0u);
    EXPECT_EQ(pool.Free(), 2u);
}

TEST(PackedFrameWithoutMemory, IsNotTakenApartAndLendsNothing) {
    recorder::Recorder::Get().Reset();
    CPhysicalCameraThread camera(nullptr);
    ASSERT_TRUE(camera.InializeCamera("KV00R1"));
    ASSERT_TRUE(camera.OpenCamera("KV00R1", kWidth, kHeight));
    for (const auto& raw :
         {support::MonoFrame(kPixels, 10, 11, 1), support::ColorFrame(kPixels, 30, 1)}) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed ? 1 : 0) {
            ImagePool pool;
            DecodedFrame frame;
            bool apart = true;
            {
                const FailingAllocation failing(failures + 1);
                apart = camera.SplitPackedFrame(frame.images, frame.widths, frame.heights,
                                                frame.channels, raw.data(), pool);
                failed = failing.Failed();
            }
            EXPECT_EQ(apart, !failed) << failures;
            EXPECT_EQ(frame.images.empty(), failed) << failures;
            EXPECT_EQ(frame.channels.empty(), failed) << failures;
            EXPECT_EQ(pool.Lent(), frame.images.size()) << failures;
            for (unsigned char* image : frame.images) {
                pool.Release(image);
            }
        }
        EXPECT_GT(failures, 4);
    }
}

DecodedFrame Frame(std::vector<unsigned char*> images) {
    DecodedFrame frame;
    frame.key = 1;
    frame.width = kWidth;
    frame.widths.assign(images.size(), kWidth);
    frame.heights.assign(images.size(), kHeight);
    frame.channels.assign(images.size(), 1);
    frame.images = std::move(images);
    return frame;
}

TEST(PairingWithoutMemory, LosesTheNewSetAndCountsIt) {
    Ledger ledger;
    FramePairing pairing;
    const DecodedFrame frame = Frame({ledger.Make(), ledger.Make()});
    {
        const FailingAllocation failing(1);
        pairing.TakeMono(frame, ledger);
        EXPECT_TRUE(failing.Failed());
    }
    EXPECT_EQ(ledger.setsLost, 1);
    EXPECT_EQ(ledger.Live(), 0u);
    EXPECT_EQ(pairing.Size(), 0u);
}

/// Allocates nothing.
class CountingSink : public FramePairing::Sink {
public:
    void Deliver(const std::vector<unsigned char*>&, int, int, const std::vector<int>&,
                 bool) override {
        ++delivered;
    }
    void Lose(PairingLoss) override { ++lost; }
    void Release(unsigned char*) override { ++released; }

    int delivered = 0;
    int lost = 0;
    int released = 0;
};

TEST(PairingWithoutMemory, DeliversAllTheSame) {
    CountingSink sink;
    unsigned char pixel = 0;
    const DecodedFrame mono = Frame({&pixel, &pixel});
    const DecodedFrame color = Frame({&pixel});
    FramePairing pairing;
    pairing.TakeMono(mono, sink);
    {
        const FailingAllocation failing(1);
        pairing.TakeColor(color, sink);
        EXPECT_FALSE(failing.Failed()) << "the first set already finds all it needs";
    }
    EXPECT_EQ(sink.delivered, 1);
    EXPECT_EQ(sink.released, 3);
    EXPECT_EQ(sink.lost, 0);
}

}  // namespace
}  // namespace Korvex3Sync
