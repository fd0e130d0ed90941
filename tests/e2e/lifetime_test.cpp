#include "support/limits.h"
#include "tests/e2e/helper_fixture.h"

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
        Leave();
        const std::vector<std::string> log = Log();
        EXPECT_THAT(
            std::vector(log.end() - 3, log.end()),
            testing::ElementsAre("SteamService :: Shutdown", "Destroying pipe...", "Process exiting with code 0."));
    }
    EXPECT_EQ(CountInLog("Steam Service ready to exit."), 0);
}

// While the worker takes Steam up; the pipe comes after that.
TEST_F(Lifetime, MayBeClosedWhileItStarts) {
    for (const char* const stage : {"SteamAPI_Init", "GetAuthSessionTicket"}) {
        SCOPED_TRACE(stage);
        Start();
        EXPECT_TRUE(support::WaitUntil([&] { return SteamCalls().find(stage) != std::string::npos; }));
        EXPECT_TRUE(support::WaitUntil([&] {
            Helper().RequestClose();
            return !Helper().IsRunning();
        }));
        ExpectEnd();
    }
}

TEST_F(Lifetime, ServesOneLauncherAtATimeAndAnyThatComesBack) {
    StartService();
    for (std::uint64_t visit = 1; visit <= 4; ++visit) {
        Leave();
        Connect();
        EXPECT_FALSE(launcher::PipeClient().TryOpen(kPipeName));
        ExpectService(visit);
    }
    CloseFromOutside();
    // Only the first visit changes the state; each is taken in, and each but the last is seen to end.
    EXPECT_EQ(CountInLog("SteamService :: OnConnected"), 4);
    EXPECT_EQ(CountInLog("SteamService :: SetState (1 -> 2) (WaitForLauncher -> WaitForGameLaunch)"), 1);
    EXPECT_EQ(CountInLog("Cancel shutdown."), 4);
    EXPECT_EQ(CountInLog("Pipe disconnected."), 3);
    EXPECT_EQ(CountInLog("Scheduling a shutdown in 20000 ms."), 4);
    EXPECT_EQ(CountInLog("Connection timed out, terminating."), 0);
}

}  // namespace

}  // namespace e2e
