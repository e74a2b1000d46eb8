#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace guide {

using Pixels = std::vector<unsigned char>;

/// An image set of our own, copied from the library's.
struct ImageSet {
    int width = 0;
    int height = 0;
    std::vector<Pixels> images;  // left, right, and colour if the set has it
};

/// Passes image sets from the library's thread to one of ours. It never makes the library wait: if
/// the queue is full, a set is dropped and counted.
class SetQueue {
public:
    explicit SetQueue(std::size_t room) : m_room(room) {}

    /// The scan callback; its context is the queue.
    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>&) {
        auto* const queue = static_cast<SetQueue*>(const_cast<void*>(context));
        try {
            queue->Add(images, width, height);
        } catch (const std::bad_alloc&) {
            ++queue->m_dropped;  // a callback must not throw
        }
    }

    /// The next set, or nothing if none arrived in time.
    std::optional<ImageSet> Take(std::chrono::milliseconds patience) {
        std::unique_lock lock(m_mutex);
        if (!m_arrived.wait_for(lock, patience, [this] { return !m_sets.empty(); })) {
            return std::nullopt;
        }
        ImageSet set = std::move(m_sets.front());
        m_sets.pop_front();
        return set;
    }

    std::size_t Dropped() const { return m_dropped; }

private:
    void Add(const std::vector<unsigned char*>& images, int width, int height) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_sets.size() >= m_room) {
                ++m_dropped;
                return;
            }
        }
        ImageSet set{width, height, {}};
        const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        for (const unsigned char* image : images) {
            set.images.emplace_back(image, image + size);
        }
        const std::lock_guard lock(m_mutex);
        m_sets.push_back(std::move(set));
        m_arrived.notify_one();
    }

    const std::size_t m_room;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<ImageSet> m_sets;
    std::atomic<std::size_t> m_dropped{0};
};

}  // namespace guide
