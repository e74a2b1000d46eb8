#pragma once

#include <cstddef>

namespace Korvex3Sync {

/// Takes the two images of a packed frame apart: of each 8 bytes, bytes 3, 2, 1, 0 are the next
/// four pixels of `first` and bytes 7, 6, 5, 4 those of `second`. `packed` holds 2 x `pixels`
/// bytes; each image gets `pixels` bytes, and the last `pixels` % 4 of them are 0. `first` may be
/// null when only the second image is wanted. The buffers must not overlap.
void SplitPackedPixels(const unsigned char* packed, std::size_t pixels, unsigned char* first,
                       unsigned char* second);

}  // namespace Korvex3Sync
