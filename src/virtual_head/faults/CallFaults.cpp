#include "virtual_head/faults/CallFaults.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/board/protocol/Commands.h"
#include "platform/os/Clock.h"

namespace Korvex3Sync::virtual_head {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

// The calls that are not commands of the board's protocol.
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

std::vector<std::string> CallFaults::Names() {
    std::vector<std::string> names(kOtherCalls.begin(), kOtherCalls.end());
    for (const auto& command : board::AllCommands()) {
        names.emplace_back(command.function);
    }
    return names;
}

bool CallFaults::Known(const std::string& call) {
    const std::vector<std::string> names = Names();
    return std::find(names.begin(), names.end(), call) != names.end();
}

bool CallFaults::Fail(const std::string& call, int times) {
    if (!Known(call) || times < 1) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    m_orders[call].fail += times;
    return true;
}

bool CallFaults::Slow(const std::string& call, std::chrono::milliseconds extra, int times) {
    if (!Known(call) || times < 1 || extra.count() < 0) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    Orders& orders = m_orders[call];
    orders.slow += times;
    orders.extra = extra;
    return true;
}

bool CallFaults::Hang(const std::string& call, int times, std::chrono::milliseconds lasting) {
    if (!Known(call) || times < 1 || lasting.count() < 0) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    Orders& orders = m_orders[call];
    orders.hang += times;
    orders.lasting = lasting;
    return true;
}

void CallFaults::ReleaseHangs() {
    os::MutexGuard lock(m_mutex);
    ++m_releases;
    m_changed.NotifyAll();
}

void CallFaults::ReleaseHangs(const std::string& call) {
    os::MutexGuard lock(m_mutex);
    if (const auto found = m_orders.find(call); found != m_orders.end()) {
        ++found->second.releases;
        m_changed.NotifyAll();
    }
}

bool CallFaults::WaitForHang(const std::string& call, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    os::MutexGuard lock(m_mutex);
    while (true) {
        const auto found = m_orders.find(call);
        if (found != m_orders.end() && found->second.hanging > 0) {
            return true;
        }
        if (!m_changed.WaitUntil(m_mutex, deadline)) {
            return false;
        }
    }
}

void CallFaults::HangNow(Orders& orders) {
    ++orders.hanging;
    m_changed.NotifyAll();
    WaitForRelease(orders,
                   orders.lasting.count() > 0 ? std::optional(orders.lasting) : std::nullopt);
    --orders.hanging;
}

void CallFaults::WaitForRelease(const Orders& orders,
                                std::optional<std::chrono::milliseconds> limit) {
    const std::uint64_t all = m_releases;
    const std::uint64_t own = orders.releases;
    const auto end = std::chrono::steady_clock::now() + os::Scaled(limit.value_or(0ms));
    bool waits = true;
    while (waits && m_releases == all && orders.releases == own) {
        if (limit) {
            waits = m_changed.WaitUntil(m_mutex, end);
        } else {
            m_changed.Wait(m_mutex);
        }
    }
}

std::vector<std::string> CallFaults::Unused() const {
    os::MutexGuard lock(m_mutex);
    std::vector<std::string> unused;
    for (const auto& [call, orders] : m_orders) {
        Describe("fail", call, orders.fail, unused);
        Describe("slow", call, orders.slow, unused);
        Describe("hang", call, orders.hang, unused);
    }
    return unused;
}

void CallFaults::Clear() {
    os::MutexGuard lock(m_mutex);
    for (auto& [call, orders] : m_orders) {
        orders.fail = 0;
        orders.slow = 0;
        orders.hang = 0;
    }
}

bool CallFaults::Holds(const std::string& call) const {
    os::MutexGuard lock(m_mutex);
    const auto found = m_orders.find(call);
    return found != m_orders.end() && (found->second.slowed > 0 || found->second.hanging > 0);
}

bool CallFaults::Meet(const std::string& call) {
    os::MutexGuard lock(m_mutex);
    const auto found = m_orders.find(call);
    if (found == m_orders.end()) {
        return false;
    }
    Orders& orders = found->second;  // valid during the waits: never erased
    if (orders.hang > 0) {
        --orders.hang;
        HangNow(orders);
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
        WaitForRelease(orders, orders.extra);
        --orders.slowed;
    }
    return fails;
}

}  // namespace Korvex3Sync::virtual_head
