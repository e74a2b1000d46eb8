#include "virtual_head/config/HeadFileText.h"

#include <algorithm>
#include <initializer_list>
#include <locale>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

#include "platform/board/protocol/Commands.h"
#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr std::size_t kWidth = 100;

constexpr std::string_view kIntroduction = R"(# A virtual head for Korvex3Sync. Use it with
#   korvexctl --virtual=FILE ...
# or, with any program, with the environment variable KORVEX_VIRTUAL_HEAD=FILE.
#
# Every key may be left out and is shown with its default. A line that begins with # and no space
# is an example of a key without a default: remove the # to use it.
)";

/// Formats prose as comment lines.
std::string Comment(const std::string& prose) {
    std::istringstream words(prose);
    std::string text;
    std::string line = "#";
    for (std::string word; words >> word;) {
        if (line.size() + 1 + word.size() > kWidth) {
            text += line + '\n';
            line = "#";
        }
        line += ' ' + word;
    }
    return text + line + '\n';
}

std::string Capitalised(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    }
    return text;
}

std::string Explained(const std::string& meaning, const std::string& values) {
    return Comment(meaning + " (" + values + ").");
}

std::string Example(const std::string& key, const std::string& value) {
    return '#' + key + " = " + value + '\n';
}

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

std::string KeysOf(std::string_view table) {
    std::string text;
    for (const KeyRule& rule : KeyRules()) {
        if (rule.table == table) {
            text += Explained(rule.meaning, ValuesText(rule));
            text += std::string(rule.key) + " = " + ValueText(rule, HeadDescription{}) + '\n';
        }
    }
    return text;
}

std::string UserMemory() {
    const std::string size = std::to_string(board::kUserPageSize);
    return Comment("The board's user memory: one entry for each page that is not empty.") +
           "#[[board.user_memory]]\n" +
           Explained("Page of " + size + " bytes, each at most once",
                     "0 to " + std::to_string(board::kUserPages - 1)) +
           Example("page", "0") +
           Explained("Content from the start of the page, at most " + size + " bytes",
                     "a text; or bytes = [0xFF, 0x00], 0 to 255 each") +
           Example("text", Quoted("bench 7"));
}

std::string Replay() {
    std::string text = Comment("Real images in place of the scene.") + "#[replay]\n";
    for (const KeyRule& rule : KeyRules()) {
        if (rule.table == std::string_view("replay")) {
            text += Explained(rule.meaning, ValuesText(rule)) + Example(rule.key, Quoted("pairs"));
        }
    }
    return text;
}

/// "a, b or c"
std::string Listed(const std::vector<std::string>& names, const std::string& last) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == names.size() ? " " + last + " " : ", ") + names[i];
    }
    return text;
}

std::vector<std::string> KindsThatTake(FaultParameter parameter) {
    std::vector<std::string> names;
    for (const FaultKind kind : FaultKinds()) {
        if (Takes(kind, parameter)) {
            names.emplace_back(Name(kind));
        }
    }
    return names;
}

/// Writes faults as examples; explains each key where it appears first.
class FaultExamples {
public:
    void Add(const std::string& what, const TimedFault& fault) {
        m_text += (m_text.empty() ? "" : "\n") + Comment(what) + "#[[fault]]\n";
        std::vector<std::string> kinds;
        for (const FaultKind kind : FaultKinds()) {
            kinds.emplace_back(Name(kind));
        }
        Key("what", Quoted(Name(fault.order.kind)), "What happens", Listed(kinds, "or"));
        if (!fault.order.call.empty()) {
            Key("call", Quoted(fault.order.call),
                Only(FaultParameter::Call) + "the platform function that meets it",
                "for example SnapShot");
        }
        for (const FaultNumber& number : FaultNumbers()) {
            const std::int64_t value = ValueOf(fault.order, number.parameter);
            if (value != ValueOf(FaultOrder{}, number.parameter)) {
                const bool most = number.parameter == FaultParameter::Times;
                Key(number.key, std::to_string(value),
                    most ? Capitalised(number.meaning) : Only(number.parameter) + number.meaning,
                    Range(number.lowest, number.highest));
            }
        }
        if (fault.atTrigger) {
            Key("at_trigger", std::to_string(*fault.atTrigger),
                "Begins with the trigger of this number, counted from 0",
                Range(0, kLatestFaultTrigger));
        }
        if (fault.at) {
            Key("at_ms", std::to_string(fault.at->count()),
                "Begins this long after the head was requested, in milliseconds",
                Range(0, kLatestFaultMs));
        }
        if (fault.chance) {
            std::ostringstream chance;
            chance.imbue(std::locale::classic());
            chance << *fault.chance;
            Key("chance", chance.str(),
                "From then on, begins with this probability at each trigger", "above 0, at most 1");
        }
    }

