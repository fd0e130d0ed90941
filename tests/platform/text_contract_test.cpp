#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "diagnostics/text.h"

namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

TEST(TextContract, WhatIsNoUtf8IsReplaced) {
    struct {
        const char* bytes;
        const char* pattern;  // what comes out of it, with ? for each replacement
    } const rows[] = {
        {"", ""},
        {"z\xC3\xBC\xE6\xB0\xB4\xF0\x9F\x8E\xAE", "z\xC3\xBC\xE6\xB0\xB4\xF0\x9F\x8E\xAE"},
        {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", "\xEF\xBF\xBF\xF4\x8F\xBF\xBF"},
        {"a\x80z", "a?z"},
        {"a\xBF\xBFz", "a??z"},
        {"a\xFFz\xFE", "a?z?"},
        {"a\xC3", "a?"},
        {"a\xC3z", "a?z"},
        {"a\xC0\xAFz", "a??z"},                 // an overlong slash
        {"a\xE6\xB0z", "a?z"},                  // cut before the last byte
        {"a\xF0\x9F\x8Ez", "a?z"},              // cut before the last byte
        {"a\xF0\x9F\xC3\xBCz", "a?\xC3\xBCz"},  // cut by the next character
        {"a\xF8\x88\x80\x80z", "a????z"},
    };
    for (const auto& row : rows) {
        std::string expected;
        for (const char c : std::string(row.pattern)) expected += c == '?' ? kReplacement : std::string(1, c);
        EXPECT_EQ(WideToUtf8(Utf8ToWide(row.bytes).c_str()), expected) << row.pattern;
    }
}

TEST(TextContract, AnUnpairedSurrogateIsReplaced) {
    const WCHAR high = 0xD83C, low = 0xDFAE;
    const std::pair<WideString, std::string> rows[] = {
        {{'a', high, low, 'z'}, "a\xF0\x9F\x8E\xAEz"},
        {{'a', high, 'z'}, "a" + kReplacement + "z"},
        {{'a', low, 'z'}, "a" + kReplacement + "z"},
        {{low, high}, kReplacement + kReplacement},
        {{high, high, low}, kReplacement + "\xF0\x9F\x8E\xAE"},
    };
    for (const auto& [wide, narrow] : rows) EXPECT_EQ(WideToUtf8(wide.c_str()), narrow);
}

// A log in which every reason were unknown would pass all other tests.
TEST(TextContract, ACodeHasATextWithALineEnd) {
    char text[1024];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        ERROR_BROKEN_PIPE, 0x400, text, sizeof text, nullptr);
    ASSERT_GT(length, 2u);
    EXPECT_STREQ(text + length - 2, "\r\n");
}

TEST(TimeContract, SystemTimesBecomeFileTimes) {
    const SYSTEMTIME unixEpoch = {1970, 1, 4, 1, 0, 0, 0, 1};
    FILETIME time = {};
    ASSERT_TRUE(SystemTimeToFileTime(&unixEpoch, &time));
    EXPECT_EQ(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime, 116'444'736'000'010'000u);
}

}  // namespace
