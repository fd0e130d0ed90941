#include "tools/launcher_client/pipe_client.h"

#include <thread>

namespace launcher {

bool PipeClient::Open(const std::string& name, std::chrono::milliseconds limit) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPause{50};
    const Clock::time_point end = Clock::now() + limit;
    while (!TryOpen(name)) {
        if (Clock::now() + kPause > end) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

bool PipeClient::IsOpen() const {
    return m_Connection != nullptr;
}

}  // namespace launcher
