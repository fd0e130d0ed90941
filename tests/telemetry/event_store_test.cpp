#include "tests/telemetry/store_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using EventStore = StoreFixture;

TEST_F(EventStore, ASaveWritesTheQueueAndEmptiesIt) {
    QueueEvent("STEAM_ACTION", R"("id":2,"as":false)", 100);
    QueueEvent("STEAM_ACTION", R"("id":1,"pe":5)", 200);
    EXPECT_TRUE(SaveEvents());
    EXPECT_THAT(source.m_Events, IsEmpty());
    const std::string document =
        Document({Entry(R"(\"id\":2,\"as\":false)", "100"), Entry(R"(\"id\":1,\"pe\":5)", "200")});
    EXPECT_EQ(ReadStore(), document);

    EXPECT_TRUE(SaveEvents()) << "with nothing queued the file's own events are written again";
    EXPECT_EQ(ReadStore(), document);
    Remove();
    EXPECT_TRUE(SaveEvents());
    EXPECT_EQ(ReadStore(), "{\"metrics\":[]}");
}

TEST_F(EventStore, ASaveMergesTheEventsOfEarlierRunsBehindThoseOfThisOne) {
    std::vector<std::string> old;
    for (int i = 1; i <= 5; ++i) old.push_back(Entry("F" + std::to_string(i), std::to_string(i)));
    for (const int queued : {0, 1, 6, 9, 10}) {
        SCOPED_TRACE(queued);
        WriteStore(Document(old));
        std::vector<std::string> expected;
        for (int i = 1; i <= queued; ++i) {
            Queue("Q" + std::to_string(i), 100);
            expected.push_back(Entry("Q" + std::to_string(i), "100"));
        }
        const int kept = std::min(5, 10 - queued);
        expected.insert(expected.end(), old.end() - kept, old.end());
        EXPECT_TRUE(SaveEvents());
        EXPECT_EQ(ReadStore(), Document(expected));
    }
}

TEST_F(EventStore, EntriesThatCannotBeUsedAreSkipped) {
    const std::string good = Entry("good", "1");
    const std::string rows[] = {
        R"({"name":"STEAM_ACTION","data":"no time"})",
        R"({"name":"STEAM_ACTION","time":1})",
        R"({"data":"no name","time":1})",
        Entry("time", R"("soon")"),
        Entry("time", "\"\""),
        Entry(std::string(1024, 'd'), "1"),
        R"({"name":")" + std::string(32, 'n') + R"(","data":"","time":1})",
        "[]",
        "{}",
        "17",
        "null",
        "\"text\"",
    };
    for (const std::string& row : rows) {
        SCOPED_TRACE(row);
        WriteStore(Document({good, row, good}));
        source.m_Events.clear();
        EXPECT_TRUE(LoadEvents());
        EXPECT_THAT(Queued(), ElementsAre("good", "good"));
    }
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(EventStore, TimesAndTextsAreReadInEachOfTheirForms) {
    struct {
        std::string data;
        std::string time;
        std::string readData;
        std::uint64_t readTime;
    } const rows[] = {
        {"", R"("123")", "", 123},      {"", R"("0x7B")", "", 0x7B},
        {"", R"("0xfFfF")", "", 65535}, {"", "18446744073709551615", "", 18446744073709551615u},
        {"\xE4", "1", "\xC3\xA4", 1},  // one byte for each character
        {R"(a\u0000b)", "1", "a", 1},   {std::string(1023, 'd'), "1", std::string(1023, 'd'), 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.data + row.time);
        WriteStore(Document({Entry(row.data, row.time)}));
        source.m_Events.clear();
        EXPECT_TRUE(LoadEvents());
        ASSERT_THAT(Queued(), ElementsAre(row.readData));
        EXPECT_EQ(source.m_Events[0].time, row.readTime);
    }
}

TEST_F(EventStore, WhatTheFileCannotHoldIsReplaced) {
    Queue("\xC3\xBF \xC4\x80 \xE2\x82\xAC \xF0\x9F\x8E\xAE.\x01\x7F\t", 1);
    EXPECT_TRUE(SaveEvents());
    EXPECT_EQ(ReadStore(), Document({Entry("\xFF ? ? ?.  \\t", "1")}));
}

TEST_F(EventStore, WhatIsNoStoreIsJudgedByItsKind) {
    struct {
        std::string bytes;
        bool loads, kept;
        std::string line;  // how the first one begins; empty: none
    } const rows[] = {
        {"", false, true, "JSON Validation Error: line 1, character '"},
        {" \n", false, true, "JSON Validation Error: line 2, character '"},
        {"[]", false, true, ""},
        {"{}", false, true, ""},
        {R"({"other":1})", false, true, ""},
        {R"({"metrics":17})", true, true, ""},
        {R"({"metrics":[]})", true, true, ""},
        {R"({"metrics":{"a":)" + Entry("in an object", "1") + "}}", true, true, ""},
        {"\xEF\xBB\xBF{}", false, false, "JSON Validation Error: line 1, character '"},
        {Document({Entry("x", "1")}).substr(0, 30), false, false, "JSON Validation Error: "},
        {R"({"metrics":[]}{})", false, false, "JSON Validation Error: line 1 char 15, extra data following"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        WriteStore(row.bytes);
        source.m_Events.clear();
        EXPECT_EQ(LoadEvents(), row.loads);
        EXPECT_EQ(ReadStore().has_value(), row.kept);
        const auto lines = log.Lines();
        ASSERT_EQ(lines.empty(), row.line.empty());
        EXPECT_TRUE(lines.empty() || lines[0].starts_with(row.line)) << lines[0];

        // Whatever was there, a save replaces it.
        source.m_Events.clear();
        Queue("new", 1);
        EXPECT_TRUE(SaveEvents());
        EXPECT_THAT(*ReadStore(), testing::StartsWith(Document({Entry("new", "1")}).substr(0, 50)));
        log.Lines();
    }
}

TEST_F(EventStore, WithoutAFileOrAPublishedSourceNothingIsLoaded) {
    EXPECT_FALSE(LoadEvents());
    std::filesystem::create_directory(File());
    EXPECT_FALSE(LoadEvents());
    Queue("lost", 1);
    EXPECT_FALSE(SaveEvents());
    EXPECT_THAT(source.m_Events, IsEmpty()) << "what could not be written is gone all the same";
    g_TelemetryHooks = nullptr;
    EXPECT_FALSE(SaveEvents());
    g_TelemetrySource = nullptr;
    EXPECT_FALSE(LoadEvents());
}

}  // namespace
