// What only the layer has, or could get wrong: a count of the handles, a deadlock that is found out, an error of each
// thread's own, a close that comes before the window.

#include <gtest/gtest.h>

#include <thread>

#include "platform/posix/message_windows.h"
#include "platform/posix/testing/faults.h"
#include "platform/windows_api.h"
#include "tests/support/limits.h"

namespace {

TEST(Handles, AreCountedWhileTheyAreOpen) {
    const int before = platform_testing::OpenHandleCount();
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE wait = nullptr;
    const auto nothing = [](void*, BOOLEAN) {};
    ASSERT_TRUE(RegisterWaitForSingleObject(&wait, event, nothing, nullptr, INFINITE, WT_EXECUTEINWAITTHREAD));
    EXPECT_EQ(platform_testing::OpenHandleCount(), before + 2);
    EXPECT_TRUE(UnregisterWaitEx(wait, nullptr));
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_EQ(platform_testing::OpenHandleCount(), before);
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

TEST(LastError, IsEachThreadsOwn) {
    SetLastError(ERROR_ACCESS_DENIED);
    std::thread([] { SetLastError(ERROR_INVALID_HANDLE); }).join();
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST(OutsideClose, BeforeThereIsAWindowReachesTheFirstOneToCome) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpszClassName = u"Tollmere Outside";
    windowClass.lpfnWndProc = DefWindowProcW;
    RegisterClassExW(&windowClass);
    posix_layer::PostCloseToAllWindows();
    HWND windows[2];
    for (HWND& window : windows) {
        window =
            CreateWindowExW(0, windowClass.lpszClassName, u"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    }
    PostQuitMessage(0);  // comes behind all that is posted
    MSG message = {};
    ASSERT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.message, WM_CLOSE);
    EXPECT_EQ(message.hwnd, windows[0]);
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0)) << "the second one is not meant";
    for (const HWND window : windows) EXPECT_TRUE(DestroyWindow(window));
}

}  // namespace
