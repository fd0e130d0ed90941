#include "telemetry/json/json_validator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/telemetry/json/json_log.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string kPrefix = "JSON Validation Error: ";

std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

struct Refusal {
    std::string m_Text;
    std::vector<std::string> m_Lines;  // without kPrefix
};

std::vector<Refusal> Refusals() {
    const auto extra = [](const std::string& text, const std::string& first) -> Refusal {
        return {text,
                {"line 1, character '" + first + "' was not { or [",
                 "line 1 char 1, extra data following end of first object", "extra content = '" + text + "'"}};
    };
    const std::string depth = "Depth exceeds maxium (32)";
    return {
        {"{} {}", {"line 1 char 4, extra data following end of first object", "extra content = '{}'"}},
        {"[]\0[]"s, {"line 1 char 3, extra data following end of first object", "extra content = ''"}},
        extra("\f{}", "\f"),
        extra("x", "x"),
        extra("\xEF\xBB\xBF{}", "\xFF"),
        {R"({"a":1,})", {"line 1 char 9, expected '\"' and got '}'"}},
        {R"([1,])", {"line 1 char 4, reading a value, found unexpected char ']'"}},
        {R"({"a" 1})", {"line 1 char 7, reading object, expected ':' and got '1'"}},
        {R"({a:1})", {"line 1 char 3, expected '\"' and got 'a'"}},
        {R"({"a":01})", {"line 1 char 8, reading object, expected '}' and got '1'"}},
        {R"({"a":truex})", {"line 1 char 11, reading object, expected '}' and got 'x'"}},
        {R"([1 2])", {"line 1 char 5, reading array, expected ']' and got '2'"}},
        {R"({"a":1.})", {"line 1 char 8, expected a digit and got '}'"}},
        {R"({"a":1e})", {"line 1 char 8, expected a digit and got '}'"}},
        {R"({"a":-})", {"line 1 char 7, expected a digit and got '}'"}},
        {R"({"a":+1})", {"line 1 char 6, reading a value, found unexpected char '+'"}},
        {R"({"a":tru})", {"line 1 char 10, reading literal \"true\" and got '}'"}},
        {R"([fals )", {"line 1 char 7, reading literal \"false\" and got ' '"}},
        {R"([nul)", {"line 1 char 6, reading literal \"null\" and got '\0'"s}},
        {R"({"a":"\x"})", {"line 1 char 9, found an invalid escape sequence '\\x' while parsing string"}},
        {R"({"a":"\u12G4"})", {"line 1 char 12, found an invalid hex digit 'G' while parsing unicode escape sequence"}},
        {R"({"a":"b)", {"line 1 char 9, found a control character 0x0 while parsing string"}},
        {"[[[[", {"line 1 char 5, reading a value, found unexpected char '\0'"s}},
        {"{", {"line 1 char 3, expected '\"' and got '\0'"s}},
        {"{\"a\":\"\t\"}", {"line 1 char 8, found a control character 0x9 while parsing string"}},
        {"{\"a\":\"\x7F\"}", {"line 1 char 8, found a control character 0x7f while parsing string"}},
        {"{\"a\nb\":1}", {"line 2 char 1, found a control character 0xa while parsing string"}},
        {"\n[\n \xC3\xA9]", {"line 3 char 2, reading a value, found unexpected char '\xE9'"}},
        // More continuation bytes than a character can have: one column, no class.
        {"[\xC3\xA9\xA9\xA9\xA9]", {"line 1 char 2, reading a value, found unexpected char '\xFF'"}},
        {"[\"\xC3\xA9\xA9\xA9\xA9\xA9\",]", {"line 1 char 6, reading a value, found unexpected char ']'"}},
        {Repeat("[", 33) + Repeat("]", 33), {depth}},
        {Repeat("{\"a\":", 33) + "1" + Repeat("}", 33), {depth}},
        {Repeat("[{\"a\":", 17) + "1" + Repeat("}]", 17), {depth}},
        {Repeat("[", 100000), {depth}},
    };
}

TEST(JsonValidator, RefusesWithPlaceAndReason) {
    for (const Refusal& row : Refusals()) {
        SCOPED_TRACE(row.m_Text.substr(0, 100));
        EXPECT_FALSE(ValidateDocument(row.m_Text.data(), row.m_Text.size()));
        std::vector<std::string> expected;
        for (const std::string& line : row.m_Lines) expected.push_back(kPrefix + line);
        EXPECT_THAT(TakeLog(), ElementsAreArray(expected));
    }
}

