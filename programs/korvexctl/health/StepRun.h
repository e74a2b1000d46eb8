#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "korvexctl/health/Step.h"

namespace Korvex3Sync::korvexctl {

/// Runs steps one after the other on a thread of its own, so that whoever waits for them gets his
/// answer also when a step hangs in a device. What the steps own ends on that thread too.
class StepRun {
public:
    explicit StepRun(std::vector<Step> steps);
    /// Waits for the thread: without limit after a step that hangs, unless the device lets it go.
    ~StepRun();
    StepRun(const StepRun&) = delete;
    StepRun& operator=(const StepRun&) = delete;

    /// Begins with the first step. One row for each step, in order; `onRow` gets each as it comes.
    /// Blocks until all have ended, or until one has passed its limit: that one is a fault then,
    /// and the steps after it are not run. To be called once.
    std::vector<StepRow> Wait(const std::function<void(const StepRow&)>& onRow);
    /// Runs no further step but those that clean up. Any thread; does not block.
    void Stop();
    /// Whether Wait gave a step up.
    bool Hangs() const;

private:
    void Work(const std::vector<Step>& steps);
    Finding RunStep(const Step& step);

    std::vector<Step> m_steps;  // until the thread has them
    const std::vector<std::pair<std::string, std::chrono::milliseconds>> m_limits;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<StepRow> m_ended;
    bool m_stopped = false;
    bool m_hangs = false;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
