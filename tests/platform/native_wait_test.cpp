// What tests alone can ask of the layer: the moved clock, faults, the count of handles.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "platform/posix/layer_clock.h"
#include "platform/posix/message_windows.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "tests/platform/counted_wait.h"
#include "tests/support/temp_folder.h"

namespace {

using platform_testing::AdvanceClock;
using platform_testing::FailCall;
using std::chrono::milliseconds;

constexpr ULONG kMinute = 60'000;

TEST(MovedClock, TimeOutsAreMeasuredOnIt) {
    const OwnedEvent event(false);
    const CountedWait once(event, WT_EXECUTEONLYONCE, kMinute);
    AdvanceClock(milliseconds(kMinute - 10'000));
    ASSERT_TRUE(WaitThreadHasComeRound());
    EXPECT_EQ(once.TimeOuts(), 0);
    AdvanceClock(milliseconds(10'001));
    EXPECT_TRUE(once.ReachesTimeOuts(1));

    const CountedWait repeating(event, 0, kMinute);
    for (int i = 1; i <= 3; ++i) {
        AdvanceClock(milliseconds(kMinute));
        ASSERT_TRUE(repeating.ReachesTimeOuts(i));
    }
    EXPECT_EQ(once.TimeOuts(), 1);
}

TEST(MovedClock, AllTimesGoAlong) {
    FILETIME before = {}, after = {};
    GetSystemTimeAsFileTime(&before);
    const DWORD ticks = timeGetTime();
    AdvanceClock(milliseconds(kMinute));
    GetSystemTimeAsFileTime(&after);
    EXPECT_GE(timeGetTime() - ticks, kMinute);
    const auto count = [](const FILETIME& time) {
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    EXPECT_GE(count(after) - count(before), kMinute * 10'000ull);
}

TEST(MovedClock, AFifoMovesItLineByLine) {
    const test_support::TempFolder folder;
    const std::string fifo = (folder.Path() / "clock").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    SetEnvironmentVariableA("TOLLMERE_TEST_CLOCK", fifo.c_str());
    posix_layer::WatchClockFifo();
    SetEnvironmentVariableA("TOLLMERE_TEST_CLOCK", nullptr);

    const OwnedEvent event(false);
    const CountedWait wait(event, 0, kMinute);
    std::ofstream writer(fifo);
    for (int i = 1; i <= 2; ++i) {
        writer << "1000\n5" << std::flush;  // a line may come in parts
        ASSERT_TRUE(WaitThreadHasComeRound());
        writer << "9000\n" << std::flush;
        ASSERT_TRUE(wait.ReachesTimeOuts(i));
    }
}

TEST(Faults, TheCallThatIsNamedFailsInItsTurn) {
    const int handles = platform_testing::OpenHandleCount();
    FailCall("CreateEventW", 111, 1);
    FailCall("CreateEventW", 222);
    const HANDLE first = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_NE(first, nullptr);
    for (const DWORD code : {111u, 222u}) {
        EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, nullptr), nullptr);
        EXPECT_EQ(GetLastError(), code);
    }
    EXPECT_EQ(platform_testing::OpenHandleCount(), handles + 1);

    FailCall("CloseHandle", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(first)) << "the call that failed had done nothing";
    EXPECT_EQ(platform_testing::OpenHandleCount(), handles);

    FailCall("SHGetKnownFolderPath", ERROR_ACCESS_DENIED);
    LPWSTR path = nullptr;
    EXPECT_EQ(static_cast<DWORD>(SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &path)), 0x80070005u);
    FailCall("CreateEventW", 333);
    platform_testing::ClearFaults();
    EXPECT_TRUE(CloseHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr)));
}

TEST(Handles, AnUnregisteredWaitIsGone) {
    const int handles = platform_testing::OpenHandleCount();
    {
        const OwnedEvent event(false);
        HANDLE wait = nullptr;
        const auto nothing = [](void*, BOOLEAN) {};
        ASSERT_TRUE(RegisterWaitForSingleObject(&wait, event, nothing, nullptr, INFINITE, WT_EXECUTEINWAITTHREAD));
        EXPECT_EQ(platform_testing::OpenHandleCount(), handles + 2);
        EXPECT_FALSE(CloseHandle(wait)) << "a wait is no object";
        HANDLE other = nullptr;
        EXPECT_FALSE(RegisterWaitForSingleObject(&other, wait, nothing, nullptr, INFINITE, WT_EXECUTEINWAITTHREAD));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE) << "nor can it be waited for";
        EXPECT_TRUE(UnregisterWaitEx(wait, nullptr));
        for (const HANDLE completion : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
            EXPECT_FALSE(UnregisterWaitEx(wait, completion));
            EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        }
    }
    EXPECT_EQ(platform_testing::OpenHandleCount(), handles);
}

TEST(WaitDeathTest, ACallbackThatWaitsForItselfIsFoundOut) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto deadlock = [] {
        static HANDLE wait = nullptr;
        const HANDLE event = CreateEventW(nullptr, FALSE, TRUE, nullptr);
        const auto callback = [](void*, BOOLEAN) { UnregisterWaitEx(wait, INVALID_HANDLE_VALUE); };
        RegisterWaitForSingleObject(&wait, event, callback, nullptr, INFINITE, WT_EXECUTEINWAITTHREAD);
        test_support::WaitUntil([] { return false; });
    };
    EXPECT_DEATH(deadlock(), "a callback waits for its own end");
}

TEST(OutsideClose, ReachesEveryWindowAndTheFirstOneToCome) {
    static int closes = 0;
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpszClassName = u"Tollmere Outside";
    windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_CLOSE && ++closes == 2) PostQuitMessage(0);
        return DefWindowProcW(window, message, wParam, lParam);
    };
    RegisterClassExW(&windowClass);
    closes = 0;
    const auto create = [&] {
        CreateWindowExW(0, windowClass.lpszClassName, u"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    };
    const auto run = [] {
        MSG message = {};
        while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    };
    create();
    create();
    posix_layer::PostCloseToAllWindows();
    run();
    EXPECT_EQ(closes, 2);

    posix_layer::PostCloseToAllWindows();
    closes = 1;
    create();
    run();
    EXPECT_EQ(closes, 2);
}

}  // namespace
