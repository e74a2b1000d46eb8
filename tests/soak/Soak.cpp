// Scans a virtual head while a second thread makes random calls and a third injects random faults.
// Whatever happens: nothing crashes, nothing hangs, nothing grows, and every trigger is delivered
// or counted as lost with its place. Prints its seed first; with --seed it throws the same dice,
// each thread its own; only where they meet is up to the machine.

#include <glog/logging.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <utility>

#include "platform/os/TimeScale.h"
#include "soak/Accounts.h"
#include "soak/Chaos.h"
#include "soak/Dice.h"
#include "soak/RandomCalls.h"
#include "soak/Resources.h"
#include "soak/Soak.h"
#include "soak/SoakHead.h"
#include "soak/Watchdog.h"
#include "support/Accounted.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::tests::soak {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// A snapshot's 100 s become 0.5 s, a board restart's 7 s become 35 ms.
constexpr double kTimeScale = 0.005;
constexpr seconds kHangLimit{90};
constexpr seconds kDeadline{60};
constexpr unsigned long kCalmSets = 30;
constexpr int kMostScans = 5;
constexpr unsigned long kMostSets = 150;
/// So many steps of a scan without a set, and the scanner reconnects.
constexpr int kMostFruitless = 8;

class Soak {
public:
    Soak(const Options& options, std::shared_ptr<virtual_head::VirtualHead> head)
        : m_end(steady_clock::now() + seconds(options.seconds)),
          m_virtualHead(head),
          m_seed(options.seed),
          m_calls(m_head, options.seed),
          m_chaos(std::move(head), options.seed),
          m_watchdog(kHangLimit) {}

    bool Run() {
        m_chaos.WarmUp();
        std::thread caller([this] { m_calls.Run(m_stop, m_watchdog.Of(Watchdog::Caller)); });
        std::thread faults([this] { m_chaos.Run(m_stop, m_watchdog.Of(Watchdog::FaultThread)); });
        while (m_wrong.empty() && steady_clock::now() < m_end) {
            OneConnection();
        }
        m_stop = true;
        Doing("waits for the others to stop");
        caller.join();
        faults.join();
        Print();
        return m_wrong.empty();
    }

private:
    void Doing(const char* what) {
        m_watchdog.Of(Watchdog::Scanner).Doing(what);
        const auto now = steady_clock::now();
        m_spent[std::exchange(m_doing, what)] += now - std::exchange(m_since, now);
    }
    void Wrong(const std::string& what) { m_wrong.push_back(what); }

    void OneConnection() {
        const virtual_head::HeadCounts before = m_virtualHead->Counts();
        if (!Connect()) {
            return;
        }
        // A step of the dice for the connection, and one for each of its scans. An attempt that was
        // refused takes none.
        const std::uint64_t first = m_connections * (kMostScans + 1);
        ++m_connections;
        const int scans = Dice(m_seed, Thrower::Scanner, first).From(1, kMostScans);
        for (int scan = 1; scan <= scans && steady_clock::now() < m_end; ++scan) {
            Dice dice(m_seed, Thrower::Scanner, first + static_cast<std::uint64_t>(scan));
            const bool calmAfterwards = dice.Once(3);
            const auto modeInCalm = Mode(dice);
            Scan(dice);
            if (calmAfterwards) {
                ScanInCalm(before, modeInCalm);
            }
        }
        Disconnect(before);
    }

    bool Connect() {
        const std::unique_lock alone(m_head.using_);
        Doing("connects");
        if (m_head.Connect() == STATUS_SUCCESS) {
            return true;
        }
        ++m_refused;
        // While a device is gone every attempt is refused; a head in calm is never.
        Doing("connects in calm");
        const Chaos::Calm calm(m_chaos);
        const RETSTATUS status = m_head.Connect();
        if (status != STATUS_SUCCESS) {
            Wrong("a connection in calm answered " + std::to_string(status));
        }
        return status == STATUS_SUCCESS;
    }

    /// Whatever the faults and the other calls make of it. Reconnects as an application does: when
    /// the trigger is refused, and when no sets come.
    void Scan(Dice& dice) {
        const unsigned long first = SoakHead::Sets();
        const auto until = steady_clock::now() + milliseconds(dice.From(100, 400));
        int fruitless = 0;
        while (steady_clock::now() < until && SoakHead::Sets() < first + kMostSets) {
            const unsigned long sets = SoakHead::Sets();
            const bool triggered = TriggerFor(milliseconds(dice.From(5, 30)), Mode(dice));
            fruitless = SoakHead::Sets() == sets ? fruitless + 1 : 0;
            if (!triggered || fruitless >= kMostFruitless) {
                Reconnect();
                fruitless = 0;
            }
        }
    }

