#include "recorder/Recorder.h"

#include <cstdlib>
#include <fstream>

namespace Korvex3Sync::tests::recorder {
namespace {

constexpr std::chrono::seconds kDeadline{30};
/// A thread that makes this call is a grab thread; the times of its calls are not predictable.
constexpr char kSnap[] = "SnapShot";

/// The variables that name the files of a preloaded recorder: for the calls of the thread that
/// called first, and for those of all threads but grab threads.
constexpr char kFirstThreadLog[] = "KORVEX_RECORDER_LOG";
constexpr char kFullLog[] = "KORVEX_RECORDER_FULL_LOG";

void WriteTo(const char* variable, const std::string& text) {
    if (const char* const file = std::getenv(variable)) {
        std::ofstream(file, std::ios::app) << text << "\n";
    }
}

}  // namespace

Recorder& Recorder::Get() {
    static Recorder* const recorder = new Recorder;  // outlives every thread of the process
    return *recorder;
}

void Recorder::Reset() {
    std::lock_guard lock(m_mutex);
    m_calls.clear();
    m_counts.clear();
    m_failAt.clear();
    m_failAlways.clear();
    m_actions.clear();
    m_values.clear();
    m_snaps.clear();
    m_snapsTaken = 0;
    m_callsAtLastSnap = 0;
    m_grabThreads.clear();
    m_usbPaths.clear();
    m_leaveHandles = false;
    m_names.clear();
    m_nextOfKind.clear();
    m_cameras = {Camera{"KV00R1"}, Camera{"KV00R1"}};
}

void Recorder::Attach(std::vector<Camera> cameras) {
    std::lock_guard lock(m_mutex);
    m_cameras = std::move(cameras);
}

std::vector<Camera> Recorder::Attached() const {
    std::lock_guard lock(m_mutex);
    return m_cameras;
}

void Recorder::FailNth(const std::string& call, int nth) {
    std::lock_guard lock(m_mutex);
    m_failAt[call].insert(m_counts[call] + static_cast<std::uint64_t>(nth));
}

void Recorder::FailAlways(const std::string& call, bool always) {
    std::lock_guard lock(m_mutex);
    if (always) {
        m_failAlways.insert(call);
    } else {
        m_failAlways.erase(call);
    }
}

void Recorder::OnCall(const std::string& call, std::function<void()> action) {
    std::lock_guard lock(m_mutex);
    m_actions[call] = std::move(action);
}

void Recorder::PushSnap(Snap snap) {
    std::lock_guard lock(m_mutex);
    m_snaps.push_back(std::move(snap));
    m_changed.notify_all();
}

void Recorder::SetUsbPaths(std::vector<std::string> paths) {
    std::lock_guard lock(m_mutex);
    m_usbPaths = std::move(paths);
}

std::vector<std::string> Recorder::UsbPaths() const {
    std::lock_guard lock(m_mutex);
    return m_usbPaths;
}

void Recorder::LeaveHandlesOnFailure() {
    std::lock_guard lock(m_mutex);
    m_leaveHandles = true;
}

bool Recorder::LeavesHandlesOnFailure() const {
    std::lock_guard lock(m_mutex);
    return m_leaveHandles;
}

void Recorder::SetValue(const std::string& name, int value) {
    std::lock_guard lock(m_mutex);
    m_values[name] = value;
}

int Recorder::Value(const std::string& name) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_values.find(name);
    return found == m_values.end() ? 0 : found->second;
}

std::vector<std::string> Recorder::Select(
    const std::function<bool(std::thread::id)>& wanted) const {
    std::lock_guard lock(m_mutex);
    std::vector<std::string> texts;
    for (const Call& call : m_calls) {
        if (wanted(call.thread)) {
            texts.push_back(call.text);
        }
    }
    return texts;
}

std::vector<std::string> Recorder::Calls() const {
    return Select([](std::thread::id thread) { return thread == std::this_thread::get_id(); });
}

std::vector<std::string> Recorder::CallsInOrder() const {
    return Select([](std::thread::id) { return true; });
}

std::vector<std::string> Recorder::CallsOfOthers() const {
    return Select([](std::thread::id thread) { return thread != std::this_thread::get_id(); });
}

std::uint64_t Recorder::Count(const std::string& name) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_counts.find(name);
    return found == m_counts.end() ? 0 : found->second;
}

std::size_t Recorder::Handles() const {
    std::lock_guard lock(m_mutex);
    return m_names.size();
}

bool Recorder::WaitForCount(const std::string& name, std::uint64_t times) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kDeadline, [&] {
        const auto found = m_counts.find(name);
        return found != m_counts.end() && found->second >= times;
    });
}

bool Recorder::WaitForHandled(std::uint64_t snaps) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kDeadline, [&] {
        const auto calls = m_counts.find(kSnap);
        return m_snapsTaken >= snaps && calls != m_counts.end() &&
               calls->second > m_callsAtLastSnap;
    });
}

bool Recorder::Add(const std::string& name, const std::string& arguments) {
    std::function<void()> action;
    bool succeeds = true;
    {
        std::lock_guard lock(m_mutex);
        const std::string text = name + "(" + arguments + ")";
        const std::uint64_t number = ++m_counts[name];
        ++m_counts[text];
        const auto thread = std::this_thread::get_id();
        if (name == kSnap) {
            m_grabThreads.insert(thread);
        }
        if (m_grabThreads.count(thread) == 0) {
            m_calls.push_back({thread, text});
            WriteTo(kFullLog, text);
            if (thread == m_calls.front().thread) {
                WriteTo(kFirstThreadLog, text);
            }
        }
        succeeds = m_failAlways.count(name) == 0 && m_failAt[name].count(number) == 0;
        auto found = m_actions.find(text);
        if (found == m_actions.end()) {
            found = m_actions.find(name);
        }
        if (found != m_actions.end()) {
            action = found->second;
        }
        m_changed.notify_all();
    }
    if (action) {
        action();
    }
    return succeeds;
}

void* Recorder::NewHandle(const std::string& kind) {
    std::lock_guard lock(m_mutex);
    void* const handle = reinterpret_cast<void*>(m_nextHandle += 0x10);
    m_names[handle] = kind + std::to_string(++m_nextOfKind[kind]);
    return handle;
}

void Recorder::DropHandle(void* handle) {
    std::lock_guard lock(m_mutex);
    m_names.erase(handle);
}

std::string Recorder::Name(void* handle) const {
    if (handle == nullptr) {
        return "null";
    }
    std::lock_guard lock(m_mutex);
    const auto found = m_names.find(handle);
    return found == m_names.end() ? "unknown" : found->second;
}

bool Recorder::TakeSnap(Snap& snap) {
    std::unique_lock lock(m_mutex);
    constexpr std::chrono::milliseconds kSnapLimit{20};
    if (!m_changed.wait_for(lock, kSnapLimit, [&] { return !m_snaps.empty(); })) {
        return false;
    }
    snap = std::move(m_snaps.front());
    m_snaps.pop_front();
    ++m_snapsTaken;
    m_callsAtLastSnap = m_counts[kSnap];
    m_changed.notify_all();
    return true;
}

}  // namespace Korvex3Sync::tests::recorder
