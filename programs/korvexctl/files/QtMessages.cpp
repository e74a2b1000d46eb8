#include "korvexctl/files/QtMessages.h"

#include <QString>

#include <string>

#include "korvexctl/files/StandardOutput.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Print.h"
#include "platform/text/Printable.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// Messages may come after the object has gone: from threads that run until the process ends.
struct Messages {
    os::Mutex mutex;
    const StandardOutput* output KORVEX_GUARDED_BY(mutex) = nullptr;
    bool verbose KORVEX_GUARDED_BY(mutex) = false;
};
Messages& s_messages = *new Messages;

void Take(QtMsgType, const QMessageLogContext&, const QString& message) {
    const std::string shown = text::Printable(message.toStdString());
    const os::MutexGuard guard(s_messages.mutex);
    if (s_messages.output == nullptr) {
        return;
    }
    if (s_messages.verbose) {
        os::PrintError("%s\n", shown.c_str());
    }
    s_messages.output->WriteLog(shown);
}

}  // namespace

QtMessages::QtMessages(const StandardOutput& output, bool verbose) {
    {
        const os::MutexGuard guard(s_messages.mutex);
        s_messages.output = &output;
        s_messages.verbose = verbose;
    }
    qInstallMessageHandler(Take);
}

QtMessages::~QtMessages() {
    const os::MutexGuard guard(s_messages.mutex);
    s_messages.output = nullptr;
}

}  // namespace Korvex3Sync::korvexctl
