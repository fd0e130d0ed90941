#include "support/limits.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

class MovedClock : public HelperFixture {
  protected:
    // Moves the clock until the helper has noticed: it then writes to its log what has collected.
    void LetPassUntilLogged(std::chrono::milliseconds time, const std::string& text) {
        EXPECT_TRUE(support::WaitUntil([&] {
            LetPass(time);
            return support::ReadAll(LogFile()).find(text) != std::string::npos;
        }));
    }
};

TEST_F(MovedClock, ALauncherHoldsTheHelperUp) {
    StartService();
    Connect();
    ExpectService(1);
    LetPassUntilLogged(std::chrono::minutes{10}, "Cancel shutdown.");
    ExpectService(2);
    Leave();
    ExpectEndByTimeout();
    const std::vector<std::string> log = Log();
    const auto left = std::find(log.begin(), log.end(), "Pipe disconnected.");
    EXPECT_EQ(std::count(log.begin(), left, "Connection timed out, terminating."), 0);
    EXPECT_EQ(std::count(left, log.end(), "Connection timed out, terminating."), 1);
}

TEST_F(MovedClock, ATicketThatIsNotConfirmedIsStillGiven) {
    const std::string givenUp = "Timed out waiting for Steam Ticket authentication.";
    variables["STEAM_STAND_IN_CALLBACKS"] = kSecondPump;
    StartService();
    Connect();
    ExpectService(1);
    LetPassUntilLogged(std::chrono::milliseconds{10'001}, givenUp);
    ExpectService(2);
    CloseFromOutside();
    EXPECT_EQ(CountInLog(givenUp), 1);
}

}  // namespace

}  // namespace e2e
