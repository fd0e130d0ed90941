// docs/operations.md tells from a log which start failed: each failing start's log is held against the page.

#include "tests/e2e/operations_page.h"

#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

class Operations : public HelperFixture {
  protected:
    void ExpectVerdict(const std::string& heading) {
        EXPECT_THAT(page.Verdicts(Log()), testing::ElementsAre(heading)) << testing::PrintToString(Log());
    }
    void ExpectFailure(const std::string& heading) {
        std::filesystem::remove(Surroundings().LogFile());
        Start();
        ExpectEnd();
        ExpectVerdict(heading);
    }
    void ExpectShown(const std::string& heading) {
        EXPECT_TRUE(page.Shows(heading, Log())) << heading << testing::PrintToString(Log());
    }

    const OperationsPage page;
};

TEST_F(Operations, ThePageTellsFailingStartsApart) {
    variables["SteamAppId"] = std::nullopt;
    ExpectFailure("No app id");
    variables["SteamAppId"] = "480";

    variables["STEAM_STAND_IN_NULL"] = "SteamUser";
    ExpectFailure("Steam without an interface");
    variables["STEAM_STAND_IN_INIT"] = "fail";
    ExpectFailure("Steam refuses");
    variables["SteamLocation"] = HomeText() + "-missing";
    ExpectFailure("Steam refuses, and there is no game directory");

    UseStandIn(BinFolder() / "stand_in_variants" / "steam_api64_without_SteamClient.dll");
    ExpectFailure("A Steam library without a function");
    RemoveStandIn();
    ExpectFailure("No Steam library");
}

TEST_F(Operations, ThePageTellsASecondHelper) {
    StartService();
    test_support::ChildProcess second({Home() / ProgramFile("tollmere_steam_helper"), arguments, variables, Home()});
    EXPECT_EQ(second.WaitForExit(), 0);
    ExpectVerdict("The pipe is taken");
    CloseFromOutside();
}

TEST_F(Operations, ThePageShowsAVisit) {
    StartService();
    Connect();
    Send(launcher::LaunchRequest(1, test_support::ToUtf8(BinFolder() / ProgramFile("sample_game")), HomeText(), ""));
    EXPECT_THAT(Receive(), testing::StartsWith("launch_response:1:"));
    Leave();
    Connect();
    ExpectService(2);  // all lines of the first visit are written
    CloseFromOutside();
    ExpectShown("A launcher comes and has a game started");
    ExpectShown("A launcher leaves");
}

TEST_F(Operations, ThePageShowsAStartThatNoLauncherFollows) {
    variables["STEAM_STAND_IN_CALLBACKS"] = kSecondPump;  // the line of a ticket's confirmation could come in anywhere
    StartService();
    ExpectEndByTimeout();
    ExpectShown("How every start begins");
    ExpectShown("A good start");
    ExpectVerdict("The end");
}

}  // namespace

}  // namespace e2e
