#include "virtual_head/faults/CallFaults.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/board/protocol/Commands.h"
#include "platform/os/Clock.h"

namespace Korvex3Sync::virtual_head {
namespace {

using namespace std::string_view_literals;

// The calls that are no commands of the board's protocol.
constexpr std::array kOtherCalls{"zr3DInitHidDev"sv,
                                 "zr3DExitHidDev"sv,
                                 "CreateCamera"sv,
                                 "ReleaseCamera"sv,
                                 "GetDeviceTotal"sv,
                                 "OpenCamera"sv,
                                 "CloseCamera"sv,
                                 "StartCamera"sv,
                                 "SnapShot"sv,
                                 "GetSerialNo"sv,
                                 "GetResolution"sv,
                                 "GetColorMode"sv,
                                 "GetGainRange"sv,
                                 "SetExposureTime"sv,
                                 "GetExposureTime"sv,
                                 "SetGain"sv,
                                 "GetGain"sv,
                                 "SetCameraIntParam"sv,
                                 "GetDeviceType"sv,
                                 "ResetCameraState"sv,
                                 "UnlockOthers"sv,
                                 "EnumAllHCD"sv,
                                 "GetSpecifyDeviceTreePath"sv,
                                 "EraseList"sv};

void Describe(const char* kind, const std::string& call, int left,
              std::vector<std::string>& unused) {
    if (left > 0) {
        unused.push_back(std::string(kind) + " " + call + ": " + std::to_string(left) + " left");
    }
}

}  // namespace

bool CallFaults::Known(const std::string& call) {
    const auto commands = board::AllCommands();
    return std::any_of(commands.begin(), commands.end(),
                       [&call](const auto& command) { return command.function == call; }) ||
           std::find(kOtherCalls.begin(), kOtherCalls.end(), call) != kOtherCalls.end();
}

bool CallFaults::Fail(const std::string& call, int times) {
    if (!Known(call) || times < 1) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    m_orders[call].fail += times;
    return true;
}

bool CallFaults::Slow(const std::string& call, std::chrono::milliseconds extra, int times) {
    if (!Known(call) || times < 1 || extra.count() < 0) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    Orders& orders = m_orders[call];
    orders.slow += times;
    orders.extra = extra;
    return true;
}

bool CallFaults::Hang(const std::string& call, int times, std::chrono::milliseconds lasting) {
    if (!Known(call) || times < 1 || lasting.count() < 0) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    Orders& orders = m_orders[call];
    orders.hang += times;
    orders.lasting = lasting;
    return true;
}

void CallFaults::ReleaseHangs() {
    std::lock_guard lock(m_mutex);
    ++m_releases;
    m_changed.notify_all();
}

void CallFaults::ReleaseHangs(const std::string& call) {
    std::lock_guard lock(m_mutex);
    if (const auto found = m_orders.find(call); found != m_orders.end()) {
        ++found->second.releases;
        m_changed.notify_all();
    }
}

bool CallFaults::WaitForHang(const std::string& call, std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this, &call] {
        const auto found = m_orders.find(call);
        return found != m_orders.end() && found->second.hanging > 0;
    });
}

std::vector<std::string> CallFaults::Unused() const {
    std::lock_guard lock(m_mutex);
    std::vector<std::string> unused;
    for (const auto& [call, orders] : m_orders) {
        Describe("fail", call, orders.fail, unused);
        Describe("slow", call, orders.slow, unused);
        Describe("hang", call, orders.hang, unused);
    }
    return unused;
}

void CallFaults::Clear() {
    std::lock_guard lock(m_mutex);
    for (auto& [call, orders] : m_orders) {
        orders.fail = 0;
        orders.slow = 0;
        orders.hang = 0;
    }
}

bool CallFaults::Holds(const std::string& call) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_orders.find(call);
    return found != m_orders.end() && (found->second.slowed > 0 || found->second.hanging > 0);
}

bool CallFaults::Meet(const std::string& call) {
    std::unique_lock lock(m_mutex);
    const auto found = m_orders.find(call);
    if (found == m_orders.end()) {
        return false;
    }
    Orders& orders = found->second;  // orders are never erased: the reference outlives the waits
    if (orders.hang > 0) {
        --orders.hang;
        ++orders.hanging;
        m_changed.notify_all();
        const auto released = [this, &orders, all = m_releases, own = orders.releases] {
            return m_releases != all || orders.releases != own;
        };
        if (orders.lasting.count() > 0) {
            m_changed.wait_until(
                lock, std::chrono::steady_clock::now() + os::Scaled(orders.lasting), released);
        } else {
            m_changed.wait(lock, released);
        }
        --orders.hanging;
        return true;
    }
    bool fails = false;
    if (orders.fail > 0) {
        --orders.fail;
        fails = true;
    }
    if (orders.slow > 0) {
        --orders.slow;
        ++orders.slowed;
        const std::chrono::milliseconds extra = orders.extra;
        lock.unlock();
        os::SleepFor(extra);
        lock.lock();
        --orders.slowed;
    }
    return fails;
}

}  // namespace Korvex3Sync::virtual_head
