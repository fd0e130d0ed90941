#include "host/options.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

// Fresh options of the three kinds, under their real names.
struct Options {
    Options() { GlobalConfigRegistry() = std::move(realRegistry); }

    std::vector<GlobalConfig*> realRegistry = GlobalConfigRegistry();
    GlobalBool telemetry{WIDE_TEXT("-steamTestTelemetry")};
    GlobalInt appId{WIDE_TEXT("-steamAppID")};
    GlobalString location{WIDE_TEXT("-steamLocation")};

    void Process(const char* commandLine) {
        ProcessCommandLine({&telemetry, &appId, &location}, Utf8ToWide(commandLine).c_str());
    }
};

TEST(Options, AreFoundInTheCommandLine) {
    constexpr auto kNotSet = std::nullopt;
    struct {
        const char* commandLine;
        bool telemetry;
        std::optional<int> appId;
        std::optional<std::string> location;
    } const rows[] = {
        {"-steamAppID=480", false, 480, kNotSet},
        {"-steamAppID 480", false, 480, kNotSet},
        {"-STEAMAPPID:480", false, 480, kNotSet},
        {"-steamAppID=0", false, 0, kNotSet},
        {"\"-steamAppID= -7\"", false, -7, kNotSet},
        {"-steamAppID=480abc", false, 480, kNotSet},
        {"-steamAppID=2147483647", false, 2147483647, kNotSet},
        {"-steamAppID=2147483648", false, kNotSet, kNotSet},
        {"-steamAppID", false, kNotSet, kNotSet},
        {"-steamAppID -steamTestTelemetry", true, kNotSet, kNotSet},
        {"-steamAppID \"\" 480", false, kNotSet, kNotSet},
        {"-steamAppID 1 -steamAppID 2", false, 2, kNotSet},
        {"-steamAppID 1 -steamAppID x", false, kNotSet, kNotSet},
        {"-steamTestTelemetry=false", true, kNotSet, kNotSet},
        {"-steamLocation \"C:\\My Games\\X\"", false, kNotSet, "c:\\my games\\x"},
        {"\"-steamLocation=C:\\My Games\"", false, kNotSet, "c:\\my games"},
        {"-steamLocation=C:\\Spiele\\\xC3\x84pfel", false, kNotSet, "c:\\spiele\\\xC3\x84pfel"},
        {"-steamLocation -steamAppID=5", false, 5, ""},
        // The value of one option is an argument like any other to the next one.
        {"-steamLocation x-steamAppID=5", false, 5, "x-steamappid=5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.commandLine);
        Options options;
        options.Process(row.commandLine);
        EXPECT_EQ(options.telemetry.m_WasSet, row.telemetry);
        EXPECT_EQ(options.telemetry.m_Value, row.telemetry);
        EXPECT_EQ(options.appId.m_WasSet, row.appId.has_value());
        EXPECT_EQ(options.appId.m_Value, row.appId.value_or(0));
        EXPECT_EQ(options.location.m_WasSet, row.location.has_value());
        EXPECT_EQ(options.location.m_Value, row.location.value_or(""));
    }
}

TEST(Options, AreLoggedAsTheyAreFound) {
    test_support::LogCapture log;
    Options options;
    options.Process("-steamLocation \"C:\\\xD0\x98\xD0\xB3\xD1\x80\xD1\x8B X\" -steamAppID=abc -steamTestTelemetry");
    EXPECT_THAT(log.Lines(),
                testing::ElementsAre("Processing 4 command line arguments", " -steamtesttelemetry=", " -steamappid=abc",
                                     " -steamlocation=c:\\\xD0\x98\xD0\xB3\xD1\x80\xD1\x8B x"));

    ProcessCommandLine({&options.appId}, nullptr);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

}  // namespace
