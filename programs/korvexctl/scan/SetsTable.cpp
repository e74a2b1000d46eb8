#include "korvexctl/scan/SetsTable.h"

#include <iomanip>
#include <sstream>

#include "korvexctl/cli/TimeText.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

void SetsTable::Add(std::span<const SetRecord> sets) {
    if (sets.empty()) {
        return;
    }
    std::ostringstream lines;
    if (!m_file) {
        m_file.emplace(m_path, "cannot write " + os::TextOf(m_path));
        lines << "number,key,seconds,interval_ms,color,lost_before,callback_us,kept,recorded\n";
    }
    lines << std::fixed;
    for (const SetRecord& set : sets) {
        lines << set.number << ',' << set.key << ',' << std::setprecision(6) << set.seconds << ',';
        if (set.number > 0) {
            lines << std::setprecision(3) << (set.seconds - m_last) * kMillisecondsPerSecond;
        }
        lines << ',' << set.color << ',' << set.lostBefore << ',' << std::setprecision(1)
              << set.callbackUs << ',' << set.kept << ',' << set.recorded << '\n';
        m_last = set.seconds;
    }
    m_file->Write(lines.str());
}

void SetsTable::PutInPlace() {
    if (m_file) {
        m_file->PutInPlace(Existing::Replaced, Durability::Later);
    }
}

}  // namespace Korvex3Sync::korvexctl
