#include "platform/os/InheritedStreams.h"

#include <algorithm>
#include <vector>

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

struct InheritedStreams::Data {
    Data() {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        attributes.resize(size);
        initialized = ::InitializeProcThreadAttributeList(List(), 1, 0, &size) != 0;
    }
    ~Data() {
        if (initialized) {
            ::DeleteProcThreadAttributeList(List());
        }
    }
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST List() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes.data());
    }

    std::vector<char> attributes;
    bool initialized = false;
    std::vector<HANDLE> streams;
    STARTUPINFOEXW extended{};
};

InheritedStreams::InheritedStreams() : m_data(std::make_unique<Data>()) {}

InheritedStreams::~InheritedStreams() = default;

unsigned long InheritedStreams::Flag() {
    return EXTENDED_STARTUPINFO_PRESENT;
}

void* InheritedStreams::Extended(const void* startupInformation) {
    STARTUPINFOEXW& extended = m_data->extended;
    extended.StartupInfo = *static_cast<const STARTUPINFOW*>(startupInformation);
    extended.StartupInfo.cb = sizeof(extended);
    const STARTUPINFOW& start = extended.StartupInfo;
    for (const HANDLE stream : {start.hStdInput, start.hStdOutput, start.hStdError}) {
        DWORD flags = 0;
        // The system takes a list only of handles that are open and can be inherited, each once.
        if ((start.dwFlags & STARTF_USESTDHANDLES) != 0 &&
            ::GetHandleInformation(stream, &flags) != 0 && (flags & HANDLE_FLAG_INHERIT) != 0 &&
            std::ranges::find(m_data->streams, stream) == m_data->streams.end()) {
            m_data->streams.push_back(stream);
        }
    }
    if (m_data->initialized && !m_data->streams.empty() &&
        ::UpdateProcThreadAttribute(m_data->List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                    m_data->streams.data(), m_data->streams.size() * sizeof(HANDLE),
                                    nullptr, nullptr) != 0) {
        extended.lpAttributeList = m_data->List();
    }
    return &extended;
}

}  // namespace Korvex3Sync::os
