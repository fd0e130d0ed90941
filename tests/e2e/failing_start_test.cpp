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
    // The whole log, with `found` for what was found in the surroundings and `why` for what then went wrong. The page
    // for support staff tells it from the others.
    void ExpectFailure(const char* heading, const Lines& found, const Lines& why, const char* verdict) {
        fs::remove(Surroundings().LogFile());
        Start();
        ExpectEnd();
        ExpectLog(Join({Preamble(), found, why,
                        Lines{verdict, "SteamService :: SetState (0 -> 3) (Idle -> Invalid)", "Cancel shutdown.",
                              "Process exiting with code 0."}}));
        ExpectShown("How every start begins");
        ExpectVerdict(heading);
        EXPECT_FALSE(Launcher().TryOpen(kPipeName));
    }
    void ExpectSteamFailure(const char* heading, const Lines& why) {
        ExpectFailure(heading, SurroundingsFromEnvironment(), why, "Failed to initialize Steam API");
    }
    std::string SecondAttempt() const {
        return "Attempting initialization of Steam API from game directory: " + HomeText();
    }
};

TEST_F(FailingStart, WithoutAnAppId) {
    variables["SteamAppId"] = std::nullopt;
    ExpectFailure(
        "No app id",
        {"Could not find steam app id from environment.", "Processed Steam Location from Environment: " + HomeText(),
         "InitClass :: AppId=0", "InitClass :: Location=" + HomeText()},
        {"Invalid steam app id", "Not enough info provided to run Steam."}, "Steam did not initialize");
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(FailingStart, WithoutTheSteamDll) {
    const std::string path = HomeText() + "\\steam_api64.dll";
    RemoveStandIn();
    ExpectSteamFailure("No Steam library", {"Steam DLL could not be loaded from '" + path + "'", kError});
}

TEST_F(FailingStart, WithAnExportMissing) {
    for (const std::string name :
         {"SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_RegisterCallback", "SteamAPI_UnregisterCallback",
          "SteamAPI_GetHSteamUser", "SteamAPI_GetHSteamPipe", "SteamAPI_RunCallbacks", "SteamClient"}) {
        SCOPED_TRACE(name);
        UseStandIn(BinFolder() / "stand_in_variants" / ("steam_api64_without_" + name + ".dll"));
        ExpectSteamFailure("A Steam library without a function", {"Could not map function: " + name, kError});
    }
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(FailingStart, WhenSteamRefuses) {
    variables["STEAM_STAND_IN_INIT"] = "fail";
    ExpectSteamFailure("Steam refuses", {kFirstAttempt, SecondAttempt(), kError});

    // A directory that isn't there rules the second attempt out.
    const std::string missing = HomeText() + "-missing";
    variables["SteamLocation"] = missing;
    ExpectFailure(
        "Steam refuses, and there is no game directory",
        {"Processed SteamAppID from Environment: 480", "Processed Steam Location from Environment: " + missing,
         "InitClass :: AppId=480", "InitClass :: Location=" + missing},
        {kFirstAttempt, kError}, "Failed to initialize Steam API");
}

TEST_F(FailingStart, WhenAnInterfaceIsMissing) {
    variables["STEAM_STAND_IN_NULL"] = "SteamUser";
    ExpectSteamFailure("Steam without an interface",
                       {kFirstAttempt, "SteamAPI_Init completed, requesting Steam interfaces.", kError});
    EXPECT_THAT(SteamCalls(), Not(HasSubstr("SteamAPI_RegisterCallback")));
}

}  // namespace

}  // namespace e2e
