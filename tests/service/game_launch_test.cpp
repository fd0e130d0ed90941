#include "service/game_launch.h"

#include <gtest/gtest.h>

namespace {

TEST(GameLaunch, OurArgumentsComeFirstAndTheLaunchersLast) {
    // Our own command line, what is requested, what the game gets.
    const char* const rows[][3] = {
        {"helper.exe", "", ""},
        {"\"C:\\My Tools\\helper.exe\" -steamAppID=480", "", "-steamAppID=480 "},
        {"helper.exe -steamAppID=480 -steamLocation \"C:\\My Games\"", "-windowed",
         "-steamAppID=480 -steamLocation \"C:\\My Games\" -windowed"},
        {"helper.exe \"a\tb\"", "", "a\tb "},
        // A quote inside is passed on as it is, in or out of quotes.
        {"helper.exe \"a \\\"b\\\"\" c\\\"d", "", "\"a \"b\"\" c\"d "},
        {"helper.exe \"\" x", "", " x "},
        {"helper.exe \xD0\x98\xD0\xB3\xD1\x80\xD1\x8B", "\xF0\x9F\x8E\xAE",
         "\xD0\x98\xD0\xB3\xD1\x80\xD1\x8B \xF0\x9F\x8E\xAE"},
    };
    for (const auto& [own, requested, arguments] : rows) {
        EXPECT_EQ(WideToUtf8(BuildLaunchArguments(Utf8ToWide(own).c_str(), Utf8ToWide(requested)).c_str()), arguments);
    }
}

}  // namespace
