#pragma once

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace Korvex3Sync::tests::support {

/// The seed of a test's random numbers: what KORVEX_TEST_SEED says, otherwise another in each run.
/// It is printed, so that a run that failed can be had again.
inline unsigned Seed() {
    const char* const given = std::getenv("KORVEX_TEST_SEED");
    const unsigned seed = given != nullptr ? static_cast<unsigned>(std::stoul(given))
                                           : static_cast<unsigned>(std::random_device{}());
    std::cout << "KORVEX_TEST_SEED=" << seed << "\n";
    return seed;
}

}  // namespace Korvex3Sync::tests::support
