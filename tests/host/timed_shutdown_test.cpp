#include "host/timed_shutdown.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "pipe/overlapped_operation.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "platform/time_out.h"
#include "service/steam_service.h"
#include "support/limits.h"
#include "tests/support/log_capture.h"

namespace {

using namespace std::chrono_literals;
using platform_testing::AdvanceClock;
using testing::ElementsAre;

const char kScheduled[] = "Scheduling a shutdown in 20000 ms.";
const char kCancelled[] = "Cancel shutdown.";
const char kAlready[] = "Not scheduling a timed shutdown, as one appears to already be scheduled.";
const char kTimedOut[] = "Connection timed out, terminating.";

class TimedShutdown : public testing::Test {
  protected:
    ~TimedShutdown() override { StopTimedShutdown(); }
    bool TimesOut() {
        return support::WaitUntil([&] { return service.m_ReadyToExit.load(); });
    }
    // True once the wait thread has worked off everything that had come due: another time-out fires behind it.
    bool NothingFires() {
        static std::atomic<bool> fired;
        fired = false;
        OwnedEvent event;
        OwnedWait wait;
        const auto fire = [](void*, BOOLEAN) { fired = true; };
        ArmTimeOut(event, wait, fire, nullptr, 0);
        return support::WaitUntil([] { return fired.load(); }) && !service.m_ReadyToExit;
    }

    test_support::LogCapture log;
    SteamService service;
};

TEST_F(TimedShutdown, RunsOutAfter20SecondsUnlessItIsCancelled) {
    ScheduleTimedShutdown(&service);
    AdvanceClock(15s);
    CancelTimedShutdown();
    CancelTimedShutdown();
    AdvanceClock(30s);
    EXPECT_TRUE(NothingFires());

    ScheduleTimedShutdown(&service);
    AdvanceClock(15s);
    ScheduleTimedShutdown(&service);
    AdvanceClock(4'900ms);
    EXPECT_TRUE(NothingFires());
    AdvanceClock(101ms);
    EXPECT_TRUE(TimesOut()) << "a second schedule doesn't prolong the first";
    ScheduleTimedShutdown(&service);
    CancelTimedShutdown();
    EXPECT_TRUE(service.m_ReadyToExit) << "nothing takes it back";
    ScheduleTimedShutdown(&service);
    EXPECT_THAT(log.Lines(), ElementsAre(kScheduled, kCancelled, kCancelled, kScheduled, kAlready, kTimedOut, kAlready,
                                         kCancelled, kScheduled));
}

TEST_F(TimedShutdown, OneThatHasBegunWhenItIsCancelledTouchesNothing) {
    for (int i = 0; i < 50; ++i) {
        const LockGuard completion(g_CompletionLock);
        ScheduleTimedShutdown(&service);
        AdvanceClock(20'001ms);
        for (int turn = 0; turn < 100; ++turn) std::this_thread::yield();
        CancelTimedShutdown();
    }
    EXPECT_TRUE(NothingFires());
}

TEST_F(TimedShutdown, AFailedScheduleLeavesRoomForTheNext) {
    log.ArmFlushTimer();
    for (const char* const call : {"CreateEventW", "RegisterWaitForSingleObject"}) {
        platform_testing::FailCall(call, ERROR_NOT_ENOUGH_MEMORY);
        ScheduleTimedShutdown(&service);
    }
    ScheduleTimedShutdown(&service);
    AdvanceClock(20'001ms);
    EXPECT_TRUE(TimesOut());
    EXPECT_THAT(log.Lines(), ElementsAre(kScheduled, "Failed to create shutdown wait event.", kScheduled,
                                         "Failed to schedule shutdown.", kScheduled, kTimedOut));
}

}  // namespace
