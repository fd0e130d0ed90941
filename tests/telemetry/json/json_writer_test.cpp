#include "telemetry/json/json_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "telemetry/json/json_validator.h"
#include "tests/support/log_capture.h"

namespace {

using test_support::LogCapture;
using testing::ElementsAre;

// A writer on a heap block of exactly its capacity.
struct Output {
    explicit Output(std::uint32_t capacity) : block(new char[capacity]()) {
        writer.m_Buffer = block.get();
        writer.m_Capacity = capacity;
    }
    std::string Text() const { return std::string(block.get(), writer.m_Cursor); }

    std::unique_ptr<char[]> block;
    JsonWriter writer;
};

void WriteNested(JsonWriter& w) {
    w.Begin();
    w.BeginArray("a");
    w.Begin();
    w.WriteString("k", "v");
    w.WriteUInt64("t", 7);
    w.End();
    w.Begin();
    w.End();
    w.End();
    w.End();
}

void WriteStrings(JsonWriter& w) {
    w.BeginArray("s");
    w.WriteString(nullptr, "");
    w.WriteString(nullptr, "x,");
    w.WriteString(nullptr, "y z{");
    w.WriteString(nullptr, "/\"\\\b\f\n\r\t");
    w.WriteString(nullptr, "\x01\x0B\x1F\x7F");
    w.End();
    w.WriteString("q\"=", "[");
}

void WriteNumbers(JsonWriter& w) {
    w.WriteInt("id", 0);
    w.WriteInt("we", -2147483647 - 1);
    w.WriteUInt64("t", 18446744073709551615u);
    w.WriteBool("y", true);
    w.WriteBool("n", false);
    w.WriteInt(nullptr, 5);
}

void WriteUnicode(JsonWriter& w) {
    // Two, three and four bytes; a lone lead; 0x80, which is no escape's start; more than four bytes.
    w.WriteString(nullptr, "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.");
}

void WriteRawText(JsonWriter& w) {
    w.WriteRaw("[");
    w.WriteInt(nullptr, 1);
    w.WriteRaw(" ");
    w.WriteInt(nullptr, 2);
    w.WriteRaw("\t");
    w.WriteRaw("");
    w.WriteInt(nullptr, 3);
    w.WriteRaw(",,");
    w.WriteInt(nullptr, 4);
    w.WriteRaw(']');
    w.WriteEscaped("abc", 2);
}

// With the room that the text needs, with one byte less, and so on down to none: what is there is the start of the
// text, and the lack of room is told once.
TEST(JsonWriter, WritesEachFormInAnyRoom) {
    LogCapture log;
    struct {
        void (*script)(JsonWriter&);
        std::uint32_t options;
        std::string_view json;
        std::string_view keyValue;
    } const rows[] = {
        {WriteNested, 0, R"({"a":[{"k":"v","t":7},{}]})", "{a={{k=v,t=7},{}}}"},
        {WriteNested, JsonWriter::OptionPretty,
         "{\n\t\"a\":[\n\t\t{\n\t\t\t\"k\":\"v\",\n\t\t\t\"t\":7\n\t\t},\n\t\t{\n\t\t}\n\t]\n}",
         "{\n\ta={\n\t\t{\n\t\t\tk=v,\n\t\t\tt=7\n\t\t},\n\t\t{\n\t\t}\n\t}\n}"},
        {WriteStrings, 0, R"("s":["","x,","y z{","/\"\\\b\f\n\r\t","\x1\xB\x1F\x7F"],"q\"=":"[")",
         R"(s={"x,","y z{","/\"\\\b\f\n\r\t","\x1\xB\x1F\x7F"},q\"=="[")"},
        {WriteNumbers, 0, R"("id":0,"we":-2147483648,"t":18446744073709551615,"y":true,"n":false,5)",
         "id=0,we=-2147483648,t=18446744073709551615,y=true,n=false,5"},
        {WriteUnicode, JsonWriter::OptionEscapeUnicode, "\"\\u00E9 \\u20AC \\uF600 \\u00E9 \x80 \\uFFFD.\"",
         "\"\\u00E9 \\u20AC \\uF600 \\u00E9 \x80 \\uFFFD.\""},
        {WriteUnicode, 0, "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.\"",
         "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.\""},
        {WriteRawText, 0, "[1 ,2\t3,,4]ab", "[,1 ,2\t3,,4]ab"},
    };
    for (const auto& row : rows) {
        for (const bool keyValue : {false, true}) {
            const std::string_view expected = keyValue ? row.keyValue : row.json;
            SCOPED_TRACE(expected);
            const auto length = static_cast<std::uint32_t>(expected.size());
            for (std::uint32_t capacity = 0; capacity <= length + 1; ++capacity) {
                SCOPED_TRACE(capacity);
                Output output(capacity);
                output.writer.m_KeyValueMode = keyValue ? 2 : 0;
                output.writer.m_Options = row.options;
                row.script(output.writer);
                const bool fits = capacity > length;
                EXPECT_EQ(output.writer.HasFailed(), !fits);
                EXPECT_EQ(output.Text(), expected.substr(0, output.writer.m_Cursor));
                EXPECT_EQ(output.Text() == expected, fits);
                EXPECT_TRUE(capacity == 0 || output.block[output.writer.m_Cursor] == '\0');
                // What may follow is the depth: an End whose Begin had no room.
                const auto lines = log.Lines();
                EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                        [](const auto& line) { return line.starts_with("Failed to WriteRaw()"); }),
                          fits ? 0 : 1);
            }
            JsonWriter measure;
            measure.m_KeyValueMode = keyValue;
            measure.m_Options = row.options;
            measure.m_Status = JsonWriter::StatusMeasureOnly;
            row.script(measure);
            EXPECT_EQ(measure.m_Cursor, length);
            EXPECT_FALSE(measure.HasFailed());
        }
    }
}

