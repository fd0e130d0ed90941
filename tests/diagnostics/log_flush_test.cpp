// When the log's lines reach the file, and when the file is rotated: on a clock that the test moves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "diagnostics/log.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "tests/support/limits.h"
#include "tests/support/log_capture.h"

namespace {

using namespace std::chrono_literals;
using platform_testing::AdvanceClock;

class LogFlush : public testing::Test {
  protected:
    LogFlush() {
        // Whatever an earlier test left waiting is out, and the interval since then has passed.
        log.Bytes();
        AdvanceClock(11s);
    }

    bool FileExists() const { return std::filesystem::exists(log.File()); }
    std::uintmax_t FileSize() const { return FileExists() ? std::filesystem::file_size(log.File()) : 0; }
    std::filesystem::path OldFile() const {
        std::string name = log.File().string();
        return name.substr(0, name.size() - 4) + ".old.txt";
    }
    void WriteFileOfSize(const std::filesystem::path& path, std::size_t size) {
        std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    }

    test_support::LogCapture log;
};

TEST_F(LogFlush, TheFirstLineGoesAtOnceAndTheNextOnesTogether) {
    Log("first");
    const std::uintmax_t first = FileSize();
    EXPECT_GT(first, 0u);

    Log("second");
    Log("third");
    EXPECT_EQ(FileSize(), first) << "inside the interval lines wait";

    AdvanceClock(10'001ms);
    EXPECT_TRUE(test_support::WaitUntil([&] { return FileSize() > first; })) << "the timer takes them out";
    EXPECT_EQ(log.Lines().size(), 3u);
}

TEST_F(LogFlush, ALineAfterTheIntervalTakesTheWaitingOnesAlong) {
    Log("first");
    platform_testing::FailCall("RegisterWaitForSingleObject", ERROR_NOT_ENOUGH_MEMORY);
    Log("no timer could be armed for this one");
    AdvanceClock(10'001ms);
    Log("third");
    EXPECT_EQ(log.Lines().size(), 3u);
}

TEST_F(LogFlush, WithoutAPlaceToGoTheTextIsDropped) {
    for (const char* const call : {"SHGetKnownFolderPath", "CreateFileW", "SetFilePointer", "WriteFile"}) {
        SCOPED_TRACE(call);
        platform_testing::FailCall(call, ERROR_ACCESS_DENIED);
        Log("lost");
        FlushLog();
        EXPECT_EQ(FileSize(), 0u);
        std::filesystem::remove(log.File());
        AdvanceClock(11s);
    }
    Log("found");
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST_F(LogFlush, ATimerIsNotLeftBehindInAnyCase) {
    const int before = platform_testing::OpenHandleCount();
    Log("at once");
    for (const char* const call : {"CreateEventW", "RegisterWaitForSingleObject"}) {
        platform_testing::FailCall(call, ERROR_NOT_ENOUGH_MEMORY);
        Log("waits");
        EXPECT_EQ(platform_testing::OpenHandleCount(), before) << call;
    }
    Log("arms the timer");
    AdvanceClock(10'001ms);
    EXPECT_TRUE(test_support::WaitUntil([&] { return platform_testing::OpenHandleCount() == before; }));
}

TEST_F(LogFlush, RotatesAtExactlyTheLimitOnceEnabled) {
    constexpr std::size_t kLimit = 0x100000;
    struct {
        bool enabled;
        std::size_t size;
        bool rotates;
    } const rows[] = {
        {false, kLimit, false},
        {true, kLimit - 1, false},
        {true, kLimit, true},
        {true, kLimit + 5000, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        AdvanceClock(61s);
        g_LogRotationEnabled = row.enabled;
        WriteFileOfSize(log.File(), row.size);
        WriteFileOfSize(OldFile(), 10);
        Log("next");
        if (row.rotates) {
            EXPECT_EQ(std::filesystem::file_size(OldFile()), row.size);
            EXPECT_LT(FileSize(), 200u);
        } else {
            EXPECT_EQ(std::filesystem::file_size(OldFile()), 10u);
            EXPECT_GT(FileSize(), row.size);
        }
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
