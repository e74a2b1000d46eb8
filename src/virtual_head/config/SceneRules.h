#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::virtual_head {

/// A number, or three coordinates, of the scene with the limits of each; `values` finds them.
struct SceneRule {
    const char* key;
    bool whole;  // a whole number
    double lowest;
    double highest;
    std::size_t count;  // 1 or 3
};

/// All keys of [scene].
KORVEX_VIRTUAL_HEAD_API std::span<const SceneRule> SceneRules();
/// The `index`-th value of the rule's member.
KORVEX_VIRTUAL_HEAD_API double SceneValue(const SceneDescription& scene, const SceneRule& rule,
                                          std::size_t index);
void SetSceneValue(SceneDescription& scene, const SceneRule& rule, std::size_t index, double value);

/// What one value does against its rule; NaN is out of range.
std::optional<BrokenRule> Check(const SceneRule& rule, double value);
/// What values that are fine by themselves do against each other: the object stays before the head.
std::optional<BrokenRule> CheckTogether(const SceneDescription& scene);
/// All of it: the first rule that the scene breaks.
std::optional<BrokenRule> Check(const SceneDescription& scene);

}  // namespace Korvex3Sync::virtual_head
