#include "host/timed_shutdown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "service/steam_service.h"
#include "tests/support/limits.h"
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
    ~TimedShutdown() override {
        StopTimedShutdown();
        platform_testing::ClearFaults();
    }
    bool TimesOut() {
        return test_support::WaitUntil([&] { return service.m_ReadyToExit.load(); });
    }
    // True once the wait thread has worked off everything that had come due: another time-out fires behind it.
    bool NothingFires() {
        static std::atomic<bool> fired;
        fired = false;
        const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        HANDLE wait = nullptr;
        RegisterWaitForSingleObject(
            &wait, event, [](void*, BOOLEAN) { fired = true; }, nullptr, 0,
            WT_EXECUTEINWAITTHREAD | WT_EXECUTEONLYONCE);
        const bool passed = test_support::WaitUntil([] { return fired.load(); });
        UnregisterWaitEx(wait, INVALID_HANDLE_VALUE);
        CloseHandle(event);
        return passed && !service.m_ReadyToExit;
    }

    test_support::LogCapture log;
    SteamService service;
};

TEST_F(TimedShutdown, RunsOutAfter20Seconds) {
    ScheduleTimedShutdown(&service);
    AdvanceClock(19'900ms);
    EXPECT_TRUE(NothingFires());
    AdvanceClock(101ms);
    EXPECT_TRUE(TimesOut());
    ScheduleTimedShutdown(&service);
    EXPECT_THAT(log.Lines(), ElementsAre(kScheduled, kTimedOut, kAlready));

    CancelTimedShutdown();
    EXPECT_TRUE(service.m_ReadyToExit) << "nothing takes it back";
    ScheduleTimedShutdown(&service);
    EXPECT_THAT(log.Lines(), ElementsAre(kCancelled, kScheduled));
}

TEST_F(TimedShutdown, IsNotProlongedByASecondScheduleAndStartsAnewAfterACancel) {
    ScheduleTimedShutdown(&service);
    AdvanceClock(15s);
    ScheduleTimedShutdown(&service);
    CancelTimedShutdown();
    CancelTimedShutdown();
    AdvanceClock(30s);
    EXPECT_TRUE(NothingFires());

    ScheduleTimedShutdown(&service);
    AdvanceClock(15s);
    ScheduleTimedShutdown(&service);
    EXPECT_TRUE(NothingFires());
    AdvanceClock(5'001ms);
    EXPECT_TRUE(TimesOut());
    EXPECT_THAT(log.Lines(),
                ElementsAre(kScheduled, kAlready, kCancelled, kCancelled, kScheduled, kAlready, kTimedOut));
}

TEST_F(TimedShutdown, AFailedScheduleLeavesRoomForTheNext) {
    struct {
        const char* call;
        const char* line;
    } const rows[] = {
        {"CreateEventW", "Failed to create shutdown wait event."},
        {"RegisterWaitForSingleObject", "Failed to schedule shutdown."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        log.ArmFlushTimer();
        const int handles = platform_testing::OpenHandleCount();
        platform_testing::FailCall(row.call, ERROR_NOT_ENOUGH_MEMORY);
        ScheduleTimedShutdown(&service);
        EXPECT_EQ(platform_testing::OpenHandleCount(), handles);
        EXPECT_THAT(log.Lines(), ElementsAre(kScheduled, row.line));
    }
    ScheduleTimedShutdown(&service);
    AdvanceClock(20'001ms);
    EXPECT_TRUE(TimesOut());
}

}  // namespace
