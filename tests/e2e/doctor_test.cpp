// The doctor beside set-ups of every kind: what is wrong has one verdict, and what is right has none.

#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "platform/windows_api.h"
#include "support/limits.h"
#include "support/system.h"
#include "tests/e2e/helper_fixture.h"
#include "tools/probe/run.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class Doctor : public HelperFixture {
  protected:
    Doctor() { RegisterSteam(0); }

    // What isn't ok, as CHECK:CODE; `more` comes last in the command line and wins. Sets m_Report.
    Arguments Verdicts(const Arguments& more = {}) {
        Arguments command = {"probe", "doctor", "--json",    "--helper",  ToText(m_Helper), "--app-id",
                             m_AppId, "--dir",  m_Directory, "--timeout", m_Timeout};
        command.insert(command.end(), more.begin(), more.end());
        testing::internal::CaptureStdout();
        const ExitStatus status = RunProbe(command);
        m_Report = testing::internal::GetCapturedStdout();
        Arguments wrong;
        const nlohmann::json report = nlohmann::json::parse(m_Report);
        for (const nlohmann::json& check : report.at("checks")) {
            if (check.at("ok")) continue;
            wrong.push_back(check.at("check").get<std::string>() + ":" + check.value("code", ""));
            EXPECT_NE(check.at("text"), "");
            EXPECT_NE(check.at("advice"), "");
        }
        EXPECT_EQ(status, wrong.empty() ? ExitStatus::Done : ExitStatus::Failure);
        return wrong;
    }
    void Expect(const Arguments& verdicts, const Arguments& more = {}) {
        EXPECT_EQ(Verdicts(more), verdicts) << m_Report;
    }
    // A process that passes for Steam.
    std::unique_ptr<support::ChildProcess> RunSteam() {
        const fs::path steam = Home() / ProgramFile("steam");
        fs::copy_file(BinFolder() / ProgramFile("probe"), steam);
        const Arguments waits = {"raw", "00", "--pipe", "tollmere-nobody", "--timeout", "3600000"};
        auto process = std::make_unique<support::ChildProcess>(support::ChildProcess::Start{steam, waits, {}, Home()});
        RegisterSteam(process->Id());
        return process;
    }
    static std::string ToText(const fs::path& path) { return support::ToUtf8(path); }

    fs::path m_Helper = Home() / ProgramFile("tollmere_steam_helper");
    std::string m_AppId = "480";
    std::string m_Directory = HomeText();
    std::string m_Timeout = "100";  // ms
    std::string m_Report;
};

