#pragma once

#include <functional>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync::tests {

/// How an export treats handle and mode.
enum class Kind { Standard, DirectOnly, AlwaysDirect, Retired };

/// An export that takes a handle, called with arguments that do not matter.
struct Export {
    const char* name;
    Kind kind;
    std::function<RETSTATUS(void* const& handle)> call;
};

/// Every export of the standard, direct-only, always-direct and retired kinds.
const std::vector<Export>& EveryExport();

}  // namespace Korvex3Sync::tests
