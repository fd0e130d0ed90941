#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "support/limits.h"
#include "support/temp_folder.h"
#include "tests/e2e/machine.h"

namespace e2e {

namespace fs = std::filesystem;

fs::path BinFolder() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

std::string ProgramFile(const std::string& name) {
    return name;
}

const bool kFaultsWork = true;

Footprint FootprintOf(std::uint32_t processId) {
    const fs::path process = "/proc/" + std::to_string(processId);
    const fs::directory_iterator descriptors(process / "fd");
    Footprint footprint;
    footprint.handles = static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
    std::ifstream status(process / "status");
    for (std::string line; std::getline(status, line);) {
        unsigned long kilobytes = 0;
        if (std::sscanf(line.c_str(), "RssAnon: %lu kB", &kilobytes) == 1) footprint.privateBytes = kilobytes * 1024;
    }
    return footprint;
}

bool EndProcess(std::uint32_t processId) {
    return kill(static_cast<pid_t>(processId), SIGKILL) == 0;
}

void HoldProcess(std::uint32_t processId) {
    if (processId == 0 || kill(static_cast<pid_t>(processId), SIGSTOP) != 0) return;
    const fs::path tasks = fs::path("/proc") / std::to_string(processId) / "task";
    // Until one of its threads has taken the signal the others go on.
    support::WaitUntil([&] {
        std::error_code hasEnded;
        for (fs::directory_iterator task(tasks, hasEnded), end; !hasEnded && task != end; task.increment(hasEnded)) {
            if (support::ReadAll(task->path() / "stat").find(") T ") == std::string::npos) return false;
        }
        return true;
    });
}

Machine::Machine(const fs::path& folder) : m_Home(folder / "home") {
    const fs::path pipes = folder / "pipes";
    const fs::path programData = folder / "data";
    const fs::path clock = folder / "clock";
    fs::create_directory(pipes);
    m_LogFile = programData / "Tollmere Games" / "Launcher" / "tollmere_steam_helper.log";
    fs::create_directories(m_LogFile.parent_path());
    m_EventFile = folder / "local" / "Tollmere Games" / "Launcher" / "steam_events.json";
    fs::create_directory(folder / "local");
    mkfifo(clock.c_str(), S_IRUSR | S_IWUSR);
    // For reading too: so it can be opened, and keeps what is written, before the helper reads from it.
    m_Clock = open(clock.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);

    m_Variables["TOLLMERE_PIPE_DIR"] = pipes.string();
    m_Variables["TOLLMERE_PROGRAM_DATA"] = programData.string();
    m_Variables["TOLLMERE_LOCAL_APP_DATA"] = (folder / "local").string();
    m_Variables["TOLLMERE_TEST_CLOCK"] = clock.string();
    for (const char* const name : {"TOLLMERE_PIPE_DIR", "TOLLMERE_PROGRAM_DATA", "TOLLMERE_LOCAL_APP_DATA"}) {
        setenv(name, m_Variables[name]->c_str(), 1);
    }
}

Machine::~Machine() {
    if (m_Clock >= 0) close(m_Clock);
}

void Machine::RegisterSteam(std::uint32_t processId) {
    setenv("HOME", m_Home.c_str(), 1);
    fs::create_directories(m_Home / ".steam");
    std::ofstream(m_Home / ".steam" / "steam.pid") << processId;
}

void Machine::LetPass(std::chrono::milliseconds time) {
    const std::string line = std::to_string(time.count()) + "\n";
    // When the FIFO is full the helper has more than enough to read.
    [[maybe_unused]] const ssize_t written = write(m_Clock, line.data(), line.size());
}

void Machine::TakeBackTime() {
    char ignored[4096];
    while (read(m_Clock, ignored, sizeof ignored) > 0) {
    }
}

}  // namespace e2e
