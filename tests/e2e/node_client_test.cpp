// A launcher that nobody here wrote: Node.js for Windows. Run on request (scripts/test --node), which sets
// TOLLMERE_NODE to the path of node.exe.

#include <cstdlib>

#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

TEST_F(HelperFixture, ServesANodeClient) {
    const char* const node = std::getenv("TOLLMERE_NODE");
    ASSERT_NE(node, nullptr);
    const std::filesystem::path report = Home() / "report.txt";
    StartService();
    const std::string answer = std::string("info_response:7:") + kSteamId + ":" + kPersona + ":10:" + kTicket;
    const std::string script = support::ToUtf8(BinFolder() / "node_client.js");
    support::ChildProcess client({node,
                                  {script, answer, SampleGame(), HomeText(), support::ToUtf8(report)},
                                  {{"NODE_SKIP_PLATFORM_CHECK", "1"}},
                                  Home()});
    EXPECT_EQ(client.WaitForExit(), 0) << support::ReadAll(report);
    CloseFromOutside();
    EXPECT_EQ(CountInLog("SteamService :: OnConnected"), 2);
    EXPECT_EQ(CountInLog("Game launch was requested"), 1);
}

}  // namespace

}  // namespace e2e
