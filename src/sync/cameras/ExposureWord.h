#pragma once

namespace Korvex3Sync {

// What cameras are sent for exposure and gain. Pure functions; every argument is safe.

/// The word that sets exposure and gain of a camera order at once: bits 8 and 9 the order, bits 10
/// to 15 the gain, bits 0 to 7 the exposure in tenths of a millisecond. Each part is cut to its
/// bits, the exposure after it was cut to a whole number; an exposure without a value (not a
/// number, infinite) counts as 0. `exposure` is in milliseconds.
int ExposureGainWord(int order, double exposure, int gain);

/// The word that only selects a camera order for the queries that follow.
int SelectionWord(int order);

/// Whole microseconds, within 32 bits; 0 for what is not a number.
int ExposureMicroseconds(double milliseconds);

}  // namespace Korvex3Sync
