#include "virtual_head/Request.h"

#include <atomic>
#include <exception>
#include <utility>
#include <variant>

#include "platform/os/CriticalSection.h"
#include "platform/os/Environment.h"
#include "platform/os/FileName.h"
#include "platform/os/Print.h"
#include "platform/os/Process.h"
#include "virtual_head/VirtualHead.h"
#include "virtual_head/config/HeadFile.h"
#include "virtual_head/config/HeadRules.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr const char* kVariable = "KORVEX_VIRTUAL_HEAD";

struct Requests {
    os::Mutex mutex;
    /// There was a request, or the environment has been read.
    bool decided KORVEX_GUARDED_BY(mutex) = false;
    /// Without a head, too, real devices stay untouched: the environment names a head that cannot
    /// be made, or the process that had one ends.
    bool simulatedOnly KORVEX_GUARDED_BY(mutex) = false;
    std::shared_ptr<VirtualHead> head KORVEX_GUARDED_BY(mutex);
};

/// Never destroyed: threads of the application may still use it while the process ends.
Requests& TheRequests() {
    static auto* const requests = new Requests;
    return *requests;
}

/// The process that made the present head; 0 without one.
std::atomic<long> g_maker{0};

std::shared_ptr<VirtualHead> MakeHead(const HeadDescription& description, std::string& error) {
    try {
        if (const auto broken = Check(description)) {
            error = broken->message;
            return nullptr;
        }
        if (description.replayFolder.empty()) {
            return std::make_shared<VirtualHead>(description, MakeScene(description));
        }
        auto replay = MakeReplay(description);
        if (auto* refused = std::get_if<std::string>(&replay)) {
            error = std::move(*refused);
            return nullptr;
        }
        return std::make_shared<VirtualHead>(
            description, std::get<std::shared_ptr<ImageSource>>(std::move(replay)));
    } catch (const std::exception& failure) {
        error = std::string("the virtual head cannot be created: ") + failure.what();
        return nullptr;
    }
}

std::shared_ptr<VirtualHead> MakeHead(const std::string& request, std::string& error) {
    if (request == "default") {
        return MakeHead(HeadDescription{}, error);
    }
    const auto read = ReadHeadFile(os::PathOf(request));
    if (const auto* refused = std::get_if<HeadFileError>(&read)) {
        error = refused->message;
        return nullptr;
    }
    const auto& description = std::get<HeadDescription>(read);
    auto head = MakeHead(description, error);
    if (head == nullptr && !description.replayFolder.empty()) {
        error = RefuseReplay(os::PathOf(request), error).message;
    }
    return head;
}

/// Replaces the head by another one or none. Calls that hang in the previous head end.
void Replace(std::shared_ptr<VirtualHead> head, bool simulatedOnly = false) {
    Requests& requests = TheRequests();
    {
        os::MutexGuard lock(requests.mutex);
        requests.decided = true;
        requests.simulatedOnly = simulatedOnly;
        requests.head.swap(head);
        g_maker = requests.head ? os::CurrentProcess() : 0;
    }
    if (head) {
        head->GetFaults().ReleaseHangs();
    }
}

/// Ends the clock of the last head in an orderly way at the end of the process. A forked child does
/// nothing: the clock does not run there, and threads that are not there may hold locks.
struct WithdrawAtExit {
    WithdrawAtExit() = default;
    ~WithdrawAtExit() {
        if (g_maker == os::CurrentProcess() && !os::OtherThreadsAreGone()) {
            Replace(nullptr, true);
        }
    }
    WithdrawAtExit(const WithdrawAtExit&) = delete;
    WithdrawAtExit& operator=(const WithdrawAtExit&) = delete;
};
const WithdrawAtExit g_withdrawAtExit;

/// Reads the environment if nothing is decided yet. If the head that it names is refused, returns
/// false with one line in `error`.
bool Decide(Requests& requests, std::string& error) KORVEX_REQUIRES(requests.mutex) {
    const std::string request =
        requests.decided ? "" : os::Variable(kVariable).value_or(std::string());
    requests.decided = true;
    if (request.empty()) {
        return true;
    }
    requests.head = MakeHead(request, error);
    g_maker = requests.head ? os::CurrentProcess() : 0;
    requests.simulatedOnly = requests.head == nullptr;
    if (requests.simulatedOnly) {
        error = std::string(kVariable) + ": " + error;
    }
    return !requests.simulatedOnly;
}

}  // namespace

bool RequestVirtualHead(const std::string& request, std::string& error) {
    auto head = MakeHead(request, error);
    if (!head) {
        return false;
    }
    Replace(std::move(head));
    return true;
}

bool RequestVirtualHead(const HeadDescription& description, std::string& error) {
    auto head = MakeHead(description, error);
    if (!head) {
        return false;
    }
    Replace(std::move(head));
    return true;
}

void WithdrawVirtualHead() {
    Replace(nullptr);
}

bool RequestHeadOfEnvironment(std::string& error) {
    Requests& requests = TheRequests();
    os::MutexGuard lock(requests.mutex);
    return Decide(requests, error);
}

std::shared_ptr<VirtualHead> RequestedVirtualHead() {
    Requests& requests = TheRequests();
    os::MutexGuard lock(requests.mutex);
    std::string error;
    if (!Decide(requests, error)) {
        os::PrintError("%s\n", error.c_str());
    }
    return requests.head;
}

bool MayUseRealDevices() {
    RequestedVirtualHead();  // reads the environment
    Requests& requests = TheRequests();
    os::MutexGuard lock(requests.mutex);
    return !requests.head && !requests.simulatedOnly;
}

std::optional<std::vector<std::string>> SimulatedBoards() {
    const auto head = RequestedVirtualHead();
    if (!head) {
        return std::nullopt;
    }
    std::vector<std::string> serials;
    if (head->GetFaults().Board().Plugged().Here()) {
        serials.push_back(head->Description().boardSerial);
    }
    return serials;
}

}  // namespace Korvex3Sync::virtual_head
