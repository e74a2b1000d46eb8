#include "platform/cameras/AbsentCamera.h"

namespace Korvex3Sync::cameras {

bool AbsentCamera::Release() {
    m_released.Set();
    return true;
}

bool AbsentCamera::CountDevices(int& total) {
    total = 0;
    return true;
}

bool AbsentCamera::Snap(Deadline deadline, unsigned char*& image) {
    image = nullptr;
    m_released.WaitUntil(deadline);
    return false;
}

}  // namespace Korvex3Sync::cameras
