#pragma once

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace Korvex3Sync::tests::support {

/// The seed for the random numbers of a test: KORVEX_TEST_SEED if it is set, otherwise a new one
/// for each run. It is printed, so that a failed run can be repeated.
inline unsigned Seed() {
    const char* const given = std::getenv("KORVEX_TEST_SEED");
    const unsigned seed = given != nullptr ? static_cast<unsigned>(std::stoul(given))
                                           : static_cast<unsigned>(std::random_device{}());
    std::cout << "KORVEX_TEST_SEED=" << seed << "\n";
    return seed;
}

}  // namespace Korvex3Sync::tests::support
