#include "diagnostics/last_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"

namespace {

using testing::ElementsAre;

TEST(LastError, IsReportedOnceAndConsumed) {
    test_support::LogCapture log;
    SetLastError(ERROR_BROKEN_PIPE);
    EXPECT_EQ(ReportLastError("Failed to read from pipe."), ERROR_BROKEN_PIPE);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(ReportLastError("Failed to read from pipe."), ERROR_SUCCESS);
    EXPECT_THAT(log.Lines(), ElementsAre("Failed to read from pipe.", testing::StartsWith("Last error: 109 (0x6d): ")));
}

TEST(LastError, WithoutAMessageOrASystemText) {
    test_support::LogCapture log;
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(ReportLastError("nothing failed"), ERROR_SUCCESS);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());

    SetLastError(0xE0001234);
    EXPECT_EQ(ReportLastError(nullptr), 0xE0001234);
    EXPECT_THAT(log.Lines(), ElementsAre("Last error: -536866252 (0xe0001234): (unknown error)"));
    EXPECT_EQ(ReportLastError("the missing text is no failure of its own"), ERROR_SUCCESS);
}

}  // namespace
