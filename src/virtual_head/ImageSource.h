#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

#include "virtual_head/Export.h"
#include "virtual_head/HeadDescription.h"
#include "virtual_head/TriggerClock.h"

namespace Korvex3Sync::virtual_head {

/// Where the pixels of an exposure come from. Thread-safe: several instances fetch at once.
class KORVEX_VIRTUAL_HEAD_API ImageSource {
public:
    virtual ~ImageSource() = default;

    /// Writes the packed frame of the exposure: 2 x width x height bytes, with marker and key
    /// (PackedFrame.h). No allocation of image size.
    virtual void WritePacked(const Exposure& exposure, std::uint8_t* packed) const = 0;
};

/// The built-in test pattern: cheap, different from frame to frame and from sensor to sensor.
KORVEX_VIRTUAL_HEAD_API std::shared_ptr<ImageSource> MakeTestPattern(
    const HeadDescription& description);

/// Pairs of real images from HeadDescription::replayFolder, in the order of their names, over and
/// over: trigger number n shows pair n modulo their count. An image smaller than the sensor is
/// centred on black, never scaled, its corner on an even row and column so that a mosaic keeps its
/// colours; a larger one, a missing partner, an unreadable file, an empty folder or more than 200
/// pairs is an error (one line of text). All pairs are read at once and stay in memory, 2 x width x
/// height bytes each, and half of that again where there is a colour image.
KORVEX_VIRTUAL_HEAD_API std::variant<std::shared_ptr<ImageSource>, std::string> MakeReplay(
    const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
