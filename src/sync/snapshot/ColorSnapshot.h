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

/// Colour snapshots of one connection, one at a time. The board takes single colour frames; each
/// image is waited for without a lock, up to 100 s. Trigger and strobe stay as the last step left
/// them.
class ColorSnapshot {
public:
    /// The frames come into `colorCatch`. `stop` is set when the connection is about to be closed:
    /// then every wait ends at once, as if no frame had come.
    ColorSnapshot(BoardSession& board, CameraSet& cameras, ColorCatch& colorCatch, os::Event& stop);
    ColorSnapshot(const ColorSnapshot&) = delete;
    ColorSnapshot& operator=(const ColorSnapshot&) = delete;

    /// Two images. Images are appended and are the caller's (`new[]` blocks); one that is missing
    /// is null.
    RETSTATUS SnapColorImage(std::vector<unsigned char*>& images, int& width, int& height,
                             const int& camOrder, const double& exposure, const int& gain,
                             const CONTROLROUTE& route);
    /// Three images; `exposures` and `gains` hold two entries each, otherwise 3.
    RETSTATUS SnapColorImageForIR(std::vector<unsigned char*>& images, int& width, int& height,
                                  const int& camOrder, const std::vector<double>& exposures,
                                  const std::vector<int>& gains, const CONTROLROUTE& route);
    /// Any thread: wakes a snapshot that waits, once `stop` is set.
    void WakeUp();

private:
    /// One image of a snapshot after the first.
    struct SnapPhase;

    /// Runs the steps of a snapshot. What one that threw had caught is freed, and nothing is caught
    /// for it any more.
    template <class Steps>
    RETSTATUS Snapshot(Steps steps);
    void SwitchSnapTrigger(bool on);
    /// Whether the frame came.
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
