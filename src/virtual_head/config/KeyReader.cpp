#include "virtual_head/config/KeyReader.h"

#include <type_traits>

#include "platform/os/FileName.h"

namespace Korvex3Sync::virtual_head {
namespace {

using Wrong = std::optional<std::string>;

/// Nothing if the node is not a number.
std::optional<double> NumberOf(const toml::node& node) {
    return node.is_number() ? node.value<double>() : std::nullopt;
}

Wrong Read(const KeyRule& rule, const toml::node& node, int& value) {
    const auto* const number = node.as_integer();
    if (number == nullptr) {
        return "a whole number is expected";
    }
    const std::int64_t given = number->get();
    if (auto wrong = Check(rule, given)) {
        return wrong;
    }
    value = static_cast<int>(given);
    return std::nullopt;
}

Wrong Read(const KeyRule& rule, const toml::node& node, double& value) {
    const auto number = NumberOf(node);
    if (!number) {
        return "a number is expected";
    }
    value = *number;
    return Check(rule, value);
}

Wrong Read(const KeyRule& rule, const toml::node& node, ThreeNumbers& values) {
    const toml::array* const array = node.as_array();
    if (array == nullptr || array->size() != values.size()) {
        return "an array of 3 numbers is expected";
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto number = NumberOf((*array)[i]);
        if (!number) {
            return "an array of 3 numbers is expected";
        }
        values[i] = *number;
    }
    return Check(rule, values);
}

Wrong Read(const KeyRule&, const toml::node& node, bool& value) {
    const auto* const given = node.as_boolean();
    if (given == nullptr) {
        return "true or false is expected";
    }
    value = given->get();
    return std::nullopt;
}

Wrong Read(const KeyRule& rule, const toml::node& node, std::string& value) {
    const auto* const text = node.as_string();
    if (text == nullptr) {
        return "a text is expected";
    }
    value = text->get();
    return Check(rule, value);
}

}  // namespace

std::optional<std::string> ReadValue(const KeyRule& rule, const toml::node& value,
                                     const std::filesystem::path& folder,
                                     HeadDescription& description) {
    return WithValue(rule, description, [&](auto& member) -> Wrong {
        if constexpr (std::is_same_v<decltype(member), std::filesystem::path&>) {
            const auto* const path = value.as_string();
            if (path == nullptr || path->get().empty()) {
                return "a non-empty text is expected";
            }
            member = folder / os::PathOf(path->get());
            return std::nullopt;
        } else {
            return Read(rule, value, member);
        }
    });
}

}  // namespace Korvex3Sync::virtual_head
