#include "virtual_head/config/HeadRules.h"

#include <algorithm>
#include <array>

#include "virtual_head/config/SceneRules.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr HeadKey kWidth{"camera", "width"};
constexpr HeadKey kGainLow{"camera", "gain_low"};

constexpr std::array<NumberRule, 6> kNumberRules{{
    {kWidth, &HeadDescription::width, 16, 2000},
    {{"camera", "height"}, &HeadDescription::height, 16, 2000},
    {kGainLow, &HeadDescription::gainLow, 0, 63},
    {{"camera", "gain_high"}, &HeadDescription::gainHigh, 0, 63},
    {{"camera", "buffers"}, &HeadDescription::cameraBuffers, 1, 4096},
    {{"board", "usb_speed"}, &HeadDescription::usbSpeed, 1, 4},
}};

constexpr std::array<TextRule, 4> kTextRules{{
    {{"camera", "type"}, &HeadDescription::cameraType, 2, 64, "KV"},
    {{"camera", "serial"}, &HeadDescription::cameraSerial, 3, 64, "KV"},
    {{"board", "serial"}, &HeadDescription::boardSerial, 1, 32, ""},
    {{"board", "firmware"}, &HeadDescription::firmware, 1, 32, ""},
}};

BrokenRule Broken(const HeadKey& where, const std::string& what) {
    return {where, "[" + std::string(where.table) + "] " + where.key + ": " + what};
}

bool Printable(char c) {
    return c >= ' ' && c <= '~';
}

}  // namespace

std::span<const NumberRule> NumberRules() {
    return kNumberRules;
}

std::span<const TextRule> TextRules() {
    return kTextRules;
}

std::optional<BrokenRule> Check(const NumberRule& rule, std::int64_t value) {
    if (value >= rule.lowest && value <= rule.highest) {
        return std::nullopt;
    }
    return Broken(rule.where, std::to_string(value) + " is out of range, " +
                                  std::to_string(rule.lowest) + " to " +
                                  std::to_string(rule.highest));
}

std::optional<BrokenRule> Check(const TextRule& rule, const std::string& value) {
    if (value.size() < rule.shortest || value.size() > rule.longest) {
        return Broken(rule.where, "the text has " + std::to_string(value.size()) +
                                      " characters, not " + std::to_string(rule.shortest) + " to " +
                                      std::to_string(rule.longest));
    }
    if (!std::all_of(value.begin(), value.end(), Printable)) {
        return Broken(rule.where, "the text has a character that is not printable ASCII");
    }
    if (!value.starts_with(rule.prefix)) {
        return Broken(rule.where, "\"" + value + "\" does not begin with " + rule.prefix);
    }
    return std::nullopt;
}

std::optional<BrokenRule> CheckTogether(const HeadDescription& description) {
    if (description.gainLow > description.gainHigh) {
        return Broken(kGainLow, "it is above gain_high");
    }
    if (description.width * description.height % 4 != 0) {
        return Broken(kWidth, "width x height is not a multiple of 4");
    }
    return CheckTogether(description.scene);
}

std::optional<BrokenRule> Check(const HeadDescription& description) {
    for (const NumberRule& rule : kNumberRules) {
        if (auto broken = Check(rule, description.*rule.member)) {
            return broken;
        }
    }
    for (const TextRule& rule : kTextRules) {
        if (auto broken = Check(rule, description.*rule.member)) {
            return broken;
        }
    }
    for (const TimedFault& fault : description.faults) {
        if (auto wrong = Check(fault)) {
            return BrokenRule{{"fault", "what"}, "[[fault]] " + *wrong};
        }
    }
    if (auto broken = Check(description.scene)) {
        return broken;
    }
    return CheckTogether(description);
}

}  // namespace Korvex3Sync::virtual_head
