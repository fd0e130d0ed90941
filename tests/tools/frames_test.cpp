#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "clients/cpp/tollmere_launcher_client.h"

namespace {

std::vector<std::string> Drain(launcher::FrameReader& reader) {
    std::vector<std::string> frames;
    while (const std::optional<launcher::Frame> frame = reader.Next()) {
        frames.push_back(frame->m_Id + "|" + frame->m_Body);
    }
    return frames;
}

TEST(FrameReader, GivesUpOnWhatIsNoFrame) {
    const std::string good = launcher::MakeFrame("good");
    for (const std::string& bad :
         {std::string("\xFF\xFF\xFF\xFF", 4), std::string("\3\0\0\0abc", 7), std::string("\0\0\0\0", 4)}) {
        launcher::FrameReader reader;
        reader.Feed(good + bad + good);
        EXPECT_THAT(Drain(reader), testing::ElementsAre("STEA|good"));
        EXPECT_TRUE(reader.IsBroken());
    }
}

TEST(ParseAnswer, TakesTheNameFromBetweenTheNumbers) {
    struct {
        const char* body;
        const char* persona;
        std::uint32_t length;
        const char* ticket;
    } const rows[] = {{"info_response:18446744073709551615:76561197960287930:Ada:2:0AFF", "Ada", 2, "0AFF"},
                      {"info_response:18446744073709551615:76561197960287930:a:b::3:0:", "a:b::3", 0, ""},
                      {"info_response:18446744073709551615:76561197960287930::0:", "", 0, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body);
        const std::optional<launcher::Answer> answer = launcher::ParseAnswer(row.body);
        ASSERT_TRUE(answer && std::holds_alternative<launcher::InfoResponse>(*answer));
        const auto& info = std::get<launcher::InfoResponse>(*answer);
        EXPECT_EQ(info.m_RequestId, 18446744073709551615U);
        EXPECT_EQ(info.m_SteamId, 76561197960287930U);
        EXPECT_EQ(info.m_PersonaName, row.persona);
        EXPECT_EQ(info.m_TicketLength, row.length);
        EXPECT_EQ(info.m_Ticket, row.ticket);
    }
}

TEST(ParseAnswer, TellsLaunchFromFailure) {
    const std::optional<launcher::Answer> launch = launcher::ParseAnswer("launch_response:3:4711");
    ASSERT_TRUE(launch && std::holds_alternative<launcher::LaunchResponse>(*launch));
    EXPECT_EQ(std::get<launcher::LaunchResponse>(*launch).m_ProcessId, 4711U);
    const std::optional<launcher::Answer> failure = launcher::ParseAnswer("failure:3");
    ASSERT_TRUE(failure && std::holds_alternative<launcher::Failure>(*failure));
    EXPECT_EQ(launcher::RequestIdOf(*failure), 3U);
}

TEST(ParseAnswer, RefusesWhatIsNone) {
    for (const char* const body :
         {"", "failure", "failure:", "failure:x", "failure:1:2", "launch_response:1", "launch_response:1:4294967296",
          "info_response:1:2", "info_response:1:2:3:", "info_response:1:2:name:x:", "info_request:1"}) {
        EXPECT_FALSE(launcher::ParseAnswer(body)) << body;
    }
}

}  // namespace
