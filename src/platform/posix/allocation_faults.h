#pragma once

// Counts what a whole program under test allocates, and makes one allocation fail. It is the operators in
// counted_operators.cpp that ask here; in a program without them nothing is counted. Any thread.

namespace posix_layer {

// While one of these is there, what its thread allocates doesn't count: the layer stands for the system, whose memory
// isn't the program's. Each call of the layer that allocates has one. None may be there while the program is called.
class SystemAllocations {
  public:
    SystemAllocations() { ++t_Depth; }
    ~SystemAllocations() { --t_Depth; }
    SystemAllocations(const SystemAllocations&) = delete;
    SystemAllocations& operator=(const SystemAllocations&) = delete;

    static bool AreThere() { return t_Depth != 0; }

  private:
    static inline thread_local int t_Depth = 0;
};

// From now on allocations count, and the one fails whose number TOLLMERE_TEST_FAIL_ALLOCATION gives, if it is set.
void StartCountingAllocations();
void StopCountingAllocations();

// Counts one that the program makes. True if it is to fail.
bool AllocationFails() noexcept;

}  // namespace posix_layer
