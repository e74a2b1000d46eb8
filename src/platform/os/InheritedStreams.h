#pragma once

#include <memory>

namespace Korvex3Sync::os {

/// Windows only: extends the STARTUPINFOW of a program that is started, so that it inherits no
/// other handle than its standard streams. Must exist until the program is started.
class InheritedStreams {
public:
    InheritedStreams();
    ~InheritedStreams();
    InheritedStreams(const InheritedStreams&) = delete;
    InheritedStreams& operator=(const InheritedStreams&) = delete;

    /// The extended information, which this object owns, and the creation flag that goes with it.
    void* Extended(const void* startupInformation);
    static unsigned long Flag();

private:
    struct Data;
    const std::unique_ptr<Data> m_data;
};

/// Of all open files of this process, what this QProcess starts inherits only the standard streams
/// that it is given. Otherwise a program that runs on keeps a pipe open which somebody reads to its
/// end. To be called before the start; needed only where QProcess does not see to it.
template <class QtProcess>
void InheritOnlyStreams(QtProcess& process) {
    if constexpr (requires { typename QtProcess::CreateProcessArguments; }) {
        process.setCreateProcessArgumentsModifier(
            [streams = std::make_shared<InheritedStreams>()](auto* arguments) {
                using Information = decltype(arguments->startupInfo);
                arguments->startupInfo =
                    static_cast<Information>(streams->Extended(arguments->startupInfo));
                arguments->flags |= InheritedStreams::Flag();
            });
    }
}

}  // namespace Korvex3Sync::os
