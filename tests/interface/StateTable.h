#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync::tests {

// Short names, which keep the rows of a table readable.
inline constexpr RETSTATUS k0 = STATUS_FAILED;
inline constexpr RETSTATUS k1 = STATUS_PROJECTOR;
inline constexpr RETSTATUS k2 = STATUS_CAMERA;
inline constexpr RETSTATUS k5 = STATUS_NOT_SUPPORTED;
inline constexpr RETSTATUS k6 = STATUS_NOT_CONNECTED;
inline constexpr RETSTATUS k7 = STATUS_SUCCESS;

/// The result in a state, and the calls into the platform libraries.
struct Cell {
    RETSTATUS status;
    std::vector<std::string> calls;
};

struct Row {
    /// The export; overloads have further words after the name.
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
/// The rows that are not in EveryExport, because these exports have their own bodies.
std::vector<Row> RowsWithBodies();
/// The exports that take no handle. They depend on the devices, not on a connection.
std::vector<Row> RowsWithoutHandle();

}  // namespace Korvex3Sync::tests
