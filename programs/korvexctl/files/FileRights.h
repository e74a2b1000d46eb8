#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace Korvex3Sync::korvexctl {

/// Gives a file away; fails as ::fchown does.
using GiveAway = int (*)(int descriptor, uid_t owner, gid_t group);

/// Gives the open file the owner, the group and the mode of the one that it replaces, as far as
/// this user may: not everyone may give files away, and not every disk knows modes. A group that
/// cannot be kept leaves no rights to another one; the right to run as owner or group is never
/// given.
void GiveRightsOf(const struct stat& former, int descriptor, GiveAway giveAway = ::fchown);

}  // namespace Korvex3Sync::korvexctl
