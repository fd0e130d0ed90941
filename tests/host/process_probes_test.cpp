#include "host/process_probes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "platform/posix/testing/faults.h"
#include "platform/posix/testing/surroundings.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"

namespace {

using platform_testing::FailCall;
using platform_testing::SetEnableLua;

TEST(ProcessProbes, UacIsOffOnlyIfTheRegistrySaysSo) {
    SetEnableLua(0);
    EXPECT_TRUE(IsUacDisabled());
    for (const char* const call : {"RegOpenKeyExW", "RegQueryValueExW"}) {
        FailCall(call, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(IsUacDisabled()) << call;
    }
    SetEnableLua(1);
    EXPECT_FALSE(IsUacDisabled());
    SetEnableLua(std::nullopt);
    EXPECT_FALSE(IsUacDisabled());
}

// The state is computed once a process, so each of these runs in a process of its own.
int ExitWithState(bool administrator, std::optional<DWORD> enableLua, const char* failing) {
    platform_testing::SetAdministrator(administrator);
    SetEnableLua(enableLua);
    if (failing != nullptr) FailCall(failing, ERROR_ACCESS_DENIED);
    const AdminState first = GetAdminState();
    platform_testing::SetAdministrator(!administrator);
    return first == GetAdminState() ? static_cast<int>(first) : -1;
}

TEST(ProcessProbesDeathTest, TheAdminStateIsComputedOnceFromTokenAndRegistry) {
    struct {
        bool administrator;
        std::optional<DWORD> enableLua;
        const char* failing;
        int state;
    } const rows[] = {
        {true, 0, nullptr, 1},
        {false, 0, nullptr, 3},
        {false, 1, nullptr, 2},
        {false, std::nullopt, nullptr, 2},
        {true, 1, "AllocateAndInitializeSid", 2},
        {true, 0, "CheckTokenMembership", 3},
    };
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const auto& row : rows) {
        EXPECT_EXIT(_exit(ExitWithState(row.administrator, row.enableLua, row.failing)),
                    testing::ExitedWithCode(row.state), "");
    }
}

TEST(ProcessProbes, TheParentsDirectoryIsThatOfItsExecutable) {
    const auto parent = std::filesystem::read_symlink("/proc/" + std::to_string(getppid()) + "/exe");
    char directory[kPathCapacity] = "untouched";
    ASSERT_TRUE(GetParentProcessDirectory(directory));
    EXPECT_EQ(directory, parent.parent_path().string());
}

// A shell in such a folder runs this test once more, as its child.
TEST(ProcessProbes, AParentsPathThatDoesNotFitIsNotUsed) {
    namespace fs = std::filesystem;
    if (std::getenv("TOLLMERE_LONG_PARENT") != nullptr) {
        test_support::LogCapture log;
        char directory[kPathCapacity] = "untouched";
        EXPECT_FALSE(GetParentProcessDirectory(directory));
        EXPECT_STREQ(directory, "untouched");
        EXPECT_THAT(log.Lines(), testing::ElementsAre("Parent process location is too long and will not be used."));
        return;
    }
    const test_support::TempFolder folder;
    const fs::path shell = folder.Path() / std::string(200, 'a') / std::string(kPathCapacity - 200, 'b') / "sh";
    fs::create_directories(shell.parent_path());
    fs::copy_file("/bin/sh", shell);
    const std::string command = "TOLLMERE_LONG_PARENT=1 '" + shell.string() +
                                "' -c '\"$0\" --gtest_filter=*DoesNotFitIsNotUsed; exit $?' '" +
                                fs::read_symlink("/proc/self/exe").string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(ProcessProbes, AParentThatCannotBeFoundLeavesTheResultAlone) {
    struct {
        const char* call;
        const char* line;
    } const rows[] = {
        {"CreateToolhelp32Snapshot", "Could not get a valid snapshot of the process."},
        {"Process32FirstW", "Could not get the process information from the snapshot."},
        {"OpenProcess", "Could not do OpenProcess on parent process."},
        {"K32EnumProcessModules", nullptr},
        {"K32GetModuleFileNameExW", nullptr},
    };
    test_support::LogCapture log;
    log.ArmFlushTimer();
    const int handles = platform_testing::OpenHandleCount();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        FailCall(row.call, ERROR_ACCESS_DENIED);
        char directory[kPathCapacity] = "untouched";
        EXPECT_FALSE(GetParentProcessDirectory(directory));
        EXPECT_STREQ(directory, "untouched");
        const auto lines = log.Lines();
        EXPECT_EQ(lines.empty() ? "" : lines[0], row.line == nullptr ? std::string() : row.line);
        EXPECT_EQ(platform_testing::OpenHandleCount(), handles);
    }
}

}  // namespace