    const std::string& Text() const { return m_text; }

private:
    static std::string Range(std::int64_t lowest, std::int64_t highest) {
        return std::to_string(lowest) + " to " + std::to_string(highest);
    }

    static std::string Only(FaultParameter parameter) {
        return Capitalised(Listed(KindsThatTake(parameter), "and")) + " only: ";
    }

    void Key(const std::string& key, const std::string& value, const std::string& meaning,
             const std::string& values) {
        if (m_explained.insert(key).second) {
            m_text += Explained(meaning, values);
        }
        m_text += Example(key, value);
    }

    std::string m_text;
    std::set<std::string> m_explained;
};

TimedFault At(FaultOrder order, std::int64_t milliseconds) {
    TimedFault fault{std::move(order)};
    fault.at = std::chrono::milliseconds(milliseconds);
    return fault;
}

TimedFault AtTrigger(FaultOrder order, std::uint64_t trigger) {
    TimedFault fault{std::move(order)};
    fault.atTrigger = trigger;
    return fault;
}

std::string Faults() {
    FaultExamples examples;
    FaultOrder lost{FaultKind::LoseColor};
    lost.times = 2;
    TimedFault drawn = AtTrigger(lost, 100);
    drawn.chance = 0.01;
    examples.Add("Colour frames that are lost now and then, from trigger 100 on.", drawn);

    FaultOrder slow{FaultKind::Slow, "zr3DQueryCurrentStatus"};
    slow.times = 3;
    slow.extra = std::chrono::milliseconds(200);
    examples.Add("Three slow calls, 10 s after the head was requested.", At(slow, 10000));

    FaultOrder mute{FaultKind::BoardMute};
    mute.lasting = std::chrono::milliseconds(2000);
    mute.opens = 1;
    examples.Add("A board that opens and does not answer.", At(mute, 20000));

    FaultOrder delay{FaultKind::Delay};
    delay.byTriggers = 2;
    examples.Add("The frames of one trigger that come late.", AtTrigger(delay, 500));

    return "[faults]\n" +
           Explained("Seed of the draws of all faults with a chance", "a whole number, 0 or more") +
           "seed = " + std::to_string(HeadDescription{}.faultSeed) + "\n\n" +
           Comment("Faults that begin by themselves: one entry each.") + '\n' + examples.Text();
}

}  // namespace

std::string HeadFileText() {
    std::string text(kIntroduction);
    for (const std::string& part :
         {"[camera]\n" + KeysOf("camera"), "[board]\n" + KeysOf("board"), UserMemory(),
          "[scene]\n" +
              Comment("What the sensors see without a [replay] folder: a plate with a sphere and a "
                      "box on it, in the light of the board. The head's coordinates begin in the "
                      "middle between the sensors, the object's in the middle of the plate: x to "
                      "the right, y down, z away from the head.") +
              '\n' + KeysOf("scene"),
          Replay(), Faults()}) {
        text += '\n' + part;
    }
    return text;
}

}  // namespace Korvex3Sync::virtual_head
