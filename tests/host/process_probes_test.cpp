#include "host/process_probes.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "platform/posix/testing/faults.h"
#include "platform/posix/testing/probe_answers.h"
#include "support/temp_folder.h"
#include "tests/support/log_capture.h"

namespace {

// The state is computed once a process, so each of these runs in a process of its own.
int ExitWithState(bool administrator, std::optional<DWORD> enableLua, const char* failing) {
    platform_testing::SetAdministrator(administrator);
    platform_testing::SetEnableLua(enableLua);
    if (failing != nullptr) platform_testing::FailCall(failing, ERROR_ACCESS_DENIED);
    const AdminState first = GetAdminState();
    platform_testing::SetAdministrator(!administrator);
    return first == GetAdminState() ? static_cast<int>(first) : -1;
}

TEST(ProcessProbesDeathTest, TheAdminStateIsComputedOnceFromTokenAndRegistry) {
    struct {
        bool administrator;
        std::optional<DWORD> enableLua;  // User Account Control is off only if the registry says so
        const char* failing;
        int state;
    } const rows[] = {
        {true, 0, nullptr, 1},  {true, 1, "AllocateAndInitializeSid", 2}, {true, 0, "CheckTokenMembership", 3},
        {false, 0, nullptr, 3}, {false, 0, "RegOpenKeyExW", 2},           {false, 0, "RegQueryValueExW", 2},
        {false, 1, nullptr, 2}, {false, std::nullopt, nullptr, 2},
    };
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const auto& [administrator, enableLua, failing, state] : rows) {
        EXPECT_EXIT(std::exit(ExitWithState(administrator, enableLua, failing)), testing::ExitedWithCode(state), "");
    }
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
    const support::TempFolder folder;
    const fs::path shell = folder.Path() / std::string(200, 'a') / std::string(kPathCapacity - 200, 'b') / "sh";
    fs::create_directories(shell.parent_path());
    fs::copy_file("/bin/sh", shell);
    const std::string command = "TOLLMERE_LONG_PARENT=1 '" + shell.string() +
                                "' -c '\"$0\" --gtest_filter=*DoesNotFitIsNotUsed; exit $?' '" +
                                fs::read_symlink("/proc/self/exe").string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

}  // namespace
