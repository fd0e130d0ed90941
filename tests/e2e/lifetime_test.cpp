#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

class Lifetime : public HelperFixture {};

TEST_F(Lifetime, EndsWhenItsWindowIsClosed) {
    for (const bool connected : {false, true}) {
        SCOPED_TRACE(connected);
        StartService();
        if (connected) {
            Connect();
            ExpectService(1);
        }
        CloseFromOutside();
        const std::vector<std::string> log = Log();
        ASSERT_GE(log.size(), 4u);
        EXPECT_THAT(
            std::vector<std::string>(log.end() - 4, log.end()),
            testing::ElementsAreArray(Join({Lines{testing::Not("Steam Service ready to exit.")}, EndOfService()})));
        Leave();
        std::filesystem::remove(Home().parent_path() / "steam_calls");
    }
}

// While the worker takes Steam up; the pipe comes after that.
TEST_F(Lifetime, MayBeClosedWhileItStarts) {
    for (const char* const stage : {"SteamAPI_Init", "GetAuthSessionTicket"}) {
        SCOPED_TRACE(stage);
        std::filesystem::remove(Home().parent_path() / "steam_calls");
        Start();
        EXPECT_TRUE(test_support::WaitUntil([&] { return SteamCalls().find(stage) != std::string::npos; }));
        EXPECT_TRUE(test_support::WaitUntil([&] {
            Helper().RequestClose();
            return !Helper().IsRunning();
        }));
        EXPECT_EQ(0, Helper().WaitForExit());
    }
}

TEST_F(Lifetime, ALauncherMayComeBack) {
    StartService();
    for (std::uint64_t visit = 1; visit <= 3; ++visit) {
        Connect();
        ExpectService(visit);
        Leave();
    }
    Connect();
    ExpectService(4);
    CloseFromOutside();
    // Only the first visit changes the state; each is taken in, and each but the last is seen to end.
    EXPECT_EQ(CountInLog("SteamService :: OnConnected"), 4);
    EXPECT_EQ(CountInLog("SteamService :: SetState (1 -> 2) (WaitForLauncher -> WaitForGameLaunch)"), 1);
    EXPECT_EQ(CountInLog("Cancel shutdown."), 4);
    EXPECT_EQ(CountInLog("Pipe disconnected."), 3);
    EXPECT_EQ(CountInLog("Scheduling a shutdown in 20000 ms."), 4);
    EXPECT_EQ(CountInLog("Connection timed out, terminating."), 0);
}

TEST_F(Lifetime, ServesOneLauncherAtATime) {
    StartService();
    Connect();
    ExpectService(1);
    launcher::PipeClient second;
    EXPECT_FALSE(second.TryOpen(kPipeName));
    ExpectService(2);
    Leave();
    Connect();
    ExpectService(3);
    CloseFromOutside();
}

}  // namespace

}  // namespace e2e
