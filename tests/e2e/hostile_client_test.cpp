// Clients that mean harm. Each finds the helper as it was, and so does who comes after them.

#include <algorithm>

#include "support/limits.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

constexpr std::size_t kMegabyte = 1 << 20;

class HostileClient : public HelperFixture {
  protected:
    HostileClient() {
        // The longest there is, so that the answers have the length of real ones.
        variables["STEAM_STAND_IN_TICKET"] = std::string(2048, 'A');
        StartService();
    }
    ~HostileClient() override { CloseFromOutside(); }

    std::size_t PrivateBytes() { return FootprintOf(Helper().Id()).privateBytes; }
    // The next launcher finds a service; what the helper holds then.
    std::size_t BytesOfNextVisit() {
        Connect();
        Send("info_request:1");
        EXPECT_THAT(Receive(), testing::StartsWith("info_response:1:"));
        const std::size_t bytes = PrivateBytes();
        Leave();
        return bytes;
    }

    // A request whose handling shows without an answer. Again after a while: it may be cut where a read ends.
    void AwaitWhatWasSent() {
        std::filesystem::remove(GameRecord());
        int turns = 0;
        EXPECT_TRUE(support::WaitUntil([&] {
            if (turns++ % 500 == 0) Send(launcher::LaunchRequest(1, SampleGame(), HomeText(), ""));
            return std::filesystem::exists(GameRecord());
        }));
    }

    // Figures of a build with a sanitizer are the sanitizer's.
    static void ExpectAtMost(std::size_t bytes, std::size_t limit) {
        EXPECT_TRUE(TOLLMERE_SANITIZED != 0 || bytes <= limit) << bytes << " > " << limit;
    }
};

TEST_F(HostileClient, AnswersThatNobodyReadsGoWithTheirClient) {
    constexpr std::size_t kRequests = 15'000;
    constexpr std::size_t kAnswer = 2160;  // bytes, with the queue's entry
    // Of 32 bytes, which divide the length of a read: none is cut.
    std::string hundred;
    for (int i = 0; i < 100; ++i) hundred += launcher::MakeFrame("info_request:1000000000");
    const auto bytesWithAllUnread = [&] {
        Connect();
        for (std::size_t i = 0; i < kRequests / 100; ++i) SendBytes(hundred);
        AwaitWhatWasSent();
        const std::size_t bytes = PrivateBytes();
        Leave();
        return bytes;
    };
    const std::size_t rest = BytesOfNextVisit();
    const std::size_t first = bytesWithAllUnread();
    BytesOfNextVisit();
    EXPECT_GE(first, rest + kRequests * 2100) << "all of them were queued";
    ExpectAtMost(first, rest + kRequests * kAnswer + kMegabyte);
    ExpectAtMost(bytesWithAllUnread(), first + kMegabyte);
}

TEST_F(HostileClient, LongFramesWithoutPauseCostNoMemory) {
    constexpr std::uint32_t kLength = launcher::kMaxWrite - 4;
    std::string frame = launcher::MakeFrame("info_request:8:" + std::string(kLength - 20, 'x'));
    const std::size_t rest = BytesOfNextVisit();
    std::size_t peak = 0;
    Connect();
    for (int i = 0; i < 60; ++i) {
        for (const std::uint32_t length : {kLength, kLength - 1, kLength + 1, 7u, 0xFFFFFFFFu}) {
            for (std::size_t k = 0; k < 4; ++k) frame[k] = static_cast<char>(length >> (8 * k));
            SendBytes(frame);
        }
        peak = std::max(peak, PrivateBytes());
    }
    Leave();
    BytesOfNextVisit();
    ExpectAtMost(peak, rest + kMegabyte);
}

}  // namespace

}  // namespace e2e
