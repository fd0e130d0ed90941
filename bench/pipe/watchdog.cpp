#include "bench/pipe/watchdog.h"

#include <cstdio>
#include <cstdlib>

namespace pipe_bench {

Watchdog::Watchdog(std::chrono::seconds limit) : m_Thread([this, limit] { Watch(limit); }) {}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(m_Mutex);
        m_Over = true;
    }
    m_Changed.notify_one();
    m_Thread.join();
}

void Watchdog::Watch(std::chrono::seconds limit) {
    std::unique_lock lock(m_Mutex);
    if (m_Changed.wait_for(lock, limit, [this] { return m_Over; })) return;
    std::fprintf(stderr, "not done after %lld s\n", static_cast<long long>(limit.count()));
    std::_Exit(kExitStatus);
}

}  // namespace pipe_bench
