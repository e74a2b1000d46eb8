#pragma once

#include <string>
#include <vector>

#include "recorder/Recorder.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync::tests {

/// A list of serials in the form that connect takes.
class SerialList {
public:
    SerialList(std::initializer_list<std::string> serials) : m_texts(serials) {
        for (auto& text : m_texts) {
            m_pointers.push_back(text.data());
        }
    }
    SerialList(const SerialList&) = delete;
    SerialList& operator=(const SerialList&) = delete;
    const std::vector<char*>& Pointers() const { return m_pointers; }

private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

/// Connects a manager to the recorded head: one camera of 8 x 4 pixels shared by two sensors.
inline RETSTATUS ConnectRecorded(IManagerSync& manager) {
    SerialList serials{"KV00R1", "KV00R1"};
    return manager.Connect("any", "BOARD", serials.Pointers(), {8, 8}, {4, 4});
}

}  // namespace Korvex3Sync::tests
