#include "korvexctl/scan/RunHistory.h"

#include <algorithm>
#include <cmath>

#include "korvexctl/cli/TimeText.h"

namespace Korvex3Sync::korvexctl {

namespace {

void Merge(const RunHistory::Bin& from, RunHistory::Bin& into) {
    if (from.intervals > 0) {
        into.shortestMs =
            into.intervals > 0 ? std::min(into.shortestMs, from.shortestMs) : from.shortestMs;
        into.longestMs = std::max(into.longestMs, from.longestMs);
        into.sumMs += from.sumMs;
        into.intervals += from.intervals;
    }
    into.lost.resize(std::max(into.lost.size(), from.lost.size()));
    for (std::size_t place = 0; place < from.lost.size(); ++place) {
        into.lost[place] += from.lost[place];
    }
}

}  // namespace

RunHistory::Bin& RunHistory::BinAt(double seconds) {
    const double time = std::max(seconds, 0.0);
    while (time >= m_binSeconds * static_cast<double>(kMostBins)) {
        for (std::size_t i = 0; i < m_bins.size(); ++i) {
            if (i % 2 == 0) {
                m_bins[i / 2] = i == 0 ? m_bins[0] : std::move(m_bins[i]);
            } else {
                Merge(m_bins[i], m_bins[i / 2]);
            }
        }
        m_bins.resize((m_bins.size() + 1) / 2);
        m_binSeconds *= 2;
    }
    const auto index = static_cast<std::size_t>(time / m_binSeconds);
    m_bins.resize(std::max(m_bins.size(), index + 1));
    return m_bins[index];
}

void RunHistory::Add(const SetRecord& set) {
    Bin interval;
    if (m_last) {
        const double milliseconds = (set.seconds - *m_last) * kMillisecondsPerSecond;
        interval = {1, milliseconds, milliseconds, milliseconds, {}};
    }
    Merge(interval, BinAt(set.seconds));
    m_last = set.seconds;
    const double octaves = std::log2(std::max(set.callbackUs, 1.0));
    ++m_classes[std::min(static_cast<std::size_t>(2 * octaves), kClasses - 1)];
}

void RunHistory::AddLosses(double seconds, const ScanLosses& losses) {
    Bin& bin = BinAt(seconds);
    for (const LossCount& now : losses.Places()) {
        auto place = std::find_if(m_places.begin(), m_places.end(),
                                  [&now](const Place& known) { return known.words == now.words; });
        if (place == m_places.end()) {
            place = m_places.insert(place, {now.words, 0});
        }
        // A count that is taken back was noted too early.
        if (now.count > place->total) {
            const auto index = static_cast<std::size_t>(place - m_places.begin());
            bin.lost.resize(std::max(bin.lost.size(), index + 1));
            bin.lost[index] += now.count - place->total;
            place->total = now.count;
        }
    }
}

}  // namespace Korvex3Sync::korvexctl
