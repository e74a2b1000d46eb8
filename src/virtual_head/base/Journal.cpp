#include "virtual_head/base/Journal.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::virtual_head {
namespace {

// Above this number of threads, those without entries are forgotten.
constexpr std::size_t kManyThreads = 256;
// The number of different calls of a stream that are distinguished, also by result.
constexpr std::size_t kMostOpen = 8;

bool BelongsToStream(const std::string& call) {
    return call == "SnapShot" || call == "GetResolution" || call == "fault";
}

}  // namespace

std::string JournalEntry::Text() const {
    return call + "(" + arguments + ") = " + result;
}

void Journal::Add(std::string call, std::string arguments, std::string result) {
    JournalEntry entry;
    entry.call = std::move(call);
    entry.arguments = std::move(arguments);
    entry.result = std::move(result);
    entry.thread = std::this_thread::get_id();
    entry.time = std::chrono::steady_clock::now();

    os::MutexGuard lock(m_mutex);
    Open& open = m_open[entry.thread];
    if (JournalEntry* const equal = FindEqual(open, entry)) {
        ++equal->count;
        return;
    }
    entry.sequence = m_next++;
    if (!BelongsToStream(entry.call) || open.size() >= kMostOpen) {
        open.clear();
    }
    open.push_back(entry.sequence);
    m_entries.push_back(std::move(entry));
    if (m_entries.size() > kMostEntries) {
        m_entries.pop_front();
        ++m_dropped;
    }
    if (m_open.size() > kManyThreads) {
        ForgetThreadsWithoutEntries();
    }
}

JournalEntry* Journal::FindEqual(const Open& open, const JournalEntry& entry) {
    const bool stream = BelongsToStream(entry.call);
    for (auto sequence = open.rbegin(); sequence != open.rend(); ++sequence) {
        if (m_entries.empty() || *sequence < m_entries.front().sequence) {
            break;
        }
        JournalEntry& candidate = m_entries[*sequence - m_entries.front().sequence];
        if (candidate.call == entry.call && candidate.arguments == entry.arguments &&
            candidate.result == entry.result) {
            return &candidate;
        }
        if (!stream) {
            break;
        }
    }
    return nullptr;
}

void Journal::ForgetThreadsWithoutEntries() {
    const std::uint64_t oldest = m_entries.front().sequence;
    std::erase_if(m_open, [oldest](const auto& thread) { return thread.second.back() < oldest; });
}

std::vector<JournalEntry> Journal::Entries() const {
    os::MutexGuard lock(m_mutex);
    return {m_entries.begin(), m_entries.end()};
}

std::vector<std::string> Journal::Texts(const std::vector<std::string>& calls) const {
    os::MutexGuard lock(m_mutex);
    std::vector<std::string> texts;
    for (const JournalEntry& entry : m_entries) {
        if (calls.empty() || std::find(calls.begin(), calls.end(), entry.call) != calls.end()) {
            texts.push_back(entry.Text());
        }
    }
    return texts;
}

std::uint64_t Journal::Dropped() const {
    os::MutexGuard lock(m_mutex);
    return m_dropped;
}

void Journal::Clear() {
    os::MutexGuard lock(m_mutex);
    m_entries.clear();
    m_open.clear();
}

}  // namespace Korvex3Sync::virtual_head
