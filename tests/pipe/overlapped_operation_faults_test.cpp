#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pipe/overlapped_operation.h"
#include "platform/posix/testing/faults.h"
#include "tests/support/log_capture.h"

namespace {

using platform_testing::FailCall;

TEST(OverlappedOperationFaults, EachFailingCallHasItsLineAndLeavesAnObjectThatCanBeUsedAgain) {
    struct {
        const char* call;
        const char* line;
        bool armed;
    } const rows[] = {
        {"CreateEventW", "Unable to create overlapped event.", false},
        {"RegisterWaitForSingleObject", "Failed to start waiting on overlapped event.", false},
        {"UnregisterWaitEx", "Failed to unregister overlapped wait.", true},
        {"CloseHandle", "Failed to close overlapped event handle.", true},
    };
    test_support::LogCapture log;
    OverlappedOperation operation;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        if (!row.armed) FailCall(row.call, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(operation.Initialize([] {}, false), row.armed);
        if (row.armed) FailCall(row.call, ERROR_INVALID_HANDLE);
        operation.Cleanup(false);

        const auto lines = log.Lines();
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines[0], row.line);
        EXPECT_THAT(lines[1], testing::StartsWith("Last error: "));

        EXPECT_TRUE(operation.Initialize([] {}, true));
        operation.Cleanup(false);
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
    }
}

}  // namespace
