#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "clients/cpp/tollmere_launcher_client.h"
#include "platform/windows_api.h"
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
    const Arguments rows[] = {{"probe"},
                              {"probe", "dance"},
                              {"probe", "launch"},
                              {"probe", "raw", "123"},
                              {"probe", "raw", "zz"},
                              {"probe", "info", "launch", "game.exe"},
                              {"probe", "info", "then"},
                              {"probe", "info", "--id", "18446744073709551616"},
                              {"probe", "info", "--id", "-1"},
                              {"probe", "info", "--timeout", "soon"},
                              {"probe", "log", "--run", "0"},
                              {"probe", "log", "--run", "1", "--follow"},
                              {"probe", "doctor", "--app-id", "-1"},
                              {"probe", "events", "then", "info"},
                              {"probe", "info", "then", "stop"}};
    for (const Arguments& row : rows) {
        EXPECT_EQ(RunProbe(row), ExitStatus::Usage) << ::testing::PrintToString(row);
    }
}

TEST(Probe, TellsItsVersionAndTheCommitOfAClone) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunProbe({"probe", "--version"}), ExitStatus::Done);
    const std::regex form(R"(probe \d+\.\d+\.\d+(\+[0-9a-f]{12,}(-dirty)?)?\r?\n)");
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(std::regex_match(output, form)) << output;
}

TEST(Probe, TellsAPipeThatIsBusyFromOneThatIsNotThere) {
    const std::string name = "tollmere-probe-test-" + std::to_string(GetCurrentProcessId());
    const auto run = [&](const char* words) {
        testing::internal::CaptureStderr();
        const ExitStatus status = RunProbe({"probe", "info", "--pipe", name, "--timeout", "0"});
        EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr(words));
        return status;
    };
    EXPECT_EQ(run("nobody"), ExitStatus::NoPipe);
    const HANDLE pipe = CreateNamedPipeA(("\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
    launcher::PipeClient other;
    ASSERT_TRUE(other.TryOpen(name));
    EXPECT_EQ(run("busy"), ExitStatus::Busy);
    CloseHandle(pipe);
    EXPECT_EQ(run("nobody"), ExitStatus::NoPipe);
}

}  // namespace
