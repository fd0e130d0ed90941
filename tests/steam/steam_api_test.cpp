// The Steam binding against the stand-in DLL that lies beside this test's executable.

#include "steam/steam_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/options.h"
#include "support/temp_folder.h"
#include "tests/support/log_capture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;

class SteamApi : public testing::Test {
  protected:
    SteamApi() {
        for (const char* const name :
             {"INIT", "TICKET", "TICKET_LENGTH", "NULL", "CALLBACKS", "LOGGED_ON", "PERSONA", "STEAM_ID"}) {
            SetEnvironmentVariableA((std::string("STEAM_STAND_IN_") + name).c_str(), nullptr);
        }
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("SteamLocation", "here");
        log.Lines();
    }
    ~SteamApi() override {
        if (api.m_Initialized) api.ShutdownClass();
        GiveOptions({}, {});
    }

    static void GiveOptions(std::optional<int> appId, std::optional<std::string> location) {
        g_SteamAppID.m_WasSet = appId.has_value();
        g_SteamAppID.m_Value = appId.value_or(0);
        g_SteamLocation.m_WasSet = location.has_value();
        g_SteamLocation.m_Value = location.value_or("");
    }
    static WideString CurrentDirectory() {
        WCHAR path[kPathCapacity] = {};
        GetCurrentDirectoryW(kPathCapacity, path);
        return path;
    }

    test_support::LogCapture log;
    sysSteamApi api;
};

TEST_F(SteamApi, TheAppIdOfTheCommandLineWinsOverThatOfTheEnvironment) {
    using Lines = std::vector<std::string>;
    const std::string none = "Could not find steam app id from environment.";
    const std::string ofEnvironment = "Processed SteamAppID from Environment: 480";
    const std::string ofCommandLine = "Processed SteamAppID from Command Line: ";
    const std::string tooLong(64, '4');
    struct {
        const char* environment;
        std::optional<int> option;
        std::uint32_t appId;
        std::string environmentAfter;
        Lines lines;
    } const rows[] = {
        {"480", {}, 480, "480", {ofEnvironment}},
        {"480 and text", {}, 480, "480 and text", {ofEnvironment}},
        {nullptr, {}, 0, "", {none}},
        {"none", {}, 0, "none", {}},
        {tooLong.c_str(), {}, 0, tooLong, {}},
        {"480", 570, 570, "570", {ofEnvironment, ofCommandLine + "570"}},
        {nullptr, 570, 570, "570", {none, ofCommandLine + "570"}},
        {"480", 0, 0, "480", {ofEnvironment}},
        {"480", -1, 4294967295, "4294967295", {ofEnvironment, ofCommandLine + "4294967295"}},
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
        char environmentAfter[256] = {};
        GetEnvironmentVariableA("SteamAppId", environmentAfter, sizeof environmentAfter);
        EXPECT_EQ(environmentAfter, row.environmentAfter);
        const Lines lines = log.Lines();
        const auto behind = std::find(lines.begin(), lines.end(), "Processed Steam Location from Command Line: ");
        EXPECT_EQ(Lines(lines.begin(), behind), row.lines);
    }
}

