#include "telemetry/telemetry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

class Telemetry : public testing::Test {
  protected:
    Telemetry() { g_TelemetrySource = &source; }
    ~Telemetry() override { g_TelemetrySource = nullptr; }
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
        source.m_Events.clear();
        QueueEvent(row.name.c_str(), std::string(5000, 'd').c_str(), 1);
        EXPECT_EQ(source.m_Events[0].name, row.kept);
        EXPECT_EQ(source.m_Events[0].data, std::string(1023, 'd'));
    }
}

TEST_F(Telemetry, AcceptsItsOneEventWhateverTheCase) {
    EXPECT_TRUE(source.AcceptsEvent("STEAM_ACTION"));
    EXPECT_TRUE(source.AcceptsEvent("Steam_Action"));
    for (const char* const other : {"", "STEAM", "STEAM_ACTIONS", "STEAM-ACTION"}) {
        EXPECT_FALSE(source.AcceptsEvent(other)) << other;
    }
}

}  // namespace
