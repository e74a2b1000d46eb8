#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync::tests {

/// What is answered in a state, and the calls into the platform libraries.
struct Cell {
    RETSTATUS status;
    std::vector<std::string> calls;
};

struct Row {
    /// The export; for one of several functions of a name, with more words behind it.
    std::string name;
    std::function<RETSTATUS(void* const& handle)> call;
    Cell connected;
    Cell noBoard;
    Cell boardLost;
    Cell camerasClosed;
    Cell camerasFail;
    /// With a null handle, and nothing connected.
    Cell unconnected{STATUS_NOT_CONNECTED, {}};
    /// The handle has ended after this call in this state.
    bool endsAlways = false;
    bool endsOnFailure = false;
};

/// A row for every export.
std::vector<Row> EveryRow();
/// Those of them that have bodies of their own, and so are no entries of EveryExport.
std::vector<Row> RowsWithBodies();
/// The exports that take no handle. What is connected is nothing to them; what the devices do is.
std::vector<Row> RowsWithoutHandle();

}  // namespace Korvex3Sync::tests
