// The scene as an image source. The views of each pose are rendered once. A frame is the sum of its
// lights and is kept in packed form until the lighting changes.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"
#include "virtual_head/images/ImageSource.h"
#include "virtual_head/images/PackedFrame.h"
#include "virtual_head/scene/Compose.h"
#include "virtual_head/scene/View.h"

namespace Korvex3Sync::virtual_head::scene {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A packed frame and the lighting that it was composed for.
struct Composed {
    os::Mutex mutex;
    std::optional<Lighting> lighting KORVEX_GUARDED_BY(mutex);
    Bytes packed KORVEX_GUARDED_BY(mutex);
};

/// The views and frames of one pose.
struct PoseFrames {
    std::array<View, 2> views;  // left, right
    Composed mono;
    Composed color;
};

class Scene : public ImageSource {
public:
    explicit Scene(const HeadDescription& description)
        : m_description(description),
          m_pixels(static_cast<std::size_t>(description.width) *
                   static_cast<std::size_t>(description.height)) {}

    bool Prepare() override {
        os::MutexGuard lock(m_preparing);
        if (m_ready) {
            return true;
        }
        try {
            std::vector<PoseFrames> poses(static_cast<std::size_t>(m_description.scene.poses));
            for (PoseFrames& pose : poses) {
                Allocate(pose);
            }
            {
                os::MutexGuard composing(m_composing);
                m_left.resize(m_pixels);
                m_right.resize(m_pixels);
            }
            if (!DrawAll(poses)) {
                return false;
            }
            m_poses = std::move(poses);
        } catch (const std::bad_alloc&) {
            return false;
        }
        m_ready = true;
        return true;
    }

    void WritePacked(const Exposure& exposure, std::uint8_t* packed) override {
        if (m_ready || Prepare()) {
            PoseFrames& pose = m_poses[exposure.trigger % m_poses.size()];
            Copy(exposure, pose, packed);
        } else {
            std::memset(packed, 0, 2 * m_pixels);
        }
        WriteKey(exposure.key, packed);
    }

private:
    void Allocate(PoseFrames& pose) const {
        const bool color = m_description.color;
        scene::Allocate(m_description, color, pose.views[0]);
        scene::Allocate(m_description, false, pose.views[1]);
        Resize(pose.mono, 2 * m_pixels);
        Resize(pose.color, color ? 2 * m_pixels : 0);
    }

    static void Resize(Composed& composed, std::size_t size) {
        os::MutexGuard lock(composed.mutex);
        composed.packed.resize(size);
    }

    /// Renders the views of all poses, with as many threads as the machine has processors. False if
    /// memory runs out.
    bool DrawAll(std::vector<PoseFrames>& poses) const {
        const Painter painter(m_description);
        std::atomic<std::size_t> next{0};
        std::atomic<bool> short_{false};
        const auto draw = [&] {
            try {
                for (std::size_t i = next++; i < 2 * poses.size(); i = next++) {
                    painter.Draw(static_cast<int>(i % 2), static_cast<int>(i / 2),
                                 poses[i / 2].views[i % 2]);
                }
            } catch (const std::bad_alloc&) {
                short_ = true;
            }
        };
        const unsigned helpers = std::clamp(std::thread::hardware_concurrency(), 1U, 8U) - 1;
        std::vector<std::unique_ptr<os::Thread>> threads;
        for (unsigned i = 0; i < helpers && m_pixels > kWorthAThread; ++i) {
            threads.push_back(std::make_unique<os::Thread>());
            threads.back()->Start(draw);
        }
        draw();
        for (const auto& thread : threads) {
            thread->Join();
        }
        return !short_;
    }

    void Copy(const Exposure& exposure, PoseFrames& pose, std::uint8_t* packed) {
        const Lighting lighting = LightingOf(exposure);
        Composed& composed = exposure.color ? pose.color : pose.mono;
        os::MutexGuard lock(composed.mutex);
        if (composed.lighting != lighting) {
            Compose(exposure.color, pose, lighting, composed);
        }
        std::memcpy(packed, composed.packed.data(), composed.packed.size());
    }

    void Compose(bool color, const PoseFrames& pose, const Lighting& lighting, Composed& composed)
        KORVEX_REQUIRES(composed.mutex) {
        os::MutexGuard lock(m_composing);
        if (color) {
            ComposeColor(pose.views[0], lighting.sensors[0], m_left.data());
            PackColor(m_left.data(), m_pixels, composed.packed.data());
        } else {
            ComposeMono(pose.views[0], lighting.sensors[0], lighting, m_left.data());
            ComposeMono(pose.views[1], lighting.sensors[1], lighting, m_right.data());
            PackMono(m_left.data(), m_right.data(), m_pixels, composed.packed.data());
        }
        composed.lighting = lighting;
    }

    static constexpr std::size_t kWorthAThread = 100000;  // pixels

    const HeadDescription m_description;
    const std::size_t m_pixels;
    os::Mutex m_preparing;
    std::atomic<bool> m_ready{false};
    std::vector<PoseFrames> m_poses;  // written before m_ready is set
    os::Mutex m_composing;            // taken inside a frame's lock
    Bytes m_left KORVEX_GUARDED_BY(m_composing);
    Bytes m_right KORVEX_GUARDED_BY(m_composing);
};

}  // namespace
}  // namespace Korvex3Sync::virtual_head::scene

namespace Korvex3Sync::virtual_head {

std::shared_ptr<ImageSource> MakeScene(const HeadDescription& description) {
    return std::make_shared<scene::Scene>(description);
}

}  // namespace Korvex3Sync::virtual_head
