#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "device_service/ServiceSession.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// The program, with folders of its own and a hub in this process.
class ProgramTest : public testing::Test {
protected:
    ProgramTest() : m_hub("1", [] {}) {
        std::string reason;
        EXPECT_TRUE(m_hub.Listen(reason)) << reason;
    }

    ~ProgramTest() override {
        // Only a failed test leaves a service of its folder behind.
        if (Holder() > 0) {
            os::OtherProcess(Holder()).Kill();
        }
    }

    static ChildOptions With(const std::string& variable, const std::string& value) {
        ChildOptions options;
        options.environment.emplace_back(variable, value);
        return options;
    }
    static ChildOptions WithHead() { return With("KORVEX_VIRTUAL_HEAD", "default"); }
    long Holder() const { return os::InstanceLockHolder(m_folders.Runtime() / "service.lock"); }
    bool WaitUntilItServes() const {
        link::Client client;
        link::GetServiceState::Out state;
        return support::WaitUntil([&] {
            return client.Call<link::GetServiceState>({}, state) == STATUS_SUCCESS &&
                   std::get<0>(state).process == Holder();
        });
    }
    std::string Log() const {
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(m_folders.Logs())) {
            if (entry.path().filename().string().starts_with("ZrSyncService.")) {
                std::ifstream file(entry.path());
                text.append(std::istreambuf_iterator<char>(file), {});
            }
        }
        return text;
    }

    const Folders m_folders;
    const std::vector<std::string> m_command{KORVEX_PROGRAMS "/ZrSyncService.exe"};

private:
    link::HubServer m_hub;
};

}  // namespace Korvex3Sync::tests
