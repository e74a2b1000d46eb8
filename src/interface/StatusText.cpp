#include <array>
#include <new>
#include <string_view>

#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {
namespace {

constexpr std::array<std::string_view, 8> kTexts{
    "Operate failed",
    "Connect projector failed or projector is not connected",
    "Connect camera(s) failed or camera(s) is(are) not connected",
    "Parameter which you input, for example, NULL pointer, error size of array or error value",
    "The synchronism type which you input is not supported",
    "The operation is not be supported by the current device or operation not be support in "
    "current function",
    "You have not connected the device, so please connect device first",
    "Operate success",
};

}  // namespace

void GetStatusDescriptionString(const RETSTATUS& status, char*& text) {
    if (text == nullptr) {
        return;
    }
    const int number = status;
    const std::string_view description = number >= 0 && number < static_cast<int>(kTexts.size())
                                             ? kTexts[static_cast<std::size_t>(number)]
                                             : std::string_view{};
    char* const buffer = new (std::nothrow) char[description.size() + 1]();
    if (buffer != nullptr) {
        description.copy(buffer, description.size());
    }
    text = buffer;  // also if null: the caller must not free its own buffer as a text
}

}  // namespace Korvex3Sync
