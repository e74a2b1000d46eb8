#include "interface/Mode.h"

#include <atomic>
#include <cstdint>

namespace Korvex3Sync {
namespace {

std::atomic<bool> g_serviceMode{false};
std::atomic<zr3DHandiSyncQT*> g_serviceClient{nullptr};
std::atomic<std::int32_t> g_connectionMarker{0};

}  // namespace

bool ServiceMode() {
    return g_serviceMode;
}

void SetServiceMode(bool on) {
    g_serviceMode = on;
}

zr3DHandiSyncQT* ServiceClient() {
    return g_serviceClient;
}

void SetServiceClient(zr3DHandiSyncQT* client) {
    g_serviceClient = client;
}

void ResetConnectionMarker() {
    g_connectionMarker = 0;
}

}  // namespace Korvex3Sync
