#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

const char kFirstAttempt[] = "Attempting initialization of Steam API in current directory";
const char kError[] = "Error initializing Steam.";

// A start that comes to nothing ends the process at once, with code 0.
class FailingStart : public HelperFixture {
  protected:
    // The whole log, with `found` for what was found in the surroundings and `why` for what then went wrong.
    void ExpectFailure(const Lines& found, const Lines& why, const char* verdict, const Lines& options = {}) {
        fs::remove(Surroundings().LogFile());
        Start();
        ExpectEnd();
        ExpectLog(Join({Preamble(options), found, why,
                        Lines{verdict, "SteamService :: SetState (0 -> 3) (Idle -> Invalid)", "Cancel shutdown.",
                              "Process exiting with code 0."}}));
        EXPECT_FALSE(Launcher().TryOpen(kPipeName));
    }
    void ExpectSteamFailure(const Lines& why) {
        ExpectFailure(SurroundingsFromEnvironment(), why, "Failed to initialize Steam API");
    }
    std::string SecondAttempt() const {
        return "Attempting initialization of Steam API from game directory: " + HomeText();
    }
};

TEST_F(FailingStart, WithoutAnAppId) {
    const std::string notFound = "Could not find steam app id from environment.";
    const std::string found = "Processed SteamAppID from Environment: 480";
    const struct {
        std::optional<std::string> environment;
        std::vector<std::string> arguments;
        Lines options;
        Lines found;
    } rows[] = {
        {std::nullopt, {}, {}, {notFound}},
        {"no number", {}, {}, {}},
        {std::string(64, '1'), {}, {}, {}},
        {"480", {"-steamAppID=0"}, {" -steamappid=0"}, {found}},
        {std::nullopt, {"-steamAppID=99999999999"}, {" -steamappid=99999999999"}, {notFound}},
    };
    const Lines location = {"Processed Steam Location from Environment: " + HomeText(), "InitClass :: AppId=0",
                            "InitClass :: Location=" + HomeText()};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.environment.value_or("(not set)"));
        variables["SteamAppId"] = row.environment;
        arguments = row.arguments;
        Lines why = {"Invalid steam app id", "Not enough info provided to run Steam."};
        ExpectFailure(Join({row.found, location}), why, "Steam did not initialize", row.options);
    }
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(FailingStart, WithoutTheSteamDll) {
    const std::string path = HomeText() + "\\steam_api64.dll";
    RemoveStandIn();
    ExpectSteamFailure({"Steam DLL could not be loaded from '" + path + "'", kError});
}

TEST_F(FailingStart, WithAnExportMissing) {
    for (const std::string name :
         {"SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_RegisterCallback", "SteamAPI_UnregisterCallback",
          "SteamAPI_GetHSteamUser", "SteamAPI_GetHSteamPipe", "SteamAPI_RunCallbacks", "SteamClient"}) {
        SCOPED_TRACE(name);
        UseStandIn(BinFolder() / "stand_in_variants" / ("steam_api64_without_" + name + ".dll"));
        ExpectSteamFailure({"Could not map function: " + name, kError});
    }
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(FailingStart, WhenSteamRefuses) {
    variables["STEAM_STAND_IN_INIT"] = "fail";
    ExpectSteamFailure({kFirstAttempt, SecondAttempt(), kError});

    // A directory that isn't there rules the second attempt out.
    const std::string missing = HomeText() + "-missing";
    variables["SteamLocation"] = missing;
    ExpectFailure(
        {"Processed SteamAppID from Environment: 480", "Processed Steam Location from Environment: " + missing,
         "InitClass :: AppId=480", "InitClass :: Location=" + missing},
        {kFirstAttempt, kError}, "Failed to initialize Steam API");
}

TEST_F(FailingStart, WhenAnInterfaceOrAHandleIsMissing) {
    for (const char* const name :
         {"SteamClient", "HSteamUser", "HSteamPipe", "SteamUser", "SteamFriends", "SteamUtils", "SteamApps"}) {
        SCOPED_TRACE(name);
        variables["STEAM_STAND_IN_NULL"] = name;
        ExpectSteamFailure({kFirstAttempt, "SteamAPI_Init completed, requesting Steam interfaces.", kError});
    }
    EXPECT_THAT(SteamCalls(), Not(HasSubstr("SteamAPI_RegisterCallback")));
}

// What Steam can do without, and what helps it, doesn't fail the start.
TEST_F(FailingStart, IsAvertedByTheGamesDirectory) {
    variables["STEAM_STAND_IN_INIT"] = "only-in:" + HomeText();
    variables["STEAM_STAND_IN_NULL"] = "SteamUserStats,SteamController";
    StartService();
    Connect();
    ExpectService(1);
    CloseFromOutside();
    EXPECT_EQ(CountInLog(kFirstAttempt), 1);
    EXPECT_EQ(CountInLog(SecondAttempt()), 1);
    EXPECT_EQ(CountInLog("Steam initialized successfully"), 1);
}

}  // namespace

}  // namespace e2e
