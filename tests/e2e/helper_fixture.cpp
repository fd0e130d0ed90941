#include "tests/e2e/helper_fixture.h"

#include <algorithm>
#include <utility>

#include "tests/e2e/operations_page.h"
#include "tests/support/limits.h"
#include "tests/support/log_text.h"

namespace e2e {

namespace fs = std::filesystem;
using test_support::Limit;
using test_support::ReadAll;
using test_support::ToUtf8;
using test_support::WaitUntil;

Lines Join(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

HelperFixture::HelperFixture() : m_Machine(m_Folder.Path()), m_Home(m_Folder.Path() / u8"Helf\u00E9r f\u00FCr alle") {
    fs::create_directory(m_Home);
    fs::copy_file(BinFolder() / ProgramFile("tollmere_steam_helper"), m_Home / ProgramFile("tollmere_steam_helper"));
    UseStandIn(BinFolder() / "steam_api64.dll");
    variables = m_Machine.Variables();
    variables["SteamAppId"] = "480";
    variables["SteamLocation"] = HomeText();
    variables["STEAM_STAND_IN_STEAM_ID"] = kSteamId;
    variables["STEAM_STAND_IN_PERSONA"] = kPersona;
    variables["STEAM_STAND_IN_TICKET"] = kTicket;
    variables["STEAM_STAND_IN_CALLBACKS"] = std::string("1:163:0110000001000000;") + kSecondPump;
    variables["STEAM_STAND_IN_RECORD"] = ToUtf8(m_Folder.Path() / "steam_calls");
}

HelperFixture::~HelperFixture() {
    EXPECT_THAT(SteamCalls(), testing::Not(testing::HasSubstr("ERROR")));
}

void HelperFixture::UseStandIn(const fs::path& dll) {
    fs::copy_file(dll, m_Home / "steam_api64.dll", fs::copy_options::overwrite_existing);
}

void HelperFixture::RemoveStandIn() {
    fs::remove(m_Home / "steam_api64.dll");
}

void HelperFixture::Start() {
    m_Process.emplace(test_support::ChildProcess::Start{m_Home / ProgramFile("tollmere_steam_helper"), arguments,
                                                        variables, m_Folder.Path()});
}

void HelperFixture::StartService() {
    // What an earlier run of the same test has left would pass for this one's.
    fs::remove(m_Folder.Path() / "steam_calls");
    Start();
    // The first pump comes after all else of the start, and with the second all that the first brought is logged.
    ASSERT_TRUE(WaitUntil([&] {
        return SteamCalls().find("SteamAPI_RunCallbacks pump=2") != std::string::npos || !m_Process->IsRunning();
    })) << SteamCalls();
    ASSERT_TRUE(m_Process->IsRunning()) << SteamCalls();
}

void HelperFixture::Connect() {
    m_Frames = {};
    ASSERT_TRUE(m_Launcher.Open(kPipeName, Limit()));
}

void HelperFixture::Leave() {
    m_Launcher.Close();
}

void HelperFixture::SendBytes(const std::string& bytes) {
    ASSERT_EQ(m_Launcher.Write(bytes, Limit()), launcher::Outcome::Done);
}

void HelperFixture::Send(const std::string& body) {
    SendBytes(launcher::MakeFrame(body));
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

void HelperFixture::ExpectAnswerInTheEnd() {
    bool answered = false;
    EXPECT_TRUE(WaitUntil([&] {
        Send("info_request:1");
        std::string bytes;
        while (!answered && m_Launcher.Read(bytes, std::chrono::milliseconds{100}) == launcher::Outcome::Done) {
            m_Frames.Feed(std::exchange(bytes, {}));
            while (const std::optional<launcher::Frame> frame = m_Frames.Next()) {
                answered = answered || frame->m_Body.rfind("info_response:1:", 0) == 0;
            }
        }
        return answered;
    }));
}

void HelperFixture::ExpectEnd() {
    EXPECT_EQ(m_Process->WaitForExit(), 0);
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
    return test_support::LogTexts(ReadAll(m_Machine.LogFile()));
}

void HelperFixture::ExpectLog(const Lines& expected) const {
    const std::vector<std::string> log = Log();
    std::string text;
    for (const std::string& line : log) text += line + "\n";
    for (std::size_t i = 0; i < log.size() && i < expected.size(); ++i) {
        // The first line that differs says it all.
        ASSERT_THAT(log[i], expected[i]) << "in line " << i + 1 << " of\n" << text;
    }
    EXPECT_EQ(log.size(), expected.size()) << text;
}

std::ptrdiff_t HelperFixture::CountInLog(const std::string& text) const {
    const std::vector<std::string> lines = Log();
    return std::count(lines.begin(), lines.end(), text);
}

void HelperFixture::ExpectVerdict(const std::string& heading) const {
    EXPECT_THAT(OperationsPage().Verdicts(Log()), testing::ElementsAre(heading)) << testing::PrintToString(Log());
}

void HelperFixture::ExpectShown(const std::string& heading) const {
    EXPECT_TRUE(OperationsPage().Shows(heading, Log())) << heading << testing::PrintToString(Log());
}

testing::Matcher<std::string> HelperFixture::AdminState() {
    return testing::AnyOf("Admin State: 1", "Admin State: 2", "Admin State: 3");
}

Lines HelperFixture::Preamble(const Lines& options) {
    return Join({Lines{std::string(33, '\\'), testing::StartsWith("Processing ")}, options,
                 Lines{AdminState(), "SteamService :: Init"}});
}

Lines HelperFixture::SurroundingsFromEnvironment() const {
    return {"Processed SteamAppID from Environment: 480", "Processed Steam Location from Environment: " + HomeText(),
            "InitClass :: AppId=480", "InitClass :: Location=" + HomeText()};
}

Lines HelperFixture::EndOfService() {
    return {"SteamService :: Shutdown", "Destroying pipe...", "Process exiting with code 0."};
}

std::string HelperFixture::SteamCalls() const {
    return ReadAll(m_Folder.Path() / "steam_calls");
}

}  // namespace e2e
