#include "service/game_launch.h"

#include <gtest/gtest.h>

namespace {

TEST(GameLaunch, OurArgumentsComeFirstAndTheLaunchersLast) {
    struct {
        const char* own;
        const char* requested;
        const char* arguments;
    } const rows[] = {
        {"helper.exe", "", ""},
        {"helper.exe", "-windowed \"a b\"", "-windowed \"a b\""},
        {"\"C:\\My Tools\\helper.exe\" -steamAppID=480", "", "-steamAppID=480 "},
        {"helper.exe -steamAppID=480 -steamLocation \"C:\\My Games\"", "-windowed",
         "-steamAppID=480 -steamLocation \"C:\\My Games\" -windowed"},
        {"helper.exe -Case=Kept", "X", "-Case=Kept X"},
        {"helper.exe a\tb", "", "a b "},
        {"helper.exe \"a\tb\"", "", "a\tb "},
        // A quote inside is passed on as it is, in or out of quotes.
        {"helper.exe \"a \\\"b\\\"\" c\\\"d", "", "\"a \"b\"\" c\"d "},
        {"helper.exe \"\" x", "", " x "},
        {"helper.exe \xD0\x98\xD0\xB3\xD1\x80\xD1\x8B", "\xF0\x9F\x8E\xAE",
         "\xD0\x98\xD0\xB3\xD1\x80\xD1\x8B \xF0\x9F\x8E\xAE"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.own);
        const WideString own = Utf8ToWide(row.own);
        EXPECT_EQ(WideToUtf8(BuildLaunchArguments(own.c_str(), Utf8ToWide(row.requested)).c_str()), row.arguments);
    }
}

}  // namespace
