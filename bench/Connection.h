#pragma once

#include "Korvex3Sync/Korvex3Sync.h"

namespace bench {

/// A connected head: the virtual head, or the instant head where its library stands in. Ends the
/// program where an operation fails.
class Connection {
public:
    /// Connects a head whose images have `width` x `height` pixels.
    Connection(int width, int height);
    /// Disconnects: no callback runs once it has returned.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Starts a scan of sets with two mono images: every 5 ms from the virtual head, as fast as the
    /// library takes them from the instant head.
    void StartScan(Korvex3Sync::ScanCallBackFunction callback, void* context);

private:
    void* m_handle = nullptr;
};

}  // namespace bench
