// What launchers do with their clients, over a day.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <regex>

#include "support/limits.h"
#include "tests/clients/clients_fixture.h"

namespace clients {

namespace {

namespace fs = std::filesystem;
using support::ToUtf8;

const json kStart = {{"call", "start"}};
const json kIdentity = {{"call", "identity"}};
const json kImpatient = {{"call", "identity"}, {"timeout", 100}};
const json kLeave = {{"call", "leave"}};
const json kStop = {{"call", "stop"}};
const json kWho = {{"steamId", e2e::kSteamId}, {"name", e2e::kPersona}, {"ticket", e2e::kTicket}};

json ReadGameRecord(const fs::path& file) {
    json record;
    // A file that has just got its name may still be closed to others.
    EXPECT_TRUE(support::WaitUntil([&] {
        record = json::parse(support::ReadAll(file), nullptr, false);
        return record.is_object();
    }));
    return record;
}

TEST_P(Clients, LeadALifeInOrder) {
    const json args = {"-level", "two words", "", "say \"hi\"", "C:\\a b\\", "zo\u00EB"};
    EndInOrder();
    const Report report = Run({kStart,
                               {{"call", "identity"}, {"repeat", 1000}},
                               kLeave,
                               {{"call", "launch"}, {"exe", SampleGame()}, {"directory", HomeText()}, {"args", args}},
                               {{"call", "ended"}},
                               kStop});
    for (const json& line : report) EXPECT_TRUE(line.contains("ok") && line["restarts"] == 0) << line;
    ASSERT_EQ(report.size(), 6u);
    EXPECT_EQ(report[1]["ok"], kWho);
    const json game = ReadGameRecord(GameRecord());
    EXPECT_EQ(game["process_id"], report[3]["ok"]["processId"]);
    EXPECT_EQ(game["SteamAppId"], "480");
    json expected = args;
    expected.insert(expected.begin(), game["arguments"][0]);
    EXPECT_EQ(game["arguments"], expected);
    EXPECT_TRUE(fs::equivalent(support::FromUtf8(expected[0]), support::FromUtf8(SampleGame())));
    EXPECT_EQ(CountInLog("SteamService :: OnConnected"), 2);
    EXPECT_EQ(CountInLog("Process exiting with code 0."), 1) << "it isn't killed";
}

// The helper outlives its launcher, and is then another's to the next one.
TEST_P(Clients, WaitForAnothersHelperOrUseIt) {
    const Report other = Run({kStart, kIdentity});
    options["otherHelper"] = "use";
    const Report use = Run({kStart, kIdentity, kStop});
    options["otherHelper"] = "wait";
    options["appId"] = 481;
    EndInOrder();
    const Driven waiting = Drive({{{"call", "await"}, {"file", options["helper"]}}, kStart, kIdentity, kStop});
    std::unique_ptr<support::ChildProcess> ender;
    const Report wait = Finish(waiting, [&] {
        if (ender || waiting.Lines().empty()) return;
        const json& id = other[0]["ok"]["helperProcessId"];
        ender = StartProgram({options["probe"], "stop", "--pid", id.dump()}, variables);
    });
    for (const Report& report : {use, wait}) {
        for (const json& line : report) EXPECT_TRUE(line.contains("ok") && line["restarts"] == 0) << line;
        EXPECT_EQ(report.end()[-2]["ok"], kWho);
    }
    // Where it can't see whether the other still runs it has to try.
    EXPECT_EQ(CountInLog("InitClass :: AppId=481") - CountInLog("Unable to create pipe."), 1);
}

// Starts and returns, each with a client of its own.
class Day : public Clients {
  protected:
    enum Kind { kReturns, kIsKilled, kIsKilledMeanwhile, kPlays, kIsStuck };

    static Steps StepsOf(Kind kind, const std::string& sign) {
        switch (kind) {
            case kReturns:
                return {kIdentity, kLeave, kIdentity, kStop};
            case kIsKilled:
                return {{{"call", "killHelper"}}, kIdentity, kStop};
            case kIsKilledMeanwhile:
                return {{{"call", "killHelper"}, {"afterMilliseconds", std::rand() % 50}},
                        {{"call", "identity"}, {"repeat", 20}},
                        kStop};
            case kPlays:
                return {{{"call", "launch"}, {"exe", SampleGame()}}, kStop};
            default:
                return {{{"call", "await"}, {"file", sign}}, kImpatient, kIdentity, kStop};
        }
    }

    // As many starts: of all kinds in turn, now and then a helper that is stuck; or all of one kind.
    Steps Starts(int count, const std::optional<Kind>& one = std::nullopt) const {
        Steps steps = json::array();
        for (int i = 0; i < count; ++i) {
            const Kind kind = one.value_or(i % 20 == 19 ? kIsStuck : static_cast<Kind>(i % kIsStuck));
            const std::string sign = ToUtf8(Home() / ("held" + std::to_string(i)));
            Steps round = StepsOf(kind, sign);
            round.insert(round.begin(), json{{"call", "startAgain"}, {"file", sign}});
            for (json& step : round) {
                step["kind"] = kind;
                steps.push_back(step);
            }
        }
        return steps;
    }

