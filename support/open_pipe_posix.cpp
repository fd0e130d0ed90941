#include <thread>

#include "support/open_pipe.h"

namespace support {

// Nothing tells when a socket takes somebody in again.
bool OpenPipe(launcher::PipeClient& pipe, const std::string& name, launcher::Milliseconds limit) {
    constexpr launcher::Milliseconds kPause{2};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pipe.TryOpen(name)) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

}  // namespace support
