#include "pipe/overlapped_operation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/limits.h"
#include "tests/support/log_capture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Completions are played by setting the event, as the system does.
class OverlappedOperationTest : public testing::Test {
  protected:
    void Complete() { SetEvent(operation.m_Overlapped.hEvent); }
    bool Fired(int times) {
        return test_support::WaitUntil([&] { return fired == times; });
    }
    bool IsIdle() {
        const std::lock_guard lock(OverlappedOperation::CompletionLock());
        return operation.m_Overlapped.hEvent == INVALID_HANDLE_VALUE && !operation.m_IoPending;
    }

    test_support::LogCapture log;
    std::atomic<int> fired = 0;
    OverlappedOperation operation;
};

TEST_F(OverlappedOperationTest, ARepeatingOneFiresForEachCompletion) {
    ASSERT_TRUE(operation.Initialize([&] { ++fired; }, false));
    for (int times = 1; times <= 3; ++times) {
        Complete();
        EXPECT_TRUE(Fired(times));
    }
    operation.Cleanup(false);
    EXPECT_TRUE(IsIdle());
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(OverlappedOperationTest, AOneShotOneFiresOnceAndGoesBackToIdle) {
    for (int times = 1; times <= 3; ++times) {
        ASSERT_TRUE(operation.Initialize([&] { ++fired; }, true));
        Complete();
        EXPECT_TRUE(test_support::WaitUntil([&] { return IsIdle(); }));
        EXPECT_EQ(fired, times);
    }
    EXPECT_THAT(log.Lines(), IsEmpty()) << "an unregistration inside the callback is no failure";
}

TEST_F(OverlappedOperationTest, RefusesASecondUseButTakesItsCallback) {
    ASSERT_TRUE(operation.Initialize([&] { fired = 100; }, false));
    EXPECT_FALSE(operation.Initialize([&] { ++fired; }, false));
    Complete();
    EXPECT_TRUE(Fired(1));

    operation.Cleanup(false);
    operation.m_IoPending = true;
    EXPECT_FALSE(operation.Initialize([] {}, true));
    operation.Cleanup(false);
    EXPECT_TRUE(operation.Initialize([] {}, true)) << "after a cleanup it can be used again";
    EXPECT_THAT(log.Lines(),
                ElementsAre("Tried to re-initialize an overlapped!", "Tried to re-initialize an overlapped!"));
}

TEST_F(OverlappedOperationTest, ACallbackMayCleanUpItsOwnObject) {
    static OverlappedOperation* own;
    static std::atomic<int>* count;
    own = &operation;
    count = &fired;
    for (const bool oneShot : {true, false}) {
        fired = 0;
        ASSERT_TRUE(operation.Initialize(
            [] {
                own->Cleanup(true);
                ++*count;
            },
            oneShot));
        Complete();
        EXPECT_TRUE(Fired(1));
        EXPECT_TRUE(IsIdle());
    }
    EXPECT_THAT(log.Lines(), IsEmpty());
}

// A connection that is lost while it is being announced is listened for again inside that very callback.
TEST_F(OverlappedOperationTest, ACallbackMayArmItsOwnObjectAnew) {
    static OverlappedOperation* own;
    static std::atomic<int>* count;
    own = &operation;
    count = &fired;
    ASSERT_TRUE(operation.Initialize(
        [] {
            own->Cleanup(true);
            own->Initialize([] { ++*count; }, true);
            ++*count;
        },
        true));
    Complete();
    ASSERT_TRUE(Fired(1));
    {
        // Held by the first callback until it has returned.
        const std::lock_guard lock(OverlappedOperation::CompletionLock());
        ASSERT_NE(operation.m_Overlapped.hEvent, INVALID_HANDLE_VALUE);
    }
    Complete();
    EXPECT_TRUE(Fired(2));
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(OverlappedOperationTest, ADisarmedOneNeverFires) {
    ASSERT_TRUE(operation.Initialize([&] { ++fired; }, false));
    HANDLE wait;
    {
        // The completion has begun when it is disarmed, and waits for the lock.
        const std::lock_guard lock(OverlappedOperation::CompletionLock());
        Complete();
        wait = operation.Disarm();
    }
    EXPECT_TRUE(UnregisterWaitEx(wait, INVALID_HANDLE_VALUE));
    Complete();
    EXPECT_EQ(operation.Disarm(), INVALID_HANDLE_VALUE);
    operation.Cleanup(false);
    EXPECT_EQ(fired, 0);
}

}  // namespace
