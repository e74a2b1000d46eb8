// What the library takes for one whole set, from the frame in the camera library to the return of
// the callback, beside memcpy of the same bytes from the same kind of frames, in turns.

#include <cstring>
#include <thread>

#include "Report.h"
#include "SetMeter.h"

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 1024;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr std::uint64_t kWarmUp = 200;
constexpr std::uint64_t kSets = 2'000;
constexpr int kRounds = 11;
/// As many frames as the instant camera has.
constexpr std::size_t kFrames = 32;
/// The library holds the images of the set that waits and those of the frame that it takes apart.
constexpr std::size_t kSetsHeld = 2;

double CopyNanoseconds() {
    bench::SetMeter meter(kWarmUp, kSets);
    std::thread copier([&meter] {
        unsigned char value = 0;
        std::vector<std::vector<unsigned char>> frames(kFrames);
        for (auto& frame : frames) {
            frame.assign(2 * kPixels, ++value);
        }
        std::vector<std::vector<unsigned char>> images(2 * kSetsHeld);
        for (auto& image : images) {
            image.resize(kPixels);
        }
        for (std::uint64_t set = 0; set < kWarmUp + kSets; ++set) {
            const unsigned char* const frame = frames[set % kFrames].data();
            const std::size_t first = 2 * (set % kSetsHeld);
            std::memcpy(images[first].data(), frame, kPixels);
            std::memcpy(images[first + 1].data(), frame + kPixels, kPixels);
            asm volatile("" : : "r"(images.data()) : "memory");  // the copies are used
            meter.Count();
        }
    });
    const double took = meter.Wait();
    copier.join();
    return took;
}

}  // namespace

int main() {
    bench::SilenceLibrary();
    std::vector<double> library;
    std::vector<double> copy;
    for (int round = 0; round < kRounds; ++round) {
        constexpr double kNanosecondsToMicroseconds = 1e-3;
        library.push_back(bench::NanosecondsPerSet(kWidth, kHeight, kWarmUp, kSets) *
                          kNanosecondsToMicroseconds);
        copy.push_back(CopyNanoseconds() * kNanosecondsToMicroseconds);
    }
    bench::PrintSpread("library, frame to callback", library, "us");
    bench::PrintSpread("memcpy of the same bytes", copy, "us");
    bench::PrintSpread("library / memcpy", bench::Ratios(library, copy), "");
}
