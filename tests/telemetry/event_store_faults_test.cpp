#include <cstdlib>
#include <new>

#include "platform/posix/testing/faults.h"
#include "telemetry/json/json_validator.h"
#include "tests/telemetry/store_fixture.h"

// How many large blocks there is memory for; negative: all.
static int g_LargeBlocks = -1;

void* operator new(std::size_t size) {
    constexpr std::size_t kLarge = 1000;
    if (size >= kLarge && g_LargeBlocks == 0) throw std::bad_alloc();
    if (size >= kLarge && g_LargeBlocks > 0) --g_LargeBlocks;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using EventStoreFaults = StoreFixture;

TEST_F(EventStoreFaults, WhatFailsCostsNoMoreThanItMust) {
    const std::string old = Document({Entry("old", "1")});
    const std::string withoutTheOld = Document({Entry("new", "2")});
    struct {
        const char* call;
        int skip;
        std::string file;
        std::string after;
        bool saved;
    } const rows[] = {
        {"SHGetKnownFolderPath", 1, old, old, false},  // for the writing
        {"CreateFileW", 1, old, old, false},
        {"CreateFileW", 0, old, withoutTheOld, true},  // for the reading
        {"ReadFile", 0, old, withoutTheOld, true},
        {"DeleteFileW", 0, "no store", withoutTheOld, true},
        {"WriteFile", 0, old, "", true},
    };
    log.ArmFlushTimer();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        WriteStore(row.file);
        Queue("new", 2);
        platform_testing::FailCall(row.call, ERROR_ACCESS_DENIED, row.skip);
        EXPECT_EQ(SaveEvents(), row.saved);
        EXPECT_EQ(ReadStore(), row.after);
        EXPECT_EQ(platform_testing::PendingFaultCount(), 0);
        source.m_Events.clear();
    }
}

TEST_F(EventStoreFaults, WithoutMemoryTheFileIsTheOldOneOrAWholeNewOne) {
    const std::string old = Document(std::vector(9, Entry(std::string(1000, 'x'), "1")));
    int blocks = 0;
    for (bool enough = false; !enough; ++blocks) {
        SCOPED_TRACE(blocks);
        ASSERT_LT(blocks, 1000);
        WriteStore(old);
        source.m_Events.clear();
        Queue("new", 2);
        g_LargeBlocks = blocks;
        const bool saved = SaveEvents();
        enough = g_LargeBlocks > 0;
        g_LargeBlocks = -1;
        const std::string bytes = *ReadStore();
        EXPECT_EQ(bytes == old, !saved);
        EXPECT_TRUE(ValidateDocument(bytes.data(), bytes.size()));
    }
    EXPECT_GT(blocks, 10);
    EXPECT_GT(ReadStore()->size(), old.size());
}

TEST_F(EventStoreFaults, TheLastSaveIsForWhatIsQueuedAndWithdrawsInAnyCase) {
    Queue("lost", 1);
    platform_testing::FailCall("SHGetKnownFolderPath", ERROR_ACCESS_DENIED, 1);
    SaveEventsAndWithdraw();
    platform_testing::ClearFaults();
    EXPECT_TRUE(source.m_Events.empty());
    EXPECT_EQ(g_TelemetryHooks, nullptr);
    EXPECT_EQ(g_TelemetrySource, nullptr);
    PublishTelemetry(hooks, source);
    SaveEventsAndWithdraw();
    EXPECT_EQ(ReadStore(), std::nullopt);
}

}  // namespace
