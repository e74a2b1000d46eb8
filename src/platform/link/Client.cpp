#include "platform/link/Client.h"

#include <utility>

#include "platform/link/ClientCalls.h"

namespace Korvex3Sync::link {

Client::Client(Target target, Sinks sinks)
    : m_calls(std::make_unique<ClientCalls>(target, std::move(sinks))) {}

Client::~Client() = default;

RETSTATUS Client::CallRaw(const CalledOperation& operation, const QByteArray& arguments,
                          QByteArray& results) {
    return m_calls->Call(operation, arguments, results);
}

void Client::RefuseAnswer(const char* name) {
    m_calls->RefuseAnswer(name);
}

}  // namespace Korvex3Sync::link
