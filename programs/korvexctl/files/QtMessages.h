#pragma once

namespace Korvex3Sync::korvexctl {

class StandardOutput;

/// Takes the messages of Qt's debug channel, through which service mode logs, while it exists: they
/// are shown on standard error if verbose, and go to the log file. One per process.
class QtMessages {
public:
    QtMessages(const StandardOutput& output, bool verbose);
    ~QtMessages();
    QtMessages(const QtMessages&) = delete;
    QtMessages& operator=(const QtMessages&) = delete;
};

}  // namespace Korvex3Sync::korvexctl
