#include "tests/e2e/helper_fixture.h"
#include "tests/e2e/operations_page.h"

namespace e2e {

namespace {

TEST_F(HelperFixture, WithoutAWindowTheProcessEndsWithCode1) {
    variables["TOLLMERE_TEST_FAULTS"] = "CreateWindowExW:8";
    Start();
    EXPECT_EQ(Helper().WaitForExit(), 1);
    ExpectLog({std::string(33, '\\'), testing::StartsWith("Processing "), AdminState(),
               "Failed to initialize message window. Aborting process with code 1."});
    EXPECT_THAT(OperationsPage().Verdicts(Log()), testing::ElementsAre("No window"));
    EXPECT_THAT(test_support::ReadAll(Surroundings().EventFile()),
                testing::StartsWith(R"({"metrics":[{"name":"STEAM_ACTION","data":"\"id\":0,\"we\":8","time":)"));
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(HelperFixture, AClientThatComesTooEarlyEndsTheStart) {
    variables["TOLLMERE_TEST_FAULTS"] = "ConnectNamedPipe:535";
    Start();
    ExpectEnd();
    EXPECT_THAT(OperationsPage().Verdicts(Log()), testing::ElementsAre("A client came too early"));
    EXPECT_THAT(test_support::ReadAll(Surroundings().EventFile()),
                testing::StartsWith(R"({"metrics":[{"name":"STEAM_ACTION","data":"\"id\":1,\"pe\":535","time":)"));
}

}  // namespace

}  // namespace e2e
