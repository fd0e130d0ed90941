// What all clients share: the text and bytes of vectors.json, and what the helper answers to them.

#include "support/limits.h"
#include "tests/clients/clients_fixture.h"

namespace clients {

namespace {

namespace fs = std::filesystem;

class Vectors : public e2e::HelperFixture {
  protected:
    static json Section(const char* name) {
        return json::parse(support::ReadAll(e2e::BinFolder() / "clients" / "vectors.json")).at(name);
    }
    static std::string Bytes(const std::string& hex) {
        std::string bytes;
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
        }
        return bytes;
    }
};

TEST_F(Vectors, AreWhatTheHelperAnswers) {
    StartService();
    for (const json& row : Section("toHelper")) {
        SCOPED_TRACE(row["name"]);
        Connect();
        SendBytes(Bytes(row["hex"]));
        for (const json& answer : row["answers"]) ExpectAnswer(answer);
        Leave();
    }
    CloseFromOutside();
}

TEST_F(Vectors, AreWhatOurOwnLauncherSaysAndUnderstands) {
    for (const json& row : Section("requests")) {
        const json& call = row["call"].front();
        const std::uint64_t id = std::stoull(call.value("id", ""));
        const std::string body = row["call"].contains("info")
                                     ? launcher::InfoRequest(id)
                                     : launcher::LaunchRequest(id, call.value("exe", ""), call.value("directory", ""),
                                                               call.value("arguments", ""));
        EXPECT_EQ(body, row["body"]);
        EXPECT_EQ(launcher::MakeFrame(body), Bytes(row["hex"]));
    }
    for (const json& row : Section("answers")) {
        SCOPED_TRACE(row["name"]);
        launcher::FrameReader reader;
        reader.Feed(Bytes(row["hex"]));
        const auto answer = launcher::ParseAnswer(reader.Next().value_or(launcher::Frame{}).m_Body);
        ASSERT_TRUE(answer);
        EXPECT_EQ(std::to_string(launcher::RequestIdOf(*answer)), row["fields"]["id"]);
        if (const auto* const info = std::get_if<launcher::InfoResponse>(&*answer)) {
            EXPECT_EQ((json{std::to_string(info->m_SteamId), info->m_PersonaName, info->m_Ticket}),
                      (json{row["fields"]["steamId"], row["fields"]["name"], row["fields"]["ticket"]}));
        }
    }
}

TEST_F(NodeClient, KeepsToWhatAllClientsShare) {
    const fs::path report = Home() / "report";
    const std::string page = support::ToUtf8(e2e::BinFolder() / "operations.md");
    const auto node =
        StartNode({InClients("protocol.js"), InClients("node/index.js"), InClients(""), page, support::ToUtf8(report)});
    EXPECT_EQ(node->WaitForExit(), 0) << support::ReadAll(report);
}

}  // namespace

}  // namespace clients
