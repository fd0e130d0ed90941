#include "service/steam_subsystem.h"

#include <cstring>
#include <memory>

#include "pipe/frame_router.h"
#include "tests/pipe/pipe_server_fixture.h"
#include "tools/launcher_client/frames.h"

namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;
using testing::ElementsAre;

// A subsystem behind a real pipe, with an identity of its own.
class SteamSubsystemTest : public PipeServerFixture {
  protected:
    SteamSubsystemTest() {
        m_Api.m_SteamId = 76561197960287930;
        std::strcpy(m_Api.m_PersonaName, "Ann: \xD0\x90");
        std::strcpy(m_Api.m_TicketText, "00FF");
        m_Api.m_TicketLength = 2;
        g_Subsystems.push_back(std::make_unique<SteamSubsystem>(&m_Api));
        OnData([](const std::string& bytes) {
            RouteFrames(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
        });
        EXPECT_TRUE(Start());
        EXPECT_TRUE(Connect());
    }
    ~SteamSubsystemTest() override {
        Stop();
        g_Subsystems.clear();
    }

    // What is answered to `bytes`: everything that comes before the answer to a last request of our own.
    Texts Ask(const std::string& bytes) {
        EXPECT_TRUE(Write(bytes));
        EXPECT_TRUE(Write(launcher::MakeFrame("info_request:999")));
        Texts answers;
        std::string received;
        launcher::FrameReader reader;
        while (client.Read(received, test_support::Limit()) == launcher::Outcome::Done) {
            reader.Feed(received);
            received.clear();
            while (const auto frame = reader.Next()) {
                EXPECT_EQ(frame->m_Id, "STEA");
                if (frame->m_Body.rfind("info_response:999:", 0) == 0) return answers;
                answers.push_back(frame->m_Body);
            }
        }
        ADD_FAILURE() << "the connection ended";
        return answers;
    }

    sysSteamApi m_Api;
};

TEST_F(SteamSubsystemTest, AnswersEachRequestOnceAndNothingElse) {
    const std::string identity = ":76561197960287930:Ann: \xD0\x90:2:00FF";
    struct {
        std::string body;
        Texts answers;
    } const rows[] = {
        {"info_request", {"info_response:0" + identity}},
        {"info_request:5", {"info_response:5" + identity}},
        {"info_request:\"5\"", {"info_response:5" + identity}},
        {"info_request:18446744073709551615", {"info_response:18446744073709551615" + identity}},
        {"info_request:7:and:more", {"info_response:7" + identity}},
        {"info_request:none", {"info_response:0" + identity}},
        {"info_request:", {"info_response:0" + identity}},
        {"info_requests_of_a_longer_name:5", {"info_response:5" + identity}},
        {"info_reques", {}},
        {"INFO_REQUEST:5", {}},
        {"shutdown:5", {}},
        {":info_request:5", {}},
        {"launch_request", {"failure:0"}},
        {"launch_request:none:a:b:c", {"failure:0"}},
        {"launch_request:7", {"failure:7"}},
        {"launch_request:7:exe", {"failure:7"}},
        {"launch_request:7:exe:dir", {"failure:7"}},
        {"launch_request:7:exe:dir:", {"failure:7"}},
        {"launch_request:7:exe:\"dir:args", {"failure:7"}},
        {"launch_request:18446744073709551615:no/such/game:.:\"\"", {"failure:18446744073709551615"}},
        {"launch_requested:7:no/such/game:.:\"\":more:fields", {"failure:7"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body);
        EXPECT_EQ(Ask(launcher::MakeFrame(row.body)), row.answers);
    }
}

// Nothing survives from one read to the next, and nothing of it spoils what comes whole.
TEST_F(SteamSubsystemTest, ARequestInSingleBytesIsNone) {
    std::atomic<int> reads = 0;
    OnData([&](const std::string& bytes) {
        ++reads;
        RouteFrames(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
    });
    int sent = 0;
    for (const char byte : launcher::MakeFrame("info_request:9")) {
        ASSERT_TRUE(Write(std::string(1, byte)));
        ++sent;
        ASSERT_TRUE(test_support::WaitUntil([&] { return reads == sent; }));
    }
    EXPECT_THAT(Ask(launcher::MakeFrame("info_request:1")), ElementsAre(testing::StartsWith("info_response:1:")));
}

}  // namespace
