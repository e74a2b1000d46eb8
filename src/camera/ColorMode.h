#pragma once

#include "platform/include/zr3DCamera.h"

namespace Korvex3Sync {

// What the camera library's colour modes mean, each question in its own words.

/// Channels that the frame callback is told.
int CallbackChannels(zr3DCamera::ZR_IMG_FORMAT mode);
/// Whether discovery lists the camera as a colour camera.
bool IsColorCamera(zr3DCamera::ZR_IMG_FORMAT mode);
/// Channels of an image that was split from a packed frame, by its format.
int SplitChannels(int format);

inline constexpr int kMonoFormat = 1;
inline constexpr int kBayerFormat = 16;

}  // namespace Korvex3Sync
