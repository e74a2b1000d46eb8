// The packed-frame split and a plain copy of the same bytes, to be compared within one run.

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "camera/images/PackedPixels.h"

namespace {

constexpr std::size_t kPixels = 1280 * 1024;

/// Frames that do not fit into the caches when there are many of them.
std::vector<std::vector<unsigned char>> Frames(std::size_t count) {
    std::vector<std::vector<unsigned char>> frames(count);
    unsigned char value = 0;
    for (auto& frame : frames) {
        frame.assign(2 * kPixels, ++value);
    }
    return frames;
}

template <class Work>
void Run(benchmark::State& state, std::int64_t bytes, Work work) {
    const auto frames = Frames(static_cast<std::size_t>(state.range(0)));
    std::vector<unsigned char> first(kPixels);
    std::vector<unsigned char> second(kPixels);
    std::size_t next = 0;
    for (auto _ : state) {
        work(frames[next++ % frames.size()].data(), first.data(), second.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}

void Copy(benchmark::State& state) {
    Run(state, 2 * kPixels,
        [](const unsigned char* packed, unsigned char* first, unsigned char* second) {
            std::memcpy(first, packed, kPixels);
            std::memcpy(second, packed + kPixels, kPixels);
        });
}

void SplitMono(benchmark::State& state) {
    Run(state, 2 * kPixels,
        [](const unsigned char* packed, unsigned char* first, unsigned char* second) {
            Korvex3Sync::SplitPackedPixels(packed, kPixels, first, second);
        });
}

void SplitColor(benchmark::State& state) {
    Run(state, 2 * kPixels, [](const unsigned char* packed, unsigned char*, unsigned char* second) {
        Korvex3Sync::SplitPackedPixels(packed, kPixels, nullptr, second);
    });
}

// One frame stays in the cache; 32 do not.
BENCHMARK(Copy)->Arg(1)->Arg(32);
BENCHMARK(SplitMono)->Arg(1)->Arg(32);
BENCHMARK(SplitColor)->Arg(1)->Arg(32);

}  // namespace
