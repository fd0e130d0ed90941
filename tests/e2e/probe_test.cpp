// The probe beside a real helper: what it makes of the files left behind, and the orderly end.

#include "support/limits.h"
#include "support/system.h"
#include "tests/e2e/helper_fixture.h"
#include "tools/probe/helper_process.h"
#include "tools/probe/run.h"

namespace e2e {

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

class Probe : public HelperFixture {
  protected:
    // What it prints, after it has ended as expected.
    std::string Run(std::vector<std::string> command, ExitStatus expected = ExitStatus::Done) {
        SCOPED_TRACE(testing::PrintToString(command));
        command.insert(command.begin(), "probe");
        testing::internal::CaptureStdout();
        const ExitStatus status = RunProbe(command);
        std::string output = testing::internal::GetCapturedStdout();
        EXPECT_EQ(status, expected) << output;
        return output;
    }
    std::string HelperId() { return std::to_string(Helper().Id()); }
    static std::string Stretched() { return std::to_string(support::Limit().count()); }
};

TEST_F(Probe, StopsTheHelperAndTellsWhatItLeft) {
    Run({"log"}, ExitStatus::NothingThere);
    Run({"events"}, ExitStatus::NothingThere);

    variables["SteamAppId"] = std::nullopt;
    Start();
    ExpectEnd();
    const std::string failed = HelperId();
    variables["SteamAppId"] = "480";
    StartService();
    const std::string good = HelperId();
    Run({"stop", "--pid", std::to_string(support::ProcessId())}, ExitStatus::NothingThere);
    EXPECT_TRUE(Helper().IsRunning());
    Run({"stop", "--pid", good, "--timeout", Stretched()});
    ExpectEnd();
    Run({"stop", "--pid", good}, ExitStatus::NothingThere);

    EXPECT_THAT(Run({"log"}), AllOf(ContainsRegex("  2 +" + failed + "  .*  No app id\n"),
                                    ContainsRegex("  1 +" + good + "  .*  The end\n")));
    EXPECT_THAT(Run({"log", "--run", "2"}), AllOf(HasSubstr("] Invalid steam app id\n"),
                                                  testing::Not(HasSubstr("Steam initialized successfully"))));
    EXPECT_THAT(Run({"log", "--run", "1"}), HasSubstr("] Steam initialized successfully\n"));
    Run({"log", "--run", "3"}, ExitStatus::NothingThere);
    EXPECT_THAT(Run({"log", "--json"}), HasSubstr(R"("verdict":"No app id","code":"no-app-id"})"));
    EXPECT_THAT(Run({"log", "--run", "2", "--json"}), HasSubstr(R"(,"text":"Invalid steam app id"})"));
    EXPECT_EQ(Run({"log", "--follow", "--timeout", "0"}), "") << "what is there already isn't shown";
    EXPECT_THAT(Run({"events"}),
                AllOf(ContainsRegex("^20..-..-.. ..:..:.. UTC  how far the start got\n    app id: 480\n"),
                      HasSubstr("    the user's Steam id: 76561197960287930\n"), HasSubstr("    app id: 0\n")));

    // Without the process's id, where the system can tell it.
    StartService();
    Run({"stop", "--timeout", Stretched()}, CanFindHelper() ? ExitStatus::Done : ExitStatus::Usage);
    EXPECT_EQ(Helper().IsRunning(), !CanFindHelper());
}

}  // namespace

}  // namespace e2e
