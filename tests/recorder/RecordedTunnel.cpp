#include <cstring>
#include <map>
#include <mutex>

#include "platform/include/QtTunnel.h"
#include "recorder/RecordedService.h"
#include "recorder/Recorder.h"

namespace QtTunnel {
namespace {

using Korvex3Sync::tests::recorder::Recorder;

std::mutex g_segmentMutex;

/// Made when it is needed: a preloaded recorder fills it before the program begins.
std::map<QString, QByteArray>& Segments() {
    static std::map<QString, QByteArray> segments;
    return segments;
}

}  // namespace

struct Segment::Impl {
    std::string name;
    QByteArray bytes;
    qint64 position = 0;
};

Segment::Segment(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

Segment::~Segment() = default;

bool Segment::lock() {
    return Recorder::Get().Record("lock", m_impl->name);
}

bool Segment::unlock() {
    return Recorder::Get().Record("unlock", m_impl->name);
}

bool Segment::isSequential() const {
    return true;
}

qint64 Segment::bytesAvailable() const {
    return m_impl->bytes.size() - m_impl->position;
}

qint64 Segment::readData(char* data, qint64 maxSize) {
    Recorder::Get().Record("read", m_impl->name, maxSize);
    const qint64 bytes = std::min<qint64>(maxSize, bytesAvailable());
    std::memcpy(data, m_impl->bytes.constData() + m_impl->position,
                static_cast<std::size_t>(bytes));
    m_impl->position += bytes;
    return bytes;
}

qint64 Segment::writeData(const char*, qint64) {
    return -1;
}

struct SharedMemory::Impl {};

SharedMemory::SharedMemory(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

SharedMemory::~SharedMemory() = default;

SharedMemory* SharedMemory::open(const QString& name, unsigned long long size) {
    static SharedMemory* const area = new SharedMemory(nullptr);  // belongs to this library
    return Recorder::Get().Record("open", name.toStdString(), size) ? area : nullptr;
}

Segment* SharedMemory::segment(const QString& name, unsigned long long size) {
    const bool succeeds = Recorder::Get().Record("segment", name.toStdString(), size);
    std::lock_guard lock(g_segmentMutex);
    const auto found = Segments().find(name);
    if (!succeeds || found == Segments().end()) {
        return nullptr;
    }
    return new Segment(
        std::make_unique<Segment::Impl>(Segment::Impl{name.toStdString(), found->second, 0}));
}

void SharedMemory::destroy(Segment* segment) {
    Recorder::Get().Record("destroy", segment->m_impl->name);
    delete segment;
}

}  // namespace QtTunnel

namespace Korvex3Sync::tests::recorder {

void SetSegment(const QString& name, const QByteArray& bytes) {
    std::lock_guard lock(QtTunnel::g_segmentMutex);
    QtTunnel::Segments()[name] = bytes;
}

void ResetService() {
    SetServiceText("KV00R1");
    std::lock_guard lock(QtTunnel::g_segmentMutex);
    QtTunnel::Segments().clear();
}

}  // namespace Korvex3Sync::tests::recorder
