#include "platform/include/USBTREE.h"
#include "recorder/Recorder.h"

namespace USBTREE {
namespace {

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
    for (int board = 0; ok && board < R().Value("boards"); ++board) {
        const int speed = R().Value("speed" + std::to_string(board));
        paths.push_back("HCD[0]-HUB-UPT[" + std::to_string(speed) + "]-DEV");
    }
    return ok;
}

void EraseList() {
    R().Record("EraseList");
}

}  // namespace USBTREE
