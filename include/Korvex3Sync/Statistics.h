#pragma once

#include <cstdint>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

/// Counts what a connection has delivered and lost since ConnectDevice. Every frame and every set
/// that is not delivered is counted at the place where it got lost. docs/losses.md says what to do
/// about each loss.
///
/// Each mono frame carries a key, its trigger number modulo 256. From the keys the library knows
/// which triggers are missing between the frames that arrived. At any moment
///
///     triggers = setsDelivered - repeatedKeys + missingKeys + setsWithoutCallback
///                + setsDropped + setsPending
///
/// for the triggers up to the last one whose mono frame has arrived. The equation holds for a head
/// with one camera, as long as no more than 246 triggers in a row are missing. A frame that was
/// lost in the grab thread, or that could not be split into images, counts there and again as a
/// missing key.
///
/// In service mode the figures are those of the last image set whose callback has returned: what is
/// lost after it is counted with the next set. A set is delivered when the callback in this process
/// has returned, and the equation has three more terms:
///
///     ... + setsNotWritten + setsOverwritten + noticesLost
///
/// A trigger of TRIGGER_SINGLE_COLOR gives no mono frame, so it is not part of the equation. Its
/// colour frame counts in colorForSnapshot or colorWithoutMono.
struct ScanStatistics {
    /// Frames that the grab threads accepted from the cameras.
    std::uint64_t framesAccepted = 0;
    /// Calls of the scan callback that have returned.
    std::uint64_t setsDelivered = 0;
    /// Delivered sets with a colour image.
    std::uint64_t setsWithColor = 0;
    /// Sets that are waiting for their colour frame or the next mono frame, or are being delivered,
    /// at this moment.
    std::uint64_t setsPending = 0;

    // Lost in the grab thread.

    /// Snaps that gave no frame. This is not a loss while the trigger is off: an idle camera fails
    /// a snap about every 100 ms.
    std::uint64_t failedSnaps = 0;
    /// Failed snaps in which the camera library refused a frame because it was torn or incomplete.
    std::uint64_t refusedFrames = 0;
    /// Frames with an impossible size or channel count. A camera that vanishes between a frame and
    /// the question for its size gives one.
    std::uint64_t rejectedGeometry = 0;

    // Lost between the grab thread and the pairing.

    /// Frames that could not be split into images: no memory, or the camera was connected with the
    /// size 0 x 0.
    std::uint64_t undecodableFrames = 0;
    /// Frames of a camera that delivers no image pair: its serial is not listed twice in a row.
    std::uint64_t unroutedFrames = 0;

    // Lost in the pairing.

    /// Colour frames whose mono frame never arrived, or was no longer waiting.
    std::uint64_t colorWithoutMono = 0;
    /// Sets delivered without colour although their mono frame was taken in a trigger mode that
    /// gives colour. Frames that waited in the camera since a mode without colour are not included,
    /// nor are sets whose colour frame a snapshot took.
    std::uint64_t monoWithoutColor = 0;
    /// Mono frames with a key that was passed already, up to 8 triggers back: repeated frames, and
    /// late frames, which counted as missing before. Each is delivered as an extra set.
    std::uint64_t repeatedKeys = 0;
    /// Sets dropped because too many were waiting, or because there was no memory to keep another
    /// one.
    std::uint64_t setsDropped = 0;
    /// Triggers whose mono frame never arrived. Counting restarts with each start of the trigger
    /// and with each reconnection.
    std::uint64_t missingKeys = 0;
    /// Complete sets that were not delivered: no scan callback was set, it threw, or there was no
    /// memory to call it.
    std::uint64_t setsWithoutCallback = 0;
    /// Colour frames that a snapshot took. They are not lost.
    std::uint64_t colorForSnapshot = 0;

    // Time spent in the scan callback, in microseconds, rounded up; 0 before the first call.

    /// Median: half of the calls took no longer. At most 4 % above the true value.
    std::uint64_t callbackP50Us = 0;
    /// 99th percentile: 99 % of the calls took no longer. At most 4 % above the true value.
    std::uint64_t callbackP99Us = 0;
    /// The longest call; exact.
    std::uint64_t callbackLongestUs = 0;

    // Lost between the device service and this process. Always 0 in direct mode.

    /// Sets that the service could not write into shared memory, because readers held all places.
    std::uint64_t setsNotWritten = 0;
    /// Sets that the service had overwritten before this process read them, or that this process
    /// could not read.
    std::uint64_t setsOverwritten = 0;
    /// Sets whose notice did not arrive. The service sends none while 256 KiB of notices wait for
    /// this process.
    std::uint64_t noticesLost = 0;
    /// Reconnections that the client has made because the image sets had stopped. What the head
    /// triggers in such a gap is counted by no other figure.
    std::uint64_t serviceReconnects = 0;
    /// The length of these gaps in milliseconds: each from the last set before it to the end of the
    /// reconnection.
    std::uint64_t serviceGapMs = 0;
};

/// Gets the counters of a connection. They start at 0 in ConnectDevice and continue over a
/// reconnection, in service mode also over a restart of the service. The counters in the equation
/// above are read at the same moment.
///
/// Returns 7; 6 for a handle that is not a live connection, and in service mode without a connected
/// device. `statistics` stays unchanged if the call fails. Any thread, including both callbacks,
/// and at any time. Does not block.
KORVEX3SYNC_API RETSTATUS GetScanStatistics(void* const& handle, ScanStatistics& statistics);

}  // namespace Korvex3Sync
