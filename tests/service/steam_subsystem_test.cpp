#include "service/steam_subsystem.h"

#include <cstring>
#include <memory>

#include "clients/cpp/tollmere_launcher_client.h"
#include "pipe/frame_router.h"
#include "tests/pipe/pipe_server_fixture.h"

namespace {

using launcher::MakeFrame;

const std::string kIdentity = ":76561197960287930:Ann: \xD0\x90:2:00FF";

// A subsystem behind a real pipe, with an identity of its own.
class SteamSubsystemTest : public PipeServerFixture {
  protected:
    SteamSubsystemTest() {
        m_Api.m_SteamId = 76561197960287930;
        std::strcpy(m_Api.m_PersonaName, "Ann: \xD0\x90");
        std::strcpy(m_Api.m_TicketText, "00FF");
        m_Api.m_TicketLength = 2;
        g_Subsystems.push_back(std::make_unique<SteamSubsystem>(&m_Api));
        OnData([this](const std::string& bytes) {
            RouteFrames(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
            ++m_Reads;
        });
        EXPECT_TRUE(Start());
        EXPECT_TRUE(Connect());
    }
    ~SteamSubsystemTest() override {
        Stop();
        g_Subsystems.clear();
    }

    // `answers` are what comes before the answer to a last request of our own.
    void ExpectAnswers(const std::string& bytes, const std::vector<std::string>& answers) {
        std::string expected;
        for (const std::string& answer : answers) expected += MakeFrame(answer);
        expected += MakeFrame("info_response:999" + kIdentity);
        ASSERT_TRUE(Write(bytes + MakeFrame("info_request:999")));
        EXPECT_EQ(Read(expected.size()), expected);
    }

    sysSteamApi m_Api;
    std::atomic<int> m_Reads = 0;
};

TEST_F(SteamSubsystemTest, AnswersEachRequestOnceAndNothingElse) {
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"info_request", {"info_response:0" + kIdentity}},
        {"info_request:\"5\"", {"info_response:5" + kIdentity}},
        {"info_request:18446744073709551615", {"info_response:18446744073709551615" + kIdentity}},
        {"info_request:7:and:more", {"info_response:7" + kIdentity}},
        {"info_request:none", {"info_response:0" + kIdentity}},
        {"info_requests_of_a_longer_name:5", {"info_response:5" + kIdentity}},
        {"info_reques", {}},
        {"INFO_REQUEST:5", {}},
        {":info_request:5", {}},
        {"launch_request", {"failure:0"}},
        {"launch_request:none:a:b:c", {"failure:0"}},
        {"launch_request:7:exe:dir:", {"failure:7"}},
        {"launch_request:18446744073709551615:no/such/game:.:\"\"", {"failure:18446744073709551615"}},
        {"launch_requested:7:no/such/game:.:\"\":more:fields", {"failure:7"}},
    };
    for (const auto& [body, answers] : rows) {
        SCOPED_TRACE(body);
        ExpectAnswers(MakeFrame(body), answers);
    }
}

// Nothing survives from one read to the next, and nothing of it spoils what comes whole.
TEST_F(SteamSubsystemTest, ARequestInSingleBytesIsNone) {
    for (const char byte : MakeFrame("info_request:9")) {
        const int before = m_Reads;
        ASSERT_TRUE(Write(std::string(1, byte)));
        ASSERT_TRUE(support::WaitUntil([&] { return m_Reads > before; }));
    }
    ExpectAnswers("", {});
}

}  // namespace
