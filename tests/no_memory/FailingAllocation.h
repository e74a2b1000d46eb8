#pragma once

namespace Korvex3Sync::tests {

/// From now on the `nth` allocation of this thread fails (1: the next), once.
void FailAllocation(int nth);

/// Lets an allocation of this thread fail during a scope.
class FailingAllocation {
public:
    explicit FailingAllocation(int nth) { FailAllocation(nth); }
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether it has failed by now.
    bool Failed() const;
};

}  // namespace Korvex3Sync::tests
