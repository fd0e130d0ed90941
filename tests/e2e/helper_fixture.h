#pragma once

// The helper as a process in a folder of its own, with a stand-in for the Steam client beside it, and a launcher that
// talks to it. A test sets what it wants, calls Start, talks, ends the helper and looks at its log.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/machine.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"
#include "tools/launcher_client/frames.h"
#include "tools/launcher_client/pipe_client.h"

namespace e2e {

// One expected line of a log, as its text or as a matcher.
using Lines = std::vector<testing::Matcher<std::string>>;

// Several lists, one after another.
Lines Join(std::initializer_list<Lines> parts);

class HelperFixture : public testing::Test {
  protected:
    HelperFixture();
    // Whatever the test was about, the helper has used Steam as Steam demands.
    ~HelperFixture() override;

    // Before Start. What is set here differs from a start in which all goes well, with the app id and the game's
    // directory given by the environment.
    void UseStandIn(const std::filesystem::path& dll);
    void RemoveStandIn();
    test_support::Environment variables;
    std::vector<std::string> arguments;

    void Start();
    // Start, and wait until the service is up and waits for its launcher.
    void StartService();

    // The launcher's part. What isn't done within the limit fails the test.
    void Connect();
    void Leave();
    void SendBytes(const std::string& bytes);
    void Send(const std::string& body);
    // The body of the next frame.
    std::string Receive();
    void ExpectAnswer(const std::string& body) { EXPECT_EQ(Receive(), body); }
    // Asks for the identity and expects it.
    void ExpectService(std::uint64_t requestId);
    // Asks until there is an answer: what the helper reads together with a request may spoil it.
    void ExpectAnswerInTheEnd();

    // The process ends, by itself or because its window was closed from outside, with code 0.
    void ExpectEnd();
    void CloseFromOutside();
    // Ends by itself 20 s after the launcher has gone or after the start.
    void ExpectEndByTimeout();

    // The texts of the log's lines. Only after the helper's end: it writes late, and shares its file with nobody.
    std::vector<std::string> Log() const;
    void ExpectLog(const Lines& expected) const;
    // How many lines of the log are this text.
    std::ptrdiff_t CountInLog(const std::string& text) const;
    // docs/operations.md tells from the log's end what has happened, and that is what it says under the heading.
    void ExpectVerdict(const std::string& heading) const;
    // The log has what the page shows under the heading.
    void ExpectShown(const std::string& heading) const;
    // Its value is the machine's.
    static testing::Matcher<std::string> AdminState();
    // What every log begins with, with a line for each option given, and what it says while it finds the app id and the
    // game's directory in the environment.
    static Lines Preamble(const Lines& options = {});
    Lines SurroundingsFromEnvironment() const;
    static Lines EndOfService();

    // The call record of the stand-in.
    std::string SteamCalls() const;

    // Where the helper is; its name has a blank and letters beyond ASCII.
    std::filesystem::path Home() const { return m_Home; }
    std::string HomeText() const { return test_support::ToUtf8(m_Home); }
    std::string HelperText() const { return test_support::ToUtf8(m_Home / ProgramFile("tollmere_steam_helper")); }
    test_support::ChildProcess& Helper() { return *m_Process; }
    launcher::PipeClient& Launcher() { return m_Launcher; }
    Machine& Surroundings() { return m_Machine; }
    const Machine& Surroundings() const { return m_Machine; }

  private:
    test_support::TempFolder m_Folder;
    Machine m_Machine;
    std::filesystem::path m_Home;
    std::optional<test_support::ChildProcess> m_Process;
    launcher::PipeClient m_Launcher;
    launcher::FrameReader m_Frames;
};

inline constexpr char kPipeName[] = "TollmereSteamHelper";
inline constexpr char kSteamId[] = "76561197960287930";
inline constexpr char kPersona[] = "Ada: L\xC3\xB6velace";  // what follows the colon is no field of its own
inline constexpr char kTicket[] = "14000000DEADBEEF00FF";   // 10 bytes
// A callback of the second pump that the helper leaves aside without a word; StartService looks out for it.
inline constexpr char kSecondPump[] = "2:331:null";

}  // namespace e2e
