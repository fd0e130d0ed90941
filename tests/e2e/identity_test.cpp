#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

using testing::Contains;

class Identity : public HelperFixture {};

TEST_F(Identity, TakesTheWidestValues) {
    std::string ticket;
    for (int i = 0; i < 1024; ++i) ticket += "A5";
    variables["STEAM_STAND_IN_STEAM_ID"] = "18446744073709551615";
    variables["STEAM_STAND_IN_PERSONA"] = std::string(128, 'p');
    variables["STEAM_STAND_IN_TICKET"] = ticket;
    StartService();
    Connect();
    Send("info_request:5");
    ExpectAnswer("info_response:5:18446744073709551615:" + std::string(128, 'p') + ":1024:" + ticket);
    CloseFromOutside();
}

TEST_F(Identity, WithoutATicketEndsInAnEmptyField) {
    variables["STEAM_STAND_IN_NULL"] = "Ticket";
    variables["STEAM_STAND_IN_CALLBACKS"] = kSecondPump;
    StartService();
    Connect();
    Send("info_request:5");
    ExpectAnswer(std::string("info_response:5:") + kSteamId + ":" + kPersona + ":0:");
    CloseFromOutside();
    EXPECT_EQ(CountInLog("Invalid Steam Ticket"), 1);
}

// Whichever compiler has built the Steam client.
TEST_F(Identity, ComesFromEveryBuildOfTheSteamClient) {
    for (const std::filesystem::path& standIn : WorkingStandIns()) {
        SCOPED_TRACE(test_support::ToUtf8(standIn));
        UseStandIn(standIn);
        Start();
        Connect();
        Send("info_request:3");
        const bool isForeign = standIn.filename() != "steam_api64.dll";
        ExpectAnswer(isForeign ? "info_response:3:76561197960265730:Built: elsewhere:8:4D53564300FF807F"
                               : std::string("info_response:3:") + kSteamId + ":" + kPersona + ":10:" + kTicket);
        CloseFromOutside();
        EXPECT_THAT(Log(), Contains(testing::StartsWith("OnGetAuthSessionTicketResponse: result (1), hAuthTicket (")));
    }
}

}  // namespace

}  // namespace e2e
