#pragma once

#include <cstdint>
#include <string_view>

#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

/// Height in pixels of a line of text at scale 1, and the width of a character with its gap.
inline constexpr int kLetterHeight = 7;
inline constexpr int kLetterStep = 6;

/// Writes into a picture, its upper left corner at (x, y), each dot of a letter `scale` pixels
/// wide. Digits, letters (as capitals) and .,:;/- are drawn; anything else is a gap. What would be
/// outside the picture is left out.
void DrawText(Picture& picture, int x, int y, std::string_view text, int scale,
              std::uint8_t brightness);

}  // namespace Korvex3Sync::korvexctl
