#include <poll.h>
#include <signal.h>
#include <unistd.h>

// The C library's own header forgets it in its version 2.36.
extern "C" {
#include <sys/pidfd.h>
}

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

#include "tools/probe/helper_process.h"

namespace fs = std::filesystem;

namespace {

// Ours once, it can't become another process's.
class ProcessDescriptor {
  public:
    explicit ProcessDescriptor(std::uint32_t processId) : m_Value(pidfd_open(static_cast<pid_t>(processId), 0)) {}
    ~ProcessDescriptor() {
        if (m_Value >= 0) close(m_Value);
    }
    ProcessDescriptor(const ProcessDescriptor&) = delete;
    ProcessDescriptor& operator=(const ProcessDescriptor&) = delete;
    int Get() const { return m_Value; }

  private:
    int m_Value;
};

// Of a helper whose file has been replaced the name goes on with " (deleted)".
bool IsHelper(std::uint32_t processId, std::error_code& error) {
    const fs::path program = fs::read_symlink("/proc/" + std::to_string(processId) + "/exe", error);
    return program.filename().string().starts_with("tollmere_steam_helper");
}

}  // namespace

bool CanFindHelper() {
    return false;
}

ExitStatus EndHelper(std::uint32_t processId, std::chrono::milliseconds limit) {
    const ProcessDescriptor process(processId);
    if (process.Get() < 0) return ExitStatus::NothingThere;
    std::error_code error;
    const bool isHelper = IsHelper(processId, error);
    if (error == std::errc::permission_denied) return ExitStatus::NotAllowed;
    if (!isHelper) return ExitStatus::NothingThere;
    if (pidfd_send_signal(process.Get(), SIGTERM, nullptr, 0) != 0) {
        return errno == EPERM ? ExitStatus::NotAllowed : ExitStatus::NothingThere;
    }
    pollfd ended = {process.Get(), POLLIN, 0};
    constexpr std::chrono::milliseconds kLongest{std::numeric_limits<int>::max()};
    const int count = poll(&ended, 1, static_cast<int>(std::min(limit, kLongest).count()));
    return count == 1 ? ExitStatus::Done : ExitStatus::StillRuns;
}
