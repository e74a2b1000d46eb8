#pragma once

/// Includes the whole public interface of libKorvex3Sync, which needs only the C++ standard
/// library.

#include "Korvex3Sync/Cameras.h"
#include "Korvex3Sync/Connection.h"
#include "Korvex3Sync/Discovery.h"
#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Images.h"
#include "Korvex3Sync/Light.h"
#include "Korvex3Sync/Statistics.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
