#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace Korvex3Sync::soak {

/// Chance of one thread; the same seed gives the same throws.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}

    int From(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    bool Once(int in) { return From(1, in) == 1; }
    template <class Element>
    const Element& OneOf(const std::vector<Element>& elements) {
        return elements[static_cast<std::size_t>(From(0, static_cast<int>(elements.size()) - 1))];
    }

private:
    std::mt19937_64 m_engine;
};

}  // namespace Korvex3Sync::soak
