#include "platform/include/USBTREE.h"
#include "recorder/Recorder.h"

namespace USBTREE {
namespace {

namespace recorder = Korvex3Sync::tests::recorder;

recorder::Recorder& R() {
    return recorder::Recorder::Get();
}

}  // namespace

bool EnumAllHCD() {
    return R().Record("EnumAllHCD");
}

bool GetSpecifyDeviceTreePath(unsigned long vendorId, unsigned long productId,
                              std::vector<std::string>& paths) {
    const bool ok = R().Record("GetSpecifyDeviceTreePath", vendorId, productId);
    if (ok) {
        const auto found = R().UsbPaths();
        paths.insert(paths.end(), found.begin(), found.end());
    }
    return ok;
}

void EraseList() {
    R().Record("EraseList");
}

}  // namespace USBTREE
