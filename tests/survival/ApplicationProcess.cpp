#include "survival/ApplicationProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <sstream>

#include "support/Deadline.h"
#include "survival/Processes.h"

namespace Korvex3Sync::tests::survival {

namespace {

Event ParseEvent(const std::string& line) {
    std::istringstream words(line);
    Event event;
    words >> event.kind >> event.time;
    if (event.kind == "call") {
        words >> event.word >> event.number >> event.milliseconds;
    } else if (event.kind == "debug") {
        std::getline(words >> std::ws, event.word);
    } else {
        words >> event.word;
    }
    return event;
}

}  // namespace

Moment Now() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

ApplicationProcess::ApplicationProcess(const OwnFolders& folders, const std::string& use)
    : ApplicationProcess({KORVEX_SURVIVAL_APPLICATION, use}, folders.Environment()) {}

ApplicationProcess::ApplicationProcess(
    const std::vector<std::string>& command,
    const std::vector<std::pair<std::string, std::string>>& environment) {
    std::array<int, 2> input{-1, -1};
    std::array<int, 2> output{-1, -1};
    if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    m_input = input[1];
    m_pid = StartProcess(command, environment, {input[0], output[1]});
    ::close(input[0]);
    ::close(output[1]);
    m_reader = std::thread([this, end = output[0]] { Read(end); });
}

ApplicationProcess::~ApplicationProcess() {
    if (m_pid > 0) {
        Kill();
    }
}

void ApplicationProcess::Tell(const std::string& line) const {
    const std::string text = line + '\n';
    EXPECT_EQ(::write(m_input, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void ApplicationProcess::Read(int output) {
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(::fdopen(output, "r"), std::fclose);
    char* text = nullptr;
    std::size_t room = 0;
    while (::getline(&text, &room, stream.get()) > 0) {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(ParseEvent(text));
        m_changed.notify_all();
    }
    std::free(text);
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

void ApplicationProcess::End() {
    ::close(std::exchange(m_input, -1));
    std::unique_lock lock(m_mutex);
    const bool ended = m_changed.wait_for(lock, kDeadline, [this] { return m_ended; });
    lock.unlock();
    EXPECT_TRUE(ended) << "the application did not end";
    if (!ended) {
        ::kill(m_pid, SIGKILL);
    }
    EXPECT_EQ(Reap(), 0);
}

void ApplicationProcess::Kill() {
    ::kill(m_pid, SIGKILL);
    Reap();
}

int ApplicationProcess::Reap() {
    int status = 0;
    while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
    }
    m_pid = -1;
    m_reader.join();
    if (m_input >= 0) {
        ::close(std::exchange(m_input, -1));
    }
    return status;
}

std::optional<Event> ApplicationProcess::WaitFor(Moment after,
                                                 const std::function<bool(const Event&)>& fits) {
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    std::unique_lock lock(m_mutex);
    std::size_t next = 0;
    while (true) {
        for (; next < m_events.size(); ++next) {
            if (m_events[next].time > after && fits(m_events[next])) {
                return m_events[next];
            }
        }
        if (m_ended || m_changed.wait_until(lock, end) == std::cv_status::timeout) {
            return std::nullopt;
        }
    }
}

std::optional<Event> ApplicationProcess::WaitFor(const std::string& kind, Moment after) {
    return WaitFor(after, [&kind](const Event& event) { return event.kind == kind; });
}

std::vector<Event> ApplicationProcess::Events() const {
    const std::lock_guard lock(m_mutex);
    return m_events;
}

}  // namespace Korvex3Sync::tests::survival
