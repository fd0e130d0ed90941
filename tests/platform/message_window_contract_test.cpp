#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/windows_api.h"

namespace {

const WCHAR kClass[] = WIDE_TEXT("Tollmere Contract");
constexpr int kExitCode = 7;

std::vector<UINT> g_Received;  // on the test's thread alone

// Ends the loop with its window, if the window says so. Notes the messages that the tests are about.
LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE || message == WM_DESTROY || message >= WM_USER) g_Received.push_back(message);
    if (message == WM_DESTROY && GetWindowLongPtrW(window, GWLP_USERDATA) != 0) PostQuitMessage(kExitCode);
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND NewWindow(const WCHAR* className = kClass) {
    return CreateWindowExW(0, className, className, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

class MessageWindowContract : public testing::Test {
  protected:
    MessageWindowContract() {
        WNDCLASSEXW windowClass = {};
        windowClass.cbSize = sizeof windowClass;
        windowClass.lpfnWndProc = Procedure;
        windowClass.lpszClassName = kClass;
        RegisterClassExW(&windowClass);
        // The class stays: from the second time on there is one.
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(RegisterClassExW(&windowClass), 0);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_CLASS_ALREADY_EXISTS});
        g_Received.clear();
    }

    static WPARAM RunLoop() {
        MSG message = {};
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        EXPECT_EQ(message.message, UINT{WM_QUIT});
        return message.wParam;
    }
};

TEST_F(MessageWindowContract, ACloseFromAnotherThreadEndsTheLoop) {
    const HWND window = NewWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(SetWindowLongPtrW(window, GWLP_USERDATA, 42), 0);
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_USERDATA), 42);
    std::thread other([&] {
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(DestroyWindow(window)) << "it belongs to the thread that made it";
        EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
        EXPECT_TRUE(PostMessageW(window, WM_USER, 0, 0));
        EXPECT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));
    });
    EXPECT_EQ(RunLoop(), WPARAM{kExitCode});
    other.join();
    EXPECT_EQ(g_Received, (std::vector<UINT>{WM_USER, WM_CLOSE, WM_DESTROY}));

    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(PostMessageW(window, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    EXPECT_FALSE(DestroyWindow(window));
}

TEST_F(MessageWindowContract, WhatIsPostedComesBeforeTheQuit) {
    const HWND first = NewWindow();
    const HWND second = NewWindow();
    PostQuitMessage(kExitCode);
    PostMessageW(first, WM_USER + 1, 0, 0);
    PostMessageW(second, WM_USER + 2, 0, 0);
    PostMessageW(first, WM_USER + 3, 0, 0);
    EXPECT_TRUE(DestroyWindow(second));  // takes its message along; without user data it ends no loop
    EXPECT_EQ(RunLoop(), WPARAM{kExitCode});
    EXPECT_EQ(g_Received, (std::vector<UINT>{WM_DESTROY, WM_USER + 1, WM_USER + 3}));
    EXPECT_TRUE(DestroyWindow(first));
}

TEST_F(MessageWindowContract, AWindowNeedsAClass) {
    EXPECT_EQ(NewWindow(WIDE_TEXT("Tollmere Nothing")), nullptr);
}

}  // namespace
