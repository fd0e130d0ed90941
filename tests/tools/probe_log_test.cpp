#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_folder.h"
#include "tools/probe/event_words.h"
#include "tools/probe/log_follower.h"
#include "tools/probe/log_runs.h"
#include "tools/probe/verdict.h"

namespace {

using testing::ElementsAre;

std::string Line(const char* second, const char* process, const std::string& text) {
    return std::string("[2026-11-23 14:05:") + second + ".000] [" + process + "] [ 1A4] " + text + "\r\n";
}

TEST(LogRuns, AreToldApartByBannerAndProcess) {
    const std::string banner(33, '\\');
    const std::string log = Line("01", "    77", "of a run that began in a log that is gone") +  //
                            Line("02", "  4242", banner) + Line("03", "123456", banner) +
                            Line("04", "  4242", "Last error: 2 (0x2): Two") + "lines.\r\n\r\n" +
                            Line("05", "123456", "late") +  //
                            Line("06", "  4242", banner) +  // the id has come back
                            "[2026-11-23 14:0";
    const std::vector<LogRun> runs = SplitIntoRuns(log);
    ASSERT_EQ(runs.size(), 4U);
    EXPECT_FALSE(runs[0].m_HasBeginning);
    EXPECT_EQ(runs[1].m_ProcessId, 4242U);
    EXPECT_EQ(runs[1].m_Begin, "2026-11-23 14:05:02.000");
    EXPECT_EQ(runs[1].m_End, "2026-11-23 14:05:04.000");
    EXPECT_THAT(runs[1].m_Texts, ElementsAre(banner, "Last error: 2 (0x2): Two"));
    EXPECT_THAT(runs[1].m_Lines, ElementsAre(testing::_, testing::HasSubstr("] Last error"), "lines."));
    EXPECT_THAT(runs[2].m_Texts, ElementsAre(banner, "late"));
    EXPECT_TRUE(runs[3].m_HasBeginning);
}

TEST(LogFollower, ReadsOnBehindARotation) {
    const support::TempFolder folder;
    const std::filesystem::path log = folder.Path() / "log";
    const std::filesystem::path old = folder.Path() / "old";
    const auto add = [&](const std::string& text) { std::ofstream(log, std::ios::app | std::ios::binary) << text; };
    const std::string earlier = Line("01", "    77", "earlier");
    const std::string first = Line("02", "    77", "first");
    add(earlier + "[2026");
    LogFollower follower(log, old);
    EXPECT_THAT(follower.NewLines(), ElementsAre());
    add("-rest\r\n" + first);
    EXPECT_THAT(follower.NewLines(), ElementsAre("[2026-rest", first.substr(0, first.size() - 2)));
    EXPECT_THAT(follower.NewLines(), ElementsAre());

    // Twice: a new log that is shorter, and one that is longer than what was read of the old one.
    for (const std::string length :
         {"", "much longer, so that the size alone doesn't tell that this is another file"}) {
        add("last of the old\r\n");
        std::filesystem::rename(log, old);
        EXPECT_THAT(follower.NewLines(), ElementsAre()) << "there is no log at this moment";
        const std::string text = std::string(earlier.size() * (length.empty() ? 0 : 9), 'x') + length;
        add(Line(length.empty() ? "03" : "04", "    78", text));
        EXPECT_THAT(follower.NewLines(), ElementsAre("last of the old", testing::HasSubstr("] " + text)));
    }
}

TEST(Verdict, IsTheHeadingOfThePageForSupport) {
    const std::vector<std::string> failed = {"SteamService :: SetState (0 -> 3) (Idle -> Invalid)", "Cancel shutdown.",
                                             "Process exiting with code 0."};
    const auto with = [&](std::vector<std::string> texts) {
        texts.insert(texts.end(), failed.begin(), failed.end());
        return texts;
    };
    const char first[] = "Attempting initialization of Steam API in current directory";
    const char error[] = "Error initializing Steam.";
    const char verdict[] = "Failed to initialize Steam API";
    std::vector<std::string> damaged = with({"Could not map function: SteamClient", error, verdict});
    damaged.insert(damaged.end(), 2, "JSON Validation Error: line 1 char 1, more");
    const std::vector<std::string> connected = {
        "Pipe connected.", "SteamService :: OnConnected",
        "SteamService :: SetState (1 -> 2) (WaitForLauncher -> WaitForGameLaunch)", "Cancel shutdown.",
        "Game launch was requested"};
    std::vector<std::string> launched = connected;
    // Whoever opens the pipe decides how long these are.
    for (const char* const front : {"Game Exe: ", "Working Directory: ", "Command Line: ", "Original Command Line: ",
                                    "Launch Args: ", "Process created successfully. Process ID: "}) {
        launched.push_back(front + std::string(60'000, 'x'));
    }
    struct {
        std::vector<std::string> texts;
        const char* verdict;
    } const rows[] = {
        {with({first, "Attempting initialization of Steam API from game directory: /g", error, verdict}),
         "Steam refuses"},
        {with({first, error, verdict}), "Steam refuses, and there is no game directory"},
        {damaged, "A Steam library without a function"},
        {{"Unhandled exception (std::bad_alloc). Aborting process with code 3."}, "Out of memory"},
        {{"SteamService :: Shutdown", "Destroying pipe...", "Process exiting with code 0."}, "The end"},
        {{"?", "Process exiting with code 0."}, "An unknown end"},
        {{std::string(33, '\\'), "Processing 1 command line arguments", "Admin State: 2", "SteamService :: Init", "?"},
         "How every start begins (no end: it still runs, or was killed)"},
        {launched, "A launcher comes and has a game started (no end: it still runs, or was killed)"},
        {connected, "Nothing known yet (no end: it still runs, or was killed)"},
    };
    for (const auto& row : rows) EXPECT_EQ(VerdictOn(row.texts), row.verdict);
}

TEST(EventsInWords, ShowDateMeaningAndKeys) {
    const auto lines = EventsInWords(
        R"({"metrics":[{"name":"STEAM_ACTION","data":"\"id\":1,\"pe\":231","time":134084000000000000},)"
        R"({"name":"STEAM_ACTION","data":"\"id\":3,\"sd\":true,\"xx\":\"\\\"\",\"si\":18446744073709551615","time":0},)"
        R"({"name":"OTHER","data":"","time":18446744073709551615}]})");
    ASSERT_TRUE(lines);
    EXPECT_THAT(*lines,
                ElementsAre("2025-11-23 19:33:20 UTC  no pipe", "    Windows' error number (231: another helper): 231",
                            "1601-01-01 00:00:00 UTC  how far the start got", "    the Steam library was loaded: yes",
                            R"(    xx: "\"")", "    the user's Steam id: 18446744073709551615",
                            "(no time)  unknown event null"));
    const auto json =
        EventsAsJson(R"({"metrics":[{"data":"\"id\":3,\"sa\":0,\"si\":18446744073709551615","time":0}]})");
    ASSERT_TRUE(json);
    EXPECT_THAT(*json, ElementsAre(R"({"date":"1601-01-01 00:00:00 UTC","meaning":"how far the start got",)"
                                   R"("data":{"id":3,"sa":0,"si":"18446744073709551615"}})"));
    for (const char* const damaged : {"", "{", "[]", "{}", R"({"metrics":1})", R"({"metrics":[1]})",
                                      R"({"metrics":[{"data":"\"id\":"}]})", R"({"metrics":[{"data":1}]})"}) {
        EXPECT_FALSE(EventsInWords(damaged) || EventsAsJson(damaged)) << damaged;
    }
}

}  // namespace
