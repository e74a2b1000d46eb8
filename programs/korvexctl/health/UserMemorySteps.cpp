#include <Korvex3Sync/Connection.h>

#include <string>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/UserInfoText.h"
#include "korvexctl/health/Examined.h"
#include "korvexctl/health/Selftest.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kLimit{30};
constexpr int kPages = 16;

std::string ReadPage(void* const& handle, int page) {
    std::string bytes(kUserInfoBytes, '\0');
    char* data = bytes.data();
    Require(ReadUserInfomation(handle, page, data), "read page " + std::to_string(page));
    return bytes;
}

void WritePage(void* const& handle, int page, const std::string& bytes) {
    Require(WriteUserInfomation(handle, page, bytes.data(), static_cast<int>(bytes.size())),
            "write page " + std::to_string(page));
}

Finding TestReading(const Examined& examined) {
    for (int page = 0; page < kPages; ++page) {
        ReadPage(examined.head->Handle(), page);
    }
    return {Verdict::Ok, std::to_string(kPages) + " pages read"};
}

/// Every byte another one than before, and all of them different from their neighbours.
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
    constexpr int kPage = kPages - 1;
    const std::string found = ReadPage(handle, kPage);
    const std::string other = Another(found);
    std::string wrong;
    try {
        WritePage(handle, kPage, other);
        wrong = ReadPage(handle, kPage) == other ? "" : "other bytes read back than written";
    } catch (const CommandError& error) {
        wrong = error.what();
    }
    WritePage(handle, kPage, found);
    if (ReadPage(handle, kPage) != found) {
        wrong += (wrong.empty() ? "" : "; ") + std::string("the page could not be put back");
    }
    const std::string page = "page " + std::to_string(kPage);
    return wrong.empty() ? Finding{Verdict::Ok, page + " written, read back and put back"}
                         : Finding{Verdict::Fault, page + ": " + wrong};
}

}  // namespace

std::vector<Step> UserMemorySteps(const std::shared_ptr<Examined>& examined, bool write) {
    return {
        HeadStep(examined, "user memory read", kLimit, TestReading),
        HeadStep(examined, "user memory write", kLimit, [write](const Examined& head) -> Finding {
            if (!write) {
                return {Verdict::NotRun, "only with --write-user-memory"};
            }
            return TestWriting(head);
        })};
}

}  // namespace Korvex3Sync::korvexctl
