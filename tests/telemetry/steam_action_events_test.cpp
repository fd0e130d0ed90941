#include "telemetry/steam_action_events.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "platform/windows_api.h"
#include "steam/steam_api.h"
#include "telemetry/telemetry.h"

namespace {

class SteamActionEvents : public testing::Test {
  protected:
    SteamActionEvents() { g_TelemetrySource = &source; }
    ~SteamActionEvents() override { g_TelemetrySource = nullptr; }
    // The text of the newest event.
    std::string Data() const { return source.m_Events.empty() ? "none" : source.m_Events.back().data; }

    SteamHelperTelemetry source;
};

std::uint64_t Now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

TEST_F(SteamActionEvents, AreTheMembersOfAnObjectWithoutItsBraces) {
    constexpr std::uint64_t kMillisecond = 10'000;
    const std::uint64_t before = Now() / kMillisecond * kMillisecond;
    EXPECT_TRUE(RecordSteamAction({"id", 0}, {"we", 5}));
    EXPECT_EQ(Data(), R"("id":0,"we":5)");
    EXPECT_STREQ(source.m_Events[0].name, "STEAM_ACTION");
    EXPECT_GE(source.m_Events[0].time, before);
    EXPECT_LE(source.m_Events[0].time, Now());

    EXPECT_TRUE(RecordSteamInitResult({"id", 2}, {"as", false}));
    EXPECT_EQ(Data(), R"("id":2,"as":false)");
}

TEST_F(SteamActionEvents, TheStatusSaysHowFarTheStartGot) {
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

TEST_F(SteamActionEvents, WithoutASourceTheyAreDropped) {
    g_TelemetrySource = nullptr;
    EXPECT_FALSE(RecordSteamAction({"id", 1}, {"pe", 5}));
    EXPECT_TRUE(source.m_Events.empty());
}

}  // namespace
