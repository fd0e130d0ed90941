#include "support/pipe_client.h"

#include <thread>

namespace launcher {

bool PipeClient::Open(const std::string& name, std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kPause{2};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!TryOpen(name)) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        if (!AwaitTurn(name, left)) std::this_thread::sleep_for(kPause);
    }
    return true;
}

bool PipeClient::IsOpen() const {
    return m_Connection != nullptr;
}

}  // namespace launcher
