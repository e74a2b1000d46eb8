#include "korvexctl/files/FileRights.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr mode_t kPermissions = 0777;
constexpr auto kSameOwner = static_cast<uid_t>(-1);

}  // namespace

void GiveRightsOf(const struct stat& former, int descriptor, GiveAway giveAway) {
    mode_t mode = former.st_mode & kPermissions;
    if (giveAway(descriptor, former.st_uid, former.st_gid) != 0 &&
        giveAway(descriptor, kSameOwner, former.st_gid) != 0) {
        // What one group was allowed is not for another one.
        mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    [[maybe_unused]] const int set = ::fchmod(descriptor, mode);
}

}  // namespace Korvex3Sync::korvexctl
