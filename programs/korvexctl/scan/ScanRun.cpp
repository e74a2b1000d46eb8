#include "korvexctl/scan/ScanRun.h"

#include <algorithm>
#include <cmath>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/TimeText.h"
#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/scan/ScanProgress.h"

namespace Korvex3Sync::korvexctl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kProgressStep{100};
// Between two attempts to bring a head back, and how long it may be silent before the first.
constexpr milliseconds kRecoveryStep{500};
constexpr milliseconds kSilence{2000};
// Reopening the devices takes longer.
constexpr milliseconds kShortestOutage{100};
// Periods within which a set arrives: without colour it waits in the library for the next trigger.
constexpr int kPeriodsOfASet = 2;

milliseconds Milliseconds(double seconds) {
    return milliseconds(std::llround(seconds * kMillisecondsPerSecond));
}

ScanRecorder::Clock::duration AsDuration(double seconds) {
    return std::chrono::duration_cast<ScanRecorder::Clock::duration>(
        std::chrono::duration<double>(seconds));
}

double Seconds(ScanRecorder::Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

ScanRun::ScanRun(const ConnectedHead& head, StatusWatch& watch, ScanRecorder& recorder,
                 ScanReport& report, ScanNotes& notes, bool showsProgress)
    : m_head(head),
      m_watch(watch),
      m_recorder(recorder),
      m_report(report),
      m_notes(notes),
      m_bar(showsProgress),
      m_period(report.settings.PeriodMs().value_or(0)) {
    // In service mode the library reconnects by itself.
    if (report.options.reconnect && !ThroughService()) {
        m_recovery.emplace(head.session, head.cameras.size(), watch);
    }
}

void ScanRun::Wait() {
    const ScanEnd& end = m_report.options.end;
    const milliseconds patience =
        Milliseconds(m_report.options.TimeoutSeconds()) + kPeriodsOfASet * m_period;
    m_start = Clock::now();
    std::optional<EndedBy> endedBy;
    ScanRecorder::Counts counts;
    Clock::time_point now;
    while (!endedBy) {
        counts = m_recorder.Wait(m_away ? kRecoveryStep : kProgressStep);
        now = Clock::now();
        Note(counts, now);
        if (counts.delivered == end.sets) {
            endedBy = EndedBy::Sets;
        } else if (counts.stopped) {
            endedBy = EndedBy::Stop;
        } else if (end.seconds && now - m_start >= Milliseconds(*end.seconds)) {
            endedBy = EndedBy::Seconds;
        } else if (now - std::max(m_start, counts.last) > patience) {
            endedBy = EndedBy::Timeout;
        } else if (m_recovery && HeadIsAway(counts, now)) {
            Recover();
        } else if (ThroughService() && m_silent != HeadIsSilent(counts, now)) {
            // Another service has another head, or one that starts over.
            m_silent = !m_silent;
            m_recorder.ExpectNewKeys(m_silent);
        }
    }
    m_report.endedBy = *endedBy;
    m_report.losses = Losses(counts);
    m_report.losses.notArrived = NotArrived(counts, now);
    m_report.boardLost = m_watch.Lost();
    m_notes.history.AddLosses(Seconds(now - std::max(m_start, counts.first)), m_report.losses);
}

std::uint64_t ScanRun::WhileAway(const ScanLosses& losses) const {
    const auto period = static_cast<std::uint64_t>(m_period.count());
    return m_whileAway + (losses.library && period > 0 ? losses.library->serviceGapMs / period : 0);
}

ScanLosses ScanRun::Losses(const ScanRecorder::Counts& counts) const {
    ScanLosses losses;
    losses.library = AskStatistics(m_head.session);
    losses.CountSets(counts, GivesColor(m_head.cameras, m_report.settings.asked.light.mode));
    losses.whileAway = WhileAway(losses);
    return losses;
}

void ScanRun::Note(const ScanRecorder::Counts& counts, Clock::time_point now) {
    const std::vector<SetRecord> sets = m_recorder.FetchRecords();
    ScanLosses losses = Losses(counts);
    for (const SetRecord& set : sets) {
        NoteSet(set, losses, counts.first);
    }
    losses.whileAway = WhileAway(losses);
    if (counts.delivered > 0) {
        m_notes.history.AddLosses(Seconds(now - counts.first), losses);
    }
    const ScanProgress progress{m_report.options.end, counts, Seconds(now - m_start), losses.Sum(),
                                m_away};
    m_bar.Show(progress.Done(), progress.Text());
    if (m_notes.table == nullptr || m_notes.failure) {
        return;
    }
    try {
        m_notes.table->Add(sets);
    } catch (const CommandError&) {
        m_notes.failure = std::current_exception();
        m_recorder.Stop();
    }
}

void ScanRun::NoteSet(const SetRecord& set, const ScanLosses& losses, Clock::time_point first) {
    const Clock::time_point arrival = first + AsDuration(set.seconds);
    const Clock::time_point before = set.number == 0 ? m_start : first + AsDuration(m_lastSeconds);
    // A set of before may still have been on its way when the head was found to be away.
    if (m_away && (arrival - before > kShortestOutage || arrival > m_back)) {
        m_away = false;
        AddOutage(before, arrival, first);
    }
    m_lastSeconds = set.seconds;
    m_notes.history.Add(set);
    // The sets tell when triggers were lost; how many, the library knows better.
    m_lostByKeys += static_cast<std::uint64_t>(set.lostBefore);
    ScanLosses sofar;
    sofar.whileAway = m_whileAway;
    if (losses.library) {
        sofar.library.emplace().missingKeys = std::min(m_lostByKeys, losses.library->missingKeys);
    }
    m_notes.history.AddLosses(set.seconds, sofar);
}

void ScanRun::AddOutage(Clock::time_point from, Clock::time_point to, Clock::time_point first) {
    Outage outage{Seconds(from - first), Seconds(to - from), 0, std::move(m_notRestored)};
    if (m_period.count() > 0) {
        // One period is the time from set to set.
        outage.triggers =
            std::max(0, static_cast<int>(std::lround(outage.seconds / Seconds(m_period))) - 1);
    }
    m_whileAway += static_cast<std::uint64_t>(outage.triggers);
    m_report.outages.push_back(std::move(outage));
}

bool ScanRun::HeadIsSilent(const ScanRecorder::Counts& counts, Clock::time_point now) const {
    return now - std::max({m_start, counts.last, m_back}) > kSilence + kPeriodsOfASet * m_period;
}

bool ScanRun::HeadIsAway(const ScanRecorder::Counts& counts, Clock::time_point now) const {
    return m_watch.Lost() || HeadIsSilent(counts, now);
}

void ScanRun::Recover() {
    m_away = true;
    m_recorder.ExpectNewKeys(true);
    if (m_recovery->Try()) {
        m_back = Clock::now();
        m_notRestored = m_recovery->NotRestored();
    }
    m_recorder.ExpectNewKeys(false);
}

std::uint64_t ScanRun::NotArrived(const ScanRecorder::Counts& counts, Clock::time_point now) const {
    const auto& sets = m_report.options.end.sets;
    if (m_report.endedBy == EndedBy::Timeout && sets) {
        return static_cast<std::uint64_t>(*sets - counts.delivered);
    }
    // A set that is late by less is on its way.
    constexpr milliseconds kLate{300};
    const auto silence = now - std::max(m_start, counts.last);
    if (m_report.endedBy == EndedBy::Sets || m_period.count() == 0 ||
        silence < kLate + kPeriodsOfASet * m_period) {
        return 0;
    }
    return static_cast<std::uint64_t>(silence / m_period);
}

}  // namespace Korvex3Sync::korvexctl
