#pragma once

#include <locale>
#include <sstream>
#include <string>
#include <utility>

#include "platform/cameras/VirtualCamera.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::cameras {

// The frame of a call on the virtual head's cameras, for the files of VirtualCamera.

inline std::string Text(bool result) {
    return result ? "true" : "false";
}
inline std::string Text(int result) {
    return std::to_string(result);
}

/// The arguments as the journal shows them.
template <class... Values>
std::string Arguments(const Values&... values) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const char* separator = "";
    ((text << std::exchange(separator, ", ") << values), ...);
    return text.str();
}

/// `work` gets the head and gives the result; `gone` is the result without the head.
template <class Result, class Work>
Result VirtualCamera::Call(const char* name, const std::string& arguments, Result failed, Work work,
                           std::type_identity_t<Result> gone) {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return gone;
    }
    const Result result = head->GetFaults().Meet(name) ? failed : work(*head);
    head->GetJournal().Add(name, arguments, Text(result));
    return result;
}

template <class Result, class Work>
Result VirtualCamera::Call(const char* name, const std::string& arguments, Result failed,
                           Work work) {
    return Call(name, arguments, failed, work, failed);
}

/// The same for what needs an open camera.
template <class Result, class Work>
Result VirtualCamera::CallOpen(const char* name, const std::string& arguments, Result failed,
                               Work work) {
    return Call(name, arguments, failed, [&](Head& head) {
        return OpenStream() && Reaches(head, name) ? work(head) : failed;
    });
}

}  // namespace Korvex3Sync::cameras
