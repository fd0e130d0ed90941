#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

class MovedClock : public HelperFixture {
  protected:
    // Moves the clock, and waits until the helper has noticed: it then writes to its log what has collected.
    void LetPassAndBeNoticed(std::chrono::milliseconds time) {
        const auto size = std::filesystem::file_size(Surroundings().LogFile());
        Surroundings().LetPass(time);
        EXPECT_TRUE(
            test_support::WaitUntil([&] { return std::filesystem::file_size(Surroundings().LogFile()) > size; }));
    }
};

TEST_F(MovedClock, ALauncherHoldsTheHelperUp) {
    StartService();
    Connect();
    ExpectService(1);
    LetPassAndBeNoticed(std::chrono::minutes{10});
    ExpectService(2);
    Leave();
    ExpectEndByTimeout();
    const std::vector<std::string> log = Log();
    const auto left = std::find(log.begin(), log.end(), "Pipe disconnected.");
    EXPECT_EQ(std::count(log.begin(), left, "Connection timed out, terminating."), 0);
    EXPECT_EQ(std::count(left, log.end(), "Connection timed out, terminating."), 1);
}

TEST_F(MovedClock, ATicketThatIsNotConfirmedIsStillGiven) {
    variables["STEAM_STAND_IN_CALLBACKS"] = kSecondPump;
    StartService();
    Connect();
    ExpectService(1);
    const std::string givenUp = "Timed out waiting for Steam Ticket authentication.";
    // The line reaches the file when the clock moves on.
    EXPECT_TRUE(test_support::WaitUntil([&] {
        Surroundings().LetPass(std::chrono::milliseconds{10'001});
        return test_support::ReadAll(Surroundings().LogFile()).find(givenUp) != std::string::npos;
    }));
    ExpectService(2);
    CloseFromOutside();
    EXPECT_EQ(CountInLog(givenUp), 1);
}

}  // namespace

}  // namespace e2e
