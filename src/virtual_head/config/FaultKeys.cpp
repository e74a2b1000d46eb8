#include "virtual_head/config/FaultKeys.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/text/NearNames.h"

namespace Korvex3Sync::virtual_head {
namespace {

using Refusal = std::optional<WrongFault>;

constexpr std::array<std::string_view, 5> kOtherKeys{"what", "call", "at_trigger", "at_ms",
                                                     "chance"};

int LineOf(const toml::source_region& source) {
    return static_cast<int>(source.begin.line);
}

WrongFault WrongAt(const toml::source_region& source, const std::string& what) {
    return {LineOf(source), "[[fault]] " + what};
}

/// Reads a whole number within limits, or returns what is wrong with it.
Refusal ReadNumber(const toml::key& key, const toml::node& value, std::int64_t lowest,
                   std::int64_t highest, std::int64_t& number) {
    const auto given = value.value_exact<std::int64_t>();
    if (!given) {
        return WrongAt(key.source(), std::string(key.str()) + ": a whole number is expected");
    }
    if (*given < lowest || *given > highest) {
        return WrongAt(key.source(), std::string(key.str()) + ": " + std::to_string(*given) +
                                         " is out of range, " + std::to_string(lowest) + " to " +
                                         std::to_string(highest));
    }
    number = *given;
    return std::nullopt;
}

Refusal CheckKeys(const toml::table& values) {
    std::vector<std::string> known(kOtherKeys.begin(), kOtherKeys.end());
    for (const FaultNumber& number : FaultNumbers()) {
        known.emplace_back(number.key);
    }
    for (const auto& [key, value] : values) {
        const std::string name(key.str());
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            return WrongFault{LineOf(key.source()), "unknown key \"" + name + "\" in [[fault]]" +
                                                        text::DidYouMean(name, known)};
        }
    }
    return std::nullopt;
}

std::vector<std::string> KindNames() {
    std::vector<std::string> names;
    for (const FaultKind kind : FaultKinds()) {
        names.emplace_back(Name(kind));
    }
    return names;
}

Refusal ReadKind(const toml::table& values, FaultKind& kind) {
    const toml::node* const what = values.get("what");
    if (what == nullptr) {
        return WrongAt(values.source(), "missing key \"what\"");
    }
    const auto name = what->value_exact<std::string>();
    if (!name) {
        return WrongAt(what->source(), "what: a text is expected");
    }
    const auto named = FaultKindNamed(*name);
    if (!named) {
        return WrongAt(what->source(), "what: there is no fault \"" + *name + "\"" +
                                           text::DidYouMean(*name, KindNames()));
    }
    kind = *named;
    return std::nullopt;
}

void Store(FaultParameter parameter, std::int64_t number, FaultOrder& order) {
    switch (parameter) {
        case FaultParameter::Times:
            order.times = static_cast<int>(number);
            break;
        case FaultParameter::Extra:
            order.extra = std::chrono::milliseconds(number);
            break;
        case FaultParameter::Lasting:
            order.lasting = std::chrono::milliseconds(number);
            break;
        case FaultParameter::Opens:
            order.opens = static_cast<int>(number);
            break;
        case FaultParameter::ByTriggers:
            order.byTriggers = static_cast<int>(number);
            break;
        case FaultParameter::Call:
            break;
    }
}

Refusal ReadParameter(const toml::key& key, const toml::node& value, FaultOrder& order) {
    for (const FaultNumber& rule : FaultNumbers()) {
        if (key.str() != rule.key) {
            continue;
        }
        if (!Takes(order.kind, rule.parameter)) {
            return WrongAt(key.source(),
                           std::string(rule.key) + ": " + Name(order.kind) + " does not take it");
        }
        std::int64_t number = 0;
        if (auto wrong = ReadNumber(key, value, rule.lowest, rule.highest, number)) {
            return wrong;
        }
        Store(rule.parameter, number, order);
    }
    return std::nullopt;
}

Refusal ReadTime(const toml::key& key, const toml::node& value, TimedFault& fault) {
    std::int64_t number = 0;
    if (key == "at_trigger") {
        if (auto wrong = ReadNumber(key, value, 0, kLatestFaultTrigger, number)) {
            return wrong;
        }
        fault.atTrigger = static_cast<std::uint64_t>(number);
    } else if (key == "at_ms") {
        if (auto wrong = ReadNumber(key, value, 0, kLatestFaultMs, number)) {
            return wrong;
        }
        fault.at = std::chrono::milliseconds(number);
    } else {
        fault.chance = value.value<double>();
        if (!fault.chance || !value.is_number() || !(*fault.chance > 0 && *fault.chance <= 1)) {
            return WrongAt(key.source(), "chance: a number above 0 and at most 1 is expected");
        }
    }
    return std::nullopt;
}

Refusal ReadValue(const toml::key& key, const toml::node& value, TimedFault& fault) {
    if (key == "what") {
        return std::nullopt;
    }
    if (key == "at_trigger" || key == "at_ms" || key == "chance") {
        return ReadTime(key, value, fault);
    }
    if (key != "call") {
        return ReadParameter(key, value, fault.order);
    }
    const auto call = value.value_exact<std::string>();
    if (!call) {
        return WrongAt(key.source(), "call: a text is expected");
    }
    fault.order.call = *call;
    if (auto wrong = CheckCall(fault.order)) {
        return WrongAt(key.source(), *wrong);
    }
    return std::nullopt;
}

Refusal ReadFault(const toml::table& values, TimedFault& fault) {
    if (auto wrong = CheckKeys(values)) {
        return wrong;
    }
    if (auto wrong = ReadKind(values, fault.order.kind)) {
        return wrong;
    }
    for (const auto& [key, value] : values) {
        if (auto wrong = ReadValue(key, value, fault)) {
            return wrong;
        }
    }
    for (const FaultNumber& rule : FaultNumbers()) {
        if (Needs(fault.order.kind, rule.parameter) && !values.contains(rule.key)) {
            return WrongAt(values.source(), "missing key \"" + std::string(rule.key) + "\"");
        }
    }
    if (auto wrong = Check(fault)) {
        return WrongAt(values.source(), *wrong);
    }
    return std::nullopt;
}

}  // namespace

