#pragma once

#include <vector>

#include "camera/images/Image.h"
#include "camera/images/ImagePool.h"

namespace Korvex3Sync {

/// The images of a packed frame, with the size and the channel count of each: one image for a
/// colour frame, two for a mono frame.
struct SplitFrame {
    std::vector<Image> images;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<int> channels;

    /// Releases the images; the lists keep their memory for the next frame.
    void Clear();
};

/// Splits a packed frame of a camera that was opened with this size. `frame` must be clear. The
/// images come from `pool`. If there is no data, no size or no memory, returns false and leaves
/// `frame` clear.
bool SplitPackedFrame(SplitFrame& frame, const unsigned char* data, int width, int height,
                      ImagePool& pool);

}  // namespace Korvex3Sync
