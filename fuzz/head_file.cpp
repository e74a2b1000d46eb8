// Head files: a description that keeps every rule, or one line that says what is wrong.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <variant>

#include "virtual_head/config/HeadFile.h"

namespace virtual_head = Korvex3Sync::virtual_head;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto read = virtual_head::ParseHeadFile(text, "head.toml");
    if (const auto* error = std::get_if<virtual_head::HeadFileError>(&read)) {
        if (error->message.empty() || error->message.find('\n') != std::string::npos) {
            std::abort();
        }
        return 0;
    }
    const auto& head = std::get<virtual_head::HeadDescription>(read);
    if (head.width < 16 || head.width > 2000 || head.height < 16 || head.height > 2000 ||
        head.gainLow > head.gainHigh || !head.cameraSerial.starts_with("KV")) {
        std::abort();
    }
    return 0;
}
