#include "platform/link/Operations.h"

#include "platform/link/HubOperations.h"

namespace Korvex3Sync::link {
namespace {

auto Fields(auto& state) requires requires {
    state.losses;
}
{
    return std::tie(state.version, state.process, state.uptimeMs, state.virtualHead,
                    state.clientProcess, state.deviceType, state.deviceId, state.setsPerSecond,
                    state.losses);
}

auto Fields(auto& registration) requires requires {
    registration.socket;
}
{
    return std::tie(registration.service, registration.socket, registration.instance,
                    registration.process, registration.version);
}

auto Fields(auto& state) requires requires {
    state.services;
}
{ return std::tie(state.version, state.process, state.uptimeMs, state.services); }

bool ReadFields(ByteReader& in, auto fields) {
    return std::apply([&in](auto&... field) { return (Read(in, field) && ...); }, fields);
}

void WriteFields(ByteWriter& out, auto fields) {
    std::apply([&out](const auto&... field) { (Write(out, field), ...); }, fields);
}

}  // namespace

void Write(ByteWriter& out, const ServiceState& state) {
    WriteFields(out, Fields(state));
}

bool Read(ByteReader& in, ServiceState& state) {
    return ReadFields(in, Fields(state));
}

void Write(ByteWriter& out, const Registration& registration) {
    WriteFields(out, Fields(registration));
}

bool Read(ByteReader& in, Registration& registration) {
    return ReadFields(in, Fields(registration));
}

void Write(ByteWriter& out, const HubState& state) {
    WriteFields(out, Fields(state));
}

bool Read(ByteReader& in, HubState& state) {
    return ReadFields(in, Fields(state));
}

}  // namespace Korvex3Sync::link
