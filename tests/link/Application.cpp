#include <gtest/gtest.h>

#include <QCoreApplication>

#include <optional>

namespace Korvex3Sync::tests {
namespace {

/// Gives this process a QCoreApplication. Its event loop never runs.
class Application : public ::testing::Environment {
public:
    void SetUp() override { m_application.emplace(m_count, m_arguments); }
    void TearDown() override { m_application.reset(); }

private:
    int m_count = 1;
    char m_name[11] = "link_tests";
    char* m_arguments[2] = {m_name, nullptr};
    std::optional<QCoreApplication> m_application;
};

[[maybe_unused]] const auto* const kApplication =
    ::testing::AddGlobalTestEnvironment(new Application);

}  // namespace
}  // namespace Korvex3Sync::tests
