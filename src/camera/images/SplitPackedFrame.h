#pragma once

#include <vector>

#include "camera/images/Image.h"
#include "camera/images/ImagePool.h"

namespace Korvex3Sync {

/// The images of a packed frame, with the size and the channels of each: one image of a colour
/// frame, two of a mono frame.
struct SplitFrame {
    std::vector<Image> images;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<int> channels;

    /// Releases the images; the lists keep their memory for the next frame.
    void Clear();
};

/// Takes a packed frame of a camera that was opened with this size apart. `frame` must be clear.
/// False without data, without a size, or without memory; `frame` is clear then. The images come
/// from `pool`.
bool SplitPackedFrame(SplitFrame& frame, const unsigned char* data, int width, int height,
                      ImagePool& pool);

}  // namespace Korvex3Sync
