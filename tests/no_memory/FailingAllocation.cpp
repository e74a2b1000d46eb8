#include "no_memory/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations of this thread until one fails; 0: none fails.
thread_local int t_untilFailure = 0;

}  // namespace

// The program's own allocation. Inlined, the pairs would look mismatched.

[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* const block =
        t_untilFailure > 0 && --t_untilFailure == 0 ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace Korvex3Sync::tests {

void FailAllocation(int nth) {
    t_untilFailure = nth;
}

FailingAllocation::~FailingAllocation() {
    FailAllocation(0);
}

bool FailingAllocation::Failed() const {
    return t_untilFailure == 0;
}

}  // namespace Korvex3Sync::tests
