#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "support/child_process.h"
#include "support/limits.h"

namespace support {

namespace {

std::vector<std::string> ChangedEnvironment(const Environment& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('=')))) result.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (value) result.push_back(name + "=" + *value);
    }
    return result;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

struct ChildProcess::State {
    // Takes the end of the process if it has come.
    void Look() {
        int status = 0;
        if (m_ExitCode || waitpid(m_Id, &status, WNOHANG) != m_Id) return;
        m_ExitCode = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

    pid_t m_Id = 0;
    std::optional<int> m_ExitCode;
};

ChildProcess::ChildProcess(const Start& start) : m_State(std::make_unique<State>()) {
    std::vector<std::string> arguments = {start.m_Program.string()};
    arguments.insert(arguments.end(), start.m_Arguments.begin(), start.m_Arguments.end());
    std::vector<std::string> environment = ChangedEnvironment(start.m_Changes);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, start.m_Directory.c_str());
    const int error = posix_spawn(&m_State->m_Id, start.m_Program.c_str(), &actions, nullptr,
                                  Pointers(arguments).data(), Pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), start.m_Program.string());
}

ChildProcess::~ChildProcess() {
    if (!IsRunning()) return;
    kill(m_State->m_Id, SIGKILL);
    waitpid(m_State->m_Id, nullptr, 0);
}

std::uint32_t ChildProcess::Id() const {
    return static_cast<std::uint32_t>(m_State->m_Id);
}

bool ChildProcess::IsRunning() {
    m_State->Look();
    return !m_State->m_ExitCode;
}

std::optional<int> ChildProcess::WaitForExit() {
    WaitUntil([&] { return !IsRunning(); });
    return m_State->m_ExitCode;
}

bool ChildProcess::RequestClose() {
    return IsRunning() && kill(m_State->m_Id, SIGTERM) == 0;
}

}  // namespace support
