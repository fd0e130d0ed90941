// Bytes that nobody meant as JSON. Each text lies in a heap block of its exact size, without a terminator, so that the
// address sanitizer sees the first byte too far; without it, what lies behind the end must not change a result.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "telemetry/json/json_string.h"
#include "telemetry/json/json_validator.h"
#include "tests/telemetry/json/document_generator.h"
#include "tests/telemetry/json/json_log.h"

namespace {

// All that the reader gives for the children of `parent`. `budget` bounds the number of tokens: overlapping brackets
// can make a walk long.
std::string Walk(const JsonToken& parent, int depth, int& budget) {
    std::string result;
    JsonToken token, found;
    if (FindMember(parent, "a", found)) result += "+";
    for (bool more = FirstChild(parent, token); more && --budget > 0; more = NextToken(token, token)) {
        const auto size = static_cast<std::size_t>(token.m_ValueLength) + 1;
        const std::unique_ptr<char[]> buffer(new char[size]);
        std::size_t length = 0;
        EXPECT_TRUE(GetString(token, buffer.get(), size, &length));
        EXPECT_LT(length, size);
        result += std::string(buffer.get(), length) + "|";
        if (depth < 40) result += Walk(token, depth + 1, budget);
    }
    return result;
}

// The verdict, the messages, and what the reader makes of it.
std::string Judge(const char* text, std::size_t length) {
    std::string result = ValidateDocument(text, length) ? "valid;" : "invalid;";
    JsonToken token;
    int budget = 200;
    for (bool more = ParseToken(token, text, static_cast<std::uint32_t>(length)); more && --budget > 0;
         more = NextToken(token, token)) {
        result += Walk(token, 0, budget);
    }
    for (const std::string& line : TakeLog()) result += line + "\n";
    return result;
}

void ExpectSelfContained(const std::string& text) {
    SCOPED_TRACE(text);
    const std::unique_ptr<char[]> exact(new char[text.size()]);
    std::memcpy(exact.get(), text.data(), text.size());
    const std::string alone = Judge(exact.get(), text.size());
    for (const char* behind : {"\"]}", "\x80\x80", "1e1,", "u0041"}) {
        ASSERT_EQ(alone, Judge((text + behind).c_str(), text.size()));
    }
}

TEST(JsonHostile, EveryTruncation) {
    const std::string sample =
        "{\"metrics\":[{\"name\":\"STEAM_ACTION\",\"data\":\"\\\"id\\\":2,\\u00e9\\n\",\"time\":-1.5e+10},\v"
        "{\"a\": [true,false, null,{}],\"\xF0\x9F\x98\x80\":\"\xC3\xA9\"} ,, a=b\\,c\\] ]}";
    for (std::size_t length = 0; length <= sample.size(); ++length) {
        ExpectSelfContained(sample.substr(0, length));
    }
}

TEST(JsonHostile, AnyBytes) {
    DocumentGenerator generator(99);
    for (int i = 0; i < 3000; ++i) {
        std::string text = generator.Document().substr(0, 200);
        for (std::uint32_t damage = generator.Below(6); damage > 0 && !text.empty(); --damage) {
            const std::size_t at = generator.Below(static_cast<std::uint32_t>(text.size()));
            const std::uint32_t kind = generator.Below(3);
            if (kind == 0) text[at] = static_cast<char>(generator.Below(256));
            if (kind == 1) text.insert(at, generator.Below(8), static_cast<char>(0x80 + generator.Below(0x80)));
            if (kind == 2) text.insert(at, 1, "\\\"{[=:,"[generator.Below(7)]);
        }
        ExpectSelfContained(text);
    }
}

}  // namespace
