#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telemetry/json/json_string.h"
#include "telemetry/json/json_token.h"
#include "tests/telemetry/json/json_log.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

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
    EXPECT_EQ(nullptr, token.m_Text);
    return row;
}

std::string Decode(const JsonToken& token) {
    const auto size = static_cast<std::size_t>(token.m_ValueLength) + 1;
    std::vector<char> buffer(size);
    std::size_t length = 0;
    EXPECT_TRUE(GetString(token, buffer.data(), size, &length));
    EXPECT_EQ('\0', buffer[length]);
    return std::string(buffer.data(), length);
}

TEST(JsonToken, TokensInARow) {
    const struct {
        std::string m_Text;
        const char* m_Row;       // of the text
        const char* m_Children;  // of its first token
    } rows[] = {
        {R"({"a":1})", R"({"a":1}|)", "a>1|"},
        {R"( a=1, b = "x y" ,, c:[1,2])", R"(a>1|b>"x y"|c>[1,2]|)", ""},
        {R"({"a":"}"} , ["]"])", R"({"a":"}"}|["]"]|)", R"(a>"}"|)"},
        {R"({"\"" : "\\" , "b":{"c":[]}})", R"({"\"" : "\\" , "b":{"c":[]}}|)", R"(\">"\\"|b>{"c":[]}|)"},
        {"{a={k=v,t=7},b}", "{a={k=v,t=7},b}|", "a>{k=v,t=7}|b|"},
        {"[,1]", "[,1]|", ""},
        {"[1,, ,2,]", "[1,, ,2,]|", "1|2|"},
        {"[]", "[]|", ""},
        {"{[}", "{[}|", ""},
        {"x\v\r\n:\t-1.5e3}", "x>-1.5e3|", ""},
        {"a:,b", "a>,b|", ""},
        {"1, \v", "1|", ""},
        {"[1,2]\0,3"s, "[1,2]|", "1|2|"},
        {"\xC3\xA9=\xC3\xA9", "\xC3\xA9>\xC3\xA9|", ""},
        // No token at all.
        {"", "", ""},
        {" \n ", "", ""},
        {R"("":1)", "", ""},
        {R"("a":)", "", ""},
        {R"("a": [1)", "", ""},
        {R"("a": "b)", "", ""},
        {R"("a\)", "", ""},
        {R"(["a]b)", "", ""},
        {"{\"a\":\"b}", "", ""},
        {"]", "", ""},
        {",1", "", ""},
        {"=1", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_Text);
        JsonToken token;
        const bool found = Parse(token, row.m_Text);
        EXPECT_EQ(row.m_Row, Row(token, found));
        JsonToken child;
        const bool hasChild = FirstChild(token, child);
        EXPECT_EQ(row.m_Children, Row(child, hasChild));
        EXPECT_THAT(TakeLog(), IsEmpty());
    }
}

// Strings are looked through in steps of several bytes: a row of backslashes at any place, before a quotation mark or a
// NUL, which it protects or doesn't.
TEST(JsonToken, FindsTheEndOfAStringBehindBackslashes) {
    for (std::size_t plain = 0; plain < 40; ++plain) {
        for (std::size_t backslashes = 0; backslashes < 20; ++backslashes) {
            for (const char last : {'"', '\0'}) {
                const std::string start = '"' + std::string(plain, 'p') + std::string(backslashes, '\\') + last;
                const std::string text = start + std::string(plain % 20, 'q') + '"';
                const std::vector<char> block(text.begin(), text.end());
                JsonToken token;
                const bool found = ParseToken(token, block.data(), static_cast<std::uint32_t>(block.size()));
                SCOPED_TRACE(text);
                const bool isProtected = backslashes % 2 != 0;
                ASSERT_EQ(isProtected || last == '"', found);
                if (found) {
                    EXPECT_EQ(isProtected ? text : start, Slice(token, 0, token.m_ValueLength));
                }
            }
        }
    }
}

TEST(JsonToken, OffsetsCountFromTheTokensOwnText) {
    const std::string text = R"({"a":1, "b":[2]})";
    JsonToken token;
    ASSERT_TRUE(Parse(token, text));
    EXPECT_EQ(-1, token.m_NameOffset);
    EXPECT_EQ(0, token.m_ValueOffset);
    EXPECT_EQ(16, token.m_ValueLength);
    ASSERT_TRUE(FirstChild(token, token));
    EXPECT_EQ(text.data() + 1, token.m_Text);
    EXPECT_EQ(15u, token.m_Length);
    ASSERT_TRUE(NextToken(token, token));
    EXPECT_EQ(text.data() + 8, token.m_Text);
    EXPECT_EQ(8u, token.m_Length);
    EXPECT_EQ(1, token.m_NameOffset);
    EXPECT_EQ(4, token.m_ValueOffset);
    EXPECT_EQ(3, token.m_ValueLength);
    EXPECT_FALSE(NextToken(token, token));
    EXPECT_FALSE(NextToken(token, token));
    EXPECT_FALSE(ParseToken(token, nullptr, 1));
    EXPECT_EQ(-1, token.m_ValueLength);
}

