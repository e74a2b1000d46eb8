#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "sync/FramePairing.h"

namespace Korvex3Sync {

/// Images are numbers in disguise; every one must be released exactly once.
class Ledger : public FramePairing::Sink {
public:
    unsigned char* Make() {
        auto* const image = reinterpret_cast<unsigned char*>(++m_next);
        m_live.insert(image);
        return image;
    }
    void Deliver(const std::vector<unsigned char*>& images, int width, int height,
                 const std::vector<int>& channels, bool colorMissing) override {
        std::string set;
        for (unsigned char* image : images) {
            EXPECT_TRUE(m_live.count(image)) << "delivered after its release";
            set += std::to_string(reinterpret_cast<std::uintptr_t>(image)) + " ";
        }
        set += std::to_string(width) + "x" + std::to_string(height);
        for (int channel : channels) {
            set += " c" + std::to_string(channel);
        }
        delivered.push_back(set);
        colorsMissing += colorMissing ? 1 : 0;
    }
    void Lose(PairingLoss loss) override {
        (loss == PairingLoss::ColorWithoutMono ? colorsLost : setsLost) += 1;
    }
    void Release(unsigned char* image) override {
        EXPECT_EQ(m_live.erase(image), 1u) << "released twice, or never made";
        released.push_back(reinterpret_cast<std::uintptr_t>(image));
    }
    std::size_t Live() const { return m_live.size(); }

    std::vector<std::string> delivered;
    std::vector<std::uintptr_t> released;
    int colorsMissing = 0;  // of the delivered sets
    int colorsLost = 0;
    int setsLost = 0;

private:
    std::uintptr_t m_next = 0;
    std::set<unsigned char*> m_live;
};

}  // namespace Korvex3Sync
