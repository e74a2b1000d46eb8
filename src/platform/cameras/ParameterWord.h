#pragma once

#include <optional>

namespace Korvex3Sync::cameras {

/// The meaning of a word for CAMPARAM 5.
struct ParameterWord {
    struct Setting {
        long exposure;  // microseconds
        int gain;
    };
    int order = 0;                                  // 0 to 3
    std::optional<Setting> setting = std::nullopt;  // nothing: only selects the order
};

/// Decodes a word. A word of 0 to 3 selects that camera order. Otherwise bits 8-9 are the order,
/// bits 10-15 the gain and bits 0-7 the exposure in tenths of a millisecond; an exposure of 0 only
/// selects the order. Returns nothing for a number that does not fit in 16 bits.
std::optional<ParameterWord> DecodeParameterWord(int word);

}  // namespace Korvex3Sync::cameras
