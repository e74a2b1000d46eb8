#include "camera/ColorMode.h"

namespace Korvex3Sync {

int CallbackChannels(zr3DCamera::ZR_IMG_FORMAT mode) {
    switch (static_cast<int>(mode)) {
        case 2:
            return 2;
        case 17:
            return 3;
        default:
            return 1;
    }
}

int BytesPerPixel(zr3DCamera::ZR_IMG_FORMAT mode) {
    switch (static_cast<int>(mode)) {
        case 2:
            return 2;
        case 17:
            return 3;
        case 18:
            return 6;
        default:
            return 1;
    }
}

bool IsColorCamera(zr3DCamera::ZR_IMG_FORMAT mode) {
    const int number = static_cast<int>(mode);
    return number >= 16 && number <= 18;
}

int SplitChannels(int format) {
    switch (format) {
        case 2:
            return 2;
        case 17:
            return 3;
        case 18:
            return 6;
        default:
            return 1;
    }
}

}  // namespace Korvex3Sync
