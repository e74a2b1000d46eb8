#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "virtual_head/config/SceneDescription.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {

/// Describes a virtual head. Each member has the default that applies if a head file does not set
/// it. The limits are in HeadRules.cpp.
struct HeadDescription {
    /// Begins with the maker "KV", like the serial. Discovery looks for this type.
    std::string cameraType = "KV00";
    /// The serial that both sensors share, 3 to 64 characters.
    std::string cameraSerial = "KV00A1001";
    std::string boardSerial = "VH3267-0001";
    std::string firmware = "1.4.0";
    /// Size of one image in pixels, 16 to 2000 each; width x height is a multiple of 4.
    int width = 1280;
    int height = 1024;
    bool color = true;
    /// Gain range of the sensors, 0 to 63 each.
    int gainLow = 0;
    int gainHigh = 16;
    /// Negotiated USB speed as in `UPT[n]-DEV`: 1 low, 2 full, 3 high, 4 SuperSpeed.
    int usbSpeed = 4;
    /// How many frames can wait in each camera instance, 1 to 4096. A frame for which there is no
    /// room is lost and counted.
    int cameraBuffers = 64;
    /// The board's user memory at power-on: pages of 256 bytes.
    std::array<std::uint8_t, 4096> userMemory{};
    /// Folder with leftNN.png and rightNN.png (8-bit grey), and optionally colorNN.png (colour
    /// mosaic). Empty: the scene is rendered.
    std::filesystem::path replayFolder;
    /// Faults that begin by themselves, and the seed of their random draws.
    std::vector<TimedFault> faults;
    std::uint64_t faultSeed = 1;
    /// What the sensors see if no images are replayed.
    SceneDescription scene;
};

}  // namespace Korvex3Sync::virtual_head
