#include "virtual_head/faults/FaultOrder.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <locale>
#include <sstream>

#include "platform/text/NearNames.h"
#include "virtual_head/faults/CallFaults.h"

namespace Korvex3Sync::virtual_head {
namespace {

using Parameter = FaultParameter;

constexpr unsigned Bit(Parameter parameter) {
    return 1U << static_cast<unsigned>(parameter);
}

constexpr unsigned kCall = Bit(Parameter::Call);
constexpr unsigned kTimes = Bit(Parameter::Times);
constexpr unsigned kExtra = Bit(Parameter::Extra);
constexpr unsigned kLasting = Bit(Parameter::Lasting);
constexpr unsigned kOpens = Bit(Parameter::Opens);
constexpr unsigned kByTriggers = Bit(Parameter::ByTriggers);

struct Traits {
    FaultKind kind;
    const char* name;
    unsigned takes;
};

constexpr std::array kTraits{
    Traits{FaultKind::Fail, "fail", kCall | kTimes},
    Traits{FaultKind::Slow, "slow", kCall | kTimes | kExtra},
    Traits{FaultKind::Hang, "hang", kCall | kTimes | kLasting},
    Traits{FaultKind::BoardVanish, "board-vanish", kLasting},
    Traits{FaultKind::BoardReturn, "board-return", 0},
    Traits{FaultKind::BoardMute, "board-mute", kLasting | kOpens},
    Traits{FaultKind::BoardAnswer, "board-answer", 0},
    Traits{FaultKind::BoardLate, "board-late", kTimes | kExtra},
    Traits{FaultKind::CameraVanish, "camera-vanish", kLasting},
    Traits{FaultKind::CameraReturn, "camera-return", 0},
    Traits{FaultKind::CameraStop, "camera-stop", 0},
    Traits{FaultKind::LoseMono, "lose-mono", kTimes},
    Traits{FaultKind::LoseColor, "lose-color", kTimes},
    Traits{FaultKind::LoseBoth, "lose-both", kTimes},
    Traits{FaultKind::TearMono, "tear-mono", kTimes},
    Traits{FaultKind::TearColor, "tear-color", kTimes},
    Traits{FaultKind::MisSizeMono, "mis-size-mono", kTimes},
    Traits{FaultKind::MisSizeColor, "mis-size-color", kTimes},
    Traits{FaultKind::RepeatMono, "repeat-mono", kTimes},
    Traits{FaultKind::RepeatColor, "repeat-color", kTimes},
    Traits{FaultKind::Delay, "delay", kTimes | kByTriggers},
    Traits{FaultKind::SkipKeys, "skip-keys", kTimes},
};

constexpr bool InOrder() {
    for (std::size_t index = 0; index < kTraits.size(); ++index) {
        if (static_cast<std::size_t>(kTraits[index].kind) != index) {
            return false;
        }
    }
    return true;
}
static_assert(InOrder() && static_cast<std::size_t>(FaultKind::SkipKeys) + 1 == kTraits.size());

constexpr std::array kNumbers{
    FaultNumber{Parameter::Times, "times", 1, 1'000'000, "how often it happens"},
    FaultNumber{Parameter::Extra, "extra_ms", 1, 600'000,
                "how much longer each takes, in milliseconds"},
    FaultNumber{Parameter::Lasting, "for_ms", 1, kLatestFaultMs,
                "it ends by itself after this time, in milliseconds"},
    FaultNumber{Parameter::Opens, "opens", 1, 1'000, "how many more opens stay without an answer"},
    FaultNumber{Parameter::ByTriggers, "by_triggers", 1, 10'000,
                "how many triggers later the frames come"},
};

const Traits& TraitsOf(FaultKind kind) {
    return kTraits.at(static_cast<std::size_t>(kind));
}

std::string OutOfRange(const char* key, std::int64_t value, std::int64_t lowest,
                       std::int64_t highest) {
    return std::string(key) + ": " + std::to_string(value) + " is out of range, " +
           std::to_string(lowest) + " to " + std::to_string(highest);
}

std::optional<std::string> CheckNumber(const FaultOrder& order, const FaultNumber& number) {
    const std::int64_t value = ValueOf(order, number.parameter);
    if (value == ValueOf(FaultOrder{}, number.parameter) && !Needs(order.kind, number.parameter)) {
        return std::nullopt;
    }
    if (!Takes(order.kind, number.parameter)) {
        return std::string(number.key) + ": " + Name(order.kind) + " does not take it";
    }
    if (value < number.lowest || value > number.highest) {
        return OutOfRange(number.key, value, number.lowest, number.highest);
    }
    return std::nullopt;
}

// Without its board a head gives no triggers, so such a return would never begin.
bool ComesBackToTriggers(FaultKind kind) {
    return kind != FaultKind::BoardReturn;
}

}  // namespace

std::span<const FaultNumber> FaultNumbers() {
    return kNumbers;
}

std::int64_t ValueOf(const FaultOrder& order, Parameter parameter) {
    switch (parameter) {
        case Parameter::Times:
            return order.times;
        case Parameter::Extra:
            return order.extra.count();
        case Parameter::Lasting:
            return order.lasting.count();
        case Parameter::Opens:
            return order.opens;
        case Parameter::ByTriggers:
            return order.byTriggers;
        case Parameter::Call:
            break;
    }
    return 0;
}

std::vector<FaultKind> FaultKinds() {
    std::vector<FaultKind> kinds;
    kinds.reserve(kTraits.size());
    for (const Traits& traits : kTraits) {
        kinds.push_back(traits.kind);
    }
    return kinds;
}

const char* Name(FaultKind kind) {
    return TraitsOf(kind).name;
}

std::optional<FaultKind> FaultKindNamed(std::string_view name) {
    const auto* const found = std::find_if(kTraits.begin(), kTraits.end(),
                                           [name](const auto& each) { return each.name == name; });
    return found == kTraits.end() ? std::nullopt : std::optional(found->kind);
}

bool Takes(FaultKind kind, FaultParameter parameter) {
    return (TraitsOf(kind).takes & Bit(parameter)) != 0;
}

bool Needs(FaultKind kind, FaultParameter parameter) {
    return (parameter == Parameter::Call || parameter == Parameter::Extra) &&
           Takes(kind, parameter);
}

std::optional<std::string> CheckCall(const FaultOrder& order) {
    if (!Takes(order.kind, Parameter::Call)) {
        return order.call.empty()
                   ? std::nullopt
                   : std::optional("call: " + std::string(Name(order.kind)) + " does not take it");
    }
    if (order.call.empty()) {
        return "missing key \"call\"";
    }
    if (!CallFaults::Known(order.call)) {
        return "call: no platform function is called \"" + order.call + "\"" +
               text::DidYouMean(order.call, CallFaults::Names());
    }
    return std::nullopt;
}

std::optional<std::string> Check(const FaultOrder& order) {
    if (auto wrong = CheckCall(order)) {
        return wrong;
    }
    for (const FaultNumber& number : kNumbers) {
        if (auto wrong = CheckNumber(order, number)) {
            return wrong;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Check(const TimedFault& fault) {
    if (auto wrong = Check(fault.order)) {
        return wrong;
    }
    if (fault.atTrigger && fault.at) {
        return "at_trigger and at_ms exclude each other";
    }
    if (!fault.atTrigger && !fault.at && !fault.chance) {
        return "missing key: give at_trigger, at_ms or chance";
    }
    if (fault.atTrigger && *fault.atTrigger > std::uint64_t{kLatestFaultTrigger}) {
        return OutOfRange("at_trigger", static_cast<std::int64_t>(*fault.atTrigger), 0,
                          kLatestFaultTrigger);
    }
    if (fault.at && (fault.at->count() < 0 || fault.at->count() > kLatestFaultMs)) {
        return OutOfRange("at_ms", fault.at->count(), 0, kLatestFaultMs);
    }
    if (fault.chance && !(*fault.chance > 0 && *fault.chance <= 1)) {
        return "chance: a number above 0 and at most 1 is expected";
    }
    if (!ComesBackToTriggers(fault.order.kind) && (fault.atTrigger || fault.chance)) {
        return std::string(Name(fault.order.kind)) +
               " needs at_ms: a head whose board is gone gives no triggers";
    }
    return std::nullopt;
}

std::string Text(const FaultOrder& order) {
    std::string text = Name(order.kind);
    if (!order.call.empty()) {
        text += " " + order.call;
    }
    for (const FaultNumber& number : kNumbers) {
        const std::int64_t value = ValueOf(order, number.parameter);
        if (Takes(order.kind, number.parameter) && value != 0) {
            text += ", " + std::string(number.key) + " " + std::to_string(value);
        }
    }
    return text;
}

std::string Text(const TimedFault& fault) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << Text(fault.order);
    if (fault.atTrigger) {
        text << ", at_trigger " << *fault.atTrigger;
    }
    if (fault.at) {
        text << ", at_ms " << fault.at->count();
    }
    if (fault.chance) {
        text << ", chance " << *fault.chance;
    }
    return text.str();
}

}  // namespace Korvex3Sync::virtual_head
