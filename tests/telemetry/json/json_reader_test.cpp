#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telemetry/json/json_token.h"
#include "tests/support/log_capture.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

bool Parse(JsonToken& token, const std::string& text) {
    return ParseToken(token, text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string Slice(const JsonToken& token, std::int32_t offset, std::int32_t length) {
    return std::string(token.m_Text + offset, static_cast<std::size_t>(length));
}

// The tokens from `token` on, as "name>value" or "value", each followed by "|".
std::string Row(JsonToken token, bool more) {
    std::string row;
    for (; more; more = NextToken(token, token)) {
        if (token.m_NameOffset >= 0) row += Slice(token, token.m_NameOffset, token.m_NameLength) + ">";
        row += Slice(token, token.m_ValueOffset, token.m_ValueLength) + "|";
    }
    EXPECT_EQ(token.m_Text, nullptr);
    return row;
}

TEST(JsonToken, TokensInARow) {
    test_support::LogCapture log;
    struct {
        std::string text;
        std::string row;       // of the text; empty: no token at all
        std::string children;  // of its first token
        std::vector<std::string> lines = {};
    } const rows[] = {
        {R"( a=1, b = "x y" ,, c:[1,2])", R"(a>1|b>"x y"|c>[1,2]|)", ""},
        {R"({"a":"}"} , ["]"])", R"({"a":"}"}|["]"]|)", R"(a>"}"|)"},
        {R"({"\"" : "\\" , "b":{"c":[]}})", R"({"\"" : "\\" , "b":{"c":[]}}|)", R"(\">"\\"|b>{"c":[]}|)"},
        {"{a={k=v,t=7},b}", "{a={k=v,t=7},b}|", "a>{k=v,t=7}|b|"},
        {"[,1]", "[,1]|", ""},
        {"[1,, ,2,]", "[1,, ,2,]|", "1|2|"},
        {"{[}", "{[}|", ""},
        {"[[[1]],[2]] ,3", "[[[1]],[2]]|3|", "[[1]]|[2]|"},
        {"x\v\r\n:\t-1.5e3", "x>-1.5e3|", ""},
        {"a:,b", "a>,b|", ""},
        {"1, \v", "1|", ""},
        {"[1,2]\0,3"s, "[1,2]|", "1|2|"},
        {"\"a\\\0b\",1"s, "\"a\\\0b\"|1|"s, ""},
        {"1 2", "1|", "", {"Unexpected character 2 at offset:2 in \"1 2\""}},
        {R"([0, "a" {}])", R"([0, "a" {}]|)", R"(0|"a"|)", {R"(Unexpected character { at offset:4 in ""a" {}]")"}},
        {"", "", ""},
        {" \n ", "", ""},
        {R"("":1)", "", ""},
        {R"("a":)", "", ""},
        {R"("a": [1)", "", ""},
        {R"("a\\\")", "", ""},
        {"\"a\0\""s, "", ""},
        {R"(["a]b)", "", ""},
        {R"({"a":"b})", "", ""},
        {"]", "", ""},
        {",1", "", ""},
        {"=1", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        JsonToken token;
        const bool found = Parse(token, row.text);
        EXPECT_EQ(Row(token, found), row.row);
        JsonToken child;
        const bool hasChild = FirstChild(token, child);
        EXPECT_EQ(Row(child, hasChild), row.children);
        EXPECT_EQ(log.Lines(), row.lines);
    }
}

TEST(JsonToken, OffsetsCountFromTheTokensOwnText) {
    const std::string text = R"({"a":1, "b":[2]})";
    JsonToken token;
    const auto layout = [&] {
        return std::vector<std::ptrdiff_t>{token.m_Text - text.data(), token.m_Length, token.m_NameOffset,
                                           token.m_ValueOffset, token.m_ValueLength};
    };
    ASSERT_TRUE(Parse(token, text));
    EXPECT_THAT(layout(), ElementsAre(0, 16, -1, 0, 16));
    ASSERT_TRUE(FirstChild(token, token));
    EXPECT_THAT(layout(), ElementsAre(1, 15, 1, 4, 1));
    ASSERT_TRUE(NextToken(token, token));
    EXPECT_THAT(layout(), ElementsAre(8, 8, 1, 4, 3));
    EXPECT_FALSE(NextToken(token, token));
    EXPECT_FALSE(NextToken(token, token));
    EXPECT_FALSE(ParseToken(token, nullptr, 1));
    EXPECT_EQ(token.m_ValueLength, -1);
}

TEST(JsonToken, FindsMembersOfItsOwnLevel) {
    struct {
        std::string text;
        const char* name;
        const char* value;
    } const rows[] = {
        {R"({"a":{"b":1},"b":2})", "b", "2"},
        {R"({"a":1,"a":2})", "a", "1"},
        {R"({"ab":1,"a":2})", "a", "2"},
        {R"({"a":1,"ab":2})", "ab", "2"},
        {R"({"A":1})", "a", "none"},
        {R"({"\u0061":1})", "a", "none"},
        {R"({"\u0061":1})", R"(\u0061)", "1"},
        {R"(["a",{"a":1}])", "a", "none"},
        {"{}", "a", "none"},
        {R"({"a":1})", "", "none"},
        {"7", "a", "none"},
        {R"({x,"a":[1]})", "a", "[1]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        JsonToken token, found;
        ASSERT_TRUE(Parse(token, row.text));
        const bool isThere = FindMember(token, row.name, found);
        EXPECT_EQ(isThere ? Slice(found, found.m_ValueOffset, found.m_ValueLength) : "none", row.value);
    }
}

TEST(JsonToken, DecodesStrings) {
    struct {
        std::string text;
        std::string decoded;
    } const rows[] = {
        {R"("x")", "x"},
        {R"("")", ""},
        {"bare", "bare"},
        {R"({"a":"\n"})", "{\"a\":\"\n\"}"},
        {R"("\b\f\n\r\t\"\\\/\q.")", "\b\f\n\r\t\"\\/q."},
        {R"("\u00e9\u20AC")", "\xC3\xA9\xE2\x82\xAC"},
        {R"("\u007F\u07FF\u0800\uFFFF")", "\x7F\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {R"("\uD83D\uDE00")", "\xED\xA0\xBD\xED\xB8\x80"},
        {R"("\u41")", "A"},
        {R"("\u")", "u"},
        {R"("\u7Fg\u080\u1234x")", "\x7Fg\xC2\x80\xE1\x88\xB4x"},
        {R"("a\u0000b")", "a\0b"s},
        {"\"a\\\xC3\xA9\"", "a\xA9"},
        // A bare word that ends in a backslash takes what ends the word along.
        {R"(a\)", "a\0"s},
        {R"(a\,b)", "a,"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        JsonToken token;
        ASSERT_TRUE(Parse(token, row.text));
        // The raw length and one is asked for; no more is there, so that a byte beyond it is noticed.
        const int quotes = row.text.starts_with('"') ? 2 : 0;
        std::string buffer(static_cast<std::size_t>(token.m_ValueLength - quotes) + 1, '*');
        const std::string untouched = buffer;
        std::size_t length = 7;
        EXPECT_FALSE(GetString(token, buffer.data(), buffer.size() - 1, &length));
        EXPECT_EQ(buffer, untouched);
        EXPECT_EQ(length, 0u);
        EXPECT_TRUE(GetString(token, buffer.data(), buffer.size(), &length));
        EXPECT_EQ(buffer.substr(0, length + 1), row.decoded + '\0');
    }
    char nothing[4];
    EXPECT_FALSE(GetString(JsonToken{}, nothing, sizeof nothing, nullptr));
}

}  // namespace
