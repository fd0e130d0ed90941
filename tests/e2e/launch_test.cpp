#include <nlohmann/json.hpp>

#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test_support::ToUtf8;

class Launch : public HelperFixture {
  protected:
    Launch() {
        fs::create_directories(m_Directory);
        fs::copy_file(BinFolder() / ProgramFile("sample_game"), m_Game);
        variables["SAMPLE_GAME_RECORD"] = ToUtf8(m_Record);
    }

    // Has the game started and gives what it saw.
    json StartGame(std::uint64_t requestId, const std::string& requestedArguments) {
        return StartGame(requestId, m_Game, m_Directory, requestedArguments);
    }
    json StartGame(std::uint64_t requestId, const fs::path& game, const fs::path& directory,
                   const std::string& requestedArguments) {
        fs::remove(m_Record);
        Send(launcher::LaunchRequest(requestId, ToUtf8(game), ToUtf8(directory), requestedArguments));
        const std::string body = Receive();
        // A file that has just got its name may still be closed to others.
        json record;
        const bool found = test_support::WaitUntil([&] {
            record = json::parse(test_support::ReadAll(m_Record), nullptr, false);
            return record.is_object();
        });
        EXPECT_TRUE(found) << body;
        if (!found) return json::object();
        EXPECT_EQ(body, "launch_response:" + std::to_string(requestId) + ":" + record["process_id"].dump());
        return record;
    }

    const fs::path m_Directory = Home() / u8"Spiele \u00FC";
    const fs::path m_Game = m_Directory / ProgramFile("my game");
    const fs::path m_Record = Home() / "record.json";
};

TEST_F(Launch, TheGameIsAChildWithTheAppIdAndTheDirectory) {
    variables["SteamAppId"] = std::nullopt;
    arguments = {"-steamAppID=271590"};
    StartService();
    Connect();
    const json game = StartGame(18446744073709551615U, "-level 3");
    EXPECT_EQ(game["SteamAppId"], "271590");
    EXPECT_EQ(game["parent_process_id"], Helper().Id());
    EXPECT_TRUE(fs::equivalent(test_support::FromUtf8(game.value("directory", "")), m_Directory));
    // A second request is a second game.
    EXPECT_NE(StartGame(2, "")["process_id"], game["process_id"]);
    CloseFromOutside();
}

TEST_F(Launch, TheHelpersOwnArgumentsComeBeforeTheRequested) {
    const struct {
        std::vector<std::string> own;
        const char* requested;
        std::vector<std::string> seen;
    } rows[] = {
        {{}, "-level 3", {"-level", "3"}},
        {{"-Windowed", "C:\\My Games"}, "-Level", {"-Windowed", "C:\\My Games", "-Level"}},
        {{"-steamTestTelemetry"}, "", {"-steamTestTelemetry"}},
        {{"-a"}, "\"two words\" \"\" tail\\", {"-a", "two words", "", "tail\\"}},
        {{"-a"}, "say \\\"hi\\\" \"a\\\\\" b", {"-a", "say", "\"hi\"", "a\\", "b"}},
        {{"-a"}, "\xC3\xA4:\xF0\x9F\x8E\xAE", {"-a", "\xC3\xA4:\xF0\x9F\x8E\xAE"}},
    };
    std::uint64_t requestId = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.requested);
        arguments = row.own;
        fs::remove(Home().parent_path() / "steam_calls");
        StartService();
        Connect();
        EXPECT_EQ(StartGame(++requestId, row.requested)["arguments"], json(row.seen));
        Leave();
        CloseFromOutside();
    }
}

TEST_F(Launch, TheGameOutlivesTheHelper) {
    variables["SAMPLE_GAME_SECONDS"] = "600";
    StartService();
    Connect();
    const std::uint32_t game = StartGame(1, "")["process_id"];
    Leave();
    CloseFromOutside();
    EXPECT_TRUE(IsProcessRunning(game));
    EndProcess(game);
}

// Latin, Cyrillic, Chinese, a character of two UTF-16 units.
TEST_F(Launch, NamesOfEveryScriptGetThrough) {
    for (const char* const name :
         {"zo\u00EB", "\u043F\u0440\u0438\u0432\u0435\u0442", "\u6F22\u5B57", "\U0001F3AE\u00E9"}) {
        SCOPED_TRACE(name);
        const fs::path directory = Home().parent_path() / test_support::FromUtf8(name);
        const fs::path game = directory / test_support::FromUtf8(ProgramFile(name));
        fs::create_directory(directory);
        fs::copy_file(m_Game, game);
        variables["STEAM_STAND_IN_PERSONA"] = name;
        variables["SteamLocation"] = ToUtf8(directory);
        arguments = {"-steamAppID=480", std::string("-") + name};
        StartService();
        Connect();
        Send("info_request:1");
        ExpectAnswer(std::string("info_response:1:") + kSteamId + ":" + name + ":10:" + kTicket);
        const json record = StartGame(2, game, directory, name);
        EXPECT_EQ(record["arguments"], (json{"-steamAppID=480", std::string("-") + name, name}));
        EXPECT_TRUE(fs::equivalent(test_support::FromUtf8(record.value("directory", "")), directory));
        CloseFromOutside();
        EXPECT_EQ(CountInLog("Processed Steam Location from Environment: " + ToUtf8(directory)), 1);
        EXPECT_EQ(CountInLog("Game Exe: " + ToUtf8(game)), 1);
        EXPECT_EQ(CountInLog(std::string("Launch Args: -steamAppID=480 -") + name + " " + name), 1);
        Leave();
    }
}

TEST_F(Launch, WhatCannotBeStartedIsAFailureAndTheServiceGoesOn) {
    const std::string game = launcher::QuoteField(ToUtf8(m_Game));
    const std::string directory = launcher::QuoteField(ToUtf8(m_Directory));
    const std::string missing = launcher::QuoteField(ToUtf8(m_Directory / "missing"));
    const struct {
        std::string request;
        const char* answer;
    } rows[] = {
        {"launch_request:1:" + missing + ":" + directory + ":\"\"", "failure:1"},
        {"launch_request:2:" + game + ":" + missing + ":\"\"", "failure:2"},
        {"launch_request:3:\"\":" + directory + ":\"\"", "failure:3"},
        {"launch_request:4:" + directory + ":" + directory + ":\"\"", "failure:4"},
    };
    StartService();
    Connect();
    std::uint64_t requestId = 100;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.request);
        Send(row.request);
        ExpectAnswer(row.answer);
        ExpectService(++requestId);
    }
    EXPECT_FALSE(fs::exists(m_Record));
    StartGame(200, "-after -all");
    CloseFromOutside();
    EXPECT_EQ(CountInLog("Game launch was requested"), 5);
    EXPECT_EQ(CountInLog("Failed to create process"), 4);
}

}  // namespace

}  // namespace e2e
