// What the layer promises of processes, text and folders beyond the common contract.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "diagnostics/text.h"
#include "tests/support/limits.h"
#include "tests/support/temp_folder.h"

namespace {

// The process's id; 0 if it could not be started.
DWORD Start(LPCWSTR file, const std::string& commandLine) {
    WideString line = Utf8ToWide(commandLine.c_str());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(file, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) return 0;
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return process.dwProcessId;
}
DWORD StartShell(const std::string& script) {
    return Start(u"/bin/sh", "sh -c \"" + script + "\"");
}

TEST(NativeProcess, AChildInheritsNoDescriptorAndNoSignalMask) {
    const test_support::TempFolder folder;
    const std::string report = (folder.Path() / "report").string();
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const int inheritable = dup(STDERR_FILENO);
    ASSERT_NE(StartShell("{ readlink /proc/$$/fd/0 /proc/$$/fd/2 /proc/$$/fd/" + std::to_string(inheritable) +
                         "; grep SigBlk /proc/self/status; } > " + report + ".part; mv " + report + ".part " + report),
              0u);
    ASSERT_TRUE(test_support::WaitUntil([&] { return std::filesystem::exists(report); }));
    close(inheritable);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(test_support::ReadAll(report), "/dev/null\n/dev/null\nSigBlk:\t0000000000000000\n");
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
    EXPECT_TRUE(test_support::WaitUntil([&] { return kill(child, 0) != 0; })) << "no zombie";
    int status = 0;
    EXPECT_EQ(waitpid(own, &status, 0), own);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(NativeProcess, WithAnEmptyLineTheFilesNameStandsInItsPlace) {
    const DWORD child = Start(u"/usr/bin/yes", "");
    ASSERT_NE(child, 0u);
    // Empty while the system is still taking the program in.
    const std::string file = "/proc/" + std::to_string(child) + "/cmdline";
    std::string arguments;
    EXPECT_TRUE(test_support::WaitUntil([&] { return !(arguments = test_support::ReadAll(file)).empty(); }));
    EXPECT_EQ(arguments, std::string("/usr/bin/yes\0", 13));
    kill(static_cast<pid_t>(child), SIGKILL);
}

TEST(NativeText, OneReplacementForEachRunThatBeginsACharacter) {
    const std::pair<const char*, std::size_t> rows[] = {
        {"\xE0\x80\xAF", 3},      // overlong: no character begins so
        {"\xED\xA0\x80", 3},      // a surrogate: nor so
        {"\xF4\x90\x80\x80", 4},  // beyond the last character: nor so
    };
    for (const auto& [bytes, replacements] : rows) {
        EXPECT_EQ(Utf8ToWide(bytes), WideString(replacements, 0xFFFD)) << replacements;
    }
}

TEST(NativeFolders, TheEnvironmentChoosesThem) {
    const char* const variables[] = {"TOLLMERE_PROGRAM_DATA", "XDG_STATE_HOME", "HOME"};
    const struct {
        const char* values[3];
        const char* folder;
    } rows[] = {
        {{"/for/tests", "/state", "/home/me"}, "/for/tests"},
        {{nullptr, "/state", "/home/me"}, "/state"},
        {{nullptr, "", "/home/me"}, "/home/me/.local/state"},
        {{nullptr, nullptr, nullptr}, "none"},
    };
    char home[kPathCapacity] = {};
    GetEnvironmentVariableA("HOME", home, kPathCapacity);
    for (const auto& row : rows) {
        for (int i = 0; i < 3; ++i) SetEnvironmentVariableA(variables[i], row.values[i]);
        LPWSTR path = nullptr;
        const HRESULT result = SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &path);
        EXPECT_EQ(result == S_OK ? WideToUtf8(path) : "none", row.folder);
        CoTaskMemFree(path);
    }
    SetEnvironmentVariableA("HOME", home);
}

}  // namespace
