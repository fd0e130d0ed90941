#include "platform/posix/layer_clock.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/posix/environment.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/wait_thread.h"

namespace posix_layer {

static std::atomic<std::int64_t> g_MovedByMilliseconds = 0;

static std::chrono::milliseconds MovedBy() {
    return std::chrono::milliseconds(g_MovedByMilliseconds.load());
}

std::chrono::steady_clock::time_point SteadyNow() {
    return std::chrono::steady_clock::now() + MovedBy();
}

std::chrono::system_clock::time_point SystemNow() {
    return std::chrono::system_clock::now() + MovedBy();
}

// Takes whole lines off `text` and moves the clock by each.
static void ObeyLines(std::string& text) {
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
        g_MovedByMilliseconds += std::atoll(text.substr(0, end).c_str());
    }
}

void WatchClockFifo() {
    const std::optional<std::string> path = GetVariable("TOLLMERE_TEST_CLOCK");
    if (!path) return;
    // For writing, too: without a writer of our own the end of the first one would be the end of the stream.
    const int fifo = open(path->c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fifo < 0) return;
    const std::lock_guard lock(LayerLock());
    const auto id = std::make_shared<WatchId>();
    const auto read_lines = [fifo, id, text = std::make_shared<std::string>()] {
        char bytes[256];
        ssize_t count;
        while ((count = read(fifo, bytes, sizeof bytes)) > 0) text->append(bytes, static_cast<std::size_t>(count));
        ObeyLines(*text);
        ArmWatch(*id, EPOLLIN);
    };
    *id = AddWatch(fifo, read_lines);
    ArmWatch(*id, EPOLLIN);
}

}  // namespace posix_layer

void platform_testing::AdvanceClock(std::chrono::milliseconds by) {
    posix_layer::g_MovedByMilliseconds += by.count();
    posix_layer::WakeWaitThread();
}
