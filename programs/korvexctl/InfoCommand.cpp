#include <Korvex3Sync/Light.h>

#include <array>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/Commands.h"
#include "korvexctl/Head.h"
#include "korvexctl/HeadChoice.h"
#include "korvexctl/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// One setting of the board that is read as a number.
struct Setting {
    const char* key;  // in the JSON document; ends in the unit
    const char* text;
    const char* unit;
    RETSTATUS (*read)(void* const& handle, int& value);
};

RETSTATUS ReadTextureDuty(void* const& handle, int& value) {
    int plain = 0;
    int withTexture = 0;
    return GetStrobeDutioRatio(handle, value, plain, withTexture);
}

RETSTATUS ReadPlainDuty(void* const& handle, int& value) {
    int texture = 0;
    int withTexture = 0;
    return GetStrobeDutioRatio(handle, texture, value, withTexture);
}

RETSTATUS ReadDutyWithTexture(void* const& handle, int& value) {
    int texture = 0;
    int plain = 0;
    return GetStrobeDutioRatio(handle, texture, plain, value);
}

RETSTATUS ReadStrobeTimeWithTexture(void* const& handle, int& value) {
    int plain = 0;
    return GetStrobeWorkTime(handle, value, plain);
}

RETSTATUS ReadStrobeTime(void* const& handle, int& value) {
    int withTexture = 0;
    return GetStrobeWorkTime(handle, withTexture, value);
}

constexpr std::array kSettings{
    Setting{"trigger_period_ms", "trigger period", "ms", GetVideoTriggerPeriod},
    Setting{"projector_brightness_percent", "projector brightness", "%", GetProjectorBrightness},
    Setting{"projector_duty_percent", "projector duty ratio", "%", GetProjectDutioRatio},
    Setting{"projector_work_time_us", "projector work time", "us", GetProjectWorkTime},
    Setting{"laser_duty_percent", "laser line duty ratio", "%", GetLaserLineDutioRatio},
    Setting{"laser_work_time_us", "laser line work time", "us", GetLaserLineWorkTime},
    Setting{"ir_laser_duty_percent", "infrared laser duty ratio", "%", GetIRLaserDutioRatio},
    Setting{"ir_laser_work_time_us", "infrared laser work time", "us", GetIRLaserWorkTime},
    Setting{"strobe_texture_duty_percent", "strobe duty ratio, texture", "%", ReadTextureDuty},
    Setting{"strobe_plain_duty_percent", "strobe duty ratio, plain", "%", ReadPlainDuty},
    Setting{"strobe_with_texture_duty_percent", "strobe duty ratio, plain beside texture", "%",
            ReadDutyWithTexture},
    Setting{"strobe_with_texture_work_time_us", "strobe work time with texture", "us",
            ReadStrobeTimeWithTexture},
    Setting{"strobe_work_time_us", "strobe work time", "us", ReadStrobeTime},
};

Outcome RunInfo(const HeadChoice& choice, Output& output) {
    const std::vector<Camera> cameras = FindCameras(choice.cameraType);
    const Head head = AskHead(choice.board);
    const Session session(choice.cameraType, choice.board, cameras);

    Outcome outcome;
    outcome.figures["cameras"] = ToJson(cameras);
    AddToJson(head, outcome.figures);
    Print(cameras, output);
    Print(head, output);

    nlohmann::json& board = outcome.figures["board"];
    for (const Setting& setting : kSettings) {
        int value = 0;
        const RETSTATUS status = setting.read(session.Handle(), value);
        if (status == STATUS_SUCCESS) {
            board[setting.key] = value;
            output.Line(std::string(setting.text) + " " + std::to_string(value) + " " +
                        setting.unit);
        } else {
            board[setting.key] = nullptr;
            output.Line(std::string(setting.text) + " unknown");
            outcome.code = ExitCode::DeviceRefused;
            outcome.message = std::string("the board does not tell its ") + setting.text + ": " +
                              StatusText(status);
        }
    }
    return outcome;
}

}  // namespace

RunCommand AddInfo(CLI::App& command) {
    const auto head = std::make_shared<HeadChoice>();
    AddHeadOptions(command, *head, true);
    return [head](Output& output) { return RunInfo(*head, output); };
}

}  // namespace Korvex3Sync::korvexctl
