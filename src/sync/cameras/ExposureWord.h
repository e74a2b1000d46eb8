#pragma once

namespace Korvex3Sync {

inline constexpr double kMicrosecondsPerMillisecond = 1000.0;

// The numbers that are sent to cameras for exposure and gain. Pure functions that accept any
// argument.

/// The word that sets exposure and gain of a camera order together. Bits 0 to 7 are the exposure in
/// tenths of a millisecond, bits 8 and 9 the order, bits 10 to 15 the gain. The exposure is
/// truncated to a whole number; NaN and infinity count as 0. Then each part keeps only its bits.
/// `exposure` is in milliseconds.
int ExposureGainWord(int order, double exposure, int gain);

/// The word that only selects a camera order for the queries that follow.
int SelectionWord(int order);

/// Whole microseconds, limited to the range of int; 0 for NaN.
int ExposureMicroseconds(double milliseconds);

}  // namespace Korvex3Sync
