#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "camera/images/ImagePool.h"
#include "sync/frames/FramePairing.h"

namespace Korvex3Sync::tests {

/// Images that carry a number, and where they went. Must outlive whatever holds its images.
class Ledger : public FramePairing::Sink {
public:
    /// The next image: 1, 2, 3, ...
    Image Make() {
        Released();  // so that no number is written over one that was not read yet
        Image image = m_pool.Take(sizeof(m_next));
        ++m_next;
        std::memcpy(image.Pixels(), &m_next, sizeof(m_next));
        return image;
    }
    static std::uint32_t Number(const Image& image) {
        std::uint32_t number = 0;
        std::memcpy(&number, image.Pixels(), sizeof(number));
        return number;
    }
    void Deliver(const std::vector<Image>& images, int width, int height,
                 const std::vector<int>& channels, bool colorMissing) override {
        std::string set;
        for (const Image& image : images) {
            ASSERT_TRUE(image) << "delivered after its release";
            set += std::to_string(Number(image)) + " ";
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
    /// Images that are in use.
    std::size_t Live() const { return m_pool.Lent(); }
    /// The numbers of the images that came back, in the order in which they came.
    const std::vector<std::uint32_t>& Released() {
        while (m_pool.Free() > 0) {
            Image image = m_pool.Take(sizeof(m_next));
            m_released.push_back(Number(image));
            delete[] image.GiveAway();
        }
        return m_released;
    }

    std::vector<std::string> delivered;
    int colorsMissing = 0;  // of the delivered sets
    int colorsLost = 0;
    int setsLost = 0;

private:
    ImagePool m_pool;
    std::uint32_t m_next = 0;
    std::vector<std::uint32_t> m_released;
};

}  // namespace Korvex3Sync::tests
