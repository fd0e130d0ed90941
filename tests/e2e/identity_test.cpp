#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

TEST_F(HelperFixture, AnIdentityOfTheWidestValuesAndOneWithoutATicketAreGiven) {
    std::string ticket;
    for (int i = 0; i < 1024; ++i) ticket += "A5";
    const std::string persona(128, 'p');
    struct {
        support::Environment client;
        std::string answer;
    } const rows[] = {
        {{{"STEAM_STAND_IN_STEAM_ID", "18446744073709551615"},
          {"STEAM_STAND_IN_PERSONA", persona},
          {"STEAM_STAND_IN_TICKET", ticket}},
         "18446744073709551615:" + persona + ":1024:" + ticket},
        {{{"STEAM_STAND_IN_STEAM_ID", "0"},
          {"STEAM_STAND_IN_PERSONA", ""},
          {"STEAM_STAND_IN_NULL", "Ticket"},
          {"STEAM_STAND_IN_CALLBACKS", kSecondPump}},
         "0::0:"},
    };
    for (const auto& row : rows) {
        for (const auto& [name, value] : row.client) variables[name] = value;
        StartService();
        Connect();
        Send("info_request:5");
        ExpectAnswer("info_response:5:" + row.answer);
        Leave();
        CloseFromOutside();
    }
    EXPECT_EQ(CountInLog("Invalid Steam Ticket"), 1);
}

}  // namespace

}  // namespace e2e