TEST(JsonToken, SomethingUnexpectedBehindATokenIsLogged) {
    JsonToken token;
    const std::string first = "1 2";
    ASSERT_TRUE(Parse(token, first));
    EXPECT_FALSE(NextToken(token, token));
    EXPECT_THAT(TakeLog(), ElementsAre("Unexpected character 2 at offset:2 in \"1 2\""));

    const std::string second = R"([0, "a" {}])";
    ASSERT_TRUE(Parse(token, second));
    EXPECT_FALSE(FindMember(token, "none", token));
    EXPECT_THAT(TakeLog(), ElementsAre(R"(Unexpected character { at offset:4 in ""a" {}]")"));
}

TEST(JsonToken, FindsMembersOfItsOwnLevel) {
    const struct {
        const char* m_Text;
        const char* m_Name;
        const char* m_Value;  // null: not found
    } rows[] = {
        {R"({"a":{"b":1},"b":2})", "b", "2"},
        {R"({"a":1,"a":2})", "a", "1"},
        {R"({"ab":1,"a":2})", "a", "2"},
        {R"({"a":1,"ab":2})", "ab", "2"},
        {R"({"A":1})", "a", nullptr},
        {R"({"\u0061":1})", "a", nullptr},
        {R"({"\u0061":1})", R"(\u0061)", "1"},
        {R"(["a",{"a":1}])", "a", nullptr},
        {"{}", "a", nullptr},
        {R"({"a":1})", "", nullptr},
        {"7", "a", nullptr},
        {R"({x,"a":[1]})", "a", "[1]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_Text);
        const std::string text = row.m_Text;
        JsonToken token, found;
        ASSERT_TRUE(Parse(token, text));
        ASSERT_EQ(row.m_Value != nullptr, FindMember(token, row.m_Name, found));
        if (row.m_Value != nullptr) {
            EXPECT_EQ(row.m_Value, Slice(found, found.m_ValueOffset, found.m_ValueLength));
        }
    }
}

TEST(JsonToken, DecodesStrings) {
    const struct {
        std::string m_Text;
        std::string m_Decoded;
    } rows[] = {
        {R"("x")", "x"},
        {R"("")", ""},
        {"bare", "bare"},
        {R"({"a":"\n"})", "{\"a\":\"\n\"}"},
        {R"("a\tb")", "a\tb"},
        {R"("\b\f\n\r\"\\\/\q")", "\b\f\n\r\"\\/q"},
        {R"("\u00e9\u20AC")", "\xC3\xA9\xE2\x82\xAC"},
        {R"("\u007F\u07FF\u0800\uFFFF")", "\x7F\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {R"("\uD83D\uDE00")", "\xED\xA0\xBD\xED\xB8\x80"},
        {R"("\u41")", "A"},
        {R"("\u")", "u"},
        {R"("\u7Fg\u080\u12345")",
         "\x7Fg\xC2\x80\xE1\x88\xB4"
         "5"},
        {R"("a\u0000b")", "a\0b"s},
        {"\"a\\\xC3\xA9\"", "a\xA9"},
        {"\"a\\\x80\"", "a"},
        // A bare word that ends in a backslash takes what ends the word along.
        {R"(a\)", "a\0"s},
        {R"(a\,b)", "a,"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_Text);
        JsonToken token;
        ASSERT_TRUE(Parse(token, row.m_Text));
        EXPECT_EQ(row.m_Decoded, Decode(token));
        if (row.m_Text[0] != '"') continue;
        // At any place of a long string.
        for (std::size_t before = 1; before < 40; ++before) {
            const std::string plain(before, 'p');
            const std::string text = '"' + plain + row.m_Text.substr(1);
            ASSERT_TRUE(Parse(token, text));
            EXPECT_EQ(plain + row.m_Decoded, Decode(token));
        }
    }
}

TEST(JsonToken, DecodedTextNeedsTheRawLengthAndOne) {
    const std::string text = R"("x\n")";
    JsonToken token;
    ASSERT_TRUE(Parse(token, text));
    char buffer[4] = "***";
    std::size_t length = 7;
    EXPECT_FALSE(GetString(token, buffer, 3, &length));
    EXPECT_STREQ("***", buffer);
    EXPECT_EQ(0u, length);
    EXPECT_TRUE(GetString(token, buffer, 4, nullptr));
    EXPECT_STREQ("x\n", buffer);
    EXPECT_FALSE(GetString(JsonToken{}, buffer, 4, &length));
}

}  // namespace
