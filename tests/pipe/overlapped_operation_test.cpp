#include "pipe/overlapped_operation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "platform/no_destructor.h"
#include "support/limits.h"
#include "tests/platform/counted_wait.h"
#include "tests/support/log_capture.h"

namespace {

using testing::IsEmpty;

// Completions are played by setting the event, as the system does.
class OverlappedOperationTest : public testing::Test {
  protected:
    bool Arm(bool oneShot) {
        return operation.Initialize([this] { ++fired; }, oneShot);
    }
    void Complete() { SetEvent(operation.m_Overlapped.hEvent); }
    bool Fires(int times) {
        Complete();
        return support::WaitUntil([&] { return fired == times; });
    }
    bool IsIdle() {
        const LockGuard lock(g_CompletionLock);
        return operation.m_Overlapped.hEvent == INVALID_HANDLE_VALUE && !operation.m_IoPending;
    }

    test_support::LogCapture log;
    std::atomic<int> fired = 0;
    OverlappedOperation operation;
};

TEST_F(OverlappedOperationTest, ARepeatingOneFiresForEachCompletion) {
    ASSERT_TRUE(Arm(false));
    for (int times = 1; times <= 3; ++times) EXPECT_TRUE(Fires(times));
    operation.Cleanup(true);
    EXPECT_TRUE(IsIdle());
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(OverlappedOperationTest, AOneShotOneFiresOnceAndGoesBackToIdle) {
    for (int times = 1; times <= 3; ++times) {
        ASSERT_TRUE(Arm(true));
        EXPECT_TRUE(Fires(times));
        EXPECT_TRUE(support::WaitUntil([&] { return IsIdle(); }));
    }
    EXPECT_THAT(log.Lines(), IsEmpty()) << "an unregistration inside the callback is no failure";
}

TEST_F(OverlappedOperationTest, RefusesASecondUseButTakesItsCallback) {
    ASSERT_TRUE(operation.Initialize([&] { fired = 100; }, false));
    EXPECT_FALSE(Arm(false));
    EXPECT_TRUE(Fires(1));

    operation.Cleanup(true);
    operation.m_IoPending = true;
    EXPECT_FALSE(Arm(true));
    operation.Cleanup(true);
    EXPECT_TRUE(Arm(true)) << "after a cleanup it can be used again";
    const char refused[] = "Tried to re-initialize an overlapped!";
    EXPECT_THAT(log.Lines(), testing::ElementsAre(refused, refused));
}

// A connection that is lost while it is being announced is listened for again inside that very callback.
TEST_F(OverlappedOperationTest, ACallbackMayCleanUpItsOwnObjectAndArmItAnew) {
    for (const bool oneShot : {true, false}) {
        SCOPED_TRACE(oneShot);
        fired = 0;
        const auto armAnew = [this] {
            auto* const test = this;  // what was captured goes with the clean-up
            test->operation.Cleanup(true);
            EXPECT_TRUE(test->IsIdle());
            EXPECT_TRUE(test->Arm(true));
            ++test->fired;
        };
        ASSERT_TRUE(operation.Initialize(armAnew, oneShot));
        ASSERT_TRUE(Fires(1));
        // Not before the first callback has returned.
        ASSERT_FALSE(IsIdle());
        EXPECT_TRUE(Fires(2));
        operation.Cleanup(true);
    }
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(OverlappedOperationTest, ACleanedUpOneNeverFires) {
    static NoDestructor<OverlappedOperation> late;
    static std::atomic<int> calls = 0;
    ASSERT_TRUE(late->Initialize([] { ++calls; }, false));
    {
        // The completion has begun, or is about to, and waits for the lock.
        const LockGuard lock(g_CompletionLock);
        SetEvent(late->m_Overlapped.hEvent);
        late->Cleanup(true);
    }
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
