#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Korvex3Sync::text {

/// Breaks lines longer than `width` characters between words. A broken line continues where its
/// text begins: behind its indentation or, in a row "  --name VALUE   what it is", in the last
/// column. A word that is too long stays whole, and several empty lines become one.
std::string Wrapped(std::string_view text, std::size_t width);

}  // namespace Korvex3Sync::text
