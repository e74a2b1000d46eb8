#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "korvexctl/health/Step.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// Runs steps one after the other on its own thread, so that the caller gets a result even when a
/// step hangs in a device. What the steps own is destroyed on that thread too.
class StepRun {
public:
    explicit StepRun(std::vector<Step> steps);
    /// Waits for the thread; without limit while a step hangs.
    ~StepRun();
    StepRun(const StepRun&) = delete;
    StepRun& operator=(const StepRun&) = delete;

    /// Runs the steps. One row for each, in order; `onRow` gets each as it comes. Blocks until all
    /// have ended, or until one exceeds its limit: that one is a fault, and the steps after it are
    /// not run. To be called once.
    std::vector<StepRow> Wait(const std::function<void(const StepRow&)>& onRow);
    /// Runs no further step but those that clean up. Any thread; does not block.
    void Stop();
    /// Whether Wait abandoned a step.
    bool Hangs() const;

private:
    void Work(const std::vector<Step>& steps);
    Finding RunStep(const Step& step);
    /// The row after the first `done`; empty when it does not come within the limit, and then
    /// Hangs.
    std::optional<StepRow> NextRow(std::size_t done, std::chrono::milliseconds limit);

    std::vector<Step> m_steps;  // until the thread has them
    const std::vector<std::pair<std::string, std::chrono::milliseconds>> m_limits;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::vector<StepRow> m_ended KORVEX_GUARDED_BY(m_mutex);
    bool m_stopped KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_hangs KORVEX_GUARDED_BY(m_mutex) = false;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
