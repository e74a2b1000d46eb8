#include "virtual_head/Journal.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::virtual_head {
namespace {

// Threads that are remembered before those without an entry are looked for.
constexpr std::size_t kManyThreads = 256;

}  // namespace

std::string JournalEntry::Text() const {
    return call + "(" + arguments + ") = " + result;
}

void Journal::Add(std::string call, std::string arguments, std::string result) {
    std::lock_guard lock(m_mutex);
    JournalEntry* latest = LatestOfCaller();
    if (latest != nullptr && latest->call == call && latest->arguments == arguments &&
        latest->result == result) {
        ++latest->count;
        return;
    }
    JournalEntry entry;
    entry.sequence = m_next++;
    entry.call = std::move(call);
    entry.arguments = std::move(arguments);
    entry.result = std::move(result);
    entry.thread = std::this_thread::get_id();
    entry.time = std::chrono::steady_clock::now();
    m_latest[entry.thread] = entry.sequence;
    m_entries.push_back(std::move(entry));
    if (m_entries.size() > kMostEntries) {
        m_entries.pop_front();
        ++m_dropped;
    }
    if (m_latest.size() > kManyThreads) {
        ForgetThreadsWithoutEntries();
    }
}

JournalEntry* Journal::LatestOfCaller() {
    const auto found = m_latest.find(std::this_thread::get_id());
    if (found == m_latest.end() || m_entries.empty() ||
        found->second < m_entries.front().sequence) {
        return nullptr;
    }
    return &m_entries[found->second - m_entries.front().sequence];
}

void Journal::ForgetThreadsWithoutEntries() {
    const std::uint64_t oldest = m_entries.front().sequence;
    std::erase_if(m_latest, [oldest](const auto& latest) { return latest.second < oldest; });
}

std::vector<JournalEntry> Journal::Entries() const {
    std::lock_guard lock(m_mutex);
    return {m_entries.begin(), m_entries.end()};
}

std::vector<std::string> Journal::Texts(const std::vector<std::string>& calls) const {
    std::lock_guard lock(m_mutex);
    std::vector<std::string> texts;
    for (const JournalEntry& entry : m_entries) {
        if (calls.empty() || std::find(calls.begin(), calls.end(), entry.call) != calls.end()) {
            texts.push_back(entry.Text());
        }
    }
    return texts;
}

std::uint64_t Journal::Dropped() const {
    std::lock_guard lock(m_mutex);
    return m_dropped;
}

void Journal::Clear() {
    std::lock_guard lock(m_mutex);
    m_entries.clear();
    m_latest.clear();
}

}  // namespace Korvex3Sync::virtual_head