// Long strings are stepped through, and what is wrong in them stands behind as many characters as there are.
TEST(JsonValidator, CountsTheCharactersOfLongStrings) {
    const struct {
        std::string m_Text;
        int m_Column;  // behind no plain character, but for the byte that belongs to the character before it
        std::string m_Problem;
    } rows[] = {
        {"\x01", 4, "found a control character 0x1 while parsing string"},
        {"\x7F", 4, "found a control character 0x7f while parsing string"},
        {"", 4, "found a control character 0x0 while parsing string"},
        {"\xC3\xA9\x01", 5, "found a control character 0x1 while parsing string"},
        {"\x80\x01", 4, "found a control character 0x1 while parsing string"},
        {"\\\"\\n\x01", 8, "found a control character 0x1 while parsing string"},
        // Not the line feed's letter: the byte behind it makes it another character.
        {"\\n\x80", 5, "found an invalid escape sequence '\\\x80' while parsing string"},
        {"\\x", 5, "found an invalid escape sequence '\\x' while parsing string"},
        {"\\u12G", 8, "found an invalid hex digit 'G' while parsing unicode escape sequence"},
    };
    for (const auto& row : rows) {
        for (int plain = 1; plain < 40; ++plain) {
            const std::string text = "[\"" + Repeat("p", plain) + row.m_Text;
            SCOPED_TRACE(text);
            EXPECT_FALSE(ValidateDocument(text.data(), text.size()));
            EXPECT_THAT(TakeLog(), ElementsAre(kPrefix + "line 1 char " + std::to_string(row.m_Column + plain) + ", " +
                                               row.m_Problem));
        }
    }
}

TEST(JsonValidator, AcceptsInSilence) {
    const std::string texts[] = {
        "{}",
        "[]",
        " \t\n\v\r{ \v} \v\n",
        "[ ]\r\n",
        "{\"\xC3\xA9\":\"\xC3\xA9\"}",
        "[\"\xF0\x9F\x98\x80\", \"\xC3\xA9\xA9\xA9\xA9\xA9\"]",
        R"({ "a" : [ 1 , true , false , null , "x" ] , "a" : { } , "" : "" })",
        R"(["\"\\\/\b\f\n\r\t\u00e9\uD800\uABCDef"])",
        "[1e999, 0.5, -1.25, 1E+5, 2.5e-3, 0e0, -0, " + Repeat("9", 500) + "]",
        Repeat("[", 32) + Repeat("]", 32),
        Repeat("{\"a\":", 32) + "1" + Repeat("}", 32),
        Repeat("[{\"a\":", 16) + "1" + Repeat("}]", 16),
        Repeat("[", 31) + Repeat("[],", 1000) + "[]" + Repeat("]", 31),
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 100));
        EXPECT_TRUE(ValidateDocument(text.data(), text.size()));
        EXPECT_THAT(TakeLog(), IsEmpty());
    }
}

TEST(JsonValidator, AcceptsTheEmptyTextWithALine) {
    for (const std::string& text : {""s, " \r"s}) {
        EXPECT_TRUE(ValidateDocument(text.data(), text.size()));
        EXPECT_THAT(TakeLog(), ElementsAre(kPrefix + "line 1, character '\0' was not { or ["s));
    }
    EXPECT_TRUE(ValidateDocument(nullptr, 0));
    EXPECT_THAT(TakeLog(), ElementsAre(kPrefix + "line 1, character '\0' was not { or ["s));
}

TEST(JsonValidator, NumbersEndWhereTheirFormEnds) {
    const struct {
        const char* m_Text;
        int m_Consumed;  // -1: refused
    } rows[] = {
        {"0", 1},    {"-0", 2},  {"10", 2},   {"0.5", 3},   {"-1.25", 5}, {"1e5", 3},   {"1E+5", 4}, {"2.5e-3", 6},
        {"0e0", 3},  {"01", 1},  {"00", 1},   {"1.2.3", 3}, {"1e5.5", 3}, {"-", -1},    {"-x", -1},  {"1.", -1},
        {"1.x", -1}, {"1e", -1}, {"1e+", -1}, {"1ex", -1},  {"-01", 2},   {"9876x", 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_Text);
        JsonValidator validator;
        validator.m_Current = row.m_Text;
        validator.m_End = row.m_Text + std::strlen(row.m_Text);
        EXPECT_EQ(row.m_Consumed >= 0, validator.ParseNumber());
        EXPECT_EQ(row.m_Consumed >= 0 ? 0u : 1u, TakeLog().size());
        if (row.m_Consumed >= 0) {
            EXPECT_EQ(row.m_Consumed, validator.m_Current - row.m_Text);
        }
    }
}

}  // namespace
