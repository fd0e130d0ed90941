#include <gtest/gtest.h>

#include <future>
#include <set>
#include <thread>

#include "tests/platform/counted_wait.h"

namespace {

TEST(WaitContract, AOneShotWaitFiresOnce) {
    const OwnedEvent event(true);
    const CountedWait wait(event, WT_EXECUTEONLYONCE);
    SetEvent(event);
    ASSERT_TRUE(wait.Reaches(1));
    SetEvent(event);
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(wait.Signals(), 1);

    const CountedWait late(event, WT_EXECUTEONLYONCE);
    EXPECT_TRUE(late.Reaches(1)) << "the event is still signalled";
}

// A callback that is held until it is let go.
struct HeldCallback {
    static void CALLBACK OnFired(void* parameter, BOOLEAN) {
        auto& self = *static_cast<HeldCallback*>(parameter);
        ++self.calls;
        self.entered = true;
        self.gate.get_future().wait();
        for (int i = 0; i < 100; ++i) std::this_thread::yield();
        self.ended = true;
    }

    std::promise<void> gate;
    std::atomic<int> calls = 0;
    std::atomic<bool> entered = false;
    std::atomic<bool> ended = false;
};

TEST(WaitContract, UnregisteringARunningWaitReturnsAtOnceOrWaits) {
    for (const bool blocks : {false, true}) {
        SCOPED_TRACE(blocks);
        const OwnedEvent event(false);
        HeldCallback callback;
        HANDLE wait = nullptr;
        ASSERT_TRUE(RegisterWaitForSingleObject(&wait, event, HeldCallback::OnFired, &callback, INFINITE,
                                                WT_EXECUTEINWAITTHREAD));
        SetEvent(event);
        ASSERT_TRUE(test_support::WaitUntil([&] { return callback.entered.load(); }));
        if (blocks) {
            std::thread release([&] { callback.gate.set_value(); });
            EXPECT_TRUE(UnregisterWaitEx(wait, INVALID_HANDLE_VALUE));
            EXPECT_TRUE(callback.ended);
            release.join();
        } else {
            SetEvent(event);
            EXPECT_FALSE(UnregisterWaitEx(wait, nullptr));
            EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_PENDING});
            callback.gate.set_value();
            ASSERT_TRUE(test_support::WaitUntil([&] { return callback.ended.load(); }));
        }
        ASSERT_TRUE(WaitThreadHasComeRound());
        EXPECT_EQ(callback.calls, 1) << "a callback that hadn't begun never does";
    }
}

TEST(WaitContract, AllCallbacksRunOnOneThread) {
    struct Seen {
        std::set<DWORD> threads;
        std::atomic<int> calls = 0;
    } seen;
    const auto note = [](void* parameter, BOOLEAN) {
        auto& self = *static_cast<Seen*>(parameter);
        self.threads.insert(GetCurrentThreadId());  // no lock: that is what is promised
        ++self.calls;
    };
    const OwnedEvent first(false), second(false);
    HANDLE waits[2] = {};
    ASSERT_TRUE(RegisterWaitForSingleObject(&waits[0], first, note, &seen, INFINITE, WT_EXECUTEINWAITTHREAD));
    ASSERT_TRUE(RegisterWaitForSingleObject(&waits[1], second, note, &seen, INFINITE, WT_EXECUTEINWAITTHREAD));
    for (int i = 1; i <= 10; ++i) {
        SetEvent(first);
        SetEvent(second);
        ASSERT_TRUE(test_support::WaitUntil([&] { return seen.calls == 2 * i; }));
    }
    for (const HANDLE wait : waits) EXPECT_TRUE(UnregisterWaitEx(wait, INVALID_HANDLE_VALUE));
    EXPECT_EQ(seen.threads.size(), 1u);
    EXPECT_FALSE(seen.threads.contains(GetCurrentThreadId()));
}

}  // namespace
