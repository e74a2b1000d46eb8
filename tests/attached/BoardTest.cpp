#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/fsuid.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "attached/MockBoard.h"
#include "board/EveryCall.h"
#include "board/OpenBoard.h"
#include "platform/board/protocol/Codec.h"
#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/RequestedHead.h"
#include "support/Text.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using namespace zr3DHandiDLPdev;
using board::Report;
using support::BlockingCall;
using testing::HasSubstr;

constexpr double kQuick = 0.1;
/// For answers on a busy machine.
constexpr double kPatient = 20;
/// With it, only a board that answers or is gone ends a call within the time of a test.
constexpr double kEndless = 1000;

class AttachedBoard : public testing::Test {
    const os::ScopedTimeScale m_patient{kPatient};
};

/// A virtual board that keeps what it is sent, and is silent while it has to be.
class Recorded {
public:
    Firmware Get() {
        return [this](const Report& report) {
            const std::lock_guard lock(m_mutex);
            m_reports.push_back(report);
            return m_silent ? std::vector<Report>{} : m_virtual(report);
        };
    }
    void BeSilent(bool silent) {
        const std::lock_guard lock(m_mutex);
        m_silent = silent;
    }
    std::vector<Report> Reports() {
        const std::lock_guard lock(m_mutex);
        return m_reports;
    }
    /// The answer to the last report.
    Report Answer() { return m_virtual(Reports().back()).at(0); }
    bool WaitForReports(std::size_t count) {
        return support::WaitUntil([&] { return Reports().size() >= count; });
    }

private:
    const Firmware m_virtual = VirtualFirmware();
    std::mutex m_mutex;
    std::vector<Report> m_reports;
    bool m_silent = false;
};

bool Opens(const char* serial) {
    void* handle = nullptr;
    return zr3DInitHidDev(handle, "3267", "5752", serial) && zr3DExitHidDev(handle);
}

/// The trigger period that the board tells; 0 if the call fails.
int Period(void* handle) {
    int period = 0;
    return zr3DQueryTriggerPeriod(handle, period) ? period : 0;
}

std::uint16_t Number(const Report& report) {
    return std::get<board::CommandMessage>(board::DecodeCommand(report)).sequence;
}

/// A good answer that says 999, with the number of a command of the same kind.
Report Stale(std::uint16_t number) {
    const std::vector<std::int32_t> values{999};
    return board::EncodeReply({board::Command::QueryTriggerPeriod, number, board::Status::Ok,
                               board::ValuesPayload(values)});
}

TEST_F(AttachedBoard, TakesEveryCall) {
    MockMachine machine;
    const MockBoard board(machine, {});
    const OpenedBoard opened;
    for (const BoardCall& each : EveryCall()) {
        EXPECT_TRUE(each.call(opened.handle)) << each.function;
    }
}

TEST_F(AttachedBoard, AnswersWithItsOwnValues) {
    MockMachine machine;
    const MockBoard board(machine, {});
    const OpenedBoard opened;
    for (int period = 1; period <= 50; ++period) {
        EXPECT_TRUE(zr3DSetVideoTriggerPeriod(opened.handle, period));
        EXPECT_EQ(Period(opened.handle), period);
    }
}

TEST_F(AttachedBoard, IsSelectedByVendorProductAndSerial) {
    MockMachine machine;
    EXPECT_FALSE(Opens(""));
    const MockBoard board(machine, {});
    EXPECT_TRUE(Opens(""));
    EXPECT_TRUE(Opens("K3-0007"));
    EXPECT_FALSE(Opens("K3-0008"));
    EXPECT_FALSE(Opens("K3-000"));
    for (const auto& [vendor, product] :
         {std::pair{"3268", "5752"}, {"3267", "5753"}, {"0", "0"}}) {
        void* handle = nullptr;
        EXPECT_FALSE(zr3DInitHidDev(handle, vendor, product, ""));
        EXPECT_EQ(handle, nullptr);
    }
}

TEST_F(AttachedBoard, OfSeveralIsTheOneWithTheSerial) {
    MockMachine machine;
    Recorded left;
    Recorded right;
    Recorded nameless;
    const MockBoard first(machine, {"2-1", "5000", "K3-0007"}, left.Get());
    const MockBoard second(machine, {"2-2", "5000", "K3 0008"}, right.Get());
    const MockBoard third(machine, {"2-3", "5000", ""}, nameless.Get());
    {
        const OpenedBoard seventh("K3-0007");
        EXPECT_TRUE(zr3DResetFPGA(seventh.handle));
        const OpenedBoard named("K3 0008");
        EXPECT_TRUE(zr3DResetFPGA(named.handle));
        EXPECT_TRUE(zr3DResetFPGA(named.handle));
    }
    EXPECT_EQ(left.Reports().size(), 1U);
    EXPECT_EQ(right.Reports().size(), 2U);
    EXPECT_TRUE(nameless.Reports().empty());
}

TEST_F(AttachedBoard, MayBeOpenSeveralTimes) {
    MockMachine machine;
    const MockBoard board(machine, {});
    const OpenedBoard first;
    {
        const OpenedBoard second;
        EXPECT_TRUE(zr3DSetVideoTriggerPeriod(second.handle, 12));
    }
    EXPECT_EQ(Period(first.handle), 12);
}

TEST_F(AttachedBoard, LeavesNoDescriptorOpen) {
    MockMachine machine;
    const MockBoard board(machine, {});
    const auto descriptors = [] {
        const std::filesystem::directory_iterator list("/proc/self/fd");
        return std::distance(begin(list), end(list));
    };
    std::string version;
    EXPECT_TRUE(Opens(""));
    const auto before = descriptors();
    for (int round = 0; round < 10; ++round) {
        EXPECT_TRUE(Opens(""));
        EXPECT_FALSE(Opens("K3-0008"));
        EXPECT_TRUE(zr3DQueryFirmwareVersionFast("", version));
    }
    // The test bed, which is in this process, closes its ends a little later.
    EXPECT_TRUE(support::WaitUntil([&] { return descriptors() <= before; }));
}

TEST_F(AttachedBoard, TellsItsFirmwareWithoutBeingOpen) {
    MockMachine machine;
    const MockBoard board(machine, {});
    std::string version;
    EXPECT_TRUE(zr3DQueryFirmwareVersionFast("K3-0007", version));
    EXPECT_EQ(version, virtual_head::HeadDescription{}.firmware);
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast("K3-0008", version));
}

TEST_F(AttachedBoard, IsNotTouchedWhenAVirtualHeadIsRequested) {
    MockMachine machine;
    Recorded recorded;
    const MockBoard board(machine, {}, recorded.Get());
    {
        const RequestedHead head;
        EXPECT_FALSE(Opens("K3-0007"));
        const OpenedBoard opened;
        EXPECT_TRUE(zr3DResetFPGA(opened.handle));
    }
    EXPECT_TRUE(recorded.Reports().empty());
    EXPECT_TRUE(Opens("K3-0007"));
}

TEST_F(AttachedBoard, UnpluggedEndsARunningCallAndFailsLaterOnes) {
    const os::ScopedTimeScale scale(kEndless);
    MockMachine machine;
    Recorded recorded;
    recorded.BeSilent(true);
    MockBoard board(machine, {}, recorded.Get());
    void* handle = nullptr;
    ASSERT_TRUE(zr3DInitHidDev(handle, "3267", "5752", ""));
    std::atomic<bool> answered{true};
    const BlockingCall call([&] { answered = zr3DResetFPGA(handle); });
    ASSERT_TRUE(recorded.WaitForReports(1));
    board.Unplug();
    EXPECT_TRUE(call.WaitUntilReturned());
    EXPECT_FALSE(answered);
    EXPECT_FALSE(zr3DResetFPGA(handle));
    EXPECT_FALSE(Opens(""));
    EXPECT_TRUE(zr3DExitHidDev(handle));
}

TEST_F(AttachedBoard, UnpluggedBetweenCallsFailsTheNextOne) {
    const os::ScopedTimeScale scale(kEndless);
    MockMachine machine;
    MockBoard board(machine, {});
    const OpenedBoard opened;
    EXPECT_TRUE(zr3DResetFPGA(opened.handle));
    board.Unplug();
    EXPECT_FALSE(zr3DResetFPGA(opened.handle));
    EXPECT_FALSE(zr3DResetFPGA(opened.handle));
}

TEST_F(AttachedBoard, PluggedInAgainIsOpenedAnew) {
    MockMachine machine;
    auto board = std::make_unique<MockBoard>(machine, MockBoard::Place{});
    const OpenedBoard old;
    for (int round = 0; round < 3; ++round) {
        board.reset();
        EXPECT_FALSE(Opens(""));
        board = std::make_unique<MockBoard>(machine, MockBoard::Place{});
        EXPECT_FALSE(zr3DResetFPGA(old.handle));
        const OpenedBoard opened;
        EXPECT_TRUE(zr3DResetFPGA(opened.handle));
    }
}