TEST_F(Doctor, NamesTheOneThingThatIsWrong) {
    const fs::path folder = LogFile().parent_path();
    const fs::path away = folder.parent_path() / "away";
    const fs::path library = Home() / "steam_api64.dll";
    const fs::path text = Home() / "text.exe";
    std::ofstream(text) << "no program";
    const std::string banner(33, '\\');
    const auto steam = RunSteam();  // for whom doesn't see that the library is a stand-in
    const struct {
        std::string verdict;
        std::function<void()> spoil;
        std::function<void()> mend;
    } rows[] = {
        {"program:helper-missing", [&] { m_Helper = Home() / "missing"; }, [] {}},
        {"program:helper-not-started", [&] { m_Helper = text; }, [] {}},
        {"library:no-steam-library", [&] { UseStandIn(""); }, [] {}},
        {"library:no-steam-library", [&] { std::ofstream(library) << "no library"; }, [] {}},
        {"library:no-steam-library", [&] { fs::resize_file(library, 4096); }, [] {}},
        {"app-id:no-app-id", [&] { m_AppId = "0"; }, [] {}},
        {"app-id:no-app-id", [&] { m_AppId = "2147483648"; }, [] {}},
        {"directory:game-directory-missing", [&] { m_Directory = HomeText() + "-missing"; }, [] {}},
        {"directory:game-directory-missing", [&] { m_Directory = ToText(m_Helper); }, [] {}},
        {"log:", [&] { fs::rename(folder, away); }, [&] { fs::rename(away, folder); }},
        {"log:", [&] { fs::create_directory(LogFile()); }, [&] { fs::remove(LogFile()); }},
        {"store:",
         [&] {
             fs::create_directories(EventFile().parent_path());
             std::ofstream(EventFile()) << R"({"metrics":[)";
         },
         [&] { fs::remove(EventFile()); }},
        // Of a process that isn't a helper.
        {"last-run:ended-without-reason",
         [&] {
             std::ofstream(LogFile()) << "[2026-11-23 14:05:09.123] [  " << support::ProcessId() << "] [ 1A4] "
                                      << banner << "\r\n";
         },
         [&] { fs::remove(LogFile()); }},
        {"last-run:no-app-id",
         [&] {
             variables["SteamAppId"] = std::nullopt;
             Start();
             ExpectEnd();
             fs::remove(EventFile());
         },
         [&] { fs::remove(LogFile()); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.verdict);
        Expect({});
        row.spoil();
        Expect({row.verdict});
        row.mend();
        m_Helper = Home() / ProgramFile("tollmere_steam_helper");
        m_AppId = "480";
        m_Directory = HomeText();
        UseStandIn("steam_api64.dll");
    }
    EXPECT_FALSE(fs::exists(LogFile())) << "the doctor leaves nothing";
}

TEST_F(Doctor, NamesTheFunctionThatTheLibraryLacks) {
    for (const std::string name :
         {"SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_RegisterCallback", "SteamAPI_UnregisterCallback",
          "SteamAPI_GetHSteamUser", "SteamAPI_GetHSteamPipe", "SteamAPI_RunCallbacks", "SteamClient"}) {
        UseStandIn("stand_in_variants/steam_api64_without_" + name + ".dll");
        Expect({"library:wrong-steam-library"});
        EXPECT_THAT(m_Report, testing::HasSubstr("missing: " + name + "\""));
    }
}

TEST_F(Doctor, LooksForSteamItselfWhereTheLibraryIsNoStandIn) {
    UseStandIn("stand_in_variants/steam_api64_without_SteamStandIn.dll");
    Expect({"steam:steam-refuses"});
    RegisterSteam(support::ProcessId());
    Expect({"steam:steam-refuses"});

    {
        const auto steam = RunSteam();
        Expect({});
    }
    Expect({"steam:steam-refuses"});
}

TEST_F(Doctor, TakesFromTheEnvironmentWhatNoOptionGives) {
    const auto run = [&] {
        testing::internal::CaptureStdout();
        RunProbe({"probe", "doctor", "--helper", ToText(m_Helper)});
        return testing::internal::GetCapturedStdout();
    };
    EXPECT_THAT(run(), testing::AllOf(testing::HasSubstr("\napp-id     no-app-id: "),
                                      testing::HasSubstr("\ndirectory  ok  none is given")));
    SetEnvironmentVariableA("SteamAppId", "481x");
    SetEnvironmentVariableA("SteamLocation", ".");
    EXPECT_THAT(run(), testing::AllOf(testing::HasSubstr("\napp-id     ok  481 from SteamAppId"),
                                      testing::HasSubstr("\ndirectory  ok  . from SteamLocation")));
    SetEnvironmentVariableA("SteamAppId", nullptr);
    SetEnvironmentVariableA("SteamLocation", nullptr);
}

TEST_F(Doctor, TellsAHelperThatServesFromOneThatIsInTheWay) {
    m_Timeout = std::to_string(support::Limit().count());
    Expect({}, {"--connect"});
    EXPECT_THAT(m_Report, testing::HasSubstr("free"));
    StartService();
    const std::string helper = "process " + std::to_string(Helper().Id()) + " (tollmere_steam_helper) of this user";
    Expect({});
    EXPECT_THAT(m_Report, testing::HasSubstr("waits for a launcher: " + helper));
    Expect({}, {"--connect"});
    EXPECT_THAT(m_Report, testing::HasSubstr(helper + " answers"));
    Connect();
    ExpectService(1);
    Expect({"pipe:other-helper"});
    EXPECT_THAT(m_Report, testing::HasSubstr(helper));
    m_Timeout = "0";
    Expect({"pipe:other-helper"}, {"--connect"});
    Leave();
    CloseFromOutside();
    EXPECT_EQ(CountInLog("Pipe connected."), 2) << "the doctor connects only when it is told to";
}

TEST_F(Doctor, TellsAPipeOfAnotherProgramAndOneThatIsStuck) {
    const std::string name = "tollmere-doctor-test-" + std::to_string(GetCurrentProcessId());
    const HANDLE pipe = CreateNamedPipeA(("\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
    Expect({"pipe:bad-answer"}, {"--pipe", name});
    Expect({"pipe:no-answer"}, {"--pipe", name, "--connect"});
    EXPECT_THAT(m_Report, testing::HasSubstr("process " + std::to_string(GetCurrentProcessId())));
    CloseHandle(pipe);
    Expect({}, {"--pipe", name});
}

}  // namespace

}  // namespace e2e
