#pragma once

#include "platform/include/zr3DCamera.h"

namespace Korvex3Sync {

// The meaning of the colour modes of the camera library, and of the formats of split images.

/// The channel count that is passed to the frame callback.
int CallbackChannels(zr3DCamera::ZR_IMG_FORMAT mode);
/// Whether discovery lists the camera as a colour camera.
bool IsColorCamera(zr3DCamera::ZR_IMG_FORMAT mode);
/// The channel count of an image that was split from a packed frame, by its format.
int SplitChannels(int format);

inline constexpr int kMonoFormat = 1;
inline constexpr int kBayerFormat = 16;

}  // namespace Korvex3Sync
