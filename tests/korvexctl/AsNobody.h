#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

namespace Korvex3Sync::tests {

inline constexpr uid_t kNobody = 65534;

/// Runs this process, which belongs to root, as another user while it exists. The user may be a
/// member of some groups.
class AsNobody {
public:
    explicit AsNobody(const std::vector<gid_t>& groups = {}) : m_groups(64) {
        const int count = ::getgroups(static_cast<int>(m_groups.size()), m_groups.data());
        EXPECT_GE(count, 0);
        m_groups.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        EXPECT_EQ(::setgroups(groups.size(), groups.data()), 0);
        EXPECT_EQ(::setegid(kNobody), 0);
        EXPECT_EQ(::seteuid(kNobody), 0);
    }
    ~AsNobody() {
        EXPECT_EQ(::seteuid(0), 0);
        EXPECT_EQ(::setegid(m_group), 0);
        EXPECT_EQ(::setgroups(m_groups.size(), m_groups.data()), 0);
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    const gid_t m_group = ::getegid();
    std::vector<gid_t> m_groups;
};

}  // namespace Korvex3Sync::tests
