// Which events a run leaves in the store, byte for byte but for the times.

#include <nlohmann/json.hpp>
#include <regex>

#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using Events = std::vector<std::string>;

const char kGoodStart[] =
    R"("id":3,"sa":480,"sd":true,"sp":true,"so":false,"si":76561197960287930,"sl":true,"st":true,"ss":true)";
const char kRefused[] = R"("id":2,"as":false)";

// How far a start got that failed.
std::string Failed(const char* appId, const char* dll, const char* init) {
    std::string text = R"("id":3,"sa":)";
    text.append(appId).append(R"(,"sd":)").append(dll).append(R"(,"sp":)").append(init);
    return text.append(R"(,"so":false,"si":0,"sl":true,"st":false,"ss":false)");
}

class EventsOfARun : public HelperFixture {
  protected:
    // The data of each event in the store. The file has to be exactly what such events make.
    Events Stored() {
        const std::string file = test_support::ReadAll(Surroundings().EventFile());
        const std::string text = std::regex_replace(file, std::regex(R"("time":\d+\})"), R"("time":T})");
        Events events;
        std::string expected = R"({"metrics":[)";
        const nlohmann::json store = nlohmann::json::parse(file);
        for (const auto& entry : store["metrics"]) {
            events.push_back(entry["data"]);
            if (events.size() > 1) expected += ',';
            expected += R"({"name":"STEAM_ACTION","data":)" + nlohmann::json(events.back()).dump() + R"(,"time":T})";
        }
        EXPECT_EQ(text, expected + "]}");
        return events;
    }
    void Fail() {
        fs::remove(Surroundings().EventFile());
        Start();
        ExpectEnd();
    }
};

TEST_F(EventsOfARun, AGoodStartLeavesItsStatusAndTheNextRunMerges) {
    for (const std::size_t runs : {1u, 2u, 3u}) {
        StartService();
        EXPECT_EQ(fs::exists(Surroundings().EventFile()), runs > 1) << "it is written at the end";
        CloseFromOutside();
        EXPECT_EQ(Stored(), Events(runs, kGoodStart));
    }
    variables["STEAM_STAND_IN_INIT"] = "fail";
    Start();
    ExpectEnd();
    EXPECT_EQ(Stored(), (Events{kRefused, Failed("480", "true", "true"), kGoodStart, kGoodStart, kGoodStart}));
}

TEST_F(EventsOfARun, EachFailingStartLeavesItsOwn) {
    variables["STEAM_STAND_IN_INIT"] = "fail";
    Fail();
    EXPECT_EQ(Stored(), (Events{kRefused, Failed("480", "true", "true")}));

    UseStandIn(BinFolder() / "stand_in_variants" / "steam_api64_without_SteamAPI_Init.dll");
    Fail();
    EXPECT_EQ(Stored(), Events{Failed("480", "true", "false")});

    RemoveStandIn();
    Fail();
    EXPECT_EQ(Stored(), Events{Failed("480", "false", "false")});

    variables["SteamAppId"] = std::nullopt;
    Fail();
    EXPECT_EQ(Stored(), Events{Failed("0", "false", "false")});
}

TEST_F(EventsOfARun, ASecondHelperCannotCreateThePipe) {
    StartService();
    test_support::ChildProcess second({Home() / ProgramFile("tollmere_steam_helper"), arguments, variables, Home()});
    EXPECT_EQ(second.WaitForExit(), 0);
    ExpectVerdict("The pipe is taken");
    EXPECT_EQ(Stored(), (Events{R"("id":1,"pe":231)", kGoodStart}));
    Connect();
    ExpectService(1);
    CloseFromOutside();
}

}  // namespace

}  // namespace e2e
