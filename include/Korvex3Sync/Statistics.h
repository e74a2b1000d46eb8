#pragma once

#include <cstdint>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

/// What one connection has delivered and lost since it was made. Every frame and set that the
/// library does not deliver is counted at the place where it went; docs/losses.md says what to do
/// about each.
///
/// Of the triggers that a head gave in the modes with mono frames, the library knows those whose
/// key it has seen and those that are missing between them. At any moment
///
///     triggers = setsDelivered - repeatedKeys + missingKeys + setsWithoutCallback
///                + setsDropped + setsPending
///
/// up to the last trigger whose mono frame has arrived, for a head with one camera, as long as no
/// more than 255 triggers in a row are missing (keys count modulo 256). A frame that was lost in
/// the grab thread, or that could not be taken apart, leaves a missing key as well as its count
/// there.
///
/// A trigger of TRIGGER_SINGLE_COLOR gives no mono frame and stands in none of these figures; its
/// colour frame is counted in colorForSnapshot or colorWithoutMono.
struct ScanStatistics {
    /// Frames that a camera delivered and the grab thread accepted.
    std::uint64_t framesAccepted = 0;
    /// Sets that the scan callback was called with, counted when it has returned.
    std::uint64_t setsDelivered = 0;
    /// Those with a colour image.
    std::uint64_t setsWithColor = 0;
    /// Sets that now wait for their colour frame or for the next mono frame, or are being
    /// delivered.
    std::uint64_t setsPending = 0;

    // Lost in the grab thread.

    /// Snaps that gave no frame. An idle camera fails one about every 100 ms: without a running
    /// trigger this is no loss.
    std::uint64_t failedSnaps = 0;
    /// Those of them in which the camera library had a frame and refused it (torn, incomplete).
    std::uint64_t refusedFrames = 0;
    /// Frames of a size or channel count that no image has.
    std::uint64_t rejectedGeometry = 0;

    // Lost between the grab thread and the pairing.

    /// Frames that could not be taken apart: no memory, or a camera that was connected without a
    /// size.
    std::uint64_t undecodableFrames = 0;
    /// Frames of a camera that serves no image pair.
    std::uint64_t unroutedFrames = 0;

    // Lost in the pairing.

    /// Colour frames whose mono frame was not there any more, or never came.
    std::uint64_t colorWithoutMono = 0;
    /// Sets delivered without colour although the trigger mode that was in force when the mono
    /// frame arrived gives colour. A set whose colour frame a snapshot took is none of them.
    std::uint64_t monoWithoutColor = 0;
    /// Mono frames with the key of the mono frame before: delivered, each as one set too many.
    std::uint64_t repeatedKeys = 0;
    /// Sets dropped because too many were waiting, because the waiting ones were cleared, or
    /// because there was no memory for one more to wait.
    std::uint64_t setsDropped = 0;
    /// Keys whose mono frame never came, counted from each trigger start or reconnection on.
    std::uint64_t missingKeys = 0;
    /// Sets that were complete while no scan callback was set, whose callback threw, or for whose
    /// callback there was no memory.
    std::uint64_t setsWithoutCallback = 0;
    /// Colour frames that a snapshot took out of the stream; not lost.
    std::uint64_t colorForSnapshot = 0;

    // Time in the scan callback, in microseconds, rounded up; 0 before the first call.

    /// Half of the calls took no longer; at most 4 % above the true value.
    std::uint64_t callbackP50Us = 0;
    /// 99 % of the calls took no longer; at most 4 % above the true value.
    std::uint64_t callbackP99Us = 0;
    std::uint64_t callbackLongestUs = 0;
};

/// What the connection has delivered and lost since ConnectDevice, a reconnection included. The
/// figures of the pairing are of one moment.
///
/// Returns 7; 6 for a null handle and 4 in service mode, both leaving `statistics` as it is. Any
/// thread, also from a callback, also while another operation or a callback runs. Does not block.
KORVEX3SYNC_API RETSTATUS GetScanStatistics(void* const& handle, ScanStatistics& statistics);

}  // namespace Korvex3Sync
