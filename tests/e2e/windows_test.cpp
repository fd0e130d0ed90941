// What only Windows has: files that others hold, a Steam client built by its own compiler.

#include <fstream>

#include "platform/windows_api.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using support::ReadAll;

// Held, not marked as read-only: for an administrator that would be no obstacle everywhere.
TEST_F(HelperFixture, AFileThatSomebodyElseHoldsStaysAsItIsAndCostsNothingElse) {
    const std::string old = R"({"metrics":[]})";
    fs::create_directories(EventFile().parent_path());
    for (const fs::path& file : {LogFile(), EventFile()}) {
        SCOPED_TRACE(support::ToUtf8(file));
        std::ofstream(LogFile()) << old;
        std::ofstream(EventFile()) << old;
        const HANDLE held =
            CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        StartService();
        Connect();
        ExpectService(1);
        Leave();
        CloseFromOutside();
        CloseHandle(held);
        EXPECT_EQ(ReadAll(file), old);
        EXPECT_NE(ReadAll(LogFile()), ReadAll(EventFile())) << "the other one is written";
    }
}

TEST_F(HelperFixture, AnotherCompilersSteamClientIsUnderstood) {
    UseStandIn("stand_in_variants/steam_api64_msvc.dll");
    Start();
    Connect();
    Send("info_request:3");
    ExpectAnswer("info_response:3:76561197960265730:Built: elsewhere:8:4D53564300FF807F");
    CloseFromOutside();
    EXPECT_EQ(CountInLog("OnGetAuthSessionTicketResponse: result (1), hAuthTicket (8194)"), 1);
}

}  // namespace

}  // namespace e2e
