// Every call of the platform that the program makes fails once in the course of a life: at its first, its second or a
// later time. The process then comes to an orderly end, leaves no handle open, and the log says what it can.

#include <string_view>

#include "tests/e2e/walk.h"

namespace e2e {

namespace {

// What becomes of a life in which a call fails.
enum class Fate {
    Serves,        // both visits get all answers
    LosesOne,      // the first visit doesn't, the second does
    NeverServes,   // the service doesn't come up, and the process ends by itself
    EndsWithCode1  // at once
};

Fate FateOf(const Life& life) {
    if (life.exitCode == 1) return Fate::EndsWithCode1;
    if (!life.visits[1]) return Fate::NeverServes;
    return life.visits[0] ? Fate::Serves : Fate::LosesOne;
}

class FaultWalk : public Walk, public testing::WithParamInterface<int> {
  protected:
    // `call` fails once, after it has gone well `skip` times.
    Life LiveThroughFault(const std::string& call, int skip) {
        variables["TOLLMERE_TEST_FAULTS"] = call + ":8:" + std::to_string(skip);
        std::filesystem::remove(LogFile());
        // A log that is due for its rotation, a store that is damaged or has to be made.
        if (call == "MoveFileW") std::ofstream(LogFile()) << std::string(1 << 20, '\n');
        return LiveThrough(call == "CreateDirectoryW" ? std::nullopt : std::optional("damaged"));
    }

    void ExpectInLog(const char* line) const { EXPECT_THAT(Log(), testing::Contains(testing::StartsWith(line))); }
};

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

TEST_P(FaultWalk, EndsInOrder) {
    const int handles = LiveThroughFault("None", 0).handles;
    for (const auto& [call, fate, line] : kCalls) {
        SCOPED_TRACE(call);
        const Life life = LiveThroughFault(call, GetParam());
        EXPECT_TRUE(life.exitCode == 0 || life.exitCode == 1) << testing::PrintToString(life.exitCode);
        if (GetParam() == 0) {
            EXPECT_EQ(0, life.pendingFaults) << "the call was never made";
            EXPECT_EQ(fate, FateOf(life));
            if (line != nullptr) ExpectInLog(line);
        }
        if (life.pendingFaults != 0) {
            EXPECT_EQ(Fate::Serves, FateOf(life)) << "although nothing failed";
        }
        EXPECT_LE(life.handles, handles + (MayLeaveAHandle(call) ? 1 : 0));
        if (HasFailure()) return;
    }
}

// How many of the calls go well first.
INSTANTIATE_TEST_SUITE_P(After, FaultWalk, testing::Values(0, 1, 2, 5));

// Where the first time is another one's.
TEST_F(FaultWalk, SaysWhatFailedLater) {
    struct {
        const char* call;
        int skip;
        const char* line;
    } const rows[] = {
        {"GetProcAddress", 3, "Could not map function: SteamAPI_UnregisterCallback"},
        {"CreateEventW", 1, "Failed to create shutdown wait event."},
        {"RegisterWaitForSingleObject", 1, "Failed to schedule shutdown."},
        {"CreateEventW", 2, "Unable to create overlapped event."},
        {"RegisterWaitForSingleObject", 2, "Failed to start waiting on overlapped event."},
        {"WriteFile", 1, "Error writing to pipe."},
        {"CreateNamedPipeA", 1, "Unable to create pipe."},
        {"ConnectNamedPipe", 1, "Unable to connect pipe: 8 (0x8)"},
    };
    for (const auto& [call, skip, line] : rows) {
        SCOPED_TRACE(line);
        LiveThroughFault(call, skip);
        ExpectInLog(line);
    }
}

}  // namespace

}  // namespace e2e
