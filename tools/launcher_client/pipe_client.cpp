#include "tools/launcher_client/pipe_client.h"

#include <thread>

namespace launcher {

bool PipeClient::Open(const std::string& name, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (m_NextTry <= end) {
        std::this_thread::sleep_until(m_NextTry);
        if (TryOpen(name)) return true;
    }
    return false;
}

// Each TryOpen begins with this, so that a failed one is followed by the pause as well.
void PipeClient::Close() {
    constexpr std::chrono::milliseconds kPause{50};
    Disconnect();
    m_NextTry = std::chrono::steady_clock::now() + kPause;
}

bool PipeClient::IsOpen() const {
    return m_Connection != nullptr;
}

}  // namespace launcher