TEST_F(AttachedBoard, ClosedEndsARunningCall) {
    const os::ScopedTimeScale scale(kEndless);
    MockMachine machine;
    Recorded recorded;
    recorded.BeSilent(true);
    const MockBoard board(machine, {}, recorded.Get());
    for (std::size_t round = 1; round <= 20; ++round) {
        void* handle = nullptr;
        ASSERT_TRUE(zr3DInitHidDev(handle, "3267", "5752", ""));
        void* const used = handle;
        std::atomic<bool> answered{true};
        const BlockingCall call([&] { answered = zr3DResetFPGA(used); });
        ASSERT_TRUE(recorded.WaitForReports(round));
        EXPECT_TRUE(zr3DExitHidDev(handle));
        EXPECT_TRUE(call.WaitUntilReturned());
        EXPECT_FALSE(answered);
    }
}

TEST_F(AttachedBoard, ClosedAtAnyMomentOfAnExchange) {
    MockMachine machine;
    for (int round = 0; round < 30; ++round) {
        // A terminal, unlike a HID device, can leave half a report to who opens it next.
        const MockBoard board(machine, {});
        void* handle = nullptr;
        ASSERT_TRUE(zr3DInitHidDev(handle, "3267", "5752", ""));
        void* const used = handle;
        std::atomic<int> answered{0};
        auto user = std::async(std::launch::async, [&] {
            while (zr3DResetFPGA(used)) {
                ++answered;
            }
        });
        EXPECT_TRUE(support::WaitUntil([&] { return answered >= round % 5; }));
        EXPECT_TRUE(zr3DExitHidDev(handle));
        EXPECT_EQ(user.wait_for(kDeadline), std::future_status::ready);
    }
}

TEST_F(AttachedBoard, ThatIsSilentFailsACallAndServesTheNext) {
    const os::ScopedTimeScale scale(kQuick);
    MockMachine machine;
    Recorded recorded;
    const MockBoard board(machine, {}, recorded.Get());
    const OpenedBoard opened;
    EXPECT_TRUE(zr3DSetVideoTriggerPeriod(opened.handle, 12));
    recorded.BeSilent(true);
    EXPECT_EQ(Period(opened.handle), 0);
    const std::uint16_t unanswered = Number(recorded.Reports().back());
    const os::ScopedTimeScale patient(kPatient);
    recorded.BeSilent(false);
    board.Give(Stale(unanswered));
    EXPECT_EQ(Period(opened.handle), 12);
}

TEST_F(AttachedBoard, AnswersLeftByAnotherClientAreNotTaken) {
    MockMachine machine;
    Recorded recorded;
    const MockBoard board(machine, {}, recorded.Get());
    // All numbers that the first command could have would not fit; these fill the queue.
    for (std::uint16_t number = 0; number < 60; ++number) {
        board.Give(Stale(number));
    }
    const OpenedBoard opened;
    EXPECT_TRUE(zr3DSetVideoTriggerPeriod(opened.handle, 12));
    board.Give(Stale(static_cast<std::uint16_t>(Number(recorded.Reports().back()) + 1)));
    EXPECT_EQ(Period(opened.handle), 12);
}

TEST_F(AttachedBoard, BeginsAtARandomNumber) {
    MockMachine machine;
    Recorded recorded;
    const MockBoard board(machine, {}, recorded.Get());
    std::set<std::uint16_t> numbers;
    for (int round = 0; round < 8; ++round) {
        const OpenedBoard opened;
        EXPECT_TRUE(zr3DResetFPGA(opened.handle));
        numbers.insert(Number(recorded.Reports().back()));
    }
    EXPECT_GE(numbers.size(), 7U);
}

TEST_F(AttachedBoard, ThatTakesNoReportFailsTheCallInTime) {
    MockMachine machine;
    std::promise<void> go;
    const std::shared_future<void> going = go.get_future().share();
    std::atomic<int> taken{0};
    const Firmware virtualBoard = VirtualFirmware();
    const MockBoard board(machine, {}, [&](const Report& report) {
        ++taken;
        going.wait();
        return virtualBoard(report);
    });
    const OpenedBoard opened;
    {
        const os::ScopedTimeScale scale(kQuick);
        EXPECT_FALSE(zr3DSetVideoTriggerPeriod(opened.handle, 11));
        EXPECT_FALSE(zr3DSetVideoTriggerPeriod(opened.handle, 12));
    }
    EXPECT_EQ(taken, 1);
    go.set_value();
    // The one that the board held has reached it; the one behind it has not.
    EXPECT_TRUE(support::WaitUntil([&] { return Period(opened.handle) == 11; }));
}

