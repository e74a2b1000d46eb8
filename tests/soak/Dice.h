#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace Korvex3Sync::tests::soak {

/// The users of dice; each has its own sequence.
enum class Thrower : std::uint32_t { Scanner, Caller, Faults };

/// Random numbers for one step of one thread. The same seed gives each step the same numbers,
/// however long the previous steps took and however many numbers they used.
class Dice {
public:
    Dice(std::uint64_t seed, Thrower thrower, std::uint64_t step) {
        std::seed_seq words{Low(seed), High(seed), static_cast<std::uint32_t>(thrower), Low(step),
                            High(step)};
        m_engine.seed(words);
    }

    int From(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    bool Once(int in) { return From(1, in) == 1; }
    template <class Element>
    const Element& OneOf(const std::vector<Element>& elements) {
        return elements[static_cast<std::size_t>(From(0, static_cast<int>(elements.size()) - 1))];
    }

private:
    static std::uint32_t Low(std::uint64_t number) { return static_cast<std::uint32_t>(number); }
    static std::uint32_t High(std::uint64_t number) { return Low(number >> 32U); }

    std::mt19937_64 m_engine;
};

}  // namespace Korvex3Sync::tests::soak
