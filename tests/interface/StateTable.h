#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync {

/// What is answered in a state, and the calls into the platform libraries.
struct Cell {
    RETSTATUS status;
    std::vector<std::string> calls;
};

struct Row {
    std::string name;
    std::function<RETSTATUS(void* const& handle)> call;
    Cell connected;
    Cell noBoard;
    Cell boardLost;
    Cell camerasLost;
    RETSTATUS nullHandle = STATUS_NOT_CONNECTED;
    /// The handle has ended after this call in this state.
    bool endsAlways = false;
    bool endsOnFailure = false;
};

/// A row for every export that takes a handle.
std::vector<Row> EveryRow();
/// Those of them that have bodies of their own, and so are no entries of EveryExport.
std::vector<Row> RowsWithBodies();

}  // namespace Korvex3Sync
