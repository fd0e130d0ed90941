// Clients that mean harm, or don't care. Each finds the helper as it was, and so does who comes after them.

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using launcher::MakeFrame;
using launcher::Outcome;
using std::chrono::milliseconds;

constexpr std::size_t kMegabyte = 1 << 20;

class HostileClient : public HelperFixture {
  protected:
    HostileClient() {
        // The longest there is, so that the answers have the length of real ones.
        variables["STEAM_STAND_IN_TICKET"] = std::string(2048, 'A');
        fs::copy_file(BinFolder() / ProgramFile("sample_game"), m_Game);
        variables["SAMPLE_GAME_RECORD"] = test_support::ToUtf8(m_Record);
        StartService();
    }
    ~HostileClient() override { CloseFromOutside(); }

    // The next launcher finds a service; what the helper holds then.
    Footprint NextVisit() {
        Connect();
        ExpectAnswerInTheEnd();
        const Footprint footprint = FootprintOf(Helper().Id());
        Leave();
        return footprint;
    }
    std::size_t PrivateBytes() { return FootprintOf(Helper().Id()).privateBytes; }

    // A request whose handling shows without an answer. Again after a while: it may be cut where a read ends.
    void AwaitWhatWasSent() {
        fs::remove(m_Record);
        const std::string launch = launcher::LaunchRequest(1, test_support::ToUtf8(m_Game), HomeText(), "");
        int turns = 0;
        EXPECT_TRUE(test_support::WaitUntil([&] {
            if (turns++ % 500 == 0) Send(launch);
            return fs::exists(m_Record);
        }));
    }

    // Figures of a build with a sanitizer are the sanitizer's.
    static void ExpectAtMost(std::size_t bytes, std::size_t limit) {
        EXPECT_TRUE(TOLLMERE_SANITIZED != 0 || bytes <= limit) << bytes << " > " << limit;
    }

  private:
    const fs::path m_Game = Home() / ProgramFile("game");
    const fs::path m_Record = Home() / "record.json";
};

TEST_F(HostileClient, AnswersThatNobodyReadsGoWithTheirClient) {
    constexpr std::size_t kRequests = 15'000;
    constexpr std::size_t kAnswer = 2160;  // bytes, with the queue's entry
    // Of 32 bytes, which divide the length of a read: none is cut.
    std::string hundred;
    for (int i = 0; i < 100; ++i) hundred += MakeFrame("info_request:1000000000");
    const auto bytesWithAllUnread = [&] {
        Connect();
        for (std::size_t i = 0; i < kRequests / 100; ++i) SendBytes(hundred);
        AwaitWhatWasSent();
        const std::size_t bytes = PrivateBytes();
        Leave();
        return bytes;
    };
    const std::size_t rest = NextVisit().privateBytes;
    const std::size_t first = bytesWithAllUnread();
    const std::size_t after = NextVisit().privateBytes;
    const std::size_t second = bytesWithAllUnread();
    std::printf("private bytes: %zu at rest, %zu with %zu answers unread, %zu after, %zu again, %zu after\n", rest,
                first, kRequests, after, second, NextVisit().privateBytes);
    EXPECT_GE(first, rest + kRequests * 2100) << "all of them were queued";
    ExpectAtMost(first, rest + kRequests * kAnswer + kMegabyte);
    ExpectAtMost(second, first + kMegabyte);
}

TEST_F(HostileClient, LongFramesWithoutPauseCostNoMemory) {
    constexpr std::uint32_t kLength = launcher::kMaxWrite - 4;
    const std::string head = "info_request:8:";
    const std::string honest = MakeFrame(head + std::string(kLength - 5 - head.size(), 'x'));
    const std::size_t rest = NextVisit().privateBytes;
    std::size_t peak = 0;
    Connect();
    for (int i = 0; i < 60; ++i) {
        for (const std::uint32_t length : {kLength, kLength - 1, kLength + 1, 7u, 0xFFFFFFFFu}) {
            std::string frame = honest;
            for (std::size_t k = 0; k < 4; ++k) frame[k] = static_cast<char>(length >> (8 * k));
            SendBytes(frame);
        }
        peak = std::max(peak, PrivateBytes());
    }
    ExpectAnswerInTheEnd();
    std::printf("private bytes: %zu at rest, %zu at most\n", rest, peak);
    ExpectAtMost(peak, rest + kMegabyte);
    Leave();
}

// A read brings a byte or a few, so hardly a frame is whole.
TEST_F(HostileClient, SingleBytesCostNoMemory) {
    const std::size_t rest = NextVisit().privateBytes;
    const std::string request = MakeFrame("info_request:1");
    Connect();
    for (int i = 0; i < 200; ++i) {
        for (const char byte : request) SendBytes(std::string(1, byte));
    }
    ExpectAnswerInTheEnd();
    ExpectAtMost(PrivateBytes(), rest + kMegabyte);
    Leave();
}

// Before, inside and behind a frame, with its answers unread.
TEST_F(HostileClient, VisitsThatEndAnywhereLeaveNothingBehind) {
    constexpr int kVisits = 150;
    const std::string request = MakeFrame("info_request:1");
    Footprint early;
    for (int visit = 1; visit <= kVisits && !HasFailure(); ++visit) {
        Connect();
        const std::string bytes[] = {"", request.substr(0, 9), request, request + request + request.substr(0, 4)};
        SendBytes(bytes[visit % 4]);
        Leave();
        if (visit == 30) early = NextVisit();
    }
    const Footprint late = NextVisit();
    std::printf("%d visits: handles %zu -> %zu, private bytes %zu -> %zu\n", kVisits, early.handles, late.handles,
                early.privateBytes, late.privateBytes);
    // The log may just have its timer armed, or its file open.
    EXPECT_LE(late.handles, early.handles + 4);
    ExpectAtMost(late.privateBytes, early.privateBytes + kMegabyte);
}

}  // namespace

}  // namespace e2e
