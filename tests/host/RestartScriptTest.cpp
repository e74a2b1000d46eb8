#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#include "support/ChildProcess.h"
#include "support/OwnFolders.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;
using ::testing::StartsWith;

/// A restart script, and a folder that stands for that of the USB devices.
struct Script {
    const char* file;
    const char* vendor;
    const char* product;
    const char* revision;
};

class RestartScript : public ::testing::TestWithParam<Script> {
protected:
    fs::path Plug(const std::string& port, const std::string& vendor, const std::string& product,
                  const std::string& revision) const {
        const fs::path device = m_folders.Path() / "devices" / port;
        fs::create_directories(device);
        const std::pair<const char*, std::string> files[] = {
            {"idVendor", vendor}, {"idProduct", product}, {"bcdDevice", revision}};
        for (const auto& [name, text] : files) {
            std::ofstream(device / name) << text << '\n';
        }
        return device;
    }
    /// The hub that the script is for. What is written to its file "authorized" is collected.
    fs::path PlugHub(const std::string& port) const {
        const Script& script = GetParam();
        return Plug(port, script.vendor, script.product, script.revision);
    }
    ChildResult Run() const {
        ChildOptions options;
        options.environment.emplace_back("KORVEX_USB_DEVICES",
                                         (m_folders.Path() / "devices").string());
        return RunChild({(fs::path(KORVEX_PROGRAMS) / GetParam().file).string()}, options);
    }
    std::string Name() const {
        const Script& script = GetParam();
        return std::string("USB hub ") + script.vendor + ":" + script.product + " (revision " +
               script.revision + ")";
    }

    OwnFolders m_folders;
};

TEST_P(RestartScript, SaysThatTheHubIsNotThereAndSucceeds) {
    Plug("1-1", GetParam().vendor, GetParam().product, "0000");
    Plug("1-2", GetParam().vendor, "0001", GetParam().revision);
    Plug("1-3", "0001", GetParam().product, GetParam().revision);
    fs::create_directories(m_folders.Path() / "devices" / "usb1");  // without any of the files
    const ChildResult result = Run();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, Name() + " is not on this machine; nothing to restart\n");
    EXPECT_EQ(result.error, "");
    for (const char* port : {"1-1", "1-2", "1-3", "usb1"}) {
        EXPECT_FALSE(fs::exists(m_folders.Path() / "devices" / port / "authorized")) << port;
    }
}

TEST_P(RestartScript, SucceedsWithoutAnyUsbDevice) {
    EXPECT_EQ(Run().exitCode, 0);
}

TEST_P(RestartScript, SwitchesEachHubOffAndOn) {
    // A FIFO shows both writes.
    for (const char* port : {"1-4", "3-1.2"}) {
        ASSERT_EQ(::mkfifo((PlugHub(port) / "authorized").c_str(), 0600), 0);
    }
    std::vector<std::unique_ptr<ChildProcess>> readers;
    for (const char* port : {"1-4", "3-1.2"}) {
        // Holds it open for writing too, so that it does not end between the writes.
        const std::string fifo = (m_folders.Path() / "devices" / port / "authorized").string();
        readers.push_back(std::make_unique<ChildProcess>(std::vector<std::string>{
            "sh", "-c", "exec 3<>\"$1\"; read a <&3; read b <&3; echo $a $b", "sh", fifo}));
    }
    const ChildResult result = Run();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(result.output, Name() + " at 1-4 restarted\n" + Name() + " at 3-1.2 restarted\n");
    for (const auto& reader : readers) {
        EXPECT_EQ(reader->Wait().output, "0 1\n");
    }
}

TEST_P(RestartScript, SaysThatItMayNot) {
    const fs::path hub = PlugHub("1-4");
    fs::create_directory(hub / "authorized");  // nobody may write to a folder, not even root
    const ChildResult result = Run();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, StartsWith(Name() +
                                         " at 1-4 is not restarted: no permission to "
                                         "write " +
                                         (hub / "authorized").string()));
}

INSTANTIATE_TEST_SUITE_P(
    Hubs, RestartScript,
    ::testing::Values(Script{"restart_VID0219_PID0813_REV0221.bat", "0219", "0813", "0221"},
                      Script{"restart_VID05E3_PID0620_REV2307.bat", "05e3", "0620", "2307"}),
    [](const auto& parameter) { return std::string("Product") + parameter.param.product; });

}  // namespace
}  // namespace Korvex3Sync::tests
