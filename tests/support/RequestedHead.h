#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests {

/// Requests a virtual head for this process while it exists. The destructor fails the test if an
/// ordered fault was never used.
class RequestedHead {
public:
    explicit RequestedHead(const virtual_head::HeadDescription& description = {}) {
        std::string error;
        EXPECT_TRUE(virtual_head::RequestVirtualHead(description, error)) << error;
        m_head = virtual_head::RequestedVirtualHead();
    }
    ~RequestedHead() {
        EXPECT_EQ(m_head->GetFaults().Unused(), std::vector<std::string>{});
        virtual_head::WithdrawVirtualHead();
    }
    RequestedHead(const RequestedHead&) = delete;
    RequestedHead& operator=(const RequestedHead&) = delete;

    virtual_head::VirtualHead* operator->() const { return m_head.get(); }
    virtual_head::VirtualHead& operator*() const { return *m_head; }

private:
    std::shared_ptr<virtual_head::VirtualHead> m_head;
};

}  // namespace Korvex3Sync::tests
