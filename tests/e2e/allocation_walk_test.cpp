// Each allocation that the program makes in the course of a life fails once. The process then comes to an orderly end,
// or ends at once with code 3. Neither its log nor its store is cut.

#include <cstdio>
#include <ctime>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/e2e/walk.h"

namespace e2e {

namespace {

constexpr char kOldStore[] = R"({"metrics":[{"name":"STEAM_ACTION","data":"\"id\":0,\"we\":8","time":1}]})";
constexpr int kNoWorker = 1;
constexpr int kOutOfMemory = 3;

// Every tenth with a sanitizer: a life then takes many times as long.
constexpr int kStride = TOLLMERE_SANITIZED ? 10 : 1;

class AllocationWalk : public Walk {
  protected:
    // 0 lets every allocation go well.
    Life LiveThroughFailing(int allocation) {
        SCOPED_TRACE("allocation " + std::to_string(allocation));
        variables["TOLLMERE_TEST_FAIL_ALLOCATION"] = std::to_string(allocation);
        std::filesystem::remove(LogFile());
        const Life life = LiveThrough(kOldStore);
        const std::string store = support::ReadAll(EventFile());
        const auto document = nlohmann::json::parse(store, nullptr, false);
        EXPECT_TRUE(document.is_object() && document.contains("metrics")) << store;
        // Each line with its prefix and its end.
        const std::vector<std::string> log = Log();
        if (life.exitCode == kOutOfMemory) {
            if (!log.empty()) ExpectVerdict("Out of memory");
            return life;
        }
        // The event and the wait of the log's timer, which may be armed.
        EXPECT_THAT(life.handles, testing::AnyOf(0, 2));
        if (life.exitCode == kNoWorker) {
            ExpectVerdict("No worker");
        } else {
            EXPECT_EQ(life.exitCode, 0);
        }
        return life;
    }
};

TEST_F(AllocationWalk, EndsByItselfWithWholeFiles) {
    const Life whole = LiveThroughFailing(0);
    ASSERT_EQ(0, whole.exitCode);
    ASSERT_TRUE(whole.visits[0] && whole.visits[1]);
    ASSERT_GT(whole.allocations, 0);

    // Begins elsewhere each time, so that many runs reach all of them. From one life to another the number varies.
    std::map<int, int> codes;
    int failing = 1 + static_cast<int>(std::time(nullptr) % kStride);
    for (;; failing += kStride) {
        const Life life = LiveThroughFailing(failing);
        if (HasFailure()) return;
        if (life.exitCode == 0 && life.allocations < failing) break;
        ++codes[*life.exitCode];
    }
    EXPECT_GT(codes[kOutOfMemory], 0);
    // A thread takes one allocation to start.
    EXPECT_TRUE(kStride > 1 || codes[kNoWorker] == 1) << codes[kNoWorker];
    std::printf("A life has %d allocations. Of those that failed", whole.allocations);
    for (const auto& [code, lives] : codes) std::printf(", %d ended it with code %d", lives, code);
    std::printf(".\n");
}

}  // namespace

}  // namespace e2e
