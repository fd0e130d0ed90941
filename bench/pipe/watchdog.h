#pragma once

// Ends a process whose blocking calls can't end by themselves.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace pipe_bench {

// From its making to its end the process has `limit`; after that it is ended with kExitStatus and a line on standard
// error.
class Watchdog {
  public:
    static constexpr int kExitStatus = 3;

    explicit Watchdog(std::chrono::seconds limit);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    void Watch(std::chrono::seconds limit);

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_Over = false;
    std::thread m_Thread;  // the last: it uses the others
};

}  // namespace pipe_bench
