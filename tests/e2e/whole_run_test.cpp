#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

using support::ToUtf8;
using testing::StartsWith;
using Lines = std::vector<testing::Matcher<std::string>>;

// Both builds say the same, line by line; only the ids and the paths differ.
TEST_F(HelperFixture, LogsEachStepOfAWholeRun) {
    variables["SteamAppId"] = std::nullopt;
    variables["SteamLocation"] = std::nullopt;
    variables["STEAM_STAND_IN_CALLBACKS"] = "1:163:0110000001000000;1:331:01;1:331:00:result;2:331:null";
    arguments = {"-steamAppID=480"};
    StartService();
    Connect();
    ExpectService(1);
    Send(launcher::LaunchRequest(2, SampleGame(), HomeText(), "-level \"one two\""));
    const std::string answer = Receive();
    EXPECT_THAT(answer, StartsWith("launch_response:2:"));
    const std::string processId = answer.substr(answer.rfind(':') + 1);
    Leave();
    ExpectEndByTimeout();

    const std::string parent = ToUtf8(BinFolder());
    const std::string helper = ToUtf8(Home() / ProgramFile("tollmere_steam_helper"));
    const Lines expected = {
        std::string(33, '\\'), "Processing 1 command line arguments", " -steamappid=480",
        testing::AnyOf("Admin State: 1", "Admin State: 2", "Admin State: 3"), "SteamService :: Init",
        "Could not find steam app id from environment.", "Processed SteamAppID from Command Line: 480",
        "Could not find steam location from environment.", "Processed Parent Process Location: " + parent,
        "InitClass :: AppId=480", "InitClass :: Location=" + parent,
        "Attempting initialization of Steam API in current directory",
        "SteamAPI_Init completed, requesting Steam interfaces.", "Requesting steam auth session ticket.",
        "Steam initialized successfully", "Scheduling a shutdown in 20000 ms.",
        "SteamService :: SetState (0 -> 1) (Idle -> WaitForLauncher)",
        "Creating pipe [\\\\.\\pipe\\TollmereSteamHelper]", "Connecting pipe...", "Waiting for pipe to connect...",
        "OnGetAuthSessionTicketResponse: result (1), hAuthTicket (4097)", "Steam Overlay: activated",
        "Steam Overlay: closed", "Pipe connected.", "SteamService :: OnConnected",
        "SteamService :: SetState (1 -> 2) (WaitForLauncher -> WaitForGameLaunch)", "Cancel shutdown.",
        "Game launch was requested", "Game Exe: " + SampleGame(), "Working Directory: " + HomeText(),
        "Command Line: -level \"one two\"", "Original Command Line: \"" + helper + "\" -steamAppID=480",
        "Launch Args: -steamAppID=480 -level \"one two\"", "Process created successfully. Process ID: " + processId,
        // The first if the launcher leaves before the next read has begun.
        testing::AnyOf("Error reading from pipe.", "Failed to read from pipe."), StartsWith("Last error: 109 (0x6d): "),
        "Disconnected.", "Destroying pipe...", "Creating pipe [\\\\.\\pipe\\TollmereSteamHelper]", "Connecting pipe...",
        "Waiting for pipe to connect...", "Pipe disconnected.", "Scheduling a shutdown in 20000 ms.",
        "Connection timed out, terminating.", "Steam Service ready to exit.", "SteamService :: Shutdown",
        "Destroying pipe...", "Process exiting with code 0."};
    EXPECT_THAT(Log(), testing::ElementsAreArray(expected));
    EXPECT_THAT(SteamCalls(), testing::HasSubstr("SteamAPI_Shutdown"));
    for (const char* const heading :
         {"A good start", "A launcher comes and has a game started", "A launcher leaves", "The end"}) {
        ExpectShown(heading);
    }
    ExpectVerdict("The end");
}

}  // namespace

}  // namespace e2e
