#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

/// Platform libraries that record every call and answer as ordered. They replace the libraries for
/// board, cameras and USB tree: linked into a test, or preloaded into a program.
namespace Korvex3Sync::tests::recorder {

/// The result of a camera's next snap.
struct Snap {
    int result = 0;
    bool nullImage = false;
    std::vector<unsigned char> bytes;
};

/// One attached camera.
struct Camera {
    std::string serial;
    int width = 8;
    int height = 4;
    int colorMode = 16;
    int deviceType = 1;
};

/// The process's recorder. Thread-safe.
class Recorder {
public:
    static Recorder& Get();

    /// Removes calls, orders and frames, and attaches two cameras "KV00R1" (the same serial twice).
    void Reset();

    // Orders.

    void Attach(std::vector<Camera> cameras);
    std::vector<Camera> Attached() const;
    /// The `nth` call from now (1: the next) of this name fails, once.
    void FailNth(const std::string& call, int nth);
    /// Every call of this name fails, until Reset or `always` false.
    void FailAlways(const std::string& call, bool always = true);
    /// Runs `action` inside each call of this name, or with these arguments ("SnapShot(C1)"),
    /// before it returns, on the calling thread.
    void OnCall(const std::string& call, std::function<void()> action);
    void PushSnap(Snap snap);
    /// The tree paths of the boards that the USB tree finds.
    void SetUsbPaths(std::vector<std::string> paths);
    std::vector<std::string> UsbPaths() const;
    /// From now on a failed open leaves a value in the handle.
    void LeaveHandlesOnFailure();
    bool LeavesHandlesOnFailure() const;
    /// Sets the result of queries with this name (the two status bytes: "first", "second").
    void SetValue(const std::string& name, int value);
    int Value(const std::string& name) const;

    // What happened.

    /// The calls that the calling thread made, in order.
    std::vector<std::string> Calls() const;
    /// The calls of all threads, in order, with the same exception as below.
    std::vector<std::string> CallsInOrder() const;
    /// The calls that other threads made, in order, except snaps and the queries of grab threads.
    std::vector<std::string> CallsOfOthers() const;
    /// Calls of this name, or with these arguments: "SnapShot" or "SnapShot(C1)".
    std::uint64_t Count(const std::string& name) const;
    /// The number of instances created since Reset and not released.
    std::size_t Handles() const;
    /// Waits until `Count(name)` is at least `times`.
    bool WaitForCount(const std::string& name, std::uint64_t times) const;
    /// Waits until `snaps` snaps were fetched since Reset and the grab thread has handled the last
    /// one.
    bool WaitForHandled(std::uint64_t snaps) const;

    // For the recording libraries.

    /// Records "name(arguments)" and returns whether the call succeeds.
    template <class... Args>
    bool Record(const std::string& name, const Args&... args) {
        std::ostringstream text;
        [[maybe_unused]] const char* separator = "";
        ((text << separator << args, separator = ", "), ...);
        return Add(name, text.str());
    }
    /// A new handle; its name in texts is "B<n>" for boards and "C<n>" for cameras.
    void* NewHandle(const std::string& kind);
    void DropHandle(void* handle);
    std::string Name(void* handle) const;
    bool TakeSnap(Snap& snap);

private:
    struct Call {
        std::thread::id thread;
        std::string text;
    };

    Recorder() { Reset(); }
    bool Add(const std::string& name, const std::string& arguments);
    std::vector<std::string> Select(const std::function<bool(std::thread::id)>& wanted) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<Call> m_calls;
    std::map<std::string, std::uint64_t> m_counts;
    std::map<std::string, std::set<std::uint64_t>> m_failAt;
    std::set<std::string> m_failAlways;
    std::map<std::string, std::function<void()>> m_actions;
    std::map<std::string, int> m_values;
    std::vector<Camera> m_cameras;
    std::deque<Snap> m_snaps;
    std::uint64_t m_snapsTaken = 0;
    std::uint64_t m_callsAtLastSnap = 0;
    std::set<std::thread::id> m_grabThreads;
    std::vector<std::string> m_usbPaths;
    bool m_leaveHandles = false;
    std::map<void*, std::string> m_names;
    std::map<std::string, int> m_nextOfKind;
    std::uintptr_t m_nextHandle = 0x1000;
};

}  // namespace Korvex3Sync::tests::recorder
