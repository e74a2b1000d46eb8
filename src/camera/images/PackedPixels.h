#pragma once

#include <cstddef>

namespace Korvex3Sync {

/// Splits a packed frame into its two images: of each 8 bytes, bytes 3, 2, 1, 0 are the next four
/// pixels of `first` and bytes 7, 6, 5, 4 those of `second`. `packed` holds 2 x `pixels` bytes.
/// Each image gets `pixels` bytes, of which the last `pixels` % 4 are 0. `first` may be null if
/// only the second image is needed. The buffers must not overlap.
void SplitPackedPixels(const unsigned char* packed, std::size_t pixels, unsigned char* first,
                       unsigned char* second);

}  // namespace Korvex3Sync
