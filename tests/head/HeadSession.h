#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"
#include "virtual_head/VirtualHead.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::tests {

/// One image set, copied.
struct ImageSet {
    std::vector<std::vector<unsigned char>> images;
    int width = 0;
    int height = 0;
    std::vector<int> info;
    /// The key, which replaces pixel 3 of the right image.
    unsigned char Key() const { return images.at(1).at(3); }
};

/// Collects image sets, or hands each to a check and keeps none.
class SetCollector {
public:
    using Check = std::function<void(const ImageSet&, std::size_t number)>;

    SetCollector() = default;
    explicit SetCollector(Check check) : m_check(std::move(check)) {}

    static void Receive(const void* const& context, std::vector<unsigned char*>& images,
                        const int& width, const int& height, std::vector<int>& imageInfo);
    /// Waits until this many sets have come.
    bool WaitFor(std::size_t count);
    std::size_t Count() const;
    std::vector<ImageSet> Sets() const;

private:
    const Check m_check;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<ImageSet> m_sets;
    std::size_t m_count = 0;
};

/// A test with its own virtual head. Disconnects at the end, and fails if an ordered fault was
/// never used.
class HeadSession : public testing::Test {
protected:
    ~HeadSession() override;

    void Request(const virtual_head::HeadDescription& description);
    /// A head with small images, for tests that are not about pixels.
    static virtual_head::HeadDescription SmallHead();
    virtual_head::VirtualHead& Head() { return *m_head; }

    /// Discovers the cameras and connects all of them.
    RETSTATUS Connect();
    RETSTATUS Trigger(CAMERA_TRIGGER_MODE mode, int periodMs);
    RETSTATUS TriggerOff();

    /// Declare it after everything that the callbacks of a test use, so that the callbacks end
    /// first.
    class EndedFirst {
    public:
        explicit EndedFirst(HeadSession& test) : m_test(test) {}
        ~EndedFirst() { DisConnectDevice(m_test.m_handle); }
        EndedFirst(const EndedFirst&) = delete;
        EndedFirst& operator=(const EndedFirst&) = delete;

    private:
        HeadSession& m_test;
    };

    void* m_handle = nullptr;

private:
    std::shared_ptr<virtual_head::VirtualHead> m_head;
};

}  // namespace Korvex3Sync::tests
