#include "korvexctl/scan/LossPlaces.h"

#include <array>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr const char* kLine =
    "look at the USB line (cable, port, hub, power), and at what else this computer does";

constexpr std::array kPlaces{
    LossPlace{"refused_frames", &ScanStatistics::refusedFrames,
              "torn or incomplete frames, refused by the camera library",
              "look at the USB line: another cable, a port of the computer itself, its power"},
    LossPlace{"rejected_geometry", &ScanStatistics::rejectedGeometry,
              "frames of a size that no image has",
              "the camera library misreads the camera: see the log (-v)"},
    LossPlace{"unrouted_frames", &ScanStatistics::unroutedFrames,
              "frames of a camera that serves no image pair",
              "both sensors of the head must show under one serial: see \"korvexctl list\""},
    LossPlace{"undecodable_frames", &ScanStatistics::undecodableFrames,
              "frames that could not be taken apart", "this computer has too little memory"},
    LossPlace{"missing_keys", &ScanStatistics::missingKeys, "triggers of which no set came", kLine},
    LossPlace{"repeated_keys", &ScanStatistics::repeatedKeys,
              "sets too many, from a frame that came twice",
              "the camera or its library delivers a frame twice: see the log (-v)"},
    LossPlace{"color_without_mono", &ScanStatistics::colorWithoutMono,
              "colour frames without their mono frame", kLine},
    LossPlace{"mono_without_color", &ScanStatistics::monoWithoutColor,
              "colour images missing in a set", kLine},
    LossPlace{"sets_dropped", &ScanStatistics::setsDropped, "sets dropped, too many were waiting",
              "frames come in disorder: see the log (-v)"},
    LossPlace{"sets_without_callback", &ScanStatistics::setsWithoutCallback,
              "sets that nobody took", "an error of this program: see the log (-v)"},
};

}  // namespace

std::span<const LossPlace> LossPlaces() {
    return kPlaces;
}

}  // namespace Korvex3Sync::korvexctl
