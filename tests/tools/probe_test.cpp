#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/launcher_client/frames.h"
#include "tools/probe/options.h"
#include "tools/probe/run.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(Probe, SendsWhatTheCommandLineSays) {
    Options options;
    std::string error;
    const Arguments arguments = {"probe",         "-v",     "info",     "then",      "launch",
                                 R"(C:\a b.exe)", "--args", "-x \"y\"", "--id",      "18446744073709551615",
                                 "then",          "raw",    "0a FF",    "--answers", "0",
                                 "--timeout",     "70"};
    ASSERT_TRUE(ParseOptions(arguments, options, error)) << error;
    EXPECT_TRUE(options.m_Verbose);
    EXPECT_EQ(options.m_Timeout, std::chrono::milliseconds(70));
    ASSERT_EQ(options.m_Commands.size(), 3U);
    EXPECT_EQ(options.m_Commands[0].m_Bytes, launcher::MakeFrame("info_request:1"));
    EXPECT_EQ(options.m_Commands[1].m_Text, R"(launch_request:18446744073709551615:"C:\\a b.exe":"C:\\":"-x \"y\"")");
    EXPECT_EQ(options.m_Commands[2].m_Bytes, "\x0A\xFF");
    EXPECT_EQ(options.m_Commands[2].m_Answers, 0U);
}

TEST(Probe, EndsWithTwoOnACommandLineWithoutSense) {
    const Arguments kRows[] = {{"probe"},
                               {"probe", "dance"},
                               {"probe", "launch"},
                               {"probe", "raw", "123"},
                               {"probe", "raw", "zz"},
                               {"probe", "info", "launch", "game.exe"},
                               {"probe", "info", "then"},
                               {"probe", "info", "--id", "18446744073709551616"},
                               {"probe", "info", "--id", "-1"},
                               {"probe", "info", "--timeout", "soon"}};
    for (const Arguments& row : kRows) {
        EXPECT_EQ(RunProbe(row), ExitStatus::Usage) << ::testing::PrintToString(row);
    }
}

TEST(Probe, EndsWithThreeWhereNobodyServes) {
    EXPECT_EQ(RunProbe({"probe", "info", "--pipe", "TollmereProbeTestNobody", "--timeout", "0"}), ExitStatus::NoPipe);
}

}  // namespace
