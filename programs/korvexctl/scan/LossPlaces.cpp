#include "korvexctl/scan/LossPlaces.h"

#include <array>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr const char* kLine =
    "check the USB connection (cable, port, hub, power) and what else this computer does";

constexpr const char* kSlow =
    "this computer is too slow for service mode: use a longer --period, and close other programs";

constexpr std::array kPlaces{
    LossPlace{"refused_frames", &ScanStatistics::refusedFrames,
              "torn or incomplete frames, refused by the camera library",
              "check the USB connection: try another cable and a port of the computer itself, and "
              "check its power"},
    LossPlace{"rejected_geometry", &ScanStatistics::rejectedGeometry,
              "frames with an impossible image size",
              "the camera library misreads the camera: see the log (-v)"},
    LossPlace{"unrouted_frames", &ScanStatistics::unroutedFrames,
              "frames of a camera that is not part of an image pair",
              "both sensors of the head must have the same serial: see \"korvexctl list\""},
    LossPlace{"undecodable_frames", &ScanStatistics::undecodableFrames,
              "frames that could not be decoded", "this computer has too little memory"},
    LossPlace{"missing_keys", &ScanStatistics::missingKeys, "triggers without a set", kLine},
    LossPlace{"repeated_keys", &ScanStatistics::repeatedKeys,
              "surplus sets, from a frame that arrived twice",
              "the camera or its library delivers a frame twice: see the log (-v)"},
    LossPlace{"color_without_mono", &ScanStatistics::colorWithoutMono,
              "colour frames without their mono frame", kLine},
    LossPlace{"mono_without_color", &ScanStatistics::monoWithoutColor,
              "colour images missing in a set", kLine},
    LossPlace{"sets_dropped", &ScanStatistics::setsDropped,
              "sets dropped because too many were waiting",
              "frames arrive out of order: see the log (-v)"},
    LossPlace{"sets_without_callback", &ScanStatistics::setsWithoutCallback,
              "sets without a callback", "a bug in this program: see the log (-v)"},
    LossPlace{"sets_not_written", &ScanStatistics::setsNotWritten,
              "sets without room in shared memory", kSlow},
    LossPlace{"sets_overwritten", &ScanStatistics::setsOverwritten,
              "sets overwritten before they were read", kSlow},
    LossPlace{"notices_lost", &ScanStatistics::noticesLost, "sets whose notice did not arrive",
              kSlow},
};

}  // namespace

std::span<const LossPlace> LossPlaces() {
    return kPlaces;
}

}  // namespace Korvex3Sync::korvexctl
