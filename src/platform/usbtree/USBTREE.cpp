#include "platform/include/USBTREE.h"

#include <glog/logging.h>

#include <atomic>
#include <memory>

#include "platform/include/BoardFacts.h"
#include "platform/os/UsbDevices.h"
#include "platform/usbtree/DeviceTree.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace USBTREE {
namespace {

using namespace Korvex3Sync;
using virtual_head::VirtualHead;

usbtree::DeviceTree& Tree() {
    // Never destroyed: other threads may still be in a call while the process ends.
    static auto* const tree = new usbtree::DeviceTree;
    return *tree;
}

// Where the board of the virtual head is attached.
constexpr const char* kVirtualPort = "0-2.1";

std::vector<usbtree::Device> Devices(VirtualHead& head) {
    if (!head.GetFaults().Board().Reach("EnumAllHCD")) {
        return {};
    }
    return {{hardware::kBoardVendor, hardware::kBoardProduct,
             usbtree::DevicePath(kVirtualPort, head.Description().usbSpeed)}};
}

void SayNoBoardOnce() {
    static std::atomic_flag said;
    if (!said.test_and_set()) {
        LOG(WARNING) << "The USB tree has no synchronization board: none is attached and no "
                        "virtual head was requested. Set KORVEX_VIRTUAL_HEAD to \"default\" or to "
                        "a head file to work with a simulated one.";
    }
}

std::vector<usbtree::Device> RealDevices() {
    std::vector<usbtree::Device> devices;
    bool board = false;
    for (const os::UsbDevice& device : os::ListUsbDevices()) {
        board |=
            device.vendor == hardware::kBoardVendor && device.product == hardware::kBoardProduct;
        devices.push_back(
            {device.vendor, device.product,
             usbtree::DevicePath(device.port, usbtree::SpeedNumber(device.megabits))});
    }
    if (!board) {
        SayNoBoardOnce();
    }
    return devices;
}

// Nothing if there is no head, but one was requested.
std::vector<usbtree::Device> DevicesWithoutHead() {
    return virtual_head::MayUseRealDevices() ? RealDevices() : std::vector<usbtree::Device>{};
}

// Runs a call on the requested head: applies the faults that are ordered for it and enters it in
// the journal. `work` gets null if no head is requested.
template <typename Work>
bool Run(const char* call, const std::string& arguments, Work work) {
    const std::shared_ptr<VirtualHead> head = virtual_head::RequestedVirtualHead();
    if (!head) {
        return work(nullptr);
    }
    const bool done = !head->GetFaults().Meet(call) && work(head.get());
    head->GetJournal().Add(call, arguments, done ? "true" : "false");
    return done;
}

// No exception may cross the interface: a call that throws (no memory) fails.
template <typename Call>
bool Guarded(Call call) {
    try {
        return call();
    } catch (...) {
        return false;
    }
}

}  // namespace

bool EnumAllHCD() {
    return Guarded([] {
        Tree().Erase();
        return Run("EnumAllHCD", "", [](VirtualHead* head) {
            Tree().Replace(head ? Devices(*head) : DevicesWithoutHead());
            return true;
        });
    });
}

bool GetSpecifyDeviceTreePath(unsigned long vendorId, unsigned long productId,
                              std::vector<std::string>& paths) {
    return Guarded([&] {
        return Run("GetSpecifyDeviceTreePath",
                   std::to_string(vendorId) + ", " + std::to_string(productId),
                   [&](VirtualHead*) { return Tree().Find(vendorId, productId, paths); });
    });
}

void EraseList() {
    Guarded([] {
        return Run("EraseList", "", [](VirtualHead*) {
            Tree().Erase();
            return true;
        });
    });
}

}  // namespace USBTREE
