#include "platform/include/QtTunnel.h"

#include <glog/logging.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "platform/tunnel/AreaReader.h"
#include "platform/tunnel/AreaWriter.h"

namespace QtTunnel {

namespace {

using namespace Korvex3Sync;

constexpr unsigned long long kLargestSegment = 16ULL << 20U;

/// UTF-8; empty if the text has no such form.
std::string Utf8(const QString& text) {
    const std::string bytes = text.toStdString();
    return QString::fromStdString(bytes) == text ? bytes : std::string();
}

// No exception may cross the interface: a call that throws (no memory) fails.
template <class Result, class Call>
Result GuardedCall(Result failure, Call call) {
    try {
        return call();
    } catch (...) {
        return failure;
    }
}

}  // namespace

/// Either a pinned segment that is read, or bytes that are collected for the writer.
struct Segment::Impl {
    std::optional<tunnel::PinnedSegment> pinned;

    tunnel::AreaWriter* writer = nullptr;
    std::string name;
    std::vector<char> collected;
    bool unpublished = false;

    std::size_t position = 0;
    bool locked = false;

    bool Publish() {
        const tunnel::SegmentBytes segment{name, collected.data(), collected.size()};
        unpublished = unpublished && !writer->WriteSet({&segment, 1});
        return !unpublished;
    }
};

Segment::Segment(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {
    QIODevice::open((m_impl->pinned ? QIODevice::ReadOnly : QIODevice::WriteOnly) |
                    QIODevice::Unbuffered);
}

Segment::~Segment() = default;

bool Segment::lock() {
    if (m_impl->locked || (m_impl->pinned && m_impl->pinned->Bytes().empty())) {
        return false;
    }
    m_impl->locked = true;
    return true;
}

bool Segment::unlock() {
    if (!std::exchange(m_impl->locked, false)) {
        return false;
    }
    return m_impl->pinned || GuardedCall(false, [&] { return m_impl->Publish(); });
}

bool Segment::isSequential() const {
    return true;
}

qint64 Segment::bytesAvailable() const {
    const std::size_t size = m_impl->pinned ? m_impl->pinned->Bytes().size() : 0;
    return static_cast<qint64>(size - std::min(size, m_impl->position)) +
           QIODevice::bytesAvailable();
}

qint64 Segment::readData(char* data, qint64 maxSize) {
    const std::span<const std::byte> bytes = m_impl->pinned->Bytes();
    const std::size_t left = bytes.size() - std::min(bytes.size(), m_impl->position);
    const std::size_t count = std::min(left, static_cast<std::size_t>(maxSize));
    if (count > 0) {
        std::memcpy(data, bytes.data() + m_impl->position, count);
        m_impl->position += count;
    }
    return count > 0 || maxSize == 0 ? static_cast<qint64>(count) : -1;
}

qint64 Segment::writeData(const char* data, qint64 maxSize) {
    const std::size_t left = m_impl->collected.size() - m_impl->position;
    const std::size_t count = std::min(left, static_cast<std::size_t>(maxSize));
    if (count > 0) {
        std::memcpy(m_impl->collected.data() + m_impl->position, data, count);
        m_impl->position += count;
        m_impl->unpublished = true;
    }
    return count > 0 || maxSize == 0 ? static_cast<qint64>(count) : -1;
}

struct SharedMemory::Impl {
    Impl(std::string areaName, unsigned long long segmentCount,
         std::unique_ptr<tunnel::AreaReader> areaReader)
        : name(std::move(areaName)), segments(segmentCount), reader(std::move(areaReader)) {}

    /// Null, with a log line, if this process cannot write the area.
    tunnel::AreaWriter* Writer() {
        os::MutexGuard lock(mutex);
        if (!writer) {
            std::string reason;
            writer = tunnel::AreaWriter::MakeUnlessOwned(name, segments, kLargestSegment, reason);
            if (!writer) {
                LOG(ERROR) << "No segment is created in the shared-memory area " << name << ": "
                           << reason;
            }
        }
        return writer.get();
    }

    std::unique_ptr<Segment::Impl> Create(const std::string& segment, unsigned long long size) {
        if (size > kLargestSegment || !tunnel::SegmentNameIsAllowed(segment)) {
            return nullptr;
        }
        auto created = std::make_unique<Segment::Impl>();
        created->writer = Writer();
        created->name = segment;
        created->collected.resize(size);
        created->unpublished = true;
        return created->writer != nullptr ? std::move(created) : nullptr;
    }

    std::unique_ptr<Segment::Impl> Find(const std::string& segment) const {
        auto pinned = reader->Pin(segment);
        if (!pinned) {
            return nullptr;
        }
        auto found = std::make_unique<Segment::Impl>();
        found->pinned.emplace(std::move(*pinned));
        return found;
    }

    const std::string name;
    const unsigned long long segments;
    const std::unique_ptr<tunnel::AreaReader> reader;
    os::Mutex mutex;
    std::unique_ptr<tunnel::AreaWriter> writer KORVEX_GUARDED_BY(mutex);
    std::set<Segment*> live KORVEX_GUARDED_BY(mutex);
};

SharedMemory::SharedMemory(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

SharedMemory::~SharedMemory() = default;

SharedMemory* SharedMemory::open(const QString& name, unsigned long long size) {
    // Never destroyed: other threads may still be in a call while the process ends.
    static auto* const mutex = new os::Mutex;
    static auto* const areas = new std::map<std::string, SharedMemory*>;
    return GuardedCall<SharedMemory*>(nullptr, [&]() -> SharedMemory* {
        const std::string area = Utf8(name);
        os::MutexGuard lock(*mutex);
        if (const auto known = areas->find(area); known != areas->end()) {
            return known->second;
        }
        std::string reason;
        std::unique_ptr<tunnel::AreaReader> reader = tunnel::AreaReader::Open(area, reason);
        if (!reader) {
            LOG(ERROR) << "Cannot open a shared-memory area: " << reason;
            return nullptr;
        }
        SharedMemory*& opened = (*areas)[area];
        opened = new SharedMemory(std::make_unique<Impl>(area, size, std::move(reader)));
        return opened;
    });
}

Segment* SharedMemory::segment(const QString& name, unsigned long long size) {
    return GuardedCall<Segment*>(nullptr, [&]() -> Segment* {
        const std::string segmentName = Utf8(name);
        std::unique_ptr<Segment::Impl> impl =
            size == 0 ? m_impl->Find(segmentName) : m_impl->Create(segmentName, size);
        if (!impl) {
            return nullptr;
        }
        os::MutexGuard lock(m_impl->mutex);
        auto* const made = new Segment(std::move(impl));
        m_impl->live.insert(made);
        return made;
    });
}

void SharedMemory::destroy(Segment* segment) {
    GuardedCall(false, [&] {
        {
            os::MutexGuard lock(m_impl->mutex);
            if (m_impl->live.erase(segment) == 0) {
                return false;
            }
        }
        const std::unique_ptr<Segment::Impl> impl = std::move(segment->m_impl);
        if (impl->unpublished && !impl->Publish()) {
            LOG(ERROR) << "A segment of the shared-memory area " << m_impl->name
                       << " was not written: no place or no memory for it.";
        }
        delete segment;
        return true;
    });
}

}  // namespace QtTunnel
