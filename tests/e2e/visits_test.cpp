// Launchers that come without a pause, wait for the pipe in every way there is, and leave where they like, over starts
// and returns of the helper: who asks is answered, and nothing is left behind. How many visits is the build's to say.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <thread>

#include "support/limits.h"
#include "support/open_pipe.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using launcher::Outcome;
using support::Limit;

constexpr int kStarts = std::max(3, TOLLMERE_VISITS / 80);
constexpr int kVisitsOfACrowd = TOLLMERE_VISITS / kStarts / 2;
// Bytes that the lines of one may take in the log's buffer until it is written.
constexpr std::size_t kLinesOfAVisit = 8192;

class Visits : public HelperFixture {
  protected:
    enum class Way { TriesAgain, WaitsForItsTurn };

    // All come at once, and while they come and go `meanwhile` happens.
    void ComeAndGo(const std::vector<Way>& crowd, const std::function<void()>& meanwhile) {
        const int times = kVisitsOfACrowd / static_cast<int>(crowd.size());
        std::vector<std::thread> launchers;
        for (const Way way : crowd) launchers.emplace_back([this, way, times] { Return(way, times); });
        meanwhile();
        for (std::thread& launcher : launchers) launcher.join();
        ASSERT_EQ(m_Failed, 0);
    }

    // A launcher that is killed while it waits for an answer that never comes.
    void KilledVisit() {
        fs::remove(GameRecord());
        const support::ChildProcess probe(
            {BinFolder() / ProgramFile("probe"), {"launch", SampleGame(), "then", "raw", "00"}, {}, Home()});
        EXPECT_TRUE(support::WaitUntil([&] { return fs::exists(GameRecord()); }));
    }

    Footprint Settled() {
        Connect();
        ExpectService(1);
        const Footprint footprint = FootprintOf(Helper().Id());
        EXPECT_GT(footprint.handles, 0u);
        Leave();
        return footprint;
    }

    std::atomic<int> answered = 0;
    std::atomic<int> visits = 0;

  private:
    void Return(Way way, int times) {
        launcher::PipeClient client;
        for (int i = 0; i < times && m_Failed == 0; ++i) {
            if (!Comes(client, way) || !Visit(client, i)) ++m_Failed;
        }
    }

    static bool Comes(launcher::PipeClient& client, Way way) {
        if (way == Way::WaitsForItsTurn) return support::OpenPipe(client, kPipeName, Limit());
        const auto end = std::chrono::steady_clock::now() + Limit();
        while (!client.TryOpen(kPipeName)) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::this_thread::yield();
        }
        return true;
    }

    // Leaves when it has its answer, at once, or in the middle of something. False if the helper was mute.
    bool Visit(launcher::PipeClient& client, int number) {
        ++visits;
        const std::string request = launcher::MakeFrame("info_request:1");
        bool served = true;
        if (number % 2 == 0) {
            std::string answer;
            served = client.Write(request, Limit()) == Outcome::Done && client.Read(answer, Limit()) == Outcome::Done;
            answered += served ? 1 : 0;
        } else if (number % 4 == 1) {
            client.Write(request + request.substr(0, static_cast<std::size_t>(number) % request.size()), Limit());
        }
        client.Close();
        return served;
    }

    std::atomic<int> m_Failed = 0;
};

TEST_F(Visits, WhoAsksIsAnsweredHoweverEarlyAndNothingIsLeftBehind) {
    constexpr Way kTries = Way::TriesAgain, kWaits = Way::WaitsForItsTurn;
    const std::vector<Way> crowds[] = {{kTries}, {kWaits}, {kTries, kWaits, kTries, kWaits}};
    std::ptrdiff_t early = 0;
    std::size_t most = 0;
    for (int start = 0; start < kStarts && !HasFailure(); ++start) {
        SCOPED_TRACE(start);
        ComeAndGo(crowds[start % 3], [this] { StartService(); });
        const Footprint before = Settled();
        ComeAndGo(crowds[start % 3], [this] { KilledVisit(); });
        const Footprint after = Settled();
        CloseFromOutside();
        early += CountInLog("Connected pipe.");
        fs::remove(LogFile());
        // The log may just have its timer armed, or its file open.
        EXPECT_LE(after.handles, before.handles + 4);
        most = std::max(most, after.privateBytes - std::min(before.privateBytes, after.privateBytes));
    }
    std::printf(
        "%d starts, %d visits, %d waited for an answer and got it; %td came before the pipe listened; %zu bytes\n",
        kStarts, visits.load(), answered.load(), early, most);
    EXPECT_TRUE(TOLLMERE_SANITIZED != 0 || most <= kVisitsOfACrowd * kLinesOfAVisit) << most;
}

}  // namespace

}  // namespace e2e
