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

TEST(WaitContract, ARepeatingWaitOnAnAutoResetEventFiresOnceASignal) {
    const OwnedEvent event(false);
    const CountedWait wait(event);
    for (int i = 1; i <= 20; ++i) {
        SetEvent(event);
        ASSERT_TRUE(wait.Reaches(i));
    }
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(wait.Signals(), 20);
}

TEST(WaitContract, ATimeOutFiresAndSaysSo) {
    const OwnedEvent event(true);
    const CountedWait timed(event, WT_EXECUTEONLYONCE, 1);
    EXPECT_TRUE(timed.ReachesTimeOuts(1));
    EXPECT_EQ(timed.Signals(), 0);

    const CountedWait patient(event, WT_EXECUTEONLYONCE, 1'000'000);
    SetEvent(event);
    EXPECT_TRUE(patient.Reaches(1));
    EXPECT_EQ(patient.TimeOuts(), 0);
}

TEST(WaitContract, AnUnregisteredWaitFiresNoMore) {
    int calls = 0;
    const auto count = [](void* parameter, BOOLEAN) { ++*static_cast<int*>(parameter); };
    for (const HANDLE completion : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        const OwnedEvent event(false);
        HANDLE wait = nullptr;
        ASSERT_TRUE(RegisterWaitForSingleObject(&wait, event, count, &calls, INFINITE, WT_EXECUTEINWAITTHREAD));
        EXPECT_TRUE(UnregisterWaitEx(wait, completion));
        SetEvent(event);
        ASSERT_TRUE(WaitThreadHasComeRound());
        EXPECT_EQ(calls, 0);
    }
}

TEST(WaitContract, ACallbackUnregistersItsOwnWaitAndRegistersAnother) {
    struct Chain {
        HANDLE event;
        HANDLE wait = nullptr;
        std::atomic<int> calls = 0;
        bool answered = true;

        void Register() {
            RegisterWaitForSingleObject(&wait, event, OnFired, this, INFINITE,
                                        WT_EXECUTEINWAITTHREAD | WT_EXECUTEONLYONCE);
        }
        static void CALLBACK OnFired(void* parameter, BOOLEAN) {
            auto& self = *static_cast<Chain*>(parameter);
            // Both answers mean that the wait is gone; which of them it is differs from system to system.
            self.answered &= UnregisterWaitEx(self.wait, nullptr) || GetLastError() == ERROR_IO_PENDING;
            if (self.calls < 5) self.Register();
            ++self.calls;
        }
    };
    const OwnedEvent event(false);
    Chain chain{event};
    chain.Register();
    for (int i = 1; i <= 6; ++i) {
        SetEvent(event);
        ASSERT_TRUE(test_support::WaitUntil([&] { return chain.calls == i; }));
    }
    SetEvent(event);
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(chain.calls, 6);
    EXPECT_TRUE(chain.answered);
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

TEST(WaitContract, AClosedEventIsGone) {
    const HANDLE closed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_TRUE(CloseHandle(closed));
    for (const auto call : {CloseHandle, SetEvent}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(call(closed));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    }
}

}  // namespace
