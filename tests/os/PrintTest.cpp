#include "platform/os/Print.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "platform/os/CriticalSection.h"
#include "platform/os/StandardOutput.h"
#include "support/Environment.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using namespace os;

TEST(Print, FormatsToStandardOutput) {
    testing::internal::CaptureStdout();
    Print("camera %d of %.2s", 7, "KV00");
    Print("\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "camera 7 of KV\n");
}

TEST(Print, ALongTextIsWhole) {
    for (const std::size_t length : {2047U, 2048U, 100'000U}) {
        const std::string text(length, 'x');
        testing::internal::CaptureStdout();
        Print("%s", text.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text);
    }
}

TEST(Print, EachTextIsWhole) {
    constexpr int kTexts = 20'000;
    // A stream also writes when its buffer is full, so the length divides its size.
    const std::string text = "Camera 7 failed\n";
    CaptureLines();
    std::atomic<bool> ended{false};
    std::thread other([&] {
        for (int i = 0; i < kTexts; ++i) {
            Print("Camera %d failed\n", 7);
        }
        ended = true;
    });
    int parts = 0;
    while (!ended) {
        std::fflush(stdout);
        const auto printed = static_cast<std::size_t>(::lseek(STDOUT_FILENO, 0, SEEK_CUR));
        parts += printed % text.size() == 0 ? 0 : 1;
    }
    other.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(parts, 0);
}

TEST(Print, FormatsToStandardError) {
    testing::internal::CaptureStderr();
    PrintError("%s: %d\n", "error", 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: 7\n");
    for (const std::size_t length : {2047U, 2048U, 100'000U}) {
        const std::string text(length, 'x');
        testing::internal::CaptureStderr();
        PrintError("%s", text.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), text);
    }
}

TEST(Print, IsPassedOnBeforeTheNextOne) {
    Mutex mutex;
    std::string passed;
    RealStandardOutput real;
    real.PassPrints([&](std::string_view line) {
        const MutexGuard guard(mutex);
        passed += std::string(line) + ';';
    });
    const auto has = [&](const std::string& text) {
        return support::WaitUntil([&] {
            const MutexGuard guard(mutex);
            return passed == text;
        });
    };
    Print("one\n");
    EXPECT_TRUE(has("one;"));
    Print("two, ");
    Print("three\n");
    EXPECT_TRUE(has("one;two, three;"));
    Print("without an end");
    real.EndPrints();
    EXPECT_EQ(passed, "one;two, three;without an end;");
}

}  // namespace
}  // namespace Korvex3Sync::tests
