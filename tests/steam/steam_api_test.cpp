// The Steam binding against the stand-in DLL that lies beside this test's executable.

#include "steam/steam_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/options.h"
#include "tests/support/log_capture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

class SteamApi : public testing::Test {
  protected:
    SteamApi() {
        for (const char* const name :
             {"SteamAppId", "SteamLocation", "STEAM_STAND_IN_INIT", "STEAM_STAND_IN_TICKET",
              "STEAM_STAND_IN_TICKET_LENGTH", "STEAM_STAND_IN_NULL", "STEAM_STAND_IN_CALLBACKS",
              "STEAM_STAND_IN_LOGGED_ON", "STEAM_STAND_IN_PERSONA"}) {
            SetEnvironmentVariableA(name, nullptr);
        }
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("SteamLocation", "here");
        SetEnvironmentVariableA("STEAM_STAND_IN_STEAM_ID", "76561197960287930");
        GiveOptions(std::nullopt, std::nullopt);
        log.Lines();
    }
    ~SteamApi() override {
        if (api.m_Initialized) api.ShutdownClass();
        GiveOptions(std::nullopt, std::nullopt);
    }

    static void GiveOptions(std::optional<int> appId, std::optional<std::string> location) {
        g_SteamAppID.m_WasSet = appId.has_value();
        g_SteamAppID.m_Value = appId.value_or(0);
        g_SteamLocation.m_WasSet = location.has_value();
        g_SteamLocation.m_Value = location.value_or("");
    }
    static std::string Environment(const char* name) {
        char value[256] = {};
        GetEnvironmentVariableA(name, value, sizeof value);
        return value;
    }
    static WideString CurrentDirectory() {
        WCHAR path[kPathCapacity] = {};
        GetCurrentDirectoryW(kPathCapacity, path);
        return path;
    }
    // Whether the payload that the stand-in delivers at its first pump is the ticket's, and when.
    void Pump(int times) {
        for (int i = 0; i < times; ++i) api.RunCallbacks();
    }

    test_support::LogCapture log;
    sysSteamApi api;
};

TEST_F(SteamApi, TheAppIdOfTheCommandLineWinsOverThatOfTheEnvironment) {
    const std::string tooLong(64, '4');
    struct {
        const char* environment;
        std::optional<int> option;
        std::uint32_t appId;
        std::string environmentAfter;
        std::vector<std::string> lines;
    } const rows[] = {
        {"480", std::nullopt, 480, "480", {"Processed SteamAppID from Environment: 480"}},
        {"480 and text", std::nullopt, 480, "480 and text", {"Processed SteamAppID from Environment: 480"}},
        {nullptr, std::nullopt, 0, "", {"Could not find steam app id from environment."}},
        {"none", std::nullopt, 0, "none", {}},
        {tooLong.c_str(), std::nullopt, 0, tooLong, {}},
        {"480",
         570,
         570,
         "570",
         {"Processed SteamAppID from Environment: 480", "Processed SteamAppID from Command Line: 570"}},
        {nullptr,
         570,
         570,
         "570",
         {"Could not find steam app id from environment.", "Processed SteamAppID from Command Line: 570"}},
        {"480", 0, 0, "480", {"Processed SteamAppID from Environment: 480"}},
        {"480",
         -1,
         4294967295,
         "4294967295",
         {"Processed SteamAppID from Environment: 480", "Processed SteamAppID from Command Line: 4294967295"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.environment != nullptr ? row.environment : "(none)");
        SetEnvironmentVariableA("SteamAppId", row.environment);
        // Refused, so that each row ends where the app id has been found.
        SetEnvironmentVariableA("STEAM_STAND_IN_INIT", "fail");
        GiveOptions(row.option, "");
        sysSteamApi own;
        EXPECT_EQ(own.InitClass(), row.appId == 0);
        EXPECT_FALSE(own.m_Initialized);
        EXPECT_EQ(own.m_AppId, row.appId);
        EXPECT_EQ(Environment("SteamAppId"), row.environmentAfter);
        auto lines = log.Lines();
        ASSERT_GE(lines.size(), row.lines.size());
        EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + static_cast<int>(row.lines.size())),
                  row.lines);
        EXPECT_EQ(testing::Value(lines, Contains("Invalid steam app id")), row.appId == 0);
    }
}

