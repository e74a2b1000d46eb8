#pragma once

#include <Korvex3Sync/Korvex3Sync.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "device_service/ServiceSession.h"
#include "platform/tunnel/AreaReader.h"

namespace Korvex3Sync::tests {

/// One set, as numbers that stand for its pixels.
struct SetPixels {
    std::vector<std::size_t> images;
    unsigned char key = 0;
    bool operator==(const SetPixels&) const = default;
};

/// Reads sets out of shared memory.
class SetReader {
public:
    SetReader();

    /// All images of a notice, or nothing if one is no longer there.
    std::optional<SetPixels> Read(const Notice& notice);
    /// Keeps the segments of a notice, as far as they are there, until LetGo.
    void Hold(const Notice& notice);
    void LetGo() { m_held.clear(); }

private:
    std::unique_ptr<tunnel::AreaReader> m_area;
    std::vector<tunnel::PinnedSegment> m_held;
};

/// The same head, connected a second time, in direct mode. It keeps what its sets look like.
class DirectWitness {
public:
    DirectWitness();
    DirectWitness(const DirectWitness&) = delete;
    DirectWitness& operator=(const DirectWitness&) = delete;

    std::vector<SetPixels> Sets() const;
    bool WaitForSets(std::size_t count) const;

private:
    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>& imageInfo);

    mutable std::mutex m_mutex;
    std::vector<SetPixels> m_sets;
    const DirectDevice m_device;  // ends first
};

}  // namespace Korvex3Sync::tests
