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

/// The source of the pixels of an exposure. Thread-safe: several instances fetch at the same time.
class KORVEX_VIRTUAL_HEAD_API ImageSource {
public:
    virtual ~ImageSource() = default;

    /// Prepares what would delay the first frame. Called when a camera is started; the first call
    /// may take seconds, later ones are cheap. False if memory runs out.
    virtual bool Prepare() = 0;
    /// Writes the packed frame of the exposure: 2 x width x height bytes, with marker and key
    /// (PackedFrame.h). Allocates nothing of image size after Prepare.
    virtual void WritePacked(const Exposure& exposure, std::uint8_t* packed) = 0;
};

/// The scene of HeadDescription::scene, in the light of the exposure. Creating it is cheap; Prepare
/// renders it, which takes about 15 bytes per pixel of an image and pose. Without that memory
/// frames are black.
KORVEX_VIRTUAL_HEAD_API std::shared_ptr<ImageSource> MakeScene(const HeadDescription& description);

/// Pairs of real images from HeadDescription::replayFolder, in the order of their names, repeated:
/// trigger number n shows pair n modulo the number of pairs. An image smaller than the sensor is
/// centred on black and never scaled. Its corner is on an even row and column, so that a mosaic
/// keeps its colours. A larger image, a missing partner, an unreadable file, an empty folder or
/// more than 2 GiB of pairs is an error (one line of text). All pairs are read now and stay in
/// memory: 2 x width x height bytes each, and half as much again with a colour image.
KORVEX_VIRTUAL_HEAD_API std::variant<std::shared_ptr<ImageSource>, std::string> MakeReplay(
    const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
