#include "korvexctl/service/ServiceStatus.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "korvexctl/files/Output.h"
#include "korvexctl/scan/LossPlaces.h"
#include "korvexctl/service/ServiceStart.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kNameWidth = 9;

template <class State>
std::chrono::seconds UptimeOf(const State& state) {
    return std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::milliseconds(state.uptimeMs));
}

template <class State>
std::string ProgramText(const Found<State>& found) {
    if (found.process == 0) {
        return "not running";
    }
    const std::string process = "process " + std::to_string(found.process);
    return found.state ? process + ", up " + DurationText(UptimeOf(*found.state)) + ", version " +
                             found.state->version.toStdString()
                       : process + ", does not answer";
}

template <class State>
nlohmann::json ProgramJson(const Found<State>& found) {
    nlohmann::json json = {{"running", found.process != 0},
                           {"answers", found.state.has_value()},
                           {"pid", nullptr},
                           {"uptime_s", nullptr},
                           {"version", nullptr}};
    if (found.process != 0) {
        json["pid"] = found.process;
    }
    if (found.state) {
        json["uptime_s"] = UptimeOf(*found.state).count();
        json["version"] = found.state->version.toStdString();
    }
    return json;
}

/// The key of a place, from its name in the service: "missing_keys" for "missingKeys".
std::string KeyOf(const QString& name) {
    std::string key;
    for (const char letter : name.toStdString()) {
        if (std::isupper(static_cast<unsigned char>(letter)) != 0) {
            key += '_';
        }
        key += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return key;
}

std::string WordsOf(const std::string& key) {
    if (key == "notices_not_sent") {
        return "sets that the client was too slow for";
    }
    const auto places = LossPlaces();
    const auto place = std::find_if(places.begin(), places.end(),
                                    [&key](const LossPlace& known) { return known.key == key; });
    return place == places.end() ? key : place->words;
}

std::string LostText(const link::ServiceState& state) {
    std::string text;
    for (const auto& [place, count] : state.losses) {
        if (count > 0) {
            text += (text.empty() ? "lost: " : "; ") + std::to_string(count) + ' ' +
                    WordsOf(KeyOf(place));
        }
    }
    return text.empty() ? "nothing lost" : text;
}

std::string RateText(double setsPerSecond) {
    constexpr std::size_t kLongest = 32;
    char text[kLongest];
    std::snprintf(text, sizeof(text), "%.1f sets/s", setsPerSecond);
    return text;
}

template <class State>
std::string NotWorkingText(const std::string& name, const Found<State>& found) {
    return name + (found.process == 0
                       ? " is not running; start it with: korvexctl service start"
                       : " does not answer; restart it with: korvexctl service stop, then start");
}

std::string Row(const std::string& name, const std::string& text) {
    return name + std::string(kNameWidth - name.size(), ' ') + text;
}

}  // namespace

std::string HeadText(const std::string& virtualHead) {
    return virtualHead.empty()           ? "no simulated head"
           : virtualHead == kDefaultHead ? "the default simulated head"
                                         : "the simulated head " + virtualHead;
}

std::string DurationText(std::chrono::seconds duration) {
    using namespace std::chrono;
    const auto h = duration_cast<hours>(duration);
    const auto min = duration_cast<minutes>(duration - h);
    const auto s = duration - h - min;
    if (h.count() > 0) {
        return std::to_string(h.count()) + " h " + std::to_string(min.count()) + " min";
    }
    return (min.count() > 0 ? std::to_string(min.count()) + " min " : "") +
           std::to_string(s.count()) + " s";
}

nlohmann::json ToJson(const ServiceStatus& status) {
    nlohmann::json service = ProgramJson(status.service);
    for (const char* key :
         {"virtual_head", "client_pid", "device", "device_id", "sets_per_s", "losses"}) {
        service[key] = nullptr;
    }
    if (const std::optional<link::ServiceState>& state = status.service.state) {
        if (!state->virtualHead.isEmpty()) {
            service["virtual_head"] = state->virtualHead.toStdString();
        }
        if (state->clientProcess != 0) {
            service["client_pid"] = state->clientProcess;
        }
        if (state->deviceId != 0) {
            service["device"] = state->deviceType.toStdString();
            service["device_id"] = state->deviceId;
        }
        service["sets_per_s"] = state->setsPerSecond;
        service["losses"] = nlohmann::json::object();
        for (const auto& [place, count] : state->losses) {
            service["losses"][KeyOf(place)] = count;
        }
    }
    return {{"hub", ProgramJson(status.hub)}, {"service", service}};
}

std::string NotWorkingText(const ServiceStatus& status) {
    return status.hub.state ? NotWorkingText("the service", status.service)
                            : NotWorkingText("the hub", status.hub);
}

void Print(const ServiceStatus& status, Output& output) {
    output.Line(Row("hub", ProgramText(status.hub)));
    output.Line(Row("service", ProgramText(status.service)));
    const std::optional<link::ServiceState>& state = status.service.state;
    if (!state) {
        return;
    }
    output.Line(Row("head", HeadText(state->virtualHead.toStdString())));
    output.Line(Row("client", state->clientProcess == 0
                                  ? "none"
                                  : "process " + std::to_string(state->clientProcess)));
    if (state->deviceId == 0) {
        output.Line(Row("device", "none"));
        return;
    }
    output.Line(Row("device", state->deviceType.toStdString() + " (id " +
                                  std::to_string(state->deviceId) + "), " +
                                  RateText(state->setsPerSecond)));
    output.Line(Row("losses", LostText(*state)));
}

}  // namespace Korvex3Sync::korvexctl
