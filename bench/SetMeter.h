#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <vector>

namespace bench {

/// Times image sets on the thread that delivers them, from the end of a warm-up on.
class SetMeter {
public:
    /// Both at least 1.
    SetMeter(std::uint64_t warmUp, std::uint64_t sets) : m_first(warmUp), m_last(warmUp + sets) {}

    /// A set arrived. One thread only; sets after the last one are ignored.
    void Count();
    /// Waits for the last set and returns nanoseconds per set. Ends the program when the sets take
    /// longer than a minute.
    double Wait();

    /// A scan callback that counts sets of two images; its context is a SetMeter.
    static void TakeSet(const void* const& context, std::vector<unsigned char*>& images,
                        const int& width, const int& height, std::vector<int>& imageInfo);

private:
    std::uint64_t m_first;
    std::uint64_t m_last;
    std::uint64_t m_count = 0;
    std::chrono::steady_clock::time_point m_begin;
    std::chrono::steady_clock::time_point m_end;
    std::promise<void> m_done;
};

/// Nanoseconds that the library takes for one set of two mono images from the instant head, from
/// the frame in the camera library to the return of a callback that does nothing.
double NanosecondsPerSet(int width, int height, std::uint64_t warmUp, std::uint64_t sets);

}  // namespace bench