    /// Switches the trigger on and leaves it so for a while; false when it was refused.
    bool TriggerFor(milliseconds time, CAMERA_TRIGGER_MODE mode) {
        const std::shared_lock lock(m_head.using_);
        Doing("scans");
        if (EnableVideoTrigger(m_head.handle, mode, true) != STATUS_SUCCESS) {
            return false;
        }
        std::this_thread::sleep_for(time);
        return true;
    }

    void Reconnect() {
        const std::shared_lock lock(m_head.using_);
        Doing("reconnects");
        // Who has the turn stops the stream or brings it back, and soon is ready.
        const std::unique_lock turn(m_head.turn, std::try_to_lock);
        if (!turn) {
            return;
        }
        ++m_reconnections;
        ReconnectDevice(m_head.handle);
    }

    static CAMERA_TRIGGER_MODE Mode(Dice& dice) {
        return static_cast<CAMERA_TRIGGER_MODE>(
            dice.From(TRIGGER_LASER_LINES, TRIGGER_LASER_LINES_COLOR));
    }

    /// Without faults and other calls, a reconnection brings everything back and nothing is lost.
    /// `connected`: what the head had done when the connection was made.
    void ScanInCalm(const virtual_head::HeadCounts& connected, CAMERA_TRIGGER_MODE mode) {
        const std::unique_lock alone(m_head.using_);
        Doing("waits for calm");
        const Chaos::Calm calm(m_chaos);
        Doing("reconnects in calm");
        // Another call may have left none, and without one nobody polls for a lost board.
        SoakHead::SetStatusCallback(m_head.handle, true);
        const RETSTATUS reconnected = ReconnectDevice(m_head.handle);
        if (reconnected != STATUS_SUCCESS) {
            Wrong("a reconnection in calm answered " + std::to_string(reconnected));
            return;
        }
        Doing("stops the trigger in calm");
        Require([&] { return EnableVideoTrigger(m_head.handle, mode, false); },
                "the trigger was not switched off in calm");
        SetVideoTriggerPeriod(m_head.handle, 2);
        DrainFrames(connected);
        ScanStatistics before;
        GetScanStatistics(m_head.handle, before);
        const virtual_head::HeadCounts headBefore = m_virtualHead->Counts();
        const unsigned long sets = SoakHead::Sets();
        Require([&] { return EnableVideoTrigger(m_head.handle, mode, true); },
                "the trigger was not switched on in calm");
        Doing("scans in calm");
        WaitUntil([&] { return SoakHead::Sets() >= sets + kCalmSets; }, "no sets came in calm");
        Require([&] { return EnableVideoTrigger(m_head.handle, mode, false); },
                "the trigger was not switched off after a scan in calm");
        DrainFrames(connected);
        CompareTriggers(Between(headBefore, m_virtualHead->Counts()), before);
        ScanStatistics after;
        GetScanStatistics(m_head.handle, after);
        if (after.missingKeys + after.refusedFrames + after.rejectedGeometry !=
            before.missingKeys + before.refusedFrames + before.rejectedGeometry) {
            Wrong("frames were lost in calm: " + std::to_string(after.missingKeys) + " keys, " +
                  std::to_string(before.missingKeys) + " before");
        }
        ++m_calmScans;
    }

    /// Waits until the camera has no frame waiting and the grab thread has done with all that it
    /// took: from then on every key is of the next run.
    void DrainFrames(const virtual_head::HeadCounts& connected) {
        Doing("drains the cameras in calm");
        WaitUntil(
            [&] {
                const auto counts = Between(connected, m_virtualHead->Counts());
                ScanStatistics now;
                GetScanStatistics(m_head.handle, now);
                return counts.mono.handed == counts.mono.fetched + counts.mono.dropped &&
                       counts.color.handed == counts.color.fetched + counts.color.dropped &&
                       now.framesAccepted + now.refusedFrames + now.rejectedGeometry ==
                           counts.mono.fetched + counts.color.fetched;
            },
            "frames stayed in a camera in calm");
        // A frame counts as accepted before the pairing has it; the thread's next snap comes after.
        ScanStatistics drained;
        GetScanStatistics(m_head.handle, drained);
        WaitUntil(
            [&] {
                ScanStatistics now;
                GetScanStatistics(m_head.handle, now);
                return now.failedSnaps > drained.failedSnaps;
            },
            "no snap followed the last frame in calm");
    }

    /// Every trigger of a scan without faults is one that the library knows of.
    void CompareTriggers(const virtual_head::HeadCounts& head, const ScanStatistics& before) {
        Doing("compares the triggers in calm");
        std::uint64_t accounted = 0;
        const auto level = [&] {
            ScanStatistics now;
            GetScanStatistics(m_head.handle, now);
            accounted = support::AccountedTriggers(now) - support::AccountedTriggers(before);
            return accounted == head.triggers;
        };
        // The last frame may still be on its way into the pairing.
        if (!Reaches(level)) {
            Wrong("of " + std::to_string(head.triggers) + " triggers in calm the library knows " +
                  std::to_string(accounted));
        }
    }

