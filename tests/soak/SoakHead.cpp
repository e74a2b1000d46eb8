#include "soak/SoakHead.h"

#include <atomic>

namespace Korvex3Sync::tests::soak {
namespace {

// The built-in head's two sensors, of the size that Soak.cpp asks for.
char g_serial[] = "KV00A1001";
constexpr int kWidth = 64;
constexpr int kHeight = 32;

std::atomic<unsigned long> g_sets{0};
std::atomic<unsigned long> g_statuses{0};
std::atomic<unsigned> g_brightness{0};
int g_context = 0;

void OnSet(const void* const&, std::vector<unsigned char*>& images, const int& width,
           const int& height, std::vector<int>&) {
    // Every byte is read, so that the address sanitizer finds an image that was released.
    unsigned sum = 0;
    for (const unsigned char* image : images) {
        for (int i = 0; i < width * height; ++i) {
            sum += image[i];
        }
    }
    g_brightness = sum;
    ++g_sets;
}

void OnStatus(const void* const&, const unsigned char&, const unsigned char&) {
    ++g_statuses;
}

}  // namespace

RETSTATUS SoakHead::Connect() {
    const RETSTATUS status = ConnectDevice("KV00", "", {g_serial, g_serial}, {kWidth, kWidth},
                                           {kHeight, kHeight}, handle);
    if (status == STATUS_SUCCESS) {
        SetScanCallback(handle, true);
        SetStatusCallback(handle, true);
    }
    return status;
}

void SoakHead::Disconnect() {
    DisConnectDevice(handle);
}

void SoakHead::SetScanCallback(void* const& handle, bool on, bool withContext) {
    SetScanCallBackFunction(handle, on ? OnSet : nullptr, withContext ? &g_context : nullptr);
}

void SoakHead::SetStatusCallback(void* const& handle, bool on, bool withContext) {
    SetStatusCallBackFunction(handle, on ? OnStatus : nullptr, withContext ? &g_context : nullptr);
}

unsigned long SoakHead::Sets() {
    return g_sets;
}

unsigned long SoakHead::Statuses() {
    return g_statuses;
}

}  // namespace Korvex3Sync::tests::soak
