#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

struct ConnectedHead;
class LeftOn;

struct SnapshotOptions {
    bool infrared = false;          // three images instead of two
    int camera = 0;                 // camera order
    std::vector<double> exposures;  // milliseconds: one, two for infrared
    std::vector<int> gains;         // as many
    int route = 2;                  // strobe output
};

/// One colour mosaic of the size with which the camera was opened; null: it did not come.
using Mosaic = std::unique_ptr<unsigned char[]>;

struct Snapshot {
    std::vector<Mosaic> images;
    /// Where exposure and gain after the last image differ from the requested ones, if they can be
    /// read: "exposure.0 was set to 8 ms and reads back as 5 ms". Empty when they do not.
    std::string notTaken;
};

/// Takes the images of a snapshot. Throws CommandError(DeviceRefused) when none came. Blocks for
/// the cameras, up to 100 s for each image.
///
/// Whether it succeeds or not, the trigger is off afterwards, the strobe outputs that were used are
/// in state 1 (as after connecting), and the camera's exposure and gain are restored if they can be
/// read. `leftOn` notes what the board refused to switch off.
Snapshot TakeSnapshot(const ConnectedHead& head, SnapshotOptions options, LeftOn& leftOn);

}  // namespace Korvex3Sync::korvexctl
