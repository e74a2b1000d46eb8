#include "sync/frames/FramePairing.h"

#include "sync/Ledger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>

#include "support/Seed.h"

namespace Korvex3Sync::tests {
namespace {

class Pairing : public testing::Test {
protected:
    ~Pairing() override {
        DropAll();
        EXPECT_EQ(m_ledger.Live(), 0u) << "images were lost";
    }
    void DropAll() {
        while (m_pairing.Size() > 0) {
            m_pairing.DropFirst(m_ledger);
        }
    }
    DecodedFrame Frame(unsigned key, int images, int width = 8, int height = 4) {
        DecodedFrame frame;
        frame.key = key;
        frame.width = width;
        for (int i = 0; i < images; ++i) {
            frame.images.push_back(m_ledger.Make());
            frame.widths.push_back(width);
            frame.heights.push_back(height);
            frame.channels.push_back(1);
        }
        return frame;
    }
    void Mono(unsigned key, int width = 8) {
        DecodedFrame frame = Frame(key, 2, width);
        m_pairing.TakeMono(frame, m_ledger);
    }
    void Color(unsigned key, int width = 8) {
        DecodedFrame frame = Frame(key, 1, width);
        m_pairing.TakeColor(frame, m_ledger);
    }

    Ledger m_ledger;
    FramePairing m_pairing;
};

using Sets = std::vector<std::string>;

TEST_F(Pairing, AColourFrameWithoutItsMonoIsReleasedAndNothingIsDelivered) {
    Color(7);
    EXPECT_TRUE(m_ledger.delivered.empty());
    EXPECT_EQ(m_ledger.Live(), 0u);
    EXPECT_EQ(m_pairing.Size(), 0u);
    EXPECT_EQ(m_ledger.colorsLost, 1);
}

TEST_F(Pairing, MonoThenItsColourIsOneSetOfThree) {
    Mono(7);
    EXPECT_TRUE(m_ledger.delivered.empty());
    Color(7);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 3 8x4 c1 c1 c1"});
    EXPECT_EQ(m_pairing.Size(), 0u);
    EXPECT_EQ(m_ledger.Released(), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(m_ledger.colorsLost, 0);
}

TEST_F(Pairing, ASetMissesItsColourOnlyWhereOneWasToCome) {
    for (bool expected : {true, false, true}) {
        DecodedFrame frame = Frame(expected ? 1 : 2, 2);
        frame.colorExpected = expected;
        m_pairing.TakeMono(frame, m_ledger);
    }
    EXPECT_EQ(m_ledger.colorsMissing, 1) << "the second set is of a mode without colour";
    Color(1);
    EXPECT_EQ(m_ledger.delivered.size(), 3u);
    EXPECT_EQ(m_ledger.colorsMissing, 1) << "the third set has its colour";
}

TEST_F(Pairing, ASetWhoseColourWentElsewhereDoesNotMissIt) {
    for (unsigned key : {1u, 2u}) {
        DecodedFrame frame = Frame(key, 2);
        frame.colorExpected = true;
        m_pairing.TakeMono(frame, m_ledger);
        m_pairing.ForgoColor(7);
        m_pairing.ForgoColor(1);
    }
    EXPECT_EQ(m_ledger.delivered.size(), 1u);
    EXPECT_EQ(m_ledger.colorsMissing, 0);
    Mono(3);
    EXPECT_EQ(m_ledger.colorsMissing, 1) << "key 2 misses its own";
}

TEST_F(Pairing, AMonoWithoutItsColourIsDeliveredAtTheNextMono) {
    Mono(1);
    Mono(2);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 8x4 c1 c1"});
    Color(2);
    EXPECT_EQ(m_ledger.delivered, (Sets{"1 2 8x4 c1 c1", "3 4 5 8x4 c1 c1 c1"}));
}

TEST_F(Pairing, AFlushedSetIsDescribedByTheNewerFrame) {
    Mono(1, 8);
    Mono(2, 16);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 16x4 c1 c1"});
}

TEST_F(Pairing, ARepeatedMonoSendsThePendingSetOnItsWay) {
    Mono(5);
    Mono(5);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 8x4 c1 c1"});
    EXPECT_EQ(m_pairing.Size(), 1u);
}

TEST_F(Pairing, ALateColourIsDroppedOnceItsMonoWentAlone) {
    Mono(1);
    Mono(2);
    Color(1);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 8x4 c1 c1"});
    Color(2);
    EXPECT_EQ(m_ledger.delivered.size(), 2u);
}

TEST_F(Pairing, KeysWrapAndTheMapIsOrderedByKeyNotByArrival) {
    for (unsigned key : {255u, 0u, 128u}) {
        VideoItem item;
        item.pMonoImage0 = m_ledger.Make();
        item.pMonoImage1 = m_ledger.Make();
        item.nMonoChannels = 1;
        m_pairing.Store(key, std::move(item));
    }
    Mono(1);
    // Stored as 255 (1 2), 0 (3 4), 128 (5 6): sent on their way as 0, 128, 255.
    EXPECT_EQ(m_ledger.delivered, (Sets{"3 4 8x4 c1 c1", "5 6 8x4 c1 c1", "1 2 8x4 c1 c1"}));
}

TEST_F(Pairing, AMonoThatMeetsAnItemWithColourGoesOutWithIt) {
    VideoItem item;
    item.pColorImage = m_ledger.Make();
    item.nColorChannels = 3;
    m_pairing.Store(9, std::move(item));
    Mono(9);
    EXPECT_EQ(m_ledger.delivered, Sets{"2 3 1 8x4 c1 c1 c3"});
    EXPECT_EQ(m_pairing.Size(), 0u);
}

TEST_F(Pairing, AnItemThatLacksAMonoImageIsReleasedWithoutDelivery) {
    VideoItem item;
    item.pMonoImage0 = m_ledger.Make();
    m_pairing.Store(9, std::move(item));
    Color(9);
    EXPECT_EQ(m_pairing.Size(), 1u) << "the colour frame alone was dropped";
    Mono(10);
    EXPECT_TRUE(m_ledger.delivered.empty());
    EXPECT_EQ(m_pairing.Size(), 1u);
}

TEST_F(Pairing, AnItemWithEverythingIsFlushedAsThreeImages) {
    VideoItem item;
    item.pMonoImage0 = m_ledger.Make();
    item.pMonoImage1 = m_ledger.Make();
    item.pColorImage = m_ledger.Make();
    item.nColorChannels = 3;
    m_pairing.Store(9, std::move(item));
    Mono(10);
    EXPECT_EQ(m_ledger.delivered, Sets{"1 2 3 8x4 c1 c1 c3"});
}

TEST_F(Pairing, DroppingTakesTheSmallestKeyColourFirst) {
    for (unsigned key : {70u, 20u, 50u}) {
        VideoItem item;
        item.pMonoImage0 = m_ledger.Make();
        item.pMonoImage1 = m_ledger.Make();
        item.pColorImage = m_ledger.Make();
        m_pairing.Store(key, std::move(item));
    }
    m_pairing.DropFirst(m_ledger);
    // Key 20 holds images 4, 5, 6: colour goes first, then the monos.
    EXPECT_EQ(m_ledger.Released(), (std::vector<std::uint32_t>{6, 4, 5}));
    EXPECT_EQ(m_pairing.Size(), 2u);
    EXPECT_EQ(m_ledger.setsLost, 1);
    DropAll();
    EXPECT_EQ(m_ledger.setsLost, 3);
    EXPECT_TRUE(m_ledger.delivered.empty());
}

/// The rules in their simplest form: at most one mono set waits.
TEST_F(Pairing, TenThousandRandomSequencesFollowThePlainRules) {
    const unsigned seed = support::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int sequence = 0; sequence < 10000; ++sequence) {
        m_ledger.delivered.clear();
        DropAll();
        Sets expected;
        bool waits = false;
        unsigned waitingKey = 0;
        std::string waiting;
        unsigned key = random() % 256;
        const int frames = static_cast<int>(random() % 24);
        for (int i = 0; i < frames; ++i) {
            // Mostly in order, as a head triggers; sometimes any key at all.
            key = random() % 8 == 0 ? random() % 256 : (key + random() % 2) % 256;
            const bool color = random() % 2 == 0;
            DecodedFrame frame = Frame(key, color ? 1 : 2);
            std::string names;
            for (const Image& image : frame.images) {
                names += std::to_string(Ledger::Number(image)) + " ";
            }
            if (color) {
                m_pairing.TakeColor(frame, m_ledger);
                if (waits && waitingKey == key) {
                    expected.push_back(waiting + names + "8x4 c1 c1 c1");
                    waits = false;
                }
            } else {
                m_pairing.TakeMono(frame, m_ledger);
                if (waits) {
                    expected.push_back(waiting + "8x4 c1 c1");
                }
                waits = true;
                waitingKey = key;
                waiting = names;
            }
            ASSERT_EQ(m_pairing.Size(), waits ? 1u : 0u);
            ASSERT_EQ(m_ledger.Live(), waits ? 2u : 0u);
        }
        ASSERT_EQ(m_ledger.delivered, expected) << "sequence " << sequence;
    }
}

/// Against a model of the whole map, with items of every kind in it.
TEST_F(Pairing, TenThousandRandomMapsAreFlushedAndMatchedLikeTheModel) {
    const unsigned seed = support::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    struct Item {
        std::string mono0;
        std::string mono1;
        std::string color;
    };
    const auto name = [](const Image& image) {
        return image ? std::to_string(Ledger::Number(image)) + " " : "";
    };
    for (int sequence = 0; sequence < 10000; ++sequence) {
        m_ledger.delivered.clear();
        DropAll();
        std::map<unsigned, Item> model;
        for (unsigned i = random() % 5; i > 0; --i) {
            const unsigned key = random() % 256;
            if (model.count(key) != 0) {
                continue;
            }
            VideoItem item;
            item.pMonoImage0 = random() % 4 != 0 ? m_ledger.Make() : Image();
            item.pMonoImage1 = random() % 4 != 0 ? m_ledger.Make() : Image();
            item.pColorImage = random() % 3 == 0 ? m_ledger.Make() : Image();
            item.nMonoChannels = 1;
            item.nColorChannels = 3;
            model[key] = {name(item.pMonoImage0), name(item.pMonoImage1), name(item.pColorImage)};
            m_pairing.Store(key, std::move(item));
        }
        const bool hit = !model.empty() && random() % 2 == 0;
        const unsigned key = hit ? model.begin()->first : random() % 256;
        const bool color = random() % 2 == 0;
        DecodedFrame frame = Frame(key, color ? 1 : 2);
        Sets expected;
        const auto found = model.find(key);
        if (color) {
            if (found != model.end() && !found->second.mono0.empty() &&
                !found->second.mono1.empty()) {
                expected.push_back(found->second.mono0 + found->second.mono1 +
                                   name(frame.images[0]) + "8x4 c1 c1 c1");
                model.erase(found);
            }
            m_pairing.TakeColor(frame, m_ledger);
        } else {
            if (found != model.end() && !found->second.color.empty()) {
                expected.push_back(name(frame.images[0]) + name(frame.images[1]) +
                                   found->second.color + "8x4 c1 c1 c3");
                model.erase(found);
            } else {
                for (const auto& [waitingKey, item] : model) {
                    if (!item.mono0.empty() && !item.mono1.empty()) {
                        expected.push_back(item.mono0 + item.mono1 + item.color + "8x4 c1 c1" +
                                           (item.color.empty() ? "" : " c3"));
                    }
                }
                model.clear();
                model[key] = {};
            }
            m_pairing.TakeMono(frame, m_ledger);
        }
        ASSERT_EQ(m_ledger.delivered, expected) << "map " << sequence;
        ASSERT_EQ(m_pairing.Size(), model.size()) << "map " << sequence;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
