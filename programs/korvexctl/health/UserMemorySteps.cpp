#include <string>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/head/UserMemory.h"
#include "korvexctl/health/Examined.h"
#include "korvexctl/health/Selftest.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kUserMemoryStepLimit{30};

Finding TestReading(const Examined& examined) {
    for (int page = 0; page < kUserMemoryPages; ++page) {
        ReadUserMemory(examined.head->Handle(), page);
    }
    return {Verdict::Ok, std::to_string(kUserMemoryPages) + " pages read"};
}

/// Every byte changed, each by a different value than its neighbours.
std::string Another(std::string bytes) {
    unsigned turn = 1;
    for (char& byte : bytes) {
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ turn);
        turn = turn % UINT8_MAX + 1;
    }
    return bytes;
}

Finding TestWriting(const Examined& examined) {
    void* const& handle = examined.head->Handle();
    constexpr int kPage = kUserMemoryPages - 1;
    const std::string found = ReadUserMemory(handle, kPage);
    const std::string other = Another(found);
    std::string wrong;
    try {
        WriteUserMemory(handle, kPage, other);
        wrong =
            ReadUserMemory(handle, kPage) == other ? "" : "read back different bytes than written";
    } catch (const CommandError& error) {
        wrong = error.what();
    }
    WriteUserMemory(handle, kPage, found);
    if (ReadUserMemory(handle, kPage) != found) {
        wrong += (wrong.empty() ? "" : "; ") + std::string("the page could not be restored");
    }
    const std::string page = "page " + std::to_string(kPage);
    return wrong.empty() ? Finding{Verdict::Ok, page + " written, read back and restored"}
                         : Finding{Verdict::Fault, page + ": " + wrong};
}

}  // namespace

std::vector<Step> UserMemorySteps(const std::shared_ptr<Examined>& examined, bool write) {
    return {HeadStep(examined, "user memory read", kUserMemoryStepLimit, TestReading),
            HeadStep(examined, "user memory write", kUserMemoryStepLimit,
                     [write](const Examined& head) -> Finding {
                         if (!write) {
                             return {Verdict::NotRun, "only with --write-user-memory"};
                         }
                         if (ThroughService()) {
                             // What follows a zero byte could not be restored.
                             return {Verdict::NotRun, kUserMemoryIsText};
                         }
                         return TestWriting(head);
                     })};
}

}  // namespace Korvex3Sync::korvexctl
