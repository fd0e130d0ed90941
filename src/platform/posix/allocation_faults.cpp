#include "platform/posix/allocation_faults.h"

#include <atomic>
#include <cstdlib>

#include "platform/posix/environment.h"
#include "platform/posix/testing/faults.h"

namespace posix_layer {

// Relaxed, all of them: an allocation must not order what threads do, or the thread sanitizer would miss races.
static std::atomic<bool> g_Counting = false;
static std::atomic<int> g_Count = 0;
static std::atomic<int> g_Failing = 0;

void StartCountingAllocations() {
    g_Failing = std::atoi(GetVariable("TOLLMERE_TEST_FAIL_ALLOCATION").value_or("").c_str());
    g_Counting = true;
}

void StopCountingAllocations() {
    g_Counting = false;
}

bool AllocationFails() noexcept {
    if (!g_Counting.load(std::memory_order_relaxed) || SystemAllocations::AreThere()) return false;
    return g_Count.fetch_add(1, std::memory_order_relaxed) + 1 == g_Failing.load(std::memory_order_relaxed);
}

}  // namespace posix_layer

int platform_testing::AllocationCount() {
    return posix_layer::g_Count;
}
