#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Korvex3Sync::tunnel {

// Words in memory that another process may write at any time.

inline std::uint64_t LoadWord(const std::byte* place) {
    // Loading does not write, so this works in memory that is mapped for reading.
    auto* const word = const_cast<std::uint64_t*>(reinterpret_cast<const std::uint64_t*>(place));
    return std::atomic_ref(*word).load(std::memory_order_acquire);
}

inline void StoreWord(std::byte* place, std::uint64_t value) {
    std::atomic_ref(*reinterpret_cast<std::uint64_t*>(place))
        .store(value, std::memory_order_release);
}

template <class Words>
Words LoadWords(const std::byte* place) {
    Words words{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = LoadWord(place + i * sizeof(words[i]));
    }
    return words;
}

template <class Words>
void StoreWords(std::byte* place, const Words& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        StoreWord(place + i * sizeof(words[i]), words[i]);
    }
}

}  // namespace Korvex3Sync::tunnel
