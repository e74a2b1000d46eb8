#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/os/Event.h"
#include "sync/board/BoardSession.h"
#include "sync/cameras/CameraSet.h"
#include "sync/frames/ColorCatch.h"

namespace Korvex3Sync {

/// Colour snapshots of one connection, one at a time. The board triggers single colour frames. The
/// wait for each image takes up to 100 s and holds no lock. Trigger and strobe stay as the last
/// step left them.
class ColorSnapshot {
public:
    /// `colorCatch` receives the frames. `stop` is set when the connection is about to be closed;
    /// then every wait ends at once, as if no frame had arrived.
    ColorSnapshot(BoardSession& board, CameraSet& cameras, ColorCatch& colorCatch, os::Event& stop);
    ColorSnapshot(const ColorSnapshot&) = delete;
    ColorSnapshot& operator=(const ColorSnapshot&) = delete;

    /// Takes two images and appends them to `images`, as `new[]` blocks that the caller owns. A
    /// missing image is null.
    RETSTATUS SnapColorImage(std::vector<unsigned char*>& images, int& width, int& height,
                             const int& camOrder, const double& exposure, const int& gain,
                             const CONTROLROUTE& route);
    /// Takes three images. Returns 3 unless `exposures` and `gains` hold two entries each.
    RETSTATUS SnapColorImageForIR(std::vector<unsigned char*>& images, int& width, int& height,
                                  const int& camOrder, const std::vector<double>& exposures,
                                  const std::vector<int>& gains, const CONTROLROUTE& route);
    /// Wakes a waiting snapshot after `stop` has been set. Any thread.
    void WakeUp();

private:
    /// One image of a snapshot after the first.
    struct SnapPhase;

    /// Runs the steps of a snapshot. If one throws, stops catching and frees the images caught so
    /// far.
    template <class Steps>
    RETSTATUS Snapshot(Steps steps);
    void SwitchSnapTrigger(bool on);
    /// True if the frame arrived.
    bool SnapFirst(const CONTROLROUTE& route);
    bool SnapNext(const SnapPhase& phase);
    bool WaitForColorFrame(const char* step);
    RETSTATUS HandOver(std::size_t count, std::vector<unsigned char*>& images, int& width,
                       int& height);

    BoardSession& m_board;
    CameraSet& m_cameras;
    ColorCatch& m_colorCatch;
    os::Event& m_stop;
};

}  // namespace Korvex3Sync
