#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/cli/ProgressBar.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/StatusWatch.h"
#include "korvexctl/scan/HeadRecovery.h"
#include "korvexctl/scan/RunHistory.h"
#include "korvexctl/scan/ScanReport.h"
#include "korvexctl/scan/SetsTable.h"

namespace Korvex3Sync::korvexctl {

/// What is noted while a scan runs.
struct ScanNotes {
    RunHistory history;
    SetsTable* table = nullptr;    // null: nothing is written
    std::exception_ptr failure{};  // of writing the table
};

/// Watches a scan from the trigger on to its end: notes the sets and the losses, shows the
/// progress, and brings a head back that was away. What it borrows must live longer. One thread.
class ScanRun {
public:
    /// Reads the settings of the head when they may have to be restored.
    ScanRun(const ConnectedHead& head, StatusWatch& watch, ScanRecorder& recorder,
            ScanReport& report, ScanNotes& notes, bool showsProgress);

    /// From the moment when the trigger is on. Fills in the report: how the scan ended, losses,
    /// outages.
    void Wait();

private:
    using Clock = ScanRecorder::Clock;

    void Note(const ScanRecorder::Counts& counts, Clock::time_point now);
    void NoteSet(const SetRecord& set, const ScanLosses& losses, Clock::time_point first);
    void AddOutage(Clock::time_point from, Clock::time_point to, Clock::time_point first);
    /// Triggers of the outages, and of the gaps in service mode, by the period.
    std::uint64_t WhileAway(const ScanLosses& losses) const;
    ScanLosses Losses(const ScanRecorder::Counts& counts) const;
    bool HeadIsSilent(const ScanRecorder::Counts& counts, Clock::time_point now) const;
    bool HeadIsAway(const ScanRecorder::Counts& counts, Clock::time_point now) const;
    void Recover();
    std::uint64_t NotArrived(const ScanRecorder::Counts& counts, Clock::time_point now) const;

    const ConnectedHead& m_head;
    StatusWatch& m_watch;
    ScanRecorder& m_recorder;
    ScanReport& m_report;
    ScanNotes& m_notes;
    const ProgressBar m_bar;
    const std::chrono::milliseconds m_period;
    std::optional<HeadRecovery> m_recovery;
    Clock::time_point m_start;
    Clock::time_point m_back;  // when the head was last brought back
    double m_lastSeconds = 0;  // of the last set that was noted
    bool m_away = false;       // no set since the head was away
    bool m_silent = false;     // in service mode: no sets
    std::vector<std::string> m_notRestored;
    std::uint64_t m_whileAway = 0;
    std::uint64_t m_lostByKeys = 0;
};

}  // namespace Korvex3Sync::korvexctl
