#include "tests/e2e/helper_fixture.h"

#include <algorithm>

#include "support/limits.h"
#include "support/open_pipe.h"
#include "tests/e2e/operations_page.h"
#include "tests/support/log_text.h"
#include "tools/probe/verdict.h"

namespace e2e {

namespace fs = std::filesystem;
using support::Limit;
using support::ToUtf8;
using support::WaitUntil;

HelperFixture::HelperFixture() : m_Machine(m_Folder.Path()), m_Home(m_Folder.Path() / u8"Helf\u00E9r f\u00FCr alle") {
    fs::create_directory(m_Home);
    fs::copy_file(BinFolder() / ProgramFile("tollmere_steam_helper"), m_Home / ProgramFile("tollmere_steam_helper"));
    UseStandIn("steam_api64.dll");
    variables = m_Machine.Variables();
    variables["SteamAppId"] = "480";
    variables["SteamLocation"] = HomeText();
    variables["STEAM_STAND_IN_STEAM_ID"] = kSteamId;
    variables["STEAM_STAND_IN_PERSONA"] = kPersona;
    variables["STEAM_STAND_IN_TICKET"] = kTicket;
    variables["STEAM_STAND_IN_CALLBACKS"] = std::string("1:163:0110000001000000;") + kSecondPump;
    variables["STEAM_STAND_IN_RECORD"] = ToUtf8(m_Folder.Path() / "steam_calls");
    variables["SAMPLE_GAME_RECORD"] = ToUtf8(GameRecord());
}

void HelperFixture::UseStandIn(const fs::path& dll) const {
    fs::remove(m_Home / "steam_api64.dll");
    if (!dll.empty()) fs::copy_file(BinFolder() / dll, m_Home / "steam_api64.dll");
}

void HelperFixture::Start() {
    ExpectSteamIsContent();
    // What an earlier run has left would pass for this one's.
    fs::remove(m_Folder.Path() / "steam_calls");
    m_Machine.TakeBackTime();
    m_Process.emplace(support::ChildProcess::Start{m_Home / ProgramFile("tollmere_steam_helper"), arguments, variables,
                                                   m_Folder.Path()});
}

void HelperFixture::StartService() {
    Start();
    // The first pump comes after all else of the start, and with the second all that the first brought is logged.
    ASSERT_TRUE(WaitUntil([&] {
        return SteamCalls().find("SteamAPI_RunCallbacks pump=2") != std::string::npos || !m_Process->IsRunning();
    })) << SteamCalls();
    ASSERT_TRUE(m_Process->IsRunning()) << SteamCalls();
}

void HelperFixture::Connect() {
    m_Frames = {};
    ASSERT_TRUE(support::OpenPipe(m_Launcher, kPipeName, Limit()));
}

void HelperFixture::SendBytes(const std::string& bytes) {
    ASSERT_EQ(m_Launcher.Write(bytes, Limit()), launcher::Outcome::Done);
}

std::string HelperFixture::Receive() {
    for (;;) {
        if (const std::optional<launcher::Frame> frame = m_Frames.Next()) {
            EXPECT_EQ(frame->m_Id, launcher::kSteamId);
            return frame->m_Body;
        }
        std::string bytes;
        if (m_Launcher.Read(bytes, Limit()) != launcher::Outcome::Done) return "(no answer)";
        m_Frames.Feed(bytes);
    }
}

void HelperFixture::ExpectService(std::uint64_t requestId) {
    const std::string id = std::to_string(requestId);
    Send("info_request:" + id);
    ExpectAnswer("info_response:" + id + ":" + kSteamId + ":" + kPersona + ":10:" + kTicket);
}

void HelperFixture::CloseFromOutside() {
    EXPECT_TRUE(m_Process->RequestClose());
    ExpectEnd();
}

void HelperFixture::ExpectEndByTimeout() {
    // Again and again: it isn't known from outside from when on the helper counts.
    WaitUntil([&] {
        m_Machine.LetPass(std::chrono::seconds{20});
        return !m_Process->IsRunning();
    });
    ExpectEnd();
}

std::vector<std::string> HelperFixture::Log() const {
    return test_support::LogTexts(support::ReadAll(LogFile()));
}

std::ptrdiff_t HelperFixture::CountInLog(const std::string& text) const {
    const std::vector<std::string> lines = Log();
    return std::count(lines.begin(), lines.end(), text);
}

void HelperFixture::ExpectVerdict(const std::string& heading) const {
    const std::vector<std::string> log = Log();
    EXPECT_THAT(VerdictsOn(log), testing::ElementsAre(heading)) << testing::PrintToString(log);
    EXPECT_EQ(VerdictOn(log), heading) << "as the probe has it";
}

void HelperFixture::ExpectShown(const std::string& heading) const {
    const std::vector<std::string> log = Log();
    EXPECT_THAT(HeadingsShownBy(log), testing::Contains(heading)) << testing::PrintToString(log);
}

}  // namespace e2e
