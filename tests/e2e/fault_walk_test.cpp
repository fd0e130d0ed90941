// Every call of the platform that the program makes fails once in the course of a life: at its first, its second or a
// later time. Whatever that costs, the process comes to an orderly end, and the log says what it can.

#include <string>

#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

using launcher::Outcome;

struct Fault {
    const char* call;
    int skip;          // calls of it that go well first
    const char* line;  // how a line of the log then begins
};

class FaultWalk : public HelperFixture {
  protected:
    FaultWalk() {
        variables["SteamLocation"] = std::nullopt;  // so that the parent process is looked for
        variables["STEAM_STAND_IN_INIT"] = "fail-first";
        variables["ASAN_OPTIONS"] = "exitcode=99";  // not one of the helper's own
    }

    // A life with two visits, as far as it gets.
    void LiveThrough() {
        namespace fs = std::filesystem;
        fs::remove(Surroundings().LogFile());
        Surroundings().TakeBackTime();
        Start();
        Visit();
        Visit();
        Surroundings().LetPass(std::chrono::seconds{21});
        Helper().RequestClose();
        const std::optional<int> code = Helper().WaitForExit();
        EXPECT_TRUE(code == 0 || code == 1) << testing::PrintToString(code);
    }

    void ExpectInLog(const std::string& line) { EXPECT_THAT(Log(), testing::Contains(testing::StartsWith(line))); }

  private:
    void Visit() {
        if (!test_support::WaitUntil([&] { return IsServed() || !Helper().IsRunning(); }) || !Launcher().IsOpen())
            return;
        const std::string game = test_support::ToUtf8(BinFolder() / ProgramFile("sample_game"));
        for (const std::string& request :
             {std::string("info_request:1"), launcher::LaunchRequest(2, game, HomeText(), ""),
              std::string("info_request:3")}) {
            std::string answer;
            if (Launcher().Write(launcher::MakeFrame(request), test_support::Limit()) != Outcome::Done) break;
            // A helper that doesn't notice the request answers none.
            if (Launcher().Read(answer, std::chrono::milliseconds{200}) != Outcome::Done) break;
        }
        Leave();
    }

    // One try. Without a pipe the helper's time runs out.
    bool IsServed() {
        if (Launcher().Open(kPipeName, std::chrono::milliseconds{0})) return true;
        Surroundings().LetPass(std::chrono::milliseconds{20});
        return false;
    }
};

class FaultWalkAfter : public FaultWalk, public testing::WithParamInterface<int> {};

TEST_P(FaultWalkAfter, EndsInOrder) {
    // Without those that can't fail on a window of one's own: GetWindowLongPtrW and SetWindowLongPtrW.
    const char* const calls[] = {
        // clang-format off
        "AllocateAndInitializeSid", "CheckTokenMembership", "CloseHandle", "CommandLineToArgvW", "ConnectNamedPipe",
        "CreateDirectoryW", "CreateEventW", "CreateFileW", "CreateNamedPipeA", "CreateProcessW",
        "CreateToolhelp32Snapshot", "CreateWellKnownSid", "CreateWindowExW", "DeleteFileW", "DestroyWindow",
        "DisconnectNamedPipe", "FormatMessageA", "FreeLibrary", "GetCurrentDirectoryW", "GetEnvironmentVariableA",
        "GetEnvironmentVariableW", "GetFileAttributesW", "GetFileSizeEx", "GetMessageW", "GetModuleFileNameW",
        "GetOverlappedResult", "GetProcAddress", "InitializeSecurityDescriptor",
        "K32EnumProcessModules", "K32GetModuleFileNameExW", "LoadLibraryExW", "MoveFileW", "MultiByteToWideChar",
        "OpenProcess", "PathFileExistsW", "PostMessageW", "Process32FirstW", "Process32NextW", "ReadFile",
        "RegOpenKeyExW", "RegQueryValueExW", "RegisterClassExW", "RegisterWaitForSingleObject", "SHGetKnownFolderPath",
        "SetCurrentDirectoryW", "SetEntriesInAclW", "SetEnvironmentVariableA", "SetFilePointer",
        "SetSecurityDescriptorDacl", "SystemTimeToFileTime", "UnregisterWaitEx",
        "WideCharToMultiByte", "WriteFile",
        // clang-format on
    };
    for (const char* const call : calls) {
        SCOPED_TRACE(call);
        variables["TOLLMERE_TEST_FAULTS"] = std::string(call) + ":8:" + std::to_string(GetParam());
        LiveThrough();
        if (HasFailure()) return;
    }
}

// How many of the calls go well first.
INSTANTIATE_TEST_SUITE_P(Calls, FaultWalkAfter, testing::Values(0, 1, 2, 5));

TEST_F(FaultWalk, SaysWhatFailed) {
    const Fault faults[] = {
        {"CreateWindowExW", 0, "Failed to initialize message window. Aborting process with code 1."},
        {"RegisterClassExW", 0, "Failed to initialize message window. Aborting process with code 1."},
        {"CreateToolhelp32Snapshot", 0, "Could not get a valid snapshot of the process."},
        {"Process32FirstW", 0, "Could not get the process information from the snapshot."},
        {"OpenProcess", 0, "Could not do OpenProcess on parent process."},
        {"LoadLibraryExW", 0, "Steam DLL could not be loaded from '"},
        {"GetProcAddress", 3, "Could not map function: SteamAPI_UnregisterCallback"},
        {"CreateEventW", 1, "Failed to create shutdown wait event."},
        {"RegisterWaitForSingleObject", 1, "Failed to schedule shutdown."},
        {"CreateWellKnownSid", 0, "Failed to create SID."},
        {"SetEntriesInAclW", 0, "Failed to set entries in ACL."},
        {"InitializeSecurityDescriptor", 0, "Failed to init SD."},
        {"SetSecurityDescriptorDacl", 0, "Failed to set SD DACL."},
        {"CreateNamedPipeA", 0, "Unable to create pipe."},
        {"CreateEventW", 2, "Unable to create overlapped event."},
        {"RegisterWaitForSingleObject", 2, "Failed to start waiting on overlapped event."},
        {"ConnectNamedPipe", 0, "Unable to connect pipe."},
        {"ReadFile", 0, "Error reading from pipe."},
        {"GetOverlappedResult", 0, "Failed to read from pipe."},
        {"WriteFile", 1, "Error writing to pipe."},
        {"CreateProcessW", 0, "Failed to create process"},
        {"DisconnectNamedPipe", 0, "Failed to disconnect pipe."},
        {"CreateNamedPipeA", 1, "Unable to create pipe."},
        {"ConnectNamedPipe", 1, "Unable to connect pipe: 8 (0x8)"},
    };
    for (const Fault& fault : faults) {
        SCOPED_TRACE(std::string(fault.call) + " after " + std::to_string(fault.skip));
        variables["TOLLMERE_TEST_FAULTS"] = std::string(fault.call) + ":8:" + std::to_string(fault.skip);
        LiveThrough();
        ExpectInLog(fault.line);
    }
}

}  // namespace

}  // namespace e2e
