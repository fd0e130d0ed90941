#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/environment.h"
#include "platform/posix/error_mode.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/wait_thread.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

static_assert(sizeof(STARTUPINFOW) == 104);

// Where coverage is counted, writes the counts. A process that ends in order does so by itself.
extern "C" __attribute__((weak)) void __gcov_dump();  // NOLINT(bugprone-reserved-identifier)

namespace {

// What the two handles of a started process stand for: nothing can be done with them but to close them.
class StartedProcess : public Object {};

// How a child begins: in a group of its own, which the terminal's signals for ours don't reach, with no signal blocked
// or ignored, with none of our descriptors.
class SpawnSettings {
  public:
    explicit SpawnSettings(const std::string& directory) {
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&m_Attributes);
        posix_spawnattr_setsigmask(&m_Attributes, &none);
        posix_spawnattr_setsigdefault(&m_Attributes, &all);
        posix_spawnattr_setpgroup(&m_Attributes, 0);
        posix_spawnattr_setflags(&m_Attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_init(&m_Actions);
        posix_spawn_file_actions_addopen(&m_Actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_Actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&m_Actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&m_Actions, STDERR_FILENO + 1);
        if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&m_Actions, directory.c_str());
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&m_Actions);
        posix_spawnattr_destroy(&m_Attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    int Spawn(pid_t& id, const std::string& file, std::vector<std::string>& arguments) const {
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        const std::lock_guard lock(EnvironmentLock());
        return posix_spawn(&id, file.c_str(), &m_Actions, &m_Attributes, argv.data(), environ);
    }

  private:
    posix_spawnattr_t m_Attributes;
    posix_spawn_file_actions_t m_Actions;
};

// Nobody waits for the child, so the wait thread reaps it: this child alone, no other.
void ReapAtItsEnd(pid_t id) {
    // glibc 2.36 declares its own function for C alone.
    const int process = static_cast<int>(syscall(SYS_pidfd_open, id, 0));
    if (process < 0) return;
    const std::lock_guard lock(LayerLock());
    const auto watch = std::make_shared<WatchId>();
    *watch = AddWatch(process, [process, watch] {
        siginfo_t ignored;
        waitid(P_PIDFD, static_cast<id_t>(process), &ignored, WEXITED | WNOHANG);
        RemoveWatch(*watch);
        close(process);
    });
    ArmWatch(*watch, EPOLLIN);
}

std::vector<std::string> SplitArguments(LPCWSTR commandLine) {
    int count = 0;
    LPWSTR* const split = CommandLineToArgvW(commandLine, &count);
    std::vector<std::string> arguments;
    arguments.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) arguments.push_back(ToUtf8(split[i]));
    LocalFree(split);
    return arguments;
}

// False, with the last error. Looked at beforehand, because the start itself doesn't say which of the two is missing.
bool CanStart(const std::string& file, const std::string& directory, bool hasDirectory) {
    struct stat status;
    if (stat(file.c_str(), &status) != 0) {
        SetLastErrorFromErrno(file);
        return false;
    }
    if (!S_ISREG(status.st_mode)) return WithLastError(ERROR_ACCESS_DENIED, false);
    if (hasDirectory && (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)))
        return WithLastError(ERROR_DIRECTORY, false);
    return true;
}

}  // namespace

BOOL CreateProcessW(LPCWSTR applicationName, LPWSTR commandLine, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*,
                    BOOL inheritHandles, DWORD flags, void* environment, LPCWSTR currentDirectory, STARTUPINFOW*,
                    PROCESS_INFORMATION* information) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    if (applicationName == nullptr || inheritHandles || flags != 0 || environment != nullptr)
        return WithLastError(ERROR_INVALID_PARAMETER, FALSE);
    const bool hasDirectory = currentDirectory != nullptr;
    const std::string directory = hasDirectory ? ToNativePath(currentDirectory) : std::string();
    if (!CanStart(ToNativePath(applicationName), directory, hasDirectory)) return FALSE;

    // The child changes its directory before it looks for the file, which is meant from here.
    std::error_code ignored;
    const std::string file = std::filesystem::absolute(ToNativePath(applicationName), ignored).string();
    const bool hasArguments = commandLine != nullptr && *commandLine != 0;
    std::vector<std::string> arguments =
        hasArguments ? SplitArguments(commandLine) : std::vector{ToUtf8(applicationName)};
    ExpectNoDialog(__func__);
    pid_t id = 0;
    errno = SpawnSettings(directory).Spawn(id, file, arguments);
    if (errno != 0) {
        SetLastErrorFromErrno(file);
        return FALSE;
    }
    ReapAtItsEnd(id);
    *information = {AddHandle(std::make_shared<StartedProcess>()), AddHandle(std::make_shared<StartedProcess>()),
                    static_cast<DWORD>(id), static_cast<DWORD>(id)};
    return TRUE;
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

BOOL TerminateProcess(HANDLE process, UINT exitCode) {
    if (process == GetCurrentProcess()) {
        if (__gcov_dump != nullptr) __gcov_dump();
        _exit(static_cast<int>(exitCode));
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

DWORD GetCurrentProcessId() {
    static const auto id = static_cast<DWORD>(getpid());
    return id;
}

DWORD GetCurrentThreadId() {
    thread_local const auto id = static_cast<DWORD>(gettid());
    return id;
}
