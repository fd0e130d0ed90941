// When the log's lines reach the file, and when the file is rotated: on a clock that the test moves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "diagnostics/log.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "support/limits.h"
#include "support/temp_folder.h"
#include "tests/support/log_capture.h"

namespace {

using namespace std::chrono_literals;
using platform_testing::AdvanceClock;

class LogFlush : public testing::Test {
  protected:
    LogFlush() {
        // Whatever an earlier test left waiting is out, its timer gone, and the interval since then has passed.
        log.Bytes();
        AdvanceClock(11s);
        AwaitTheTimer();
        AdvanceClock(11s);
    }

    static void AwaitTheTimer() {
        EXPECT_TRUE(support::WaitUntil([] { return platform_testing::OpenHandleCount() == 0; }));
        FlushLog();  // the timer holds the log until its own flush is done
    }

    std::size_t FileSize() const { return support::ReadAll(log.File()).size(); }
    std::filesystem::path OldFile() const { return log.File().replace_extension(".old.txt"); }
    static void WriteFileOfSize(const std::filesystem::path& path, std::size_t size) {
        std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    }

    test_support::LogCapture log;
};

TEST_F(LogFlush, TheFirstLineGoesAtOnceAndTheNextOnesTogether) {
    Log("first");
    const std::size_t first = FileSize();
    EXPECT_GT(first, 0u);

    SetLastError(ERROR_BROKEN_PIPE);
    Log("second");
    EXPECT_EQ(GetLastError(), ERROR_BROKEN_PIPE) << "the timer is armed unseen";
    Log("third");
    EXPECT_EQ(FileSize(), first) << "inside the interval lines wait";

    AdvanceClock(10'001ms);
    EXPECT_TRUE(support::WaitUntil([&] { return FileSize() > first; })) << "the timer takes them out";
    EXPECT_EQ(log.Lines().size(), 3u);
    AwaitTheTimer();
}

TEST_F(LogFlush, WithoutATimerTheNextLineAfterTheIntervalTakesTheWaitingOnesAlong) {
    Log("first");
    for (const char* const call : {"CreateEventW", "RegisterWaitForSingleObject"}) {
        platform_testing::FailCall(call, ERROR_NOT_ENOUGH_MEMORY);
        Log("waits");
        EXPECT_EQ(platform_testing::OpenHandleCount(), 0) << call;
    }
    AdvanceClock(10'001ms);
    Log("fourth");
    EXPECT_EQ(log.Lines().size(), 4u);
}

TEST_F(LogFlush, WithoutAPlaceToGoTheTextIsDropped) {
    struct {
        const char* call;
        DWORD lastError;  // kept until the file is reached
    } const rows[] = {
        {"SHGetKnownFolderPath", ERROR_BROKEN_PIPE},
        {"CreateFileW", ERROR_SUCCESS},
        {"SetFilePointer", ERROR_SUCCESS},
        {"WriteFile", ERROR_SUCCESS},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        platform_testing::FailCall(row.call, ERROR_ACCESS_DENIED);
        SetLastError(ERROR_BROKEN_PIPE);
        Log("lost");
        EXPECT_EQ(GetLastError(), row.lastError);
        FlushLog();
        EXPECT_EQ(FileSize(), 0u);
        std::filesystem::remove(log.File());
        AdvanceClock(11s);
    }
    Log("found");
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST_F(LogFlush, RotatesAtExactlyTheLimitOnceEnabled) {
    constexpr std::size_t kLimit = 0x100000;
    struct {
        bool enabled;
        std::size_t size;
        bool rotates;
    } const rows[] = {
        {false, kLimit, false}, {true, kLimit - 1, false}, {true, kLimit, true}, {true, 2 * kLimit, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        AdvanceClock(61s);
        g_LogRotationEnabled = row.enabled;
        WriteFileOfSize(log.File(), row.size);
        WriteFileOfSize(OldFile(), 10);
        Log("next");
        EXPECT_EQ(std::filesystem::file_size(OldFile()), row.rotates ? row.size : 10u);
        EXPECT_EQ(FileSize() < 200, row.rotates);
        std::filesystem::remove(log.File());
        std::filesystem::remove(OldFile());
    }
}

TEST_F(LogFlush, LooksAtTheSizeAtMostOnceAMinute) {
    AdvanceClock(61s);
    g_LogRotationEnabled = true;
    Log("this flush looks");
    WriteFileOfSize(log.File(), 0x100000);
    AdvanceClock(30s);
    Log("this one does not");
    EXPECT_FALSE(std::filesystem::exists(OldFile()));
    AdvanceClock(31s);
    Log("this one does");
    EXPECT_TRUE(std::filesystem::exists(OldFile()));
    std::filesystem::remove(OldFile());
}

}  // namespace
