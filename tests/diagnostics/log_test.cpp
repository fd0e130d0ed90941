#include "diagnostics/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

#include "tests/support/log_capture.h"

namespace {

std::size_t PrefixLength(const std::string& line) {
    // "[date time] [process] [thread] "
    std::size_t end = 0;
    for (int bracket = 0; bracket < 3; ++bracket) end = line.find("] ", end) + 2;
    return end;
}

TEST(Log, LinesHoldTheirTextWhateverItIs) {
    test_support::LogCapture log;
    Log("plain %d", 1);
    Log("%s", "100 %s \xD0\x96 \xF0\x9F\x8E\xAE");
    Log("%s", "");
    Log("a '%c' inside", 0);
    Log("behind it");
    EXPECT_THAT(log.Lines(),
                testing::ElementsAre("plain 1", "100 %s \xD0\x96 \xF0\x9F\x8E\xAE", "", "a '", "behind it"));
}

TEST(Log, ALongTextIsCutAndKeepsItsLineEnd) {
    test_support::LogCapture log;
    Log("%s", "");
    const std::size_t prefix = PrefixLength(log.Bytes());
    // The line buffer is 2,048 bytes: the prefix, the text, a terminator's place, CR and LF.
    const std::size_t largest = 2048 - 2 - 1 - prefix;

    for (const std::size_t length : {largest - 1, largest, largest + 1, std::size_t{5000}}) {
        SCOPED_TRACE(length);
        Log("%s", std::string(length, 'x').c_str());
        const std::string line = log.Bytes();
        EXPECT_EQ(line.size(), prefix + std::min(length, largest) + 2);
        EXPECT_EQ(line.substr(line.size() - 3), "x\r\n");
    }
}

TEST(Log, LinesOfTwoThreadsStayWhole) {
    test_support::LogCapture log;
    constexpr int kLines = 500;
    const auto write = [](char letter) {
        for (int i = 0; i < kLines; ++i) Log("%s", std::string(60, letter).c_str());
    };
    std::thread other(write, 'b');
    write('a');
    other.join();

    const auto lines = log.Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), std::string(60, 'a')), kLines);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), std::string(60, 'b')), kLines);
    EXPECT_EQ(lines.size(), std::size_t{2} * kLines);
}

}  // namespace
