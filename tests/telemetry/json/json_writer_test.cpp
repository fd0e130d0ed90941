#include "telemetry/json/json_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "telemetry/json/json_validator.h"
#include "tests/telemetry/json/json_log.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Script = void (*)(JsonWriter&);

// A writer on a heap block of exactly its capacity.
struct Output {
    explicit Output(std::uint32_t capacity) : m_Block(new char[capacity]()) {
        m_Writer.m_Buffer = m_Block.get();
        m_Writer.m_Capacity = capacity;
    }
    std::string Text() const { return std::string(m_Block.get(), m_Writer.m_Cursor); }

    std::unique_ptr<char[]> m_Block;
    JsonWriter m_Writer;
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
    w.WriteString(nullptr, "\xC3\xA9");
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

void WriteControls(JsonWriter& w) {
    w.WriteString("c", "\x01\x0B\x1F\x7F");
}

void WriteUnicode(JsonWriter& w) {
    // Two, three and four bytes; a lone lead; 0x80, which is no escape's start; more than four bytes.
    w.WriteString(nullptr, "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.");
}

// Longer than what is written in one step, with something to do at a step's end and beginning, twice, and not at all.
void WriteLongText(JsonWriter& w) {
    w.WriteString(
        nullptr,
        "[0123456789abcd\"\"123456789abcdef\\\n0123\x01 456789 abcdefghijk\xC3\xA9\tlmnopqrstuvwxyz0123456789\"");
}

void WriteRawText(JsonWriter& w) {
    w.WriteRaw("[");
    w.WriteInt(nullptr, 1);
    w.WriteRaw(" ");
    w.WriteInt(nullptr, 2);
    w.WriteRaw("\t");
    w.WriteRaw("");
    w.WriteInt(nullptr, 3);
    w.WriteRaw(']');
}

// For both forms.
constexpr char kLongText[] =
    "\"[0123456789abcd\\\"\\\"123456789abcdef\\\\\\n0123\\x1 456789 "
    "abcdefghijk\xC3\xA9\\tlmnopqrstuvwxyz0123456789\\\"\"";

const struct Case {
    const char* m_Name;
    Script m_Script;
    std::uint32_t m_Options;
    std::string_view m_Json;
    std::string_view m_KeyValue;
} kCases[] = {
    {"nested", WriteNested, 0, R"({"a":[{"k":"v","t":7},{}]})", "{a={{k=v,t=7},{}}}"},
    {"nested, pretty", WriteNested, JsonWriter::OptionPretty,
     "{\n\t\"a\":[\n\t\t{\n\t\t\t\"k\":\"v\",\n\t\t\t\"t\":7\n\t\t},\n\t\t{\n\t\t}\n\t]\n}",
     "{\n\ta={\n\t\t{\n\t\t\tk=v,\n\t\t\tt=7\n\t\t},\n\t\t{\n\t\t}\n\t}\n}"},
    {"strings", WriteStrings, 0,
     "\"s\":[\"\",\"x,\",\"y z{\",\"/\\\"\\\\\\b\\f\\n\\r\\t\",\"\xC3\xA9\"],\"q\\\"=\":\"[\"",
     "s={\"x,\",\"y z{\",\"/\\\"\\\\\\b\\f\\n\\r\\t\",\xC3\xA9},q\\\"==\"[\""},
    {"numbers", WriteNumbers, 0, R"("id":0,"we":-2147483648,"t":18446744073709551615,"y":true,"n":false,5)",
     "id=0,we=-2147483648,t=18446744073709551615,y=true,n=false,5"},
    {"controls", WriteControls, 0, R"("c":"\x1\xB\x1F\x7F")", "c=\"\\x1\\xB\\x1F\\x7F\""},
    {"unicode, escaped", WriteUnicode, JsonWriter::OptionEscapeUnicode,
     "\"\\u00E9 \\u20AC \\uF600 \\u00E9 \x80 \\uFFFD.\"", "\"\\u00E9 \\u20AC \\uF600 \\u00E9 \x80 \\uFFFD.\""},
    {"unicode, as it is", WriteUnicode, 0, "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.\"",
     "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE9 \x80 \xF0\x9F\x98\x80\x80.\""},
    {"long", WriteLongText, 0, kLongText, kLongText},
    {"raw", WriteRawText, 0, "[1 ,2\t3]", "[,1 ,2\t3]"},
};

std::ptrdiff_t CountRoomLines() {
    const auto lines = TakeLog();
    return std::count_if(lines.begin(), lines.end(),
                         [](const std::string& line) { return line.starts_with("Failed to WriteRaw()"); });
}

// With the room that the text needs, with one byte less, and so on down to none: what is there is the start of the
// text, and the lack of room is told once.
TEST(JsonWriter, WritesEachFormInAnyRoom) {
    for (const Case& row : kCases) {
        for (const bool keyValue : {false, true}) {
            const std::string_view expected = keyValue ? row.m_KeyValue : row.m_Json;
            const auto length = static_cast<std::uint32_t>(expected.size());
            // With much room to spare it goes another way.
            for (std::uint32_t capacity = 0; capacity <= length + 2; ++capacity) {
                if (capacity == length + 2) capacity = 2 * length + 64;
                SCOPED_TRACE(testing::Message() << row.m_Name << ", key=value " << keyValue << ", " << capacity);
                Output output(capacity);
                output.m_Writer.m_KeyValueMode = keyValue ? 2 : 0;
                output.m_Writer.m_Options = row.m_Options;
                row.m_Script(output.m_Writer);
                const bool fits = capacity > length;
                EXPECT_EQ(fits, !output.m_Writer.HasFailed());
                EXPECT_EQ(expected.substr(0, output.m_Writer.m_Cursor), output.Text());
                EXPECT_EQ(fits, output.Text() == expected);
                // What may follow is the depth: an End whose Begin had no room.
                EXPECT_EQ(fits ? 0 : 1, CountRoomLines());
                if (capacity > 0) {
                    EXPECT_EQ('\0', output.m_Block[output.m_Writer.m_Cursor]);
                }
            }
            JsonWriter measure;
            measure.m_KeyValueMode = keyValue;
            measure.m_Options = row.m_Options;
            measure.m_Status = JsonWriter::StatusMeasureOnly;
            row.m_Script(measure);
            EXPECT_EQ(length, measure.m_Cursor) << row.m_Name;
            EXPECT_FALSE(measure.HasFailed());
        }
    }
}

TEST(JsonWriter, LackOfRoomStopsEverything) {
    Output output(4);
    JsonWriter& w = output.m_Writer;
    EXPECT_TRUE(w.Begin());
    EXPECT_TRUE(w.End());
    EXPECT_EQ("{}", output.Text());
    EXPECT_FALSE(w.Begin());
    EXPECT_THAT(TakeLog(), ElementsAre("Failed to WriteRaw() - Available(0) <= 0."));
    EXPECT_FALSE(w.WriteUInt64("t", 1));
    EXPECT_FALSE(w.WriteString("a", "b"));
    EXPECT_FALSE(w.WriteRaw("x"));
    EXPECT_FALSE(w.WriteRaw('x'));
    EXPECT_EQ("{},", output.Text());
    EXPECT_EQ(0, w.m_Depth);
    EXPECT_THAT(TakeLog(), IsEmpty());

    Output second(4);
    EXPECT_FALSE(second.m_Writer.WriteRaw("four"));
    EXPECT_THAT(TakeLog(), ElementsAre("Failed to WriteRaw() - Available(3) < len(4)."));
}

TEST(JsonWriter, DepthHasAnEndBothWays) {
    Output output(1000);
    JsonWriter& w = output.m_Writer;
    for (int i = 0; i < 16; ++i) {
        EXPECT_TRUE(w.BeginArray(i == 0 ? nullptr : "a"));
        EXPECT_TRUE(w.Begin());
    }
    EXPECT_EQ(32, w.m_Depth);
    EXPECT_EQ(0x55555555u, w.m_Containers);
    EXPECT_TRUE(w.End());
    EXPECT_TRUE(w.BeginArray(nullptr));
    const JsonWriter full = w;
    for (int i = 0; i < 16; ++i) {
        EXPECT_TRUE(w.End());
        EXPECT_TRUE(w.End());
    }
    EXPECT_TRUE(ValidateDocument(output.m_Block.get(), w.m_Cursor));
    EXPECT_FALSE(w.End());
    EXPECT_FALSE(w.End());
    EXPECT_THAT(TakeLog(),
                ElementsAre("Failed to End() - m_Depth(0) must be > 0.", "Failed to End() - m_Depth(0) must be > 0."));
    w = full;
    EXPECT_FALSE(w.Begin());
    EXPECT_FALSE(w.BeginArray("deep"));
    EXPECT_EQ(32, w.m_Depth);
    EXPECT_EQ(full.m_Cursor, w.m_Cursor);
    EXPECT_THAT(TakeLog(), ElementsAre("Failed to Begin() - m_Depth(32) + 1 > 32.",
                                       "Failed to BeginArray() 'deep' - m_Depth(32) + 1 > 32."));
}

TEST(JsonWriter, NamesGoByTheContainer) {
    const struct {
        const char* m_Name;
        bool (*m_Call)(JsonWriter&);
        bool m_InArray, m_KeyValue, m_Allowed, m_Fails;
    } rows[] = {
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
        SCOPED_TRACE(row.m_Name);
        Output output(100);
        JsonWriter& w = output.m_Writer;
        w.m_KeyValueMode = row.m_KeyValue;
        row.m_InArray ? w.BeginArray(nullptr) : w.Begin();
        EXPECT_EQ(row.m_Allowed, row.m_Call(w));
        EXPECT_EQ(row.m_Fails, w.HasFailed());
        EXPECT_EQ(row.m_Allowed, w.m_Cursor > 1);
        EXPECT_EQ(!row.m_Fails, w.End());
        EXPECT_THAT(TakeLog(), IsEmpty());
    }
}

}  // namespace
