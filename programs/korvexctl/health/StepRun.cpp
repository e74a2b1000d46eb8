#include "korvexctl/health/StepRun.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <sstream>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

using Clock = std::chrono::steady_clock;
using Limits = std::vector<std::pair<std::string, std::chrono::milliseconds>>;

Limits LimitsOf(const std::vector<Step>& steps) {
    Limits limits;
    std::transform(steps.begin(), steps.end(), std::back_inserter(limits),
                   [](const Step& step) { return std::pair(step.name, step.limit); });
    return limits;
}

std::string Seconds(std::chrono::milliseconds time) {
    std::ostringstream text;
    text << std::chrono::duration<double>(time).count() << " s";
    return text.str();
}

std::chrono::milliseconds Since(Clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
}

}  // namespace

StepRun::StepRun(std::vector<Step> steps)
    : m_steps(std::move(steps)), m_limits(LimitsOf(m_steps)) {}

StepRun::~StepRun() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void StepRun::Work(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        const auto begin = Clock::now();
        Finding finding = RunStep(step);
        const os::MutexGuard guard(m_mutex);
        if (m_hangs) {
            return;
        }
        m_ended.push_back({step.name, std::move(finding), Since(begin)});
        m_changed.NotifyAll();
    }
}

Finding StepRun::RunStep(const Step& step) {
    {
        const os::MutexGuard guard(m_mutex);
        if (m_stopped && !step.cleansUp) {
            return {Verdict::NotRun, "interrupted"};
        }
    }
    try {
        return step.run();
    } catch (const std::exception& error) {
        return {Verdict::Fault, error.what()};
    }
}

std::vector<StepRow> StepRun::Wait(const std::function<void(const StepRow&)>& onRow) {
    m_thread = std::thread([this, steps = std::move(m_steps)] { Work(steps); });
    std::vector<StepRow> rows;
    std::string hanging;
    for (const auto& [name, limit] : m_limits) {
        StepRow row{name, {Verdict::NotRun, hanging + " did not finish"}};
        if (hanging.empty()) {
            if (std::optional<StepRow> next = NextRow(rows.size(), limit)) {
                row = std::move(*next);
            } else {
                hanging = name;
                row = {name, {Verdict::Fault, "did not finish within " + Seconds(limit)}, limit};
            }
        }
        onRow(row);
        rows.push_back(std::move(row));
    }
    return rows;
}

std::optional<StepRow> StepRun::NextRow(std::size_t done, std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    const os::MutexGuard guard(m_mutex);
    while (m_ended.size() <= done && m_changed.WaitUntil(m_mutex, end)) {
    }
    m_hangs = m_ended.size() <= done;
    return m_hangs ? std::nullopt : std::optional(m_ended[done]);
}

void StepRun::Stop() {
    const os::MutexGuard guard(m_mutex);
    m_stopped = true;
}

bool StepRun::Hangs() const {
    const os::MutexGuard guard(m_mutex);
    return m_hangs;
}

}  // namespace Korvex3Sync::korvexctl