TEST_F(AttachedBoard, TakesAReportBehindOneThatItHeld) {
    MockMachine machine;
    std::promise<void> go;
    const std::shared_future<void> going = go.get_future().share();
    const Firmware virtualBoard = VirtualFirmware();
    const MockBoard board(machine, {}, [&](const Report& report) {
        going.wait();
        return virtualBoard(report);
    });
    const OpenedBoard opened;
    {
        const os::ScopedTimeScale scale(kQuick);
        EXPECT_FALSE(zr3DSetVideoTriggerPeriod(opened.handle, 11));
    }
    const os::ScopedTimeScale scale(kEndless);
    std::atomic<bool> taken{false};
    const BlockingCall call([&] { taken = zr3DSetVideoTriggerPeriod(opened.handle, 12); });
    EXPECT_TRUE(call.WaitUntilBlocked());
    go.set_value();
    EXPECT_TRUE(call.WaitUntilReturned());
    EXPECT_TRUE(taken);
    EXPECT_EQ(Period(opened.handle), 12);
}

TEST_F(AttachedBoard, ThatRefusesAReportIsGone) {
    const os::ScopedTimeScale scale(kEndless);
    MockMachine machine;
    const MockBoard board(machine, {}, Firmware());
    const OpenedBoard opened;
    EXPECT_FALSE(zr3DResetFPGA(opened.handle));
    EXPECT_FALSE(zr3DResetFPGA(opened.handle));
}

TEST_F(AttachedBoard, ThatThisUserMayNotOpenIsNamedWithTheRemedy) {
    MockMachine machine;
    const MockBoard refused(machine, {"2-1", "5000", "K3-0001"});
    const MockBoard other(machine, {"2-2", "5000", "K3-0002"});
    const std::filesystem::path node = machine.Root() + refused.Node();
    machine.OpenToAll();
    std::filesystem::permissions(node, std::filesystem::perms::none);
    testing::internal::CaptureStderr();
    // Also root needs the rights then.
    const int before = ::setfsuid(65534);
    const bool opens = Opens("K3-0001");
    const bool opensOther = Opens("K3-0002");
    const bool opensAny = Opens("");
    ::setfsuid(static_cast<uid_t>(before));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(opens);
    EXPECT_TRUE(opensOther);
    EXPECT_TRUE(opensAny);
    EXPECT_THAT(said, HasSubstr("board K3-0001 at " + refused.Node() +
                                " cannot be opened: Permission denied"));
    EXPECT_THAT(said, HasSubstr("70-korvex3sync.rules"));
    EXPECT_EQ(Count(said, "No synchronization board"), 0U);
}

std::atomic<int> g_signals{0};

TEST_F(AttachedBoard, AnswersAlthoughSignalsArrive) {
    const os::ScopedTimeScale scale(kEndless);
    struct sigaction counting {};
    struct sigaction former {};
    counting.sa_handler = [](int) { ++g_signals; };
    ASSERT_EQ(::sigaction(SIGUSR1, &counting, &former), 0);
    sigset_t signal;
    sigemptyset(&signal);
    sigaddset(&signal, SIGUSR1);
    // Only the thread that opening starts takes the signal.
    ::pthread_sigmask(SIG_BLOCK, &signal, nullptr);
    {
        MockMachine machine;
        Recorded recorded;
        recorded.BeSilent(true);
        const MockBoard board(machine, {}, recorded.Get());
        ::pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
        const OpenedBoard opened;
        ::pthread_sigmask(SIG_BLOCK, &signal, nullptr);
        std::atomic<bool> answered{false};
        const BlockingCall call([&] { answered = zr3DResetFPGA(opened.handle); });
        ASSERT_TRUE(recorded.WaitForReports(1));
        for (int number = 1; number <= 50; ++number) {
            ::kill(::getpid(), SIGUSR1);
            EXPECT_TRUE(support::WaitUntil([&] { return g_signals >= number; }));
        }
        board.Give(recorded.Answer());
        EXPECT_TRUE(call.WaitUntilReturned());
        EXPECT_TRUE(answered);
    }
    ::sigaction(SIGUSR1, &former, nullptr);
    ::pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
