#include <nlohmann/json.hpp>

#include "support/limits.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using support::ToUtf8;

// Latin, Cyrillic, Chinese, a character of two UTF-16 units, and a blank.
const std::string kName = "zo\u00EB \u043F\u0440\u0438 \u6F22\u5B57 \U0001F3AE";

class Launch : public HelperFixture {
  protected:
    Launch() {
        fs::create_directory(m_Directory);
        fs::copy_file(BinFolder() / ProgramFile("sample_game"), m_Game);
    }

    // Has the game started and gives what it saw.
    json StartGame(std::uint64_t requestId, const std::string& requestedArguments) {
        fs::remove(GameRecord());
        Send(launcher::LaunchRequest(requestId, ToUtf8(m_Game), ToUtf8(m_Directory), requestedArguments));
        const std::string body = Receive();
        // A file that has just got its name may still be closed to others.
        json record;
        EXPECT_TRUE(support::WaitUntil([&] {
            record = json::parse(support::ReadAll(GameRecord()), nullptr, false);
            return record.is_object();
        })) << body;
        EXPECT_EQ(body, "launch_response:" + std::to_string(requestId) + ":" + record["process_id"].dump());
        return record;
    }

    const fs::path m_Directory = Home() / support::FromUtf8(kName);
    const fs::path m_Game = m_Directory / support::FromUtf8(ProgramFile(kName));
};

TEST_F(Launch, TheGameIsAChildWithNamesOfEveryScriptAndTheAppId) {
    variables["STEAM_STAND_IN_PERSONA"] = kName;
    variables["SteamAppId"] = std::nullopt;
    variables["SteamLocation"] = ToUtf8(m_Directory);
    arguments = {"-steamAppID=271590", "-" + kName};
    StartService();
    Connect();
    Send("info_request:1");
    ExpectAnswer(std::string("info_response:1:") + kSteamId + ":" + kName + ":10:" + kTicket);
    const json game = StartGame(18446744073709551615U, "\"" + kName + "\" \"\" say \\\"hi\\\" tail\\");
    EXPECT_EQ(game["arguments"], (json{arguments[0], arguments[1], kName, "", "say", "\"hi\"", "tail\\"}));
    EXPECT_EQ(game["SteamAppId"], "271590");
    EXPECT_EQ(game["parent_process_id"], Helper().Id());
    EXPECT_TRUE(fs::equivalent(support::FromUtf8(game.value("directory", "")), m_Directory));
    CloseFromOutside();
    EXPECT_EQ(CountInLog("Processed Steam Location from Environment: " + ToUtf8(m_Directory)), 1);
    EXPECT_EQ(CountInLog("Game Exe: " + ToUtf8(m_Game)), 1);
}

TEST_F(Launch, TheGameOutlivesTheHelper) {
    variables["SAMPLE_GAME_SECONDS"] = "600";
    StartService();
    Connect();
    const json first = StartGame(1, "");
    const json second = StartGame(2, "");
    EXPECT_EQ(first["arguments"], json{ToUtf8(m_Game)}) << "without arguments the system puts in the program";
    CloseFromOutside();
    EXPECT_TRUE(EndProcess(first["process_id"]));
    EXPECT_TRUE(EndProcess(second["process_id"]));
}

TEST_F(Launch, WhatCannotBeStartedIsAFailureAndTheServiceGoesOn) {
    const std::string game = launcher::QuoteField(ToUtf8(m_Game));
    const std::string directory = launcher::QuoteField(ToUtf8(m_Directory));
    const std::string missing = launcher::QuoteField(ToUtf8(m_Directory / "missing"));
    StartService();
    Connect();
    for (const std::string& places :
         {missing + ":" + directory, game + ":" + missing, "\"\":" + directory, directory + ":" + directory}) {
        SCOPED_TRACE(places);
        Send("launch_request:3:" + places + ":\"\"");
        ExpectAnswer("failure:3");
        ExpectService(4);
    }
    EXPECT_FALSE(fs::exists(GameRecord()));
    StartGame(5, "-after -all");
    CloseFromOutside();
    EXPECT_EQ(CountInLog("Game launch was requested"), 5);
    EXPECT_EQ(CountInLog("Failed to create process"), 4);
}

}  // namespace

}  // namespace e2e