TEST_F(SteamApi, TheLocationComesFromTheFirstPlaceThatHasOneAndIsNeverCut) {
    const std::string fits(259, 'x');
    const std::string tooLong(260, 'x');
    // 130 characters, 260 bytes.
    std::string tooManyBytes;
    for (int i = 0; i < 130; ++i) tooManyBytes += "\xC3\xA4";
    const std::string line = "Steam location is too long and will not be used.";
    struct {
        std::optional<std::string> option;
        std::string environment;
        std::string location;
        std::string line;
    } const rows[] = {
        {"games", "other", "games", "Processed Steam Location from Command Line: games"},
        {"", "other", "", "Processed Steam Location from Command Line: "},
        {fits, "", fits, "Processed Steam Location from Command Line: " + fits},
        {tooLong, "other", "", line},
        {std::nullopt, "other", "other", "Processed Steam Location from Environment: other"},
        {std::nullopt, fits, fits, "Processed Steam Location from Environment: " + fits},
        {std::nullopt, tooLong, "", line},
        {tooManyBytes, "", "", line},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        SetEnvironmentVariableA("SteamLocation", row.environment.empty() ? nullptr : row.environment.c_str());
        SetEnvironmentVariableA("SteamAppId", nullptr);
        GiveOptions(std::nullopt, row.option);
        sysSteamApi own;
        EXPECT_TRUE(own.InitClass());
        EXPECT_EQ(own.m_Location, row.location);
        EXPECT_THAT(log.Lines(), IsSupersetOf({row.line, "InitClass :: Location=" + row.location}));
    }

    // With neither the parent process is asked: whatever it is, there is a line for it.
    SetEnvironmentVariableA("SteamLocation", nullptr);
    GiveOptions(std::nullopt, std::nullopt);
    EXPECT_TRUE(api.InitClass());
    EXPECT_THAT(log.Lines(), IsSupersetOf({std::string("Could not find steam location from environment."),
                                           std::string("Processed Parent Process Location: ") + api.m_Location}));
}

TEST_F(SteamApi, AFullStartReadsTheUser) {
    SetEnvironmentVariableA("STEAM_STAND_IN_PERSONA", "Ann: B");
    SetEnvironmentVariableA("STEAM_STAND_IN_TICKET", "00ff7F");
    ASSERT_TRUE(api.InitClass());
    EXPECT_TRUE(api.m_Initialized);
    EXPECT_EQ(api.m_SteamId, 76561197960287930u);
    EXPECT_STREQ(api.m_PersonaName, "Ann: B");
    EXPECT_FALSE(api.m_Offline);
    EXPECT_STREQ(api.m_TicketText, "00FF7F");
    EXPECT_EQ(api.m_TicketLength, 3u);
    EXPECT_THAT(log.Lines(),
                ElementsAre("Processed SteamAppID from Environment: 480",
                            "Processed Steam Location from Environment: here", "InitClass :: AppId=480",
                            "InitClass :: Location=here", "Attempting initialization of Steam API in current directory",
                            "SteamAPI_Init completed, requesting Steam interfaces.",
                            "Requesting steam auth session ticket.", "Steam initialized successfully"));

    api.ShutdownClass();
    EXPECT_FALSE(api.m_Initialized);
    EXPECT_EQ(sysSteamApi::ms_SteamDll, nullptr);
    EXPECT_STREQ(api.m_TicketText, "00FF7F") << "the identity stays";
}

