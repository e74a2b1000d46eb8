// A USB tree with one SuperSpeed board.

#include "platform/include/USBTREE.h"

namespace USBTREE {

bool EnumAllHCD() {
    return true;
}

bool GetSpecifyDeviceTreePath(unsigned long, unsigned long, std::vector<std::string>& paths) {
    paths.emplace_back("HCD0-UPT[4]-DEV");
    return true;
}

void EraseList() {}

}  // namespace USBTREE
