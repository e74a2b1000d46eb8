#pragma once

#include <QString>
#include <cstddef>
#include <string>

#include "device_service/core/ImageAreas.h"

namespace bench {

inline constexpr std::size_t kBytesOfASet =
    Korvex3Sync::device_service::kImagesOfASet * Korvex3Sync::device_service::kImageBytes;
/// How many sets one round has.
inline constexpr int kDeliveredSets = 700;

/// Sends sets every 5 ms to the first client, each with the moment of its beginning in its first
/// eight bytes, until the client has gone ("link": until it is killed). The way is "link" (as the
/// service does, and as its hub), "hub" (as the service does, beside a hub that runs), "shm"
/// (QSharedMemory, and the moment over a socket) or "socket" (all bytes over a socket).
int ServeDelivery(const std::string& way, const QString& path);

}  // namespace bench
