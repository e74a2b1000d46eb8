#pragma once

#include <string>
#include <string_view>

namespace Korvex3Sync::text {

/// The text as one line that is safe to show on a terminal: each control character (a line end and
/// escape sequences among them) and each byte that is not UTF-8 becomes "\x1B". Everything else
/// stays, so a text may pass twice.
///
/// For all that comes from a device, a file or another user: a serial can contain anything.
std::string Printable(std::string_view text);

}  // namespace Korvex3Sync::text