TEST_F(SteamApi, TheLocationComesFromTheFirstPlaceThatHasOneAndIsNeverCut) {
    const std::string fits(259, 'x');
    const std::string tooLong(260, 'x');
    const std::string tooManyBytes = "\xC3\xA4" + fits.substr(1);
    const std::string line = "Steam location is too long and will not be used.";
    struct {
        std::optional<std::string> option;
        std::string environment, location, line;
    } const rows[] = {
        {"games", "other", "games", "Processed Steam Location from Command Line: games"},
        {"", "other", "", "Processed Steam Location from Command Line: "},
        {fits, "", fits, "Processed Steam Location from Command Line: " + fits},
        {tooLong, "other", "", line},
        {{}, "other", "other", "Processed Steam Location from Environment: other"},
        {{}, fits, fits, "Processed Steam Location from Environment: " + fits},
        {{}, tooLong, "", line},
        {tooManyBytes, "", "", line},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        SetEnvironmentVariableA("SteamLocation", row.environment.empty() ? nullptr : row.environment.c_str());
        SetEnvironmentVariableA("SteamAppId", nullptr);
        GiveOptions({}, row.option);
        sysSteamApi own;
        EXPECT_TRUE(own.InitClass());
        EXPECT_EQ(own.m_Location, row.location);
        EXPECT_THAT(log.Lines(), IsSupersetOf({row.line, "InitClass :: Location=" + row.location,
                                               std::string("Invalid steam app id")}));
    }

    // With neither the parent process is asked: whatever it is, there is a line for it.
    SetEnvironmentVariableA("SteamLocation", nullptr);
    GiveOptions({}, {});
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
    const support::TempFolder folder;
    const std::string game = support::ToUtf8(folder.Path());
    const std::string attempt = "Attempting initialization of Steam API from game directory: " + game;
    const WideString before = CurrentDirectory();
    struct {
        std::string init, location;
        bool starts, attempted;
    } const rows[] = {
        {"fail-first", game, true, true}, {"only-in:" + game, game, true, true},
        {"fail", game, false, true},      {"fail-first", game + "/missing", false, false},
        {"fail", "", false, false},       {"ok", game, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.init + " " + row.location);
        SetEnvironmentVariableA("STEAM_STAND_IN_INIT", row.init.c_str());
        GiveOptions({}, row.location);
        sysSteamApi own;
        EXPECT_EQ(own.InitClass(), row.starts);
        EXPECT_EQ(testing::Value(log.Lines(), Contains(attempt)), row.attempted);
        EXPECT_EQ(CurrentDirectory(), before);
        if (row.starts) own.ShutdownClass();
    }
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
        {"0102", nullptr, "0102", 2, true},
        {longest, nullptr, longest, 1024, true},
        {"", nullptr, "", 0, true},
        {"0102", "1025", "", 0, false},
        {"0102", "4294967295", "", 0, false},
        {"0102", "2147483648", "", 0, false},
        {"0102", "64", "0102" + std::string(124, '0'), 64, true},
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

TEST_F(SteamApi, TheWaitForTheTicketEndsByTime) {
    ASSERT_TRUE(api.InitClass());
    const std::uint32_t requested = api.m_TicketRequestTime;
    ASSERT_NE(requested, 0u);
    log.Lines();

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

TEST_F(SteamApi, OnlyTheConfirmationOfItsOwnTicketEndsTheWait) {
    SetEnvironmentVariableA("STEAM_STAND_IN_CALLBACKS", "1:163:null;2:163:0210000001000000;3:163:0110000002000000");
    const std::string response = "OnGetAuthSessionTicketResponse: ";
    struct {
        bool waits;
        std::vector<std::string> lines;
    } const pumps[] = {
        {true, {}},
        {true, {response + "result (1), hAuthTicket (4098)"}},
        {false, {response + "result (2), hAuthTicket (4097)"}},
    };
    ASSERT_TRUE(api.InitClass());
    log.Lines();
    for (const auto& pump : pumps) {
        api.RunCallbacks();
        EXPECT_EQ(api.m_TicketRequestTime != 0, pump.waits);
        EXPECT_EQ(api.m_AuthTicket, pump.waits ? 4097u : 0u);
        EXPECT_EQ(log.Lines(), pump.lines);
    }
}

TEST_F(SteamApi, TheOverlaysStateIsFollowed) {
    SetEnvironmentVariableA("STEAM_STAND_IN_CALLBACKS", "1:331:01:result;2:331:null;3:331:00");
    ASSERT_TRUE(api.InitClass());
    log.Lines();
    for (const bool active : {true, true, false}) {
        api.RunCallbacks();
        EXPECT_EQ(api.m_OverlayActive, active);
    }
    EXPECT_THAT(log.Lines(), ElementsAre("Steam Overlay: activated", "Steam Overlay: closed"));
}

}  // namespace
