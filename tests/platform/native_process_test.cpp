// What the layer promises of processes beyond the common contract.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "diagnostics/text.h"
#include "platform/error_mode.h"
#include "support/limits.h"
#include "support/temp_folder.h"

namespace {

// The process's id; 0 if it could not be started.
DWORD StartShell(const std::string& script) {
    WideString line = Utf8ToWide(("sh -c \"" + script + "\"").c_str());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    const NoErrorDialogs scope;
    if (!CreateProcessW(u"/bin/sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return 0;
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return process.dwProcessId;
}

TEST(NativeProcess, AChildInheritsNoDescriptorAndNoSignalMask) {
    const support::TempFolder folder;
    const std::string report = (folder.Path() / "report").string();
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const int inheritable = dup(STDERR_FILENO);
    ASSERT_NE(StartShell("{ readlink /proc/$$/fd/0 /proc/$$/fd/2 /proc/$$/fd/" + std::to_string(inheritable) +
                         "; grep SigBlk /proc/self/status; } > " + report + ".part; mv " + report + ".part " + report),
              0u);
    ASSERT_TRUE(support::WaitUntil([&] { return std::filesystem::exists(report); }));
    close(inheritable);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(support::ReadAll(report), "/dev/null\n/dev/null\nSigBlk:\t0000000000000000\n");
}

// Each shell has a child for a moment, all the time. The snapshots come upon one between its being listed and being
// read.
TEST(NativeProcess, AListMayBeTakenWhileProcessesEnd) {
    std::vector<pid_t> shells(4);
    for (pid_t& shell : shells) shell = static_cast<pid_t>(StartShell("while :; do (:); done"));
    EXPECT_NO_THROW({
        for (int i = 0; i < 1000; ++i) CloseHandle(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    });
    for (const pid_t shell : shells) EXPECT_TRUE(shell > 0 && kill(shell, SIGKILL) == 0);
}

TEST(NativeProcess, AChildIsReapedAndOthersAreLeftAlone) {
    pid_t own = 0;
    std::string arguments[] = {"sh", "-c", "exit 7"};
    char* const argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
    ASSERT_EQ(posix_spawn(&own, "/bin/sh", nullptr, nullptr, argv, environ), 0);
    const auto child = static_cast<pid_t>(StartShell("exit 3"));
    ASSERT_GT(child, 0);
    EXPECT_TRUE(support::WaitUntil([&] { return kill(child, 0) != 0; })) << "no zombie";
    int status = 0;
    EXPECT_EQ(waitpid(own, &status, 0), own);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace
