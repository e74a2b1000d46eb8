#pragma once

#include <optional>

namespace Korvex3Sync::korvexctl {

/// How many sets a contact sheet shows at most.
inline constexpr int kSheetRows = 8;

/// When a scan ends without being stopped. If neither is set, it runs until it is stopped.
struct ScanEnd {
    std::optional<int> sets;
    std::optional<double> seconds;
};

/// Which sets of a scan get pictures: `keep` of them, evenly spread over its sets, or over its time
/// where that ends it; the first ones of a scan without an end. A set that could not be kept is
/// made up for by a later one.
class ImageSetChoice {
public:
    ImageSetChoice(int keep, ScanEnd end);

    int Keep() const { return m_keep; }
    /// How many pictures are due with the set of this number, from 0, that arrives so many seconds
    /// after the first one.
    int Due(int number, double seconds) const;
    /// Whether the contact sheet shows the kept set of this index: up to kSheetRows of them, evenly
    /// spread.
    bool OnSheet(int index) const;

private:
    ScanEnd m_end;
    int m_keep;
};

}  // namespace Korvex3Sync::korvexctl
