// Two thousand visits of launchers that leave at bad moments. Run on request (scripts/test --soak).

#include <chrono>
#include <cstdio>
#include <random>
#include <thread>

#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using launcher::MakeFrame;

constexpr int kVisits = 2000;
constexpr int kFrames = 50'000;
// Visits. By then a queue has been full and the log's buffer, which is written each 10 s, has its size.
constexpr int kSettledAfter = 400;
constexpr std::chrono::milliseconds kPause{50};

class Soak : public HelperFixture {
  protected:
    Soak() {
        // Forty answers are more than the pipe holds.
        variables["STEAM_STAND_IN_TICKET"] = m_Ticket;
        fs::copy_file(BinFolder() / ProgramFile("sample_game"), m_Game);
        variables["SAMPLE_GAME_RECORD"] = test_support::ToUtf8(m_Record);
    }

    // Some frames that are answered and some that aren't.
    std::string Frames(int count) {
        std::string bytes;
        for (int i = 0; i < count; ++i) {
            const bool isAsking = m_Random() % 4 != 0;
            bytes += MakeFrame(isAsking ? "info_request:" + std::to_string(i) : "no_such_request:1");
            m_Answers += isAsking ? 1 : 0;
        }
        m_Frames += count;
        return bytes;
    }
    void ReadAnswers() {
        for (; m_Answers > 0 && !HasFailure(); --m_Answers) EXPECT_THAT(Receive(), testing::HasSubstr(m_Ticket));
    }
    // The launcher's part of one visit; it ends in the middle of something.
    void Visit() {
        m_Answers = 0;
        switch (m_Random() % 4) {
            case 0:  // before a frame
                SendBytes(Frames(20));
                ReadAnswers();
                break;
            case 1:  // inside a frame
                SendBytes(Frames(20));
                ReadAnswers();
                SendBytes(MakeFrame("info_request:1").substr(0, 1 + m_Random() % 20));
                break;
            case 2:  // behind frames whose answers nobody reads
                SendBytes(Frames(60));
                break;
            default:  // with half of the answers read
                SendBytes(Frames(20));
                m_Answers /= 2;
                ReadAnswers();
        }
    }
    // A launcher that is killed while it waits for a second answer that never comes. Between it and the visits before
    // and behind it lies the pause that PipeClient::Open makes between visits of its own.
    void KilledVisit() {
        std::string hex;
        const std::string game = test_support::ToUtf8(m_Game);
        for (const char c : MakeFrame(launcher::LaunchRequest(1, game, HomeText(), ""))) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
            hex += digits;
        }
        fs::remove(m_Record);
        std::this_thread::sleep_for(kPause);
        {
            test_support::ChildProcess probe(
                {BinFolder() / ProgramFile("probe"), {"raw", hex, "--answers", "2"}, {}, Home()});
            EXPECT_TRUE(test_support::WaitUntil([&] { return fs::exists(m_Record); }));
        }
        std::this_thread::sleep_for(kPause);
    }
    // What the helper holds while a launcher is connected and everything is answered.
    Footprint Settled() {
        Connect();
        Send("info_request:1");
        EXPECT_THAT(Receive(), testing::HasSubstr(m_Ticket));
        const Footprint footprint = FootprintOf(Helper().Id());
        Leave();
        return footprint;
    }

    int m_Frames = 0;

  private:
    const std::string m_Ticket = std::string(2048, 'A');
    const fs::path m_Game = Home() / ProgramFile("game");
    const fs::path m_Record = Home() / "record.json";
    std::mt19937 m_Random{20260101};
    int m_Answers = 0;
};

TEST_F(Soak, VisitsLeaveNothingBehind) {
    StartService();
    Footprint early;
    for (int visit = 1; visit <= kVisits; ++visit) {
        if (visit % 50 == 0) KilledVisit();
        Connect();
        Visit();
        Leave();
        ASSERT_FALSE(HasFailure()) << "in visit " << visit;
        if (visit == kSettledAfter) early = Settled();
    }
    const Footprint late = Settled();
    std::printf("%d visits, %d frames; handles %zu -> %zu, private bytes %zu -> %zu\n", kVisits, m_Frames,
                early.handles, late.handles, early.privateBytes, late.privateBytes);
    EXPECT_GE(m_Frames, kFrames);
    EXPECT_GT(early.privateBytes, 0u);
    // The log may just have its timer armed, and an allocator moves by pages.
    EXPECT_LE(late.handles, early.handles + 4);
    EXPECT_LE(late.privateBytes, early.privateBytes + 64 * 1024);
    CloseFromOutside();
}

}  // namespace

}  // namespace e2e
