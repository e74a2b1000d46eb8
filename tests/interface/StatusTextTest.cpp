#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Korvex3Sync/Status.h"

namespace Korvex3Sync::tests {
namespace {

TEST(StatusText, ANullPointerGetsNothing) {
    char* text = nullptr;
    GetStatusDescriptionString(STATUS_SUCCESS, text);
    EXPECT_EQ(text, nullptr);
}

TEST(StatusText, EveryStatusHasItsText) {
    const char* const texts[] = {
        "Operate failed", "Connect projector failed or projector is not connected",
        "Connect camera(s) failed or camera(s) is(are) not connected",
        "Parameter which you input, for example, NULL pointer, error size of array or error value",
        "The synchronism type which you input is not supported",
        // clang-format off
        "The operation is not be supported by the current device or operation not be support in current function",
        // clang-format on
        "You have not connected the device, so please connect device first", "Operate success"};
    for (int status = 0; status < 8; ++status) {
        char before[] = "mine";
        char* text = before;
        GetStatusDescriptionString(RETSTATUS{status}, text);
        const std::unique_ptr<char[]> owned(text);
        EXPECT_STREQ(text, texts[status]);
        EXPECT_NE(text, before);
        EXPECT_STREQ(before, "mine") << "the caller's buffer is left alone";
    }
}

TEST(StatusText, AnUnknownStatusIsTheEmptyText) {
    for (int status : {42, 8, -1}) {
        char before = 'x';
        char* text = &before;
        GetStatusDescriptionString(RETSTATUS{status}, text);
        const std::unique_ptr<char[]> owned(text);
        EXPECT_STREQ(text, "");
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
