#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using test_support::ToUtf8;
using testing::StartsWith;

class WholeRun : public HelperFixture {
  protected:
    // The lines of a pipe that is made and waits.
    static Lines Listening() {
        return {"Creating pipe [\\\\.\\pipe\\TollmereSteamHelper]", "Connecting pipe...",
                "Waiting for pipe to connect..."};
    }

    Lines Begin() const {
        const std::string parent = ToUtf8(BinFolder());
        return {std::string(33, '\\'),
                "Processing 1 command line arguments",
                " -steamappid=480",
                AdminState(),
                "SteamService :: Init",
                "Could not find steam app id from environment.",
                "Processed SteamAppID from Command Line: 480",
                "Could not find steam location from environment.",
                "Processed Parent Process Location: " + parent,
                "InitClass :: AppId=480",
                "InitClass :: Location=" + parent,
                "Attempting initialization of Steam API in current directory",
                "SteamAPI_Init completed, requesting Steam interfaces.",
                "Requesting steam auth session ticket.",
                "Steam initialized successfully",
                "Scheduling a shutdown in 20000 ms.",
                "SteamService :: SetState (0 -> 1) (Idle -> WaitForLauncher)"};
    }

    Lines Visit(const std::string& game, const std::string& directory, const std::string& processId) const {
        return {
            "OnGetAuthSessionTicketResponse: result (1), hAuthTicket (4097)", "Pipe connected.",
            "SteamService :: OnConnected", "SteamService :: SetState (1 -> 2) (WaitForLauncher -> WaitForGameLaunch)",
            "Cancel shutdown.", "Game launch was requested", "Game Exe: " + game, "Working Directory: " + directory,
            "Command Line: -level \"one two\"", "Original Command Line: \"" + HelperText() + "\" -steamAppID=480",
            "Launch Args: -steamAppID=480 -level \"one two\"", "Process created successfully. Process ID: " + processId,
            // The first if the launcher leaves before the next read has begun.
            testing::AnyOf("Error reading from pipe.", "Failed to read from pipe."),
            StartsWith("Last error: 109 (0x6d): "), "Disconnected.", "Destroying pipe..."};
    }
};

// Both builds say the same, line by line; only the ids and the paths differ.
TEST_F(WholeRun, LogsEachStep) {
    variables["SteamAppId"] = std::nullopt;
    variables["SteamLocation"] = std::nullopt;
    arguments = {"-steamAppID=480"};
    StartService();
    Connect();
    ExpectService(1);
    const std::string game = ToUtf8(BinFolder() / ProgramFile("sample_game"));
    Send(launcher::LaunchRequest(2, game, HomeText(), "-level \"one two\""));
    const std::string answer = Receive();
    EXPECT_THAT(answer, StartsWith("launch_response:2:"));
    const std::string processId = answer.substr(answer.rfind(':') + 1);
    Leave();
    ExpectEndByTimeout();

    ExpectLog(Join({Begin(), Listening(), Visit(game, HomeText(), processId), Listening(),
                    Lines{"Pipe disconnected.", "Scheduling a shutdown in 20000 ms.",
                          "Connection timed out, terminating.", "Steam Service ready to exit."},
                    EndOfService()}));
    EXPECT_THAT(SteamCalls(), testing::HasSubstr("SteamAPI_Shutdown"));
    for (const char* const heading :
         {"A good start", "A launcher comes and has a game started", "A launcher leaves", "The end"}) {
        ExpectShown(heading);
    }
    ExpectVerdict("The end");
}

}  // namespace

}  // namespace e2e
