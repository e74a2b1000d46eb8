#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

/// The text of a head file with every key of the virtual head, each with its meaning, unit and
/// range in a comment. A key with a default stands there with it; one without is an example that a
/// # right before it switches off. The text ends with a line end.
std::string HeadFileText();

}  // namespace Korvex3Sync::korvexctl
