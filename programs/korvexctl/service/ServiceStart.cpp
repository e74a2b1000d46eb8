#include "korvexctl/service/ServiceStart.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <chrono>
#include <filesystem>
#include <functional>

#include "korvexctl/files/Output.h"
#include "korvexctl/service/ServiceLink.h"
#include "korvexctl/service/ServicePrograms.h"
#include "platform/os/FileName.h"
#include "platform/os/InheritedStreams.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

/// The service prepares its head before it answers.
constexpr std::chrono::seconds kStartLimit{20};
constexpr std::chrono::seconds kAnswerLimit{5};
/// A service that restarts its board ends after that.
constexpr std::chrono::seconds kEndLimit{10};
constexpr std::chrono::seconds kUnaskedEndLimit{1};
constexpr std::chrono::seconds kKillLimit{5};

[[noreturn]] void Fail(const ServiceProgram& program, const std::string& message) {
    const fs::path log = NewestLogOf(program);
    throw CommandError(ExitCode::ServiceFailed,
                       message + (log.empty() ? "" : "; its log is " + os::TextOf(log)));
}

std::string ProcessText(long number) {
    return "process " + std::to_string(number);
}

/// Where a program's standard error goes while it starts. The file goes with the object.
class ErrorsOfStart {
public:
    explicit ErrorsOfStart(const ServiceProgram& program)
        : m_file(ServiceLogFolder() / (std::string("start-") + program.word)) {}
    ~ErrorsOfStart() {
        std::error_code gone;
        fs::remove(m_file, gone);
    }
    ErrorsOfStart(const ErrorsOfStart&) = delete;
    ErrorsOfStart& operator=(const ErrorsOfStart&) = delete;

    QString File() const { return QString::fromStdString(os::TextOf(m_file)); }
    /// ": " and the last line; empty if there is none.
    std::string LastWords() const {
        const std::vector<std::string> lines = LastLines(m_file, 1);
        return lines.empty() ? "" : ": " + lines.front();
    }

private:
    const fs::path m_file;
};

/// A program that was just started.
class Started {
public:
    Started(const ServiceProgram& program, const std::string& virtualHead)
        : m_program(program), m_errors(program) {
        const fs::path folder = QCoreApplication::applicationDirPath().toStdU16String();
        const fs::path file = folder / program.file;
        os::StreamsOnlyProcess<QProcess> process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (!virtualHead.empty()) {
            environment.insert(kHeadVariable, QString::fromStdString(virtualHead));
        }
        process.setProgram(QString::fromStdString(os::TextOf(file)));
        process.setWorkingDirectory(QString::fromStdString(os::TextOf(folder)));
        process.setProcessEnvironment(environment);
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(m_errors.File());
        qint64 number = 0;
        if (!process.StartDetached(number)) {
            Fail(program, "cannot start " + os::TextOf(file) +
                              (fs::is_regular_file(file) ? "" : ": no such file"));
        }
        m_number = static_cast<long>(number);
    }

    void WaitForAnswer(const std::function<bool()>& answers) const {
        const os::OtherProcess process(m_number);
        // It ends at once if another one, started at the same time, was faster.
        const auto mayAnswer = [&] { return process.Runs() || ProcessOf(m_program) != 0; };
        if (!AnswersWithin(kStartLimit, answers, mayAnswer)) {
            const bool runs = process.Runs();
            Fail(m_program,
                 std::string("the ") + m_program.word +
                     (runs ? " was started, but does not answer" : " ended during its start") +
                     m_errors.LastWords());
        }
    }

private:
    const ServiceProgram& m_program;
    const ErrorsOfStart m_errors;
    long m_number = 0;
};

void Start(const ServiceProgram& program, const std::string& virtualHead,
           const std::function<bool()>& answers, Output& output) {
    const std::string name = std::string("the ") + program.word;
    const long before = ProcessOf(program);
    if (before == 0) {
        Started(program, virtualHead).WaitForAnswer(answers);
        output.Line(name + " is running, " + ProcessText(ProcessOf(program)));
        return;
    }
    // It may just be starting.
    if (!AnswersWithin(kAnswerLimit, answers, [&] { return ProcessOf(program) == before; })) {
        Fail(program, name + ", " + ProcessText(before) +
                          ", does not answer; korvexctl service stop ends it");
    }
    output.Line(name + " was running already, " + ProcessText(before));
}

void Stop(const ServiceProgram& program, bool (*askToEnd)(), Output& output) {
    const std::string name = std::string("the ") + program.word;
    const long number = ProcessOf(program);
    if (number == 0) {
        output.Line(name + " was not running");
        return;
    }
    const os::OtherProcess process(number);
    const bool asked = askToEnd();
    if (process.WaitForEnd(asked ? kEndLimit : kUnaskedEndLimit)) {
        output.Line(name + " has ended");
        return;
    }
    if (!process.Is(program.file)) {
        Fail(program, name + " does not end, and " + ProcessText(number) + " is not " +
                          program.file + " of this user; it was left alone");
    }
    if (!process.Kill() || !process.WaitForEnd(kKillLimit)) {
        Fail(program, "cannot end " + name + ", " + ProcessText(number));
    }
    output.Line(name + " did not end when asked; killed " + ProcessText(number));
}

}  // namespace

std::string HeadOfService(const std::string& asked) {
    const QString head =
        asked.empty() ? qEnvironmentVariable(kHeadVariable) : QString::fromStdString(asked);
    return (head.isEmpty() || head == kDefaultHead ? head : QFileInfo(head).absoluteFilePath())
        .toStdString();
}

void StartService(const std::string& virtualHead, Output& output) {
    Start(kHub, {}, HubAnswers, output);
    Start(kService, HeadOfService(virtualHead), ServiceAnswers, output);
}

void StopService(Output& output) {
    // A service that misses its hub would start a new one.
    Stop(kService, AskServiceToEnd, output);
    Stop(kHub, AskHubToEnd, output);
}

}  // namespace Korvex3Sync::korvexctl
