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
    // What an answer's frame says, fed byte by byte; null if it is none of the helper's.
    static json Fields(const std::string& frame) {
        launcher::FrameReader reader;
        std::optional<launcher::Frame> whole;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            EXPECT_FALSE(whole);
            reader.Feed(frame.substr(i, 1));
            whole = reader.Next();
        }
        EXPECT_TRUE(whole || reader.IsBroken());
        if (!whole || whole->m_Id != launcher::kSteamId) return {};
        const std::optional<launcher::Answer> answer = launcher::ParseAnswer(whole->m_Body);
        if (!answer) return {};
        json fields = {{"id", std::to_string(launcher::RequestIdOf(*answer))}, {"kind", "failure"}};
        if (const auto* const launch = std::get_if<launcher::LaunchResponse>(&*answer)) {
            fields.update({{"kind", "launch"}, {"processId", launch->m_ProcessId}});
        } else if (const auto* const info = std::get_if<launcher::InfoResponse>(&*answer)) {
            fields.update({{"kind", "info"}, {"name", info->m_PersonaName}, {"ticket", info->m_Ticket}});
            fields["steamId"] = std::to_string(info->m_SteamId);
        }
        return fields;
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

TEST_F(Vectors, AreKeptTo) {
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
        EXPECT_EQ(Fields(Bytes(row["hex"])), row["fields"]);
    }
    for (const json& row : Section("wrongFrames")) EXPECT_EQ(Fields(Bytes(row["hex"])), json()) << row;
    for (const json& row : Section("quoting")) EXPECT_EQ(launcher::CommandLine(row["args"]), row["commandLine"]);
    json failures = json::array();
    for (const launcher::FailureKind& kind : launcher::Failures()) {
        failures.push_back({{"code", kind.m_Code}, {"phase", kind.m_Phase}, {"text", kind.m_Text}});
        failures.back()["advice"] = kind.m_Advice;
        for (const char* const line : kind.m_Log) {
            if (line != nullptr) failures.back()["log"].push_back(line);
        }
    }
    json listed = json::parse(support::ReadAll(e2e::BinFolder() / "clients" / "failures.json")).at("failures");
    for (json& entry : listed) entry.erase("page");
    EXPECT_EQ(failures, listed);
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