std::optional<WrongFault> ReadFaults(const toml::node& faults, HeadDescription& description) {
    const toml::array* const entries = faults.as_array();
    if (entries == nullptr) {
        return WrongAt(faults.source(), "an array of tables is expected");
    }
    for (const toml::node& entry : *entries) {
        const toml::table* const values = entry.as_table();
        if (values == nullptr) {
            return WrongAt(entry.source(), "an array of tables is expected");
        }
        TimedFault fault;
        if (auto wrong = ReadFault(*values, fault)) {
            return wrong;
        }
        description.faults.push_back(std::move(fault));
    }
    return std::nullopt;
}

std::optional<WrongFault> ReadFaultSeed(const toml::node& table, HeadDescription& description) {
    const toml::table* const values = table.as_table();
    if (values == nullptr) {
        return WrongFault{LineOf(table.source()), "\"faults\" is not a table"};
    }
    for (const auto& [key, value] : *values) {
        if (key != "seed") {
            return WrongFault{LineOf(key.source()), "unknown key \"" + std::string(key.str()) +
                                                        "\" in [faults]" +
                                                        text::DidYouMean(key.str(), {"seed"})};
        }
        const auto seed = value.value_exact<std::int64_t>();
        if (!seed || *seed < 0) {
            return WrongFault{LineOf(key.source()),
                              "[faults] seed: a whole number of 0 or more is expected"};
        }
        description.faultSeed = static_cast<std::uint64_t>(*seed);
    }
    return std::nullopt;
}

}  // namespace Korvex3Sync::virtual_head
