#include "korvexctl/head/BoardWatch.h"

#include <Korvex3Sync/Images.h>

#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr unsigned char kNoAnswer = 255;

}  // namespace

void BoardWatch::Watch(const Session& session) {
    Require(SetStatusCallBackFunction(session.Handle(), OnStatus, &m_target),
            "watch the board's status");
}

void BoardWatch::OnStatus(const void* const& context, const unsigned char& statusA,
                          const unsigned char& statusB) {
    **static_cast<std::atomic<bool>* const*>(context) =
        statusA == kNoAnswer && statusB == kNoAnswer;
}

}  // namespace Korvex3Sync::korvexctl
