#pragma once

#include <QStringList>

#include <cstddef>
#include <vector>

namespace Korvex3Sync::link {

/// Copies the images of a snapshot out of shared memory and appends them, each as a `new[]` array
/// of the caller. An empty name gives a null image. All or none: false, with a log record, if a
/// segment is not there or holds fewer than `leastBytes`.
bool AppendSnapshotImages(const QStringList& segments, std::size_t leastBytes,
                          std::vector<unsigned char*>& images);

}  // namespace Korvex3Sync::link
