#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// What can go wrong with the head. docs/virtual-head.md says of each what happens and when it
/// counts as met.
enum class FaultKind {
    // By call.
    Fail,
    Slow,
    Hang,
    // The board.
    BoardVanish,
    BoardReturn,
    BoardMute,
    BoardAnswer,
    BoardLate,
    // The cameras.
    CameraVanish,
    CameraReturn,
    CameraStop,
    // Frames, by trigger.
    LoseMono,
    LoseColor,
    LoseBoth,
    TearMono,
    TearColor,
    MisSizeMono,
    MisSizeColor,
    RepeatMono,
    RepeatColor,
    Delay,
    SkipKeys,
};

/// One fault, ready to happen. A member that its kind has no use for stays at its default.
struct FaultOrder {
    FaultKind kind = FaultKind::Fail;
    /// Fail, Slow, Hang: the platform function.
    std::string call = {};
    /// Fail, Slow, Hang: calls; BoardLate: answers; frames: triggers; SkipKeys: keys. At least 1.
    int times = 1;
    /// Slow, BoardLate: how much longer each takes. Nominal time.
    std::chrono::milliseconds extra{0};
    /// BoardVanish, BoardMute, CameraVanish, Hang: ends by itself after this time; 0: it does not.
    std::chrono::milliseconds lasting{0};
    /// BoardMute: the board stays mute for this many further opens and answers from the next one
    /// on; 0: opens do not end it.
    int opens = 0;
    /// Delay: by how many triggers. At least 1.
    int byTriggers = 1;
};

/// A fault that begins by itself. Exactly one of `atTrigger` and `at` is set; with a chance both
/// may be missing.
struct TimedFault {
    FaultOrder order = {};
    /// With the trigger of this number, counted from 0 since the head exists; where that number is
    /// skipped, with the next one.
    std::optional<std::uint64_t> atTrigger = std::nullopt;
    /// This long after the head was requested. Nominal time.
    std::optional<std::chrono::milliseconds> at = std::nullopt;
    /// From then on (from the first trigger, when no time is set) each trigger draws, and with this
    /// probability, above 0 and at most 1, the fault begins; again and again. A draw that comes out
    /// while no camera is started does nothing.
    std::optional<double> chance = std::nullopt;
};

/// What a fault can be told beside its kind.
enum class FaultParameter { Call, Times, Extra, Lasting, Opens, ByTriggers };

/// A number that a fault can be told, with its key in a head file.
struct FaultNumber {
    FaultParameter parameter;
    const char* key;
    std::int64_t lowest;
    std::int64_t highest;
    const char* meaning;  // a phrase without a full stop
};
KORVEX_VIRTUAL_HEAD_API std::span<const FaultNumber> FaultNumbers();
/// The number that the order holds for a parameter; 0 for the call.
std::int64_t ValueOf(const FaultOrder& order, FaultParameter parameter);

/// The latest time and trigger at which a fault can begin.
inline constexpr std::int64_t kLatestFaultMs = 86'400'000;
inline constexpr std::int64_t kLatestFaultTrigger = 1'000'000'000;

/// Every kind.
std::vector<FaultKind> FaultKinds();
/// The name of a kind: "lose-mono".
KORVEX_VIRTUAL_HEAD_API const char* Name(FaultKind kind);
KORVEX_VIRTUAL_HEAD_API std::optional<FaultKind> FaultKindNamed(std::string_view name);
KORVEX_VIRTUAL_HEAD_API bool Takes(FaultKind kind, FaultParameter parameter);
/// Whether one of its numbers has to be given: the kind is nothing without it.
bool Needs(FaultKind kind, FaultParameter parameter);

/// What is wrong with a fault, as one line; nothing when it can be ordered.
std::optional<std::string> Check(const FaultOrder& order);
/// The same of its call only.
std::optional<std::string> CheckCall(const FaultOrder& order);
std::optional<std::string> Check(const TimedFault& fault);

/// "slow SnapShot, times 3, extra_ms 20"
KORVEX_VIRTUAL_HEAD_API std::string Text(const FaultOrder& order);
/// The same with its time: "lose-mono, times 1, at_trigger 100"
KORVEX_VIRTUAL_HEAD_API std::string Text(const TimedFault& fault);

}  // namespace Korvex3Sync::virtual_head
