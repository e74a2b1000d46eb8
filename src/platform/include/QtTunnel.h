#pragma once

#include <QIODevice>
#include <QString>
#include <memory>

#include "platform/include/PlatformExport.h"

/// Shared-memory areas with named segments. One process writes an area; processes of the same user
/// read it. No function throws.
namespace QtTunnel {

/// A segment of an area. It comes open, unbuffered and sequential, and is read from its start. It
/// belongs to the library until SharedMemory::destroy. One thread at a time may use it; it has no
/// event loop and no signals.
///
/// While a segment that was opened for reading exists, its bytes do not change. Reading past its
/// end gives what is left, then -1. It is never writable.
///
/// A segment that was created is only writable. What is written to it becomes visible to readers as
/// a whole, with unlock() or with destroy(); what was not written is zero. Writing past its end
/// gives what fitted, then -1.
class KORVEX_PLATFORM_API Segment : public QIODevice {
public:
    /// Exclusive access against the writer. Does not wait. False if the segment is locked already,
    /// or if somebody has cut the area's file short.
    bool lock();
    /// False if the segment is not locked, or if a created segment cannot be made visible: readers
    /// use too many segments, memory is missing, or another process has taken over the area.
    bool unlock();

    bool isSequential() const override;
    qint64 bytesAvailable() const override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    friend class SharedMemory;
    struct Impl;
    explicit Segment(std::unique_ptr<Impl> impl);
    ~Segment() override;

    std::unique_ptr<Impl> m_impl;
};

/// An area. Any thread may call the functions; none waits for another process.
class KORVEX_PLATFORM_API SharedMemory {
public:
    /// The area of this name, one object for each name; it belongs to the library and exists until
    /// the process ends. `size` is the number of segments that a new area can name. A new area is
    /// made by the first segment that is created in it. Until another process or this one makes it,
    /// the area has no segments. Null if the name is not 1 to 100 letters, digits, '_', '-' or '.',
    /// or if the user has no private runtime folder.
    static SharedMemory* open(const QString& name, unsigned long long size);

    /// With size 0, an existing segment, opened for reading: null if there is none, or if the
    /// writer is replacing it. With another size, up to 16 MiB, a new segment of this many bytes,
    /// which takes the place of an earlier one of this name: null if the area has another living
    /// writer, or if there is no memory for an area. If the area can name no more segments, the
    /// oldest one goes. The name has 1 to 63 bytes of UTF-8, none of them zero.
    Segment* segment(const QString& name, unsigned long long size);

    /// Destroys a segment object of this area; the stored bytes stay. Ignores null, and objects
    /// that are not (or no longer) segments of this area.
    void destroy(Segment* segment);

private:
    struct Impl;
    explicit SharedMemory(std::unique_ptr<Impl> impl);
    ~SharedMemory();

    std::unique_ptr<Impl> m_impl;
};

}  // namespace QtTunnel
