#include "telemetry/json/json_validator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

using namespace std::string_literals;
using test_support::LogCapture;
using testing::ElementsAre;

// Before each of its lines.
const std::string kPrefix = "JSON Validation Error: ";

std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

bool Validate(const std::string& text) {
    return ValidateDocument(text.data(), text.size());
}

// In a line of the log a NUL ends the text.
TEST(JsonValidator, RefusesWithPlaceAndReason) {
    LogCapture log;
    struct {
        std::string text;
        std::string line;
    } const rows[] = {
        {R"({"a":1,})", "line 1 char 9, expected '\"' and got '}'"},
        {R"([1,])", "line 1 char 4, reading a value, found unexpected char ']'"},
        {R"({"a" 1})", "line 1 char 7, reading object, expected ':' and got '1'"},
        {R"({a:1})", "line 1 char 3, expected '\"' and got 'a'"},
        {R"({"a":01})", "line 1 char 8, reading object, expected '}' and got '1'"},
        {R"({"a":truex})", "line 1 char 11, reading object, expected '}' and got 'x'"},
        {R"([1 2])", "line 1 char 5, reading array, expected ']' and got '2'"},
        {"[01]", "line 1 char 4, reading array, expected ']' and got '1'"},
        {"[-01]", "line 1 char 5, reading array, expected ']' and got '1'"},
        {"[1.2.3]", "line 1 char 6, reading array, expected ']' and got '.'"},
        {"[1e5.5]", "line 1 char 6, reading array, expected ']' and got '.'"},
        {"[1e+]", "line 1 char 5, expected a digit and got ']'"},
        {R"({"a":1.})", "line 1 char 8, expected a digit and got '}'"},
        {R"({"a":1e})", "line 1 char 8, expected a digit and got '}'"},
        {R"({"a":-})", "line 1 char 7, expected a digit and got '}'"},
        {R"({"a":+1})", "line 1 char 6, reading a value, found unexpected char '+'"},
        {R"({"a":tru})", "line 1 char 10, reading literal \"true\" and got '}'"},
        {R"([fals )", "line 1 char 7, reading literal \"false\" and got ' '"},
        {R"([nul)", "line 1 char 6, reading literal \"null\" and got '"},
        {R"({"a":"\x"})", "line 1 char 9, found an invalid escape sequence '\\x' while parsing string"},
        {R"({"a":"\u12G4"})", "line 1 char 12, found an invalid hex digit 'G' while parsing unicode escape sequence"},
        {R"(["\u123"])", "line 1 char 9, found an invalid hex digit '\"' while parsing unicode escape sequence"},
        {R"({"a":"b)", "line 1 char 9, found a control character 0x0 while parsing string"},
        {"[[[[", "line 1 char 5, reading a value, found unexpected char '"},
        {"{", "line 1 char 3, expected '\"' and got '"},
        {"{\"a\":\"\t\"}", "line 1 char 8, found a control character 0x9 while parsing string"},
        {"{\"a\":\"\x7F\"}", "line 1 char 8, found a control character 0x7f while parsing string"},
        {"{\"a\nb\":1}", "line 2 char 1, found a control character 0xa while parsing string"},
        {"\n[\n \xC3\xA9]", "line 3 char 2, reading a value, found unexpected char '\xE9'"},
        {R"(["\"\n\u00e9)", "line 1 char 14, found a control character 0x0 while parsing string"},
        // A character takes all continuation bytes behind it along, and is then another one.
        {"[\"p\x80\x01", "line 1 char 5, found a control character 0x1 while parsing string"},
        {"[\"\\n\x80", "line 1 char 5, found an invalid escape sequence '\\\x80' while parsing string"},
        // More of them than a character can have: one column, no class.
        {"[\xC3\xA9\xA9\xA9\xA9]", "line 1 char 2, reading a value, found unexpected char '\xFF'"},
        {"[\"\xC3\xA9\xA9\xA9\xA9\xA9\",]", "line 1 char 6, reading a value, found unexpected char ']'"},
        {Repeat("[", 33) + Repeat("]", 33), "Depth exceeds maxium (32)"},
        {Repeat("{\"a\":", 33) + "1" + Repeat("}", 33), "Depth exceeds maxium (32)"},
        {Repeat("[{\"a\":", 17) + "1" + Repeat("}]", 17), "Depth exceeds maxium (32)"},
        {Repeat("[", 100000), "Depth exceeds maxium (32)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.substr(0, 100));
        EXPECT_FALSE(Validate(row.text));
        EXPECT_THAT(log.Lines(), ElementsAre(kPrefix + row.line));
    }
}

TEST(JsonValidator, RefusesWhatIsOutsideOfTheDocument) {
    LogCapture log;
    const std::string extra = ", extra data following end of first object";
    struct {
        std::string text;
        std::vector<std::string> lines;
    } const rows[] = {
        {"{} {}", {"line 1 char 4" + extra, "extra content = '{}'"}},
        {"[]\0[]"s, {"line 1 char 3" + extra, "extra content = ''"}},
        {"\f{}", {"line 1, character '\f' was not { or [", "line 1 char 1" + extra, "extra content = '\f{}'"}},
        {"x", {"line 1, character 'x' was not { or [", "line 1 char 1" + extra, "extra content = 'x'"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_FALSE(Validate(row.text));
        std::vector<std::string> lines;
        for (const std::string& line : row.lines) lines.push_back(kPrefix + line);
        EXPECT_EQ(log.Lines(), lines);
    }
}

TEST(JsonValidator, AcceptsInSilence) {
    LogCapture log;
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
        EXPECT_TRUE(Validate(text));
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
    }
}

TEST(JsonValidator, AcceptsTheEmptyTextWithALine) {
    LogCapture log;
    EXPECT_TRUE(Validate(""));
    EXPECT_TRUE(Validate(" \n"));
    EXPECT_TRUE(ValidateDocument(nullptr, 0));
    EXPECT_THAT(log.Lines(), ElementsAre(kPrefix + "line 1, character '", kPrefix + "line 2, character '",
                                         kPrefix + "line 1, character '"));
}

}  // namespace
