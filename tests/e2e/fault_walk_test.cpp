// Every call of the platform that the program makes fails once in the course of a life: at its first, its second or a
// later time. Whatever that costs, the process comes to an orderly end, leaves no handle open, and the log says what it
// can.

#include <fstream>
#include <string>
#include <string_view>

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

// What becomes of a life in which a call fails.
enum class Fate {
    Serves,        // both visits get all answers
    LosesOne,      // the first visit doesn't, the second does
    NeverServes,   // the service doesn't come up, and the process ends by itself
    EndsWithCode1  // at once
};

struct Life {
    std::optional<int> exitCode;
    bool visits[2] = {false, false};
    int pendingFaults = -1;
    int handles = -1;  // open at the end

    Fate MyFate() const {
        if (exitCode == 1) return Fate::EndsWithCode1;
        if (!visits[1]) return Fate::NeverServes;
        return visits[0] ? Fate::Serves : Fate::LosesOne;
    }
};

class FaultWalk : public HelperFixture {
  protected:
    FaultWalk() {
        variables["SteamLocation"] = std::nullopt;  // so that the parent process is looked for
        arguments = {"-steamAppID=480"};            // so that the environment is changed
        variables["STEAM_STAND_IN_INIT"] = "fail-first";
        variables["ASAN_OPTIONS"] = "exitcode=99";  // not one of the helper's own
        variables["TOLLMERE_TEST_REPORT"] = test_support::ToUtf8(Home() / "report");
        variables["TOLLMERE_DEBUG_OUTPUT"] = test_support::ToUtf8(Home() / "lines");
    }

    // A life with two visits, as far as it gets.
    Life LiveThrough(const std::string& faults) {
        variables["TOLLMERE_TEST_FAULTS"] = faults;
        LeaveFilesBehind(faults);
        Surroundings().TakeBackTime();
        Start();
        Life life;
        for (int i = 0; i < 2; ++i) life.visits[i] = Visit(i + 1);
        Surroundings().LetPass(std::chrono::seconds{21});
        // Again and again: the first may be the one that fails.
        test_support::WaitUntil([&] {
            Helper().RequestClose();
            return !Helper().IsRunning();
        });
        life.exitCode = Helper().WaitForExit();
        std::ifstream(Home() / "report") >> life.pendingFaults >> life.handles;
        return life;
    }

    void ExpectInLog(const std::string& line) { EXPECT_THAT(Log(), testing::Contains(testing::StartsWith(line))); }

  private:
    // What an earlier life has left: a store that is damaged or, to be made, not there; a log that is due for its
    // rotation or not there.
    void LeaveFilesBehind(const std::string& faults) {
        namespace fs = std::filesystem;
        const fs::path folder = fs::path(*variables["TOLLMERE_LOCAL_APP_DATA"]) / "Tollmere Games";
        fs::remove_all(folder);
        fs::remove(Surroundings().LogFile());
        fs::remove(Home() / "report");
        fs::remove(Home() / "lines");
        if (!faults.starts_with("CreateDirectoryW")) {
            fs::create_directories(folder / "Launcher");
            std::ofstream(folder / "Launcher" / "steam_events.json") << "damaged";
        }
        if (faults.starts_with("MoveFileW")) std::ofstream(Surroundings().LogFile()) << std::string(1 << 20, '\n');
    }

    // True if all that was asked was answered.
    bool Visit(int number) {
        const auto isDecided = [&] { return IsServed(number) || !Helper().IsRunning(); };
        if (!test_support::WaitUntil(isDecided) || !Launcher().IsOpen()) {
            return false;
        }
        bool answered = true;
        const std::string game = test_support::ToUtf8(BinFolder() / ProgramFile("sample_game"));
        for (const std::string& request :
             {std::string("info_request:1"), launcher::LaunchRequest(2, game, HomeText(), ""),
              std::string("info_request:3")}) {
            std::string answer;
            // A helper that doesn't notice the request answers none.
            answered = Launcher().Write(launcher::MakeFrame(request), test_support::Limit()) == Outcome::Done &&
                       Launcher().Read(answer, test_support::Limit() / 10) == Outcome::Done;
            if (!answered) break;
        }
        Leave();
        return answered;
    }

    // One try, once the helper waits for so many clients: who comes between a pipe's creation and its listening ends
    // the start. Without a pipe the helper's time runs out.
    bool IsServed(int visit) {
        const std::string lines = test_support::ReadAll(Home() / "lines");
        int waits = 0;
        for (std::size_t at = 0; (at = lines.find("Waiting for pipe to connect...", at)) != std::string::npos; ++at)
            ++waits;
        if (waits >= visit && Launcher().Open(kPipeName, std::chrono::milliseconds{0})) return true;
        Surroundings().LetPass(std::chrono::milliseconds{20});
        return false;
    }
};

class FaultWalkAfter : public FaultWalk, public testing::WithParamInterface<int> {};

