#include "platform/os/Cancellation.h"

#include <pthread.h>

namespace Korvex3Sync::os {

CancellationOff::CancellationOff() {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before);
}

CancellationOff::~CancellationOff() {
    pthread_setcancelstate(m_before, &m_before);
}

}  // namespace Korvex3Sync::os