    template <class Call>
    void Require(Call call, const char* otherwise) {
        // A board that was lost answers again once a poll has found it.
        WaitUntil([&] { return call() == STATUS_SUCCESS; }, otherwise);
    }

    template <class Condition>
    void WaitUntil(Condition condition, const char* otherwise) {
        if (!Reaches(condition)) {
            Wrong(otherwise);
        }
    }

    /// Whether the condition holds before the deadline.
    template <class Condition>
    static bool Reaches(Condition condition) {
        const auto deadline = steady_clock::now() + kDeadline;
        while (!condition()) {
            if (steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(milliseconds(1));
        }
        return true;
    }

    void Disconnect(const virtual_head::HeadCounts& before) {
        const std::unique_lock alone(m_head.using_);
        Doing("waits for calm");
        const Chaos::Calm calm(m_chaos);
        Doing("closes the cameras");
        // From here on no frame is taken: what is read stays true.
        CloseDeviceCamera(m_head.handle);
        ScanStatistics library;
        GetScanStatistics(m_head.handle, library);
        Doing("disconnects");
        m_head.Disconnect();
        Doing("settles the accounts");
        // What a running trigger exposed since the cameras were closed counts as unattended.
        const auto head = Between(before, m_virtualHead->Counts());
        for (const std::string& difference : Differences(head, library)) {
            Wrong(difference);
        }
        Add(library, m_all);
        m_triggers += head.triggers;
        m_virtualHead->GetJournal().Clear();
        if (const std::string grown = m_resources.Look(); !grown.empty()) {
            Wrong(grown);
        }
    }

    void Print() const {
        std::fprintf(stderr,
                     "connections %lu (refused %lu), reconnections of the scanner %lu, "
                     "scans in calm %lu, triggers %llu\n",
                     m_connections, m_refused, m_reconnections, m_calmScans,
                     static_cast<unsigned long long>(m_triggers));
        PrintSpent();
        std::fprintf(stderr, "%s", Text(m_all).c_str());
        std::fprintf(stderr, "status callbacks %lu\n", SoakHead::Statuses());
        std::fprintf(
            stderr, "bytes in use %zu at first, %zu at last; threads %zu, %zu; files %zu, %zu\n",
            m_resources.First().bytes, m_resources.Last().bytes, m_resources.First().threads,
            m_resources.Last().threads, m_resources.First().files, m_resources.Last().files);
        PrintCounts("calls", m_calls.Counts());
        PrintCounts("faults", m_chaos.Counts());
        for (const std::string& wrong : m_wrong) {
            std::fprintf(stderr, "WRONG: %s\n", wrong.c_str());
        }
    }

    /// What the scanner did with its time, in milliseconds.
    void PrintSpent() const {
        std::map<std::string, unsigned long> spent;
        for (const auto& [what, time] : m_spent) {
            spent[what] =
                static_cast<unsigned long>(std::chrono::duration_cast<milliseconds>(time).count());
        }
        PrintCounts("time of the scanner in ms", spent);
    }

    static void PrintCounts(const char* title, const std::map<std::string, unsigned long>& counts) {
        std::string text = std::string(title) + ":";
        for (const auto& [name, count] : counts) {
            text += " " + name + " " + std::to_string(count) + ",";
        }
        text.back() = '\n';
        std::fputs(text.c_str(), stderr);
    }

    const steady_clock::time_point m_end;
    const std::shared_ptr<virtual_head::VirtualHead> m_virtualHead;
    const std::uint64_t m_seed;
    SoakHead m_head;
    RandomCalls m_calls;
    Chaos m_chaos;
    Watchdog m_watchdog;
    std::atomic<bool> m_stop{false};
    ResourceWatch m_resources;
    ScanStatistics m_all;
    std::uint64_t m_triggers = 0;
    unsigned long m_connections = 0;
    unsigned long m_refused = 0;
    unsigned long m_reconnections = 0;
    const char* m_doing = "starts";
    steady_clock::time_point m_since = steady_clock::now();
    std::map<std::string, steady_clock::duration> m_spent;
    unsigned long m_calmScans = 0;
    std::vector<std::string> m_wrong;
};

}  // namespace

int SoakDirectMode(const Options& options) {
    std::fprintf(stderr, "seed %llu\n", static_cast<unsigned long long>(options.seed));
    // The library prints a line for each failed snap.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 2;
    }
    FLAGS_minloglevel = google::GLOG_FATAL;
    const os::ScopedTimeScale scale(kTimeScale);
    virtual_head::HeadDescription description;
    description.width = 64;
    description.height = 32;
    // A grab thread that the machine holds up for a while loses no key in calm.
    description.cameraBuffers = 4096;
    std::string error;
    if (!virtual_head::RequestVirtualHead(description, error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 2;
    }
    return Soak(options, virtual_head::RequestedVirtualHead()).Run() ? 0 : 1;
}

}  // namespace Korvex3Sync::tests::soak
