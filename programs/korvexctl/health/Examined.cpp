#include "korvexctl/health/Examined.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kPutBackLimit{30};
constexpr std::chrono::seconds kDisconnectLimit{15};

std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

}  // namespace

bool Examined::WaitForAnswer(std::chrono::milliseconds limit) {
    return watch.WaitForAnswer(std::chrono::steady_clock::now() + limit);
}

Step PutBackStep(const std::shared_ptr<Examined>& examined, Verdict whenNot) {
    return {"settings put back", kPutBackLimit,
            [examined, whenNot]() -> Finding {
                if (!examined->head || !examined->found) {
                    return {Verdict::NotRun, "nothing was changed"};
                }
                const auto failed = examined->found->PutBack(examined->head->Handle());
                const std::string changed = failed.empty() ? "" : "not restored: " + Listed(failed);
                if (examined->leftOn.Any()) {
                    return {
                        Verdict::Fault,
                        "not switched off: " + examined->leftOn.Text() +
                            (changed.empty() ? "" : "; ") + changed,
                        "assume it is still on, look away from the head, and switch the head off"};
                }
                if (!changed.empty()) {
                    return {whenNot, changed, "set them again, or switch the head off and on"};
                }
                return {Verdict::Ok, std::to_string(examined->found->Kept()) +
                                         " settings restored; light and trigger are off"};
            },
            true};
}

Step DisconnectStep(const std::shared_ptr<Examined>& examined) {
    return {"disconnect", kDisconnectLimit,
            [examined]() -> Finding {
                if (!examined->head) {
                    return {Verdict::NotRun, "not connected"};
                }
                examined->head.reset();
                return {Verdict::Ok, "disconnected"};
            },
            true};
}

}  // namespace Korvex3Sync::korvexctl
