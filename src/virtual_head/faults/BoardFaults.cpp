#include "virtual_head/faults/BoardFaults.h"

#include "virtual_head/base/Journal.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {

void BoardFaults::Mute(int opens) {
    os::MutexGuard guard(m_mutex);
    m_mute = true;
    m_muteUnmet = true;
    m_opensLimited = opens > 0;
    m_opensLeft = opens;
}

bool BoardFaults::Answer() {
    os::MutexGuard guard(m_mutex);
    const bool was = m_mute;
    m_mute = false;
    m_opensLeft = 0;
    return was;
}

void BoardFaults::Late(std::chrono::milliseconds extra, int answers) {
    os::MutexGuard guard(m_mutex);
    m_lateLeft += answers;
    m_extra = extra;
}

bool BoardFaults::Reach(std::uint64_t plug, const std::string& call) {
    if (m_plugged.Reach(plug)) {
        return true;
    }
    Write(Name(FaultKind::BoardVanish), call);
    return false;
}

bool BoardFaults::Reach(const std::string& call) {
    if (m_plugged.Reach()) {
        return true;
    }
    Write(Name(FaultKind::BoardVanish), call);
    return false;
}

bool BoardFaults::Open(const std::string& call) {
    if (!Reach(call)) {
        return false;
    }
    os::MutexGuard guard(m_mutex);
    if (m_mute && m_opensLimited && m_opensLeft-- == 0) {
        m_mute = false;
        m_opensLeft = 0;
    }
    return true;
}

bool BoardFaults::SaysNothing(const std::string& call) {
    {
        os::MutexGuard guard(m_mutex);
        if (!m_mute) {
            return false;
        }
        m_muteUnmet = false;
    }
    Write(Name(FaultKind::BoardMute), call);
    return true;
}

std::chrono::milliseconds BoardFaults::Lateness(const std::string& call) {
    std::chrono::milliseconds extra{0};
    {
        os::MutexGuard guard(m_mutex);
        if (m_lateLeft == 0) {
            return extra;
        }
        --m_lateLeft;
        extra = m_extra;
    }
    Write(Name(FaultKind::BoardLate), call);
    return extra;
}

std::vector<std::string> BoardFaults::Unused() const {
    std::vector<std::string> unused;
    if (m_plugged.Unnoticed()) {
        unused.push_back(std::string(Name(FaultKind::BoardVanish)) + ": no call met it");
    }
    os::MutexGuard guard(m_mutex);
    const std::string mute = Name(FaultKind::BoardMute);
    if (m_muteUnmet) {
        unused.push_back(mute + ": no call met it");
    } else if (m_mute && m_opensLeft > 0) {
        unused.push_back(mute + ": " + std::to_string(m_opensLeft) + " opens left");
    }
    if (m_lateLeft > 0) {
        unused.push_back(std::string(Name(FaultKind::BoardLate)) + ": " +
                         std::to_string(m_lateLeft) + " left");
    }
    return unused;
}

void BoardFaults::Clear() {
    m_plugged.Forget();
    os::MutexGuard guard(m_mutex);
    m_mute = false;
    m_muteUnmet = false;
    m_opensLeft = 0;
    m_lateLeft = 0;
}

void BoardFaults::Write(const char* fault, const std::string& call) const {
    if (m_journal != nullptr) {
        m_journal->AddFault(std::string(fault) + ", " + call, "met");
    }
}

}  // namespace Korvex3Sync::virtual_head