TEST(JsonWriter, LackOfRoomStopsEverything) {
    LogCapture log;
    Output output(4);
    JsonWriter& w = output.writer;
    EXPECT_TRUE(w.Begin() && w.End());
    EXPECT_EQ(output.Text(), "{}");
    EXPECT_FALSE(w.Begin());
    EXPECT_FALSE(w.WriteUInt64("t", 1) || w.WriteString("a", "b") || w.WriteRaw("x") || w.WriteRaw('x'));
    EXPECT_EQ(output.Text(), "{},");
    EXPECT_EQ(w.m_Depth, 0);
    Output second(4);
    EXPECT_FALSE(second.writer.WriteRaw("four"));
    EXPECT_THAT(log.Lines(), ElementsAre("Failed to WriteRaw() - Available(0) <= 0.",
                                         "Failed to WriteRaw() - Available(3) < len(4)."));
}

TEST(JsonWriter, DepthHasAnEndBothWays) {
    LogCapture log;
    Output output(1000);
    JsonWriter& w = output.writer;
    for (int i = 0; i < 16; ++i) {
        EXPECT_TRUE(w.BeginArray(i == 0 ? nullptr : "a"));
        EXPECT_TRUE(w.Begin());
    }
    EXPECT_EQ(w.m_Depth, 32);
    EXPECT_EQ(w.m_Containers, 0x55555555u);
    EXPECT_TRUE(w.End());
    EXPECT_TRUE(w.BeginArray(nullptr));
    const JsonWriter full = w;
    for (int i = 0; i < 32; ++i) EXPECT_TRUE(w.End());
    EXPECT_TRUE(ValidateDocument(output.block.get(), w.m_Cursor));
    EXPECT_FALSE(w.End());
    w = full;
    EXPECT_FALSE(w.Begin());
    EXPECT_FALSE(w.BeginArray("deep"));
    EXPECT_EQ(w.m_Depth, 32);
    EXPECT_EQ(w.m_Cursor, full.m_Cursor);
    EXPECT_THAT(log.Lines(),
                ElementsAre("Failed to End() - m_Depth(0) must be > 0.", "Failed to Begin() - m_Depth(32) + 1 > 32.",
                            "Failed to BeginArray() 'deep' - m_Depth(32) + 1 > 32."));
}

TEST(JsonWriter, NamesGoByTheContainer) {
    LogCapture log;
    struct {
        const char* what;
        bool (*call)(JsonWriter&);
        bool inArray, keyValue, allowed, fails;
    } const rows[] = {
        {"named item in array", [](JsonWriter& w) { return w.WriteInt("a", 1); }, true, false, false, true},
        {"named flag in array", [](JsonWriter& w) { return w.WriteBool("a", true); }, true, true, false, true},
        {"named array in array", [](JsonWriter& w) { return w.BeginArray("a"); }, true, false, false, true},
        {"named string in array", [](JsonWriter& w) { return w.WriteString("a", "b"); }, true, false, false, false},
        {"item in array", [](JsonWriter& w) { return w.WriteUInt64(nullptr, 1); }, true, false, true, false},
        {"object in object", [](JsonWriter& w) { return w.Begin(); }, false, false, false, true},
        {"number in object", [](JsonWriter& w) { return w.WriteUInt64(nullptr, 1); }, false, false, false, true},
        {"string in object", [](JsonWriter& w) { return w.WriteString(nullptr, "b"); }, false, false, false, false},
        {"null text", [](JsonWriter& w) { return w.WriteString("a", nullptr); }, false, false, false, false},
        {"object in object", [](JsonWriter& w) { return w.Begin(); }, false, true, true, false},
        {"string in object", [](JsonWriter& w) { return w.WriteString(nullptr, "b"); }, false, true, true, false},
        {"no letter", [](JsonWriter& w) { return w.WriteEscapedChar('/'); }, false, false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Output output(100);
        JsonWriter& w = output.writer;
        w.m_KeyValueMode = row.keyValue;
        row.inArray ? w.BeginArray(nullptr) : w.Begin();
        EXPECT_EQ(row.call(w), row.allowed);
        EXPECT_EQ(w.HasFailed(), row.fails);
        EXPECT_EQ(w.m_Cursor > 1, row.allowed);
        EXPECT_EQ(w.End(), !row.fails);
    }
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

}  // namespace
