#include <gtest/gtest.h>

#include <deque>
#include <future>

#include "tests/platform/counted_wait.h"

namespace {

TEST(WaitContract, AOneShotWaitFiresOnce) {
    const OwnedHandle event = MakeEvent(true);
    const CountedWait wait(event, WT_EXECUTEONLYONCE);
    SetEvent(event.Get());
    ASSERT_TRUE(wait.Reaches(1));
    SetEvent(event.Get());
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
        self.gate.get_future().wait();
    }

    std::promise<void> gate;
    std::atomic<int> calls = 0;
};

TEST(WaitContract, UnregisteringARunningWaitReturnsAtOnce) {
    const OwnedHandle event = MakeEvent(false);
    static NoDestructor<std::deque<HeldCallback>> all;  // a callback may end late
    HeldCallback& callback = all->emplace_back();
    HANDLE wait = nullptr;
    ASSERT_TRUE(RegisterWaitForSingleObject(&wait, event.Get(), HeldCallback::OnFired, &callback, INFINITE,
                                            WT_EXECUTEINWAITTHREAD));
    SetEvent(event.Get());
    ASSERT_TRUE(support::WaitUntil([&] { return callback.calls == 1; }));
    SetEvent(event.Get());
    EXPECT_FALSE(UnregisterWaitEx(wait, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_PENDING});
    callback.gate.set_value();
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(callback.calls, 1) << "a callback that hadn't begun never does";
}

struct Visitor {
    static void CALLBACK OnFired(void* parameter, BOOLEAN) {
        auto& self = *static_cast<Visitor*>(parameter);
        if (++self.inside > 1 || GetCurrentThreadId() == self.caller) self.wrong = true;
        ++self.calls;
        ++self.ended;
        --self.inside;
    }

    int calls = 0;  // no lock: that is what is promised
    std::atomic<int> inside = 0;
    std::atomic<int> ended = 0;
    std::atomic<bool> wrong = false;
    const DWORD caller = GetCurrentThreadId();
};

TEST(WaitContract, TheCallbacksOfOneWaitNeverOverlap) {
    const OwnedHandle event = MakeEvent(false);
    static NoDestructor<std::deque<Visitor>> all;
    Visitor& seen = all->emplace_back();
    HANDLE wait = nullptr;
    ASSERT_TRUE(
        RegisterWaitForSingleObject(&wait, event.Get(), Visitor::OnFired, &seen, INFINITE, WT_EXECUTEINWAITTHREAD));
    for (int i = 1; i <= 100; ++i) {
        SetEvent(event.Get());
        SetEvent(event.Get());
        ASSERT_TRUE(support::WaitUntil([&] { return seen.ended >= i; }));
    }
    ASSERT_TRUE(WaitThreadHasComeRound());
    UnregisterWaitEx(wait, nullptr);
    ASSERT_TRUE(support::WaitUntil([&] { return seen.inside == 0; }));
    EXPECT_EQ(seen.calls, seen.ended);
    EXPECT_FALSE(seen.wrong);
}

}  // namespace
