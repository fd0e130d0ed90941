// What the layer promises of processes, folders and probes beyond the common contract.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "diagnostics/text.h"
#include "tests/support/limits.h"
#include "tests/support/temp_folder.h"

namespace {

DWORD StartShell(const std::string& script) {
    WideString line = Utf8ToWide(("sh -c \"" + script + "\"").c_str());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(u"/bin/sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        return 0;
    }
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return process.dwProcessId;
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

TEST(NativeProcess, WhatIsNoProgramIsRefused) {
    const test_support::TempFolder folder;
    const std::filesystem::path file = folder.Path() / "game";
    std::ofstream(file) << "text";
    const struct {
        mode_t mode;
        DWORD error;
    } rows[] = {{0644, ERROR_ACCESS_DENIED}, {0755, ERROR_BAD_EXE_FORMAT}};
    for (const auto& row : rows) {
        chmod(file.c_str(), row.mode);
        STARTUPINFOW startup = {};
        PROCESS_INFORMATION process = {};
        WCHAR line[] = {0};
        EXPECT_FALSE(CreateProcessW(Utf8ToWide(file.c_str()).c_str(), line, nullptr, nullptr, FALSE, 0, nullptr,
                                    nullptr, &startup, &process));
        EXPECT_EQ(GetLastError(), row.error);
    }
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
    char saved[3][kPathCapacity] = {};
    bool wasSet[3];
    for (int i = 0; i < 3; ++i) wasSet[i] = GetEnvironmentVariableA(variables[i], saved[i], kPathCapacity) != 0;

    const auto folder = [] {
        LPWSTR path = nullptr;
        const HRESULT result = SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &path);
        const std::string text = result == S_OK ? WideToUtf8(path) : "none";
        CoTaskMemFree(path);
        return text;
    };
    SetEnvironmentVariableA("TOLLMERE_PROGRAM_DATA", "/for/tests");
    SetEnvironmentVariableA("XDG_STATE_HOME", "/state");
    SetEnvironmentVariableA("HOME", "/home/me");
    EXPECT_EQ(folder(), "/for/tests");
    SetEnvironmentVariableA("TOLLMERE_PROGRAM_DATA", nullptr);
    EXPECT_EQ(folder(), "/state");
    SetEnvironmentVariableA("XDG_STATE_HOME", "");
    EXPECT_EQ(folder(), "/home/me/.local/state");
    SetEnvironmentVariableA("HOME", nullptr);
    EXPECT_EQ(folder(), "none");

    for (int i = 0; i < 3; ++i) SetEnvironmentVariableA(variables[i], wasSet[i] ? saved[i] : nullptr);
}

}  // namespace