    // The helpers that are to be stuck are held when they have come up.
    Report FinishStarts(const Driven& driven, const Steps& steps) {
        Report report = Finish(driven, [&] {
            const Report lines = driven.Lines();
            for (; m_Seen < lines.size(); ++m_Seen) {
                const json& step = steps[m_Seen];
                if (step["kind"] != kIsStuck || step["call"] != "startAgain") continue;
                e2e::HoldProcess(lines[m_Seen].at("ok").at("helperProcessId"));
                std::ofstream(support::FromUtf8(step["file"])) << ' ';
            }
        });
        m_Seen = 0;
        return report;
    }

    // Every call has come to a result, or to an error where the helper was killed at any moment; that says why.
    void Take(const Report& report, const Steps& steps) {
        for (std::size_t i = 0; i < report.size(); ++i) {
            const json& line = report[i];
            calls += steps[i].value("repeat", 1);
            restarts += line["restarts"].get<int>();
            if (longest.empty() || line["milliseconds"] > longest["milliseconds"]) longest = line;
            if (line.contains("ok")) continue;
            ++errors[line["error"].value("code", "none")];
            if (steps[i].contains("timeout") && line["error"]["code"] == "timed-out") continue;
            // The kill may come only when the next one has begun.
            EXPECT_TRUE(steps[i]["kind"] == kIsKilledMeanwhile || steps[i]["kind"] == kPlays) << steps[i] << line;
            EXPECT_NE(line["error"].value("advice", ""), "") << line;
        }
    }

    int calls = 0;
    int restarts = 0;
    json longest;
    std::map<std::string, int> errors;

  private:
    std::size_t m_Seen = 0;
};

TEST_P(Day, NoCallHangsAndEachErrorSaysWhy) {
    const char* const asked = std::getenv("TOLLMERE_CLIENT_STARTS");
    const int starts = asked == nullptr ? 100 : std::stoi(asked), ofCompetitors = starts / 10;
    options["answerTimeout"] = 1500;
    const Steps day = Starts(starts - 2 * ofCompetitors);
    Take(FinishStarts(Drive(day), day), day);
    const auto provoked = std::count_if(day.begin(), day.end(), [](const json& step) {
        return step["call"] == "startAgain" && (step["kind"] == kIsKilled || step["kind"] == kIsStuck);
    });
    EXPECT_GE(restarts, provoked);

    const Steps visits = Starts(ofCompetitors, kReturns);
    const Driven one = Drive(visits), other = Drive(visits);
    Take(Finish(one), visits);
    Take(Finish(other), visits);
    std::printf("%d starts, %d calls, %d restarts, errors: %s, the longest call: %s\n", starts, calls, restarts,
                json(errors).dump().c_str(), longest.dump().c_str());
}

INSTANTIATE_TEST_SUITE_P(All, Day, kDrivers, [](const auto& row) { return std::string(row.param); });

// As it stands there.
TEST_F(NodeClient, RunsTheExampleOfItsPage) {
    const fs::path folder = Home() / "launcher";
    const fs::path client = folder / "node_modules" / "tollmere-steam-helper";
    fs::create_directories(client);
    for (const char* const name : {"steam", "game"}) fs::create_directory(folder / name);
    for (const char* const file : {"index.js", "package.json"})
        fs::copy_file(InClients("node") + "/" + file, client / file);
    fs::copy_file(Home() / e2e::ProgramFile("tollmere_steam_helper"), folder / "steam" / "tollmere_steam_helper.exe");
    fs::copy_file(Home() / "steam_api64.dll", folder / "steam" / "steam_api64.dll");
    fs::copy_file(support::FromUtf8(SampleGame()), folder / "game" / "game.exe");
    const std::string page = support::ReadAll(InClients("node/README.md"));
    std::smatch example;
    ASSERT_TRUE(std::regex_search(page, example, std::regex("```js\n([^`]*(`[^`]+)*)```")));
    std::ofstream(folder / "launcher.js") << example[1];
    const auto node = StartNode({"-r", InClients("streams.js"), ToUtf8(folder / "launcher.js")}, Home() / "output");
    EXPECT_EQ(node->WaitForExit(), 0);
    EXPECT_THAT(support::ReadAll(Home() / "output"), testing::HasSubstr(e2e::kPersona));
    EXPECT_TRUE(fs::exists(GameRecord()));
}

INSTANTIATE_TEST_SUITE_P(All, Clients, kDrivers, [](const auto& row) { return std::string(row.param); });

}  // namespace

}  // namespace clients
