#pragma once

namespace Korvex3Sync {

/// Selectors for the duty-ratio and work-time functions of the board library. Each stands for one
/// light source and for setting or querying. They are command codes of the board's protocol.
inline constexpr int kStrobeDutySet = 41;
inline constexpr int kStrobeDutyQuery = 48;
inline constexpr int kLaserLineDutySet = 49;
inline constexpr int kLaserLineDutyQuery = 50;
inline constexpr int kProjectorDutySet = 51;
inline constexpr int kProjectorDutyQuery = 52;
inline constexpr int kIRLaserDutySet = 53;
inline constexpr int kIRLaserDutyQuery = 54;
inline constexpr int kLaserLineWorkTimeSet = 82;
inline constexpr int kLaserLineWorkTimeQuery = 83;
inline constexpr int kProjectorWorkTimeSet = 84;
inline constexpr int kProjectorWorkTimeQuery = 85;
inline constexpr int kIRLaserWorkTimeSet = 86;
inline constexpr int kIRLaserWorkTimeQuery = 87;

}  // namespace Korvex3Sync
