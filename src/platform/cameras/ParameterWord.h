#pragma once

#include <optional>

namespace Korvex3Sync::cameras {

/// What a word of CAMPARAM 5 asks for.
struct ParameterWord {
    struct Setting {
        long exposure;  // microseconds
        int gain;
    };
    int order = 0;                                  // 0 to 3
    std::optional<Setting> setting = std::nullopt;  // nothing: the order is only selected
};

/// Decodes a word: 0 to 3 selects that camera order; otherwise bits 8-9 are the order, bits 10-15
/// the gain, bits 0-7 the exposure in tenths of a millisecond, and a low byte of 0 only selects.
/// Nothing for a number that does not fit in 16 bits.
std::optional<ParameterWord> DecodeParameterWord(int word);

}  // namespace Korvex3Sync::cameras
