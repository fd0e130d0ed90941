// A start that comes to nothing ends the process at once. Its log tells it from any other, and so do its events.

#include <nlohmann/json.hpp>
#include <regex>

#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using Events = std::vector<std::string>;  // the data of each

const char kUp[] =
    R"("id":3,"sa":480,"sd":true,"sp":true,"so":false,"si":76561197960287930,"sl":true,"st":true,"ss":true)";
const char kFaults[] = "TOLLMERE_TEST_FAULTS";
const char kRefused[] = R"("id":2,"as":false)";

// How far a start got that failed.
std::string Down(const char* appId, const char* dll, const char* init) {
    const std::string text = R"("id":3,"sa":)";
    return text + appId + R"(,"sd":)" + dll + R"(,"sp":)" + init +
           R"(,"so":false,"si":0,"sl":true,"st":false,"ss":false)";
}

struct FailingStart {
    const char* verdict;             // the heading in docs/operations.md
    support::Environment variables;  // those that differ
    Events events;
    std::string line{};  // one of the log, where the page shows less
    std::string standIn = "steam_api64.dll";
    int exitCode = 0;
};

class Starts : public HelperFixture {
  protected:
    // The store has to be exactly what such events make, but for the times.
    void ExpectStored(const Events& events) const {
        std::string expected;
        for (const std::string& data : events) {
            expected += expected.empty() ? R"({"metrics":[)" : ",";
            expected += R"({"name":"STEAM_ACTION","data":)" + nlohmann::json(data).dump() + R"(,"time":T})";
        }
        const std::regex time(R"("time":\d+\})");
        EXPECT_EQ(std::regex_replace(support::ReadAll(EventFile()), time, R"("time":T})"), expected + "]}");
    }

    void ExpectFailure(const FailingStart& start) {
        SCOPED_TRACE(start.verdict + start.line);
        fs::remove(LogFile());
        fs::remove(EventFile());
        const support::Environment usual = variables;
        for (const auto& [name, value] : start.variables) variables[name] = value;
        UseStandIn(start.standIn);
        Start();
        ExpectEnd(start.exitCode);
        variables = usual;
        if (start.exitCode == 0) ExpectShown("How every start begins");
        ExpectVerdict(start.verdict);
        EXPECT_TRUE(start.line.empty() || CountInLog(start.line) == 1);
        ExpectStored(start.events);
        // Before Steam is up nothing is registered with it.
        const bool isUp = start.events.back() == kUp;
        EXPECT_EQ(SteamCalls().find("RegisterCallback") != std::string::npos, isUp);
        EXPECT_FALSE(Launcher().TryOpen(kPipeName));
    }
};

TEST_F(Starts, ThatFailEndAtOnceAndSayWhy) {
    const std::string missing = HomeText() + "-missing";
    const FailingStart starts[] = {
        {"No app id", {{"SteamAppId", std::nullopt}}, {Down("0", "false", "false")}},
        {"No Steam library",
         {},
         {Down("480", "false", "false")},
         "Steam DLL could not be loaded from '" + HomeText() + "\\steam_api64.dll'",
         ""},
        {"No Steam library",
         {{kFaults, "GetModuleFileNameW:5"}},
         {Down("480", "false", "false")},
         "Steam DLL could not be loaded from '\\steam_api64.dll'"},
        {"Steam refuses",
         {{"STEAM_STAND_IN_INIT", "fail"}},
         {kRefused, Down("480", "true", "true")},
         "Attempting initialization of Steam API from game directory: " + HomeText()},
        {"Steam refuses, and there is no game directory",
         {{"STEAM_STAND_IN_INIT", "fail"}, {"SteamLocation", missing}},
         {kRefused, Down("480", "true", "true")},
         "InitClass :: Location=" + missing},
        {"Steam without an interface", {{"STEAM_STAND_IN_NULL", "SteamUser"}}, {Down("480", "true", "true")}},
        {"The pipe can't listen", {{kFaults, "ConnectNamedPipe:8"}}, {R"("id":1,"pe":8)", kUp}},
        {"No window", {{kFaults, "CreateWindowExW:8"}}, {R"("id":0,"we":8)"}, "", "steam_api64.dll", 1},
    };
    for (const FailingStart& start : starts) {
        if (kFaultsWork || !start.variables.contains(kFaults)) ExpectFailure(start);
    }
}

TEST_F(Starts, ThatMissAFunctionNameIt) {
    for (const std::string name :
         {"SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_RegisterCallback", "SteamAPI_UnregisterCallback",
          "SteamAPI_GetHSteamUser", "SteamAPI_GetHSteamPipe", "SteamAPI_RunCallbacks", "SteamClient"}) {
        ExpectFailure({"A Steam library without a function",
                       {},
                       {Down("480", "true", name == "SteamAPI_Init" ? "false" : "true")},
                       "Could not map function: " + name,
                       "stand_in_variants/steam_api64_without_" + name + ".dll"});
        EXPECT_EQ(SteamCalls(), "");
    }
}

TEST_F(Starts, ThatGoWellAddTheirEventsToThoseOfEarlierRuns) {
    for (const std::size_t runs : {1u, 2u, 3u}) {
        StartService();
        EXPECT_EQ(fs::exists(EventFile()), runs > 1) << "it is written at the end";
        CloseFromOutside();
        ExpectStored(Events(runs, kUp));
    }
}

TEST_F(Starts, ASecondHelperCannotCreateThePipe) {
    StartService();
    support::ChildProcess second({Home() / ProgramFile("tollmere_steam_helper"), arguments, variables, Home()});
    EXPECT_EQ(second.WaitForExit(), 0);
    ExpectVerdict("The pipe is taken");
    ExpectStored({R"("id":1,"pe":231)", kUp});
    Connect();
    ExpectService(1);
    CloseFromOutside();
}

}  // namespace

}  // namespace e2e