// What becomes of the process if a call's first time fails. Not here: GetWindowLongPtrW and SetWindowLongPtrW, which
// can't fail on a window of one's own, and the calls that read the registry, which are made only for who is no
// administrator.
constexpr struct {
    const char* call;
    Fate fate;
    const char* line = nullptr;  // how a line of the log then begins, if one tells
} kCalls[] = {
    {"AllocateAndInitializeSid", Fate::Serves},
    {"CheckTokenMembership", Fate::Serves},
    {"CloseHandle", Fate::Serves},
    {"CommandLineToArgvW", Fate::Serves},
    {"ConnectNamedPipe", Fate::NeverServes, "Unable to connect pipe."},
    {"CreateDirectoryW", Fate::Serves},
    {"CreateEventW", Fate::Serves},
    {"CreateFileW", Fate::Serves},
    {"CreateNamedPipeA", Fate::NeverServes, "Unable to create pipe."},
    {"CreateProcessW", Fate::Serves, "Failed to create process"},
    {"CreateToolhelp32Snapshot", Fate::NeverServes, "Could not get a valid snapshot of the process."},
    {"CreateWellKnownSid", Fate::NeverServes, "Failed to create SID."},
    {"CreateWindowExW", Fate::EndsWithCode1, "Failed to initialize message window. Aborting process with code 1."},
    {"DeleteFileW", Fate::Serves},
    {"DestroyWindow", Fate::Serves},
    {"DisconnectNamedPipe", Fate::Serves, "Failed to disconnect pipe."},
    {"FormatMessageA", Fate::Serves},
    {"FreeLibrary", Fate::Serves},
    {"GetCurrentDirectoryW", Fate::NeverServes},
    {"GetEnvironmentVariableA", Fate::Serves},
    {"GetEnvironmentVariableW", Fate::Serves},
    {"GetFileAttributesW", Fate::Serves},
    {"GetFileSizeEx", Fate::Serves},
    {"GetMessageW", Fate::NeverServes},
    {"GetModuleFileNameW", Fate::NeverServes},
    {"GetModuleHandleW", Fate::Serves},
    {"GetOverlappedResult", Fate::LosesOne, "Failed to read from pipe."},
    {"GetProcAddress", Fate::NeverServes},
    {"InitializeSecurityDescriptor", Fate::NeverServes, "Failed to init SD."},
    {"K32EnumProcessModules", Fate::NeverServes},
    {"K32GetModuleFileNameExW", Fate::NeverServes},
    {"LoadLibraryExW", Fate::NeverServes, "Steam DLL could not be loaded from '"},
    {"MoveFileW", Fate::Serves},
    {"MultiByteToWideChar", Fate::Serves},
    {"OpenProcess", Fate::NeverServes, "Could not do OpenProcess on parent process."},
    {"PathFileExistsW", Fate::NeverServes},
    {"PostMessageW", Fate::Serves},
    {"Process32FirstW", Fate::NeverServes, "Could not get the process information from the snapshot."},
    {"Process32NextW", Fate::NeverServes},
    {"ReadFile", Fate::LosesOne, "Error reading from pipe."},
    {"RegisterClassExW", Fate::EndsWithCode1, "Failed to initialize message window. Aborting process with code 1."},
    {"RegisterWaitForSingleObject", Fate::Serves},
    {"SHGetKnownFolderPath", Fate::Serves},
    {"SetCurrentDirectoryW", Fate::NeverServes},
    {"SetEntriesInAclW", Fate::NeverServes, "Failed to set entries in ACL."},
    {"SetEnvironmentVariableA", Fate::Serves},
    {"SetFilePointer", Fate::Serves},
    {"SetSecurityDescriptorDacl", Fate::NeverServes, "Failed to set SD DACL."},
    {"SystemTimeToFileTime", Fate::Serves},
    {"UnregisterWaitEx", Fate::Serves},
    {"WideCharToMultiByte", Fate::Serves},
    {"WriteFile", Fate::Serves},
};

// The call itself leaves one, or, at the start, the pipe is the end of the process's to close.
bool MayLeaveAHandle(std::string_view call) {
    return call == "CloseHandle" || call == "UnregisterWaitEx" || call == "ConnectNamedPipe" || call == "CreateEventW";
}

TEST_P(FaultWalkAfter, EndsInOrder) {
    const int handles = LiveThrough("").handles;
    for (const auto& [call, fate, line] : kCalls) {
        SCOPED_TRACE(call);
        const Life life = LiveThrough(std::string(call) + ":8:" + std::to_string(GetParam()));
        EXPECT_TRUE(life.exitCode == 0 || life.exitCode == 1) << testing::PrintToString(life.exitCode);
        if (GetParam() == 0) {
            EXPECT_EQ(0, life.pendingFaults) << "the call was never made";
            EXPECT_EQ(fate, life.MyFate());
            if (line != nullptr) ExpectInLog(line);
        }
        if (life.pendingFaults != 0) {
            EXPECT_EQ(Fate::Serves, life.MyFate()) << "although nothing failed";
        }
        EXPECT_LE(life.handles, handles + (MayLeaveAHandle(call) ? 1 : 0));
        if (HasFailure()) return;
    }
}

// How many of the calls go well first.
INSTANTIATE_TEST_SUITE_P(Calls, FaultWalkAfter, testing::Values(0, 1, 2, 5));

// Where the first time is another one's.
TEST_F(FaultWalk, SaysWhatFailedLater) {
    const Fault faults[] = {
        {"GetProcAddress", 3, "Could not map function: SteamAPI_UnregisterCallback"},
        {"CreateEventW", 1, "Failed to create shutdown wait event."},
        {"RegisterWaitForSingleObject", 1, "Failed to schedule shutdown."},
        {"CreateEventW", 2, "Unable to create overlapped event."},
        {"RegisterWaitForSingleObject", 2, "Failed to start waiting on overlapped event."},
        {"WriteFile", 1, "Error writing to pipe."},
        {"CreateNamedPipeA", 1, "Unable to create pipe."},
        {"ConnectNamedPipe", 1, "Unable to connect pipe: 8 (0x8)"},
    };
    for (const Fault& fault : faults) {
        SCOPED_TRACE(std::string(fault.call) + " after " + std::to_string(fault.skip));
        LiveThrough(std::string(fault.call) + ":8:" + std::to_string(fault.skip));
        ExpectInLog(fault.line);
    }
}

}  // namespace

}  // namespace e2e
