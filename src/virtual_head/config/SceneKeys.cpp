#include "virtual_head/config/SceneKeys.h"

#include <algorithm>

#include "virtual_head/config/SceneRules.h"

namespace Korvex3Sync::virtual_head {
namespace {

std::string Expected(const SceneRule& rule) {
    const char* const what =
        rule.whole ? "a whole number" : (rule.count == 1 ? "a number" : "an array of 3 numbers");
    return "[scene] " + std::string(rule.key) + ": " + what + " is expected";
}

/// Nothing when the node is no number of the rule's kind.
std::optional<double> NumberOf(const SceneRule& rule, const toml::node& value) {
    if (const auto* whole = value.as_integer()) {
        return static_cast<double>(whole->get());
    }
    const auto* real = value.as_floating_point();
    return real != nullptr && !rule.whole ? std::optional(real->get()) : std::nullopt;
}

std::optional<std::string> ReadValue(const SceneRule& rule, std::size_t index,
                                     const toml::node& value, SceneDescription& scene) {
    const std::optional<double> number = NumberOf(rule, value);
    if (!number) {
        return Expected(rule);
    }
    if (const auto broken = Check(rule, *number)) {
        return broken->message;
    }
    SetSceneValue(scene, rule, index, *number);
    return std::nullopt;
}

std::optional<std::string> ReadValues(const SceneRule& rule, const toml::node& value,
                                      SceneDescription& scene) {
    if (rule.count == 1) {
        return ReadValue(rule, 0, value, scene);
    }
    const toml::array* values = value.as_array();
    if (values == nullptr || values->size() != rule.count) {
        return Expected(rule);
    }
    for (std::size_t i = 0; i < rule.count; ++i) {
        if (auto wrong = ReadValue(rule, i, (*values)[i], scene)) {
            return wrong;
        }
    }
    return std::nullopt;
}

}  // namespace

SceneKeyRead ReadSceneKey(const std::string& key, const toml::node& value,
                          SceneDescription& scene) {
    const auto rules = SceneRules();
    const auto rule = std::find_if(rules.begin(), rules.end(), [&key](const SceneRule& candidate) {
        return key == candidate.key;
    });
    if (rule == rules.end()) {
        return {};
    }
    return {true, ReadValues(*rule, value, scene)};
}

}  // namespace Korvex3Sync::virtual_head
