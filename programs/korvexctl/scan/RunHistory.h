#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/scan/ScanLosses.h"
#include "korvexctl/scan/SetRecord.h"

namespace Korvex3Sync::korvexctl {

/// How a scan went over time, in bounded memory however long it takes: when time runs past the last
/// bin, each two become one. Times are seconds from the first set on. One thread.
class RunHistory {
public:
    static constexpr std::size_t kMostBins = 240;
    /// Callback times come in classes of half an octave: class i holds those from 2^(i/2) us on,
    /// the first one also shorter ones and the last one also longer ones.
    static constexpr std::size_t kClasses = 42;

    /// What happened in one stretch of time.
    struct Bin {
        int intervals = 0;  // from set to set, noted at their end
        double shortestMs = 0;
        double longestMs = 0;
        double sumMs = 0;
        std::vector<std::uint64_t> lost;  // by place, as Places() has them; may be shorter
    };
    struct Place {
        std::string words;
        std::uint64_t total = 0;
    };

    void Add(const SetRecord& set);
    /// Notes all that was lost so far; what is new since the last call falls to this moment.
    void AddLosses(double seconds, const ScanLosses& losses);

    double BinSeconds() const { return m_binSeconds; }
    const std::vector<Bin>& Bins() const { return m_bins; }
    const std::vector<Place>& Places() const { return m_places; }
    const std::array<std::uint64_t, kClasses>& CallbackClasses() const { return m_classes; }

private:
    Bin& BinAt(double seconds);

    double m_binSeconds = 0.1;
    std::vector<Bin> m_bins;
    std::vector<Place> m_places;
    std::array<std::uint64_t, kClasses> m_classes{};
    std::optional<double> m_last;  // seconds of the last set
};

}  // namespace Korvex3Sync::korvexctl
