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

/// Not on Windows: of the files that are open now, the programs that this process becomes or starts
/// inherit the standard streams only.
void KeepOnlyStreams();

/// A QProcess whose program inherits, of all open files of this process, only the standard streams
/// that it is given. Otherwise a program that runs on keeps a pipe open which somebody reads to its
/// end, or the port of a server.
template <class QtProcess>
class StreamsOnlyProcess : public QtProcess {
    static constexpr bool kWindows = requires { typename QtProcess::CreateProcessArguments; };

public:
    StreamsOnlyProcess() {
        if constexpr (kWindows) {
            this->setCreateProcessArgumentsModifier(
                [streams = std::make_shared<InheritedStreams>()](auto* arguments) {
                    using Information = decltype(arguments->startupInfo);
                    arguments->startupInfo =
                        static_cast<Information>(streams->Extended(arguments->startupInfo));
                    arguments->flags |= InheritedStreams::Flag();
                });
        }
    }

    /// Starts it detached and gives its number. No other program that this process starts later
    /// inherits the files that are open now.
    bool StartDetached(long long& number) {
        setupChildProcess();  // there, Qt does not call it in the new process
        return this->startDetached(&number);
    }

protected:
    void setupChildProcess() override {
        if constexpr (!kWindows) {
            KeepOnlyStreams();
        }
    }
};

}  // namespace Korvex3Sync::os
