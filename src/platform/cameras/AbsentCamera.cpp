#include "platform/cameras/AbsentCamera.h"

namespace Korvex3Sync::cameras {

int AbsentCamera::Release() {
    m_released.Set();
    return kOk;
}

int AbsentCamera::DeviceTotal(int& total) {
    total = 0;
    return kOk;
}

int AbsentCamera::Snap(unsigned char*& image) {
    image = nullptr;
    m_released.Wait(kSnapLimit);
    return kFailed;
}

}  // namespace Korvex3Sync::cameras
