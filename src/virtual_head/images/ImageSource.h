#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

#include "virtual_head/base/Export.h"
#include "virtual_head/cameras/Exposure.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

/// Where the pixels of an exposure come from. Thread-safe: several instances fetch at once.
class KORVEX_VIRTUAL_HEAD_API ImageSource {
public:
    virtual ~ImageSource() = default;

    /// Does beforehand what would hold up the first frame; called when a camera is started, and
    /// cheap from the second time on. May take seconds. False when memory is short.
    virtual bool Prepare() = 0;
    /// Writes the packed frame of the exposure: 2 x width x height bytes, with marker and key
    /// (PackedFrame.h). No allocation of image size once Prepare has been called.
    virtual void WritePacked(const Exposure& exposure, std::uint8_t* packed) = 0;
};

/// The scene that HeadDescription::scene tells, in the light of the exposure. Making it is cheap;
/// Prepare draws it and takes about 15 bytes for each pixel of one image and each pose. Without
/// that memory frames are black.
KORVEX_VIRTUAL_HEAD_API std::shared_ptr<ImageSource> MakeScene(const HeadDescription& description);

/// Pairs of real images from HeadDescription::replayFolder, in the order of their names, over and
/// over: trigger number n shows pair n modulo their count. An image smaller than the sensor is
/// centred on black, never scaled, its corner on an even row and column so that a mosaic keeps its
/// colours; a larger one, a missing partner, an unreadable file, an empty folder or more than 200
/// pairs is an error (one line of text). All pairs are read at once and stay in memory, 2 x width x
/// height bytes each, and half of that again where there is a colour image.
KORVEX_VIRTUAL_HEAD_API std::variant<std::shared_ptr<ImageSource>, std::string> MakeReplay(
    const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
