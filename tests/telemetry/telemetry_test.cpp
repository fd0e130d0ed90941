#include "telemetry/telemetry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "platform/windows_api.h"
#include "steam/steam_api.h"
#include "telemetry/steam_action_events.h"

namespace {

class Telemetry : public testing::Test {
  protected:
    Telemetry() { g_TelemetrySource = &source; }
    ~Telemetry() override { g_TelemetrySource = nullptr; }
    // The text of the newest event.
    std::string Data() const { return source.m_Events.empty() ? "none" : source.m_Events.back().data; }

    SteamHelperTelemetry source;
};

TEST_F(Telemetry, TheQueueKeepsTheNewestTen) {
    for (std::uint64_t time = 1; time <= 13; ++time) EXPECT_TRUE(QueueEvent("STEAM_ACTION", "", time));
    ASSERT_EQ(source.m_Events.size(), 10u);
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(source.m_Events[i].time, i + 4);
}

TEST_F(Telemetry, ATextThatDoesNotFitIsCutAtAWholeCharacter) {
    const std::string twoBytes = "\xC3\xA4";
    struct {
        std::string name;
        std::string kept;
    } const rows[] = {
        {std::string(31, 'x'), std::string(31, 'x')},
        {std::string(32, 'x'), std::string(31, 'x')},
        {std::string(29, 'x') + twoBytes, std::string(29, 'x') + twoBytes},
        {std::string(30, 'x') + twoBytes, std::string(30, 'x')},
        {std::string(31, 'x') + twoBytes, std::string(31, 'x')},
        {std::string(40, '\x80'), ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QueueEvent(row.name.c_str(), std::string(5000, 'd').c_str(), 1);
        EXPECT_EQ(source.m_Events.back().name, row.kept);
        EXPECT_EQ(Data(), std::string(1023, 'd'));
    }
}

TEST_F(Telemetry, AcceptsItsOneEventWhateverTheCase) {
    EXPECT_TRUE(source.AcceptsEvent("Steam_Action"));
    for (const char* const other : {"", "STEAM", "STEAM_ACTIONS", "STEAM-ACTION"}) {
        EXPECT_FALSE(source.AcceptsEvent(other)) << other;
    }
}

std::uint64_t Now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

TEST_F(Telemetry, AnActionIsTheMembersOfAnObjectWithoutItsBraces) {
    constexpr std::uint64_t kMillisecond = 10'000;
    const std::uint64_t before = Now() / kMillisecond * kMillisecond;
    EXPECT_TRUE(RecordSteamAction({"id", 0}, {"we", 5}));
    EXPECT_EQ(Data(), R"("id":0,"we":5)");
    EXPECT_STREQ(source.m_Events[0].name, "STEAM_ACTION");
    EXPECT_GE(source.m_Events[0].time, before);
    EXPECT_LE(source.m_Events[0].time, Now());
    EXPECT_TRUE(RecordSteamInitResult({"id", 2}, {"as", false}));
    EXPECT_EQ(Data(), R"("id":2,"as":false)");

    g_TelemetrySource = nullptr;
    EXPECT_FALSE(RecordSteamAction({"id", 1}, {"pe", 5}));
    EXPECT_EQ(source.m_Events.size(), 2u);
}

TEST_F(Telemetry, TheStatusSaysHowFarTheStartGot) {
    sysSteamApi api;
    RecordSteamStatus(api);
    EXPECT_EQ(Data(), R"("id":3,"sa":0,"sd":false,"sp":false,"so":false,"si":0,"sl":false,"st":false,"ss":false)");

    api.m_AppId = 0x80000000;
    api.m_FnInit = [] { return true; };
    api.m_Offline = true;
    api.m_SteamId = std::numeric_limits<std::uint64_t>::max();
    std::strcpy(api.m_Location, "x");
    api.m_TicketLength = 1;
    api.m_Initialized = true;
    RecordSteamStatus(api);
    EXPECT_EQ(Data(), R"("id":3,"sa":-2147483648,"sd":false,"sp":true,"so":true,"si":18446744073709551615,"sl":true,)"
                      R"("st":true,"ss":true)");
}

}  // namespace
