#pragma once

// The helper as a process in a folder of its own, with a stand-in for the Steam client beside it, and a launcher that
// talks to it. A test sets what it wants, calls Start, talks, ends the helper and looks at its log.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/child_process.h"
#include "support/temp_folder.h"
#include "tests/e2e/machine.h"

namespace e2e {

class HelperFixture : public testing::Test {
  protected:
    HelperFixture();
    ~HelperFixture() override { ExpectSteamIsContent(); }

    // Before Start. What is set here differs from a start in which all goes well, with the app id and the game's
    // directory given by the environment.
    support::Environment variables;
    std::vector<std::string> arguments;
    // The Steam library beside the helper; `dll` is its place below the build's programs. Empty: none.
    void UseStandIn(const std::filesystem::path& dll) const;

    void Start();
    // Start, and wait until the service is up and waits for its launcher.
    void StartService();

    // The launcher's part. What isn't done within the limit fails the test.
    void Connect();
    void Leave() { m_Launcher.Close(); }
    void SendBytes(const std::string& bytes);
    void Send(const std::string& body) { SendBytes(launcher::MakeFrame(body)); }
    // The body of the next frame.
    std::string Receive();
    void ExpectAnswer(const std::string& body) { EXPECT_EQ(Receive(), body); }
    // On the helper's clock.
    void LetPass(std::chrono::milliseconds time) { m_Machine.LetPass(time); }
    // Asks for the identity and expects it.
    void ExpectService(std::uint64_t requestId);

    // The process ends, by itself or because its window was closed from outside.
    void ExpectEnd(int code = 0) { EXPECT_EQ(m_Process->WaitForExit(), code); }
    void CloseFromOutside();
    // Ends by itself 20 s after the launcher has gone or after the start.
    void ExpectEndByTimeout();

    // The texts of the log's lines. Only after the helper's end: it writes late, and shares its file with nobody.
    std::vector<std::string> Log() const;
    // How many lines of the log are this text.
    std::ptrdiff_t CountInLog(const std::string& text) const;
    // docs/operations.md tells from the log's end what has happened, and that is what it says under the heading.
    void ExpectVerdict(const std::string& heading) const;
    // The log has what the page shows under the heading.
    void ExpectShown(const std::string& heading) const;

    // The call record of the stand-in since the last start.
    std::string SteamCalls() const { return support::ReadAll(m_Folder.Path() / "steam_calls"); }

    // Where the helper is; its name has a blank and letters beyond ASCII.
    std::filesystem::path Home() const { return m_Home; }
    std::string HomeText() const { return support::ToUtf8(m_Home); }
    // A game, and what it writes when it has been started.
    static std::string SampleGame() { return support::ToUtf8(BinFolder() / ProgramFile("sample_game")); }
    std::filesystem::path GameRecord() const { return m_Home / "record.json"; }

    support::ChildProcess& Helper() { return *m_Process; }
    launcher::PipeClient& Launcher() { return m_Launcher; }
    void RegisterSteam(std::uint32_t processId) { m_Machine.RegisterSteam(processId); }
    std::filesystem::path LogFile() const { return m_Machine.LogFile(); }
    std::filesystem::path EventFile() const { return m_Machine.EventFile(); }

  private:
    // Whatever the test is about, the helper uses Steam as Steam demands.
    void ExpectSteamIsContent() const { EXPECT_THAT(SteamCalls(), testing::Not(testing::HasSubstr("ERROR"))); }

    support::TempFolder m_Folder;
    Machine m_Machine;
    std::filesystem::path m_Home;
    std::optional<support::ChildProcess> m_Process;
    launcher::PipeClient m_Launcher;
    launcher::FrameReader m_Frames;
};

inline constexpr char kPipeName[] = "TollmereSteamHelper";
inline constexpr char kSteamId[] = "76561197960287930";
inline constexpr char kPersona[] = "Ada: L\xC3\xB6velace";  // what follows the colon is no field of its own
inline constexpr char kTicket[] = "14000000DEADBEEF00FF";   // 10 bytes
// A callback of the second pump; StartService looks out for it.
inline constexpr char kSecondPump[] = "2:331:null";

}  // namespace e2e