TEST_F(SteamApi, WhatMayBeMissingAndWhatMayNot) {
    struct {
        const char* missing;
        bool starts;
    } const rows[] = {
        {"SteamClient", false},    {"HSteamUser", false}, {"HSteamPipe", false}, {"SteamUser", false},
        {"SteamFriends", false},   {"SteamUtils", false}, {"SteamApps", false},  {"SteamUserStats", true},
        {"SteamController", true}, {"Ticket", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.missing);
        SetEnvironmentVariableA("STEAM_STAND_IN_NULL", row.missing);
        sysSteamApi own;
        EXPECT_EQ(own.InitClass(), row.starts);
        EXPECT_EQ(own.m_Initialized, row.starts);
        EXPECT_EQ(own.m_User != nullptr, row.starts);
        EXPECT_EQ(log.Lines().back(), row.starts ? "Steam initialized successfully" : "Error initializing Steam.");
        if (row.starts) own.ShutdownClass();
    }
    SetEnvironmentVariableA("STEAM_STAND_IN_NULL", nullptr);
    SetEnvironmentVariableA("STEAM_STAND_IN_LOGGED_ON", "0");
    EXPECT_TRUE(api.InitClass());
    EXPECT_TRUE(api.m_Offline);
}

TEST_F(SteamApi, TheSecondAttemptComesFromTheGameDirectory) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("tollmere-game-" + std::to_string(GetCurrentProcessId()));
    std::filesystem::create_directory(folder);
    const std::string game = folder.string();
    const std::string attempt = "Attempting initialization of Steam API from game directory: " + game;
    const WideString before = CurrentDirectory();
    struct {
        std::string init;
        std::string location;
        bool starts;
        bool attempted;
    } const rows[] = {
        {"fail-first", game, true, true}, {"only-in:" + game, game, true, true},
        {"fail", game, false, true},      {"fail-first", game + "/missing", false, false},
        {"fail", "", false, false},       {"ok", game, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.init + " " + row.location);
        SetEnvironmentVariableA("STEAM_STAND_IN_INIT", row.init.c_str());
        GiveOptions(std::nullopt, row.location);
        sysSteamApi own;
        EXPECT_EQ(own.InitClass(), row.starts);
        EXPECT_EQ(testing::Value(log.Lines(), Contains(attempt)), row.attempted);
        EXPECT_EQ(CurrentDirectory(), before);
        if (row.starts) own.ShutdownClass();
    }
    std::filesystem::remove(folder);
}

TEST_F(SteamApi, TicketsOfEveryLengthBecomeTextOrNone) {
    std::string longest;
    for (int i = 0; i < 1024; ++i) longest += "A5";
    struct {
        std::string ticket;
        const char* claimedLength;
        std::string text;
        std::uint32_t length;
        bool waits;
    } const rows[] = {
        {"0102", nullptr, "0102", 2, true},   {longest, nullptr, longest, 1024, true},
        {"", nullptr, "", 0, true},           {"0102", "1025", "", 0, false},
        {"0102", "4294967295", "", 0, false}, {"0102", "2147483648", "", 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ticket.size());
        SetEnvironmentVariableA("STEAM_STAND_IN_TICKET", row.ticket.c_str());
        SetEnvironmentVariableA("STEAM_STAND_IN_TICKET_LENGTH", row.claimedLength);
        sysSteamApi own;
        ASSERT_TRUE(own.InitClass());
        EXPECT_EQ(own.m_TicketText, row.text);
        EXPECT_EQ(own.m_TicketLength, row.length);
        EXPECT_EQ(own.m_TicketRequestTime != 0, row.waits);
        EXPECT_EQ(testing::Value(log.Lines(), Contains("Invalid auth ticket")), !row.waits);
        own.ShutdownClass();
    }
}

TEST_F(SteamApi, TheWaitForTheTicketEndsByResponseOrByTime) {
    ASSERT_TRUE(api.InitClass());
    ASSERT_NE(api.m_TicketRequestTime, 0u);
    log.Lines();
    const std::uint32_t requested = api.m_TicketRequestTime;

    api.CheckTicketTimeout();
    EXPECT_EQ(api.m_TicketRequestTime, requested);
    // Far enough back, also where the millisecond counter has wrapped meanwhile.
    api.m_TicketRequestTime = timeGetTime() - 10'500;
    api.CheckTicketTimeout();
    api.CheckTicketTimeout();
    EXPECT_EQ(api.m_TicketRequestTime, 0u);
    EXPECT_EQ(api.m_AuthTicket, 0u);
    EXPECT_THAT(log.Lines(), ElementsAre("Timed out waiting for Steam Ticket authentication."));
    EXPECT_GT(api.m_TicketLength, 0u) << "it is served all the same";
}

}  // namespace
