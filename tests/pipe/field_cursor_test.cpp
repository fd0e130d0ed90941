#include "pipe/field_cursor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

using namespace std::string_literals;
using Fields = std::vector<std::string>;

// The body in a block of exactly its size: a look behind its end is an error that the sanitizers report.
class Body {
  public:
    explicit Body(std::string_view text) : m_Bytes(new unsigned char[text.size()]) {
        std::copy(text.begin(), text.end(), m_Bytes.get());
        cursor = {m_Bytes.get(), static_cast<std::uint32_t>(text.size()), 0};
    }
    FieldCursor cursor;

  private:
    std::unique_ptr<unsigned char[]> m_Bytes;
};

Fields RawFields(FieldCursor& cursor) {
    Fields fields;
    const unsigned char* end = nullptr;
    while (const unsigned char* field = NextField(cursor, &end)) fields.emplace_back(field, end);
    return fields;
}

Fields StringFields(FieldCursor& cursor) {
    Fields fields;
    for (std::string field; ReadStringField(cursor, field); field.clear()) fields.push_back(field);
    return fields;
}

TEST(FieldCursor, SplitsABodyIntoFields) {
    const Fields unclosed = {"Error - unclosed parameter quote."};
    const Fields invalid = {"Error - invalid parameter quoting."};
    struct {
        std::string body;
        Fields raw;
        Fields unescaped;
        Fields lines = {};
    } const rows[] = {
        {"", {}, {}},
        {"a:b", {"a", "b"}, {"a", "b"}},
        {"a:", {"a"}, {"a"}},
        {"a::b", {"a", "", "b"}, {"a", "", "b"}},
        {":", {""}, {""}},
        {"ab\"c", {"ab\"c"}, {"ab\"c"}},
        {" a ", {" a "}, {" a "}},
        {"a\0b:c"s, {"a\0b"s, "c"}, {"a\0b"s, "c"}},
        {"\"a:b\":c", {"a:b", "c"}, {"a:b", "c"}},
        {"\"\":\"\"", {"", ""}, {"", ""}},
        {"\"a\"\0b"s, {"a", "b"}, {"a", "b"}},
        {R"("a\"b")", {R"(a\"b)"}, {"a\"b"}},
        {R"("C:\\Games\\x.exe":"":)", {R"(C:\\Games\\x.exe)", ""}, {R"(C:\Games\x.exe)", ""}},
        {R"(a\:b)", {R"(a\)", "b"}, {"a", "b"}},
        {R"(a\\b)", {R"(a\\b)"}, {R"(a\b)"}},
        {R"("a"b)", {}, {}, invalid},
        {R"(x:"a"b:c)", {"x"}, {"x"}, invalid},
        {R"("abc)", {}, {}, unclosed},
        {R"(")", {}, {}, unclosed},
        {R"("abc\)", {}, {}, unclosed},
        {R"("abc\")", {}, {}, unclosed},
    };
    test_support::LogCapture log;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body);
        Body raw(row.body), unescaped(row.body);
        EXPECT_EQ(RawFields(raw.cursor), row.raw);
        EXPECT_EQ(NextField(raw.cursor, nullptr), nullptr) << "the end stays the end";
        EXPECT_EQ(log.Lines(), row.lines);
        EXPECT_EQ(StringFields(unescaped.cursor), row.unescaped);
        EXPECT_EQ(log.Lines(), row.lines);
    }
}

TEST(FieldCursor, ReadStringFieldAppends) {
    Body body("b:\"");
    std::string text = "a";
    EXPECT_TRUE(ReadStringField(body.cursor, text));
    EXPECT_FALSE(ReadStringField(body.cursor, text));
    EXPECT_EQ(text, "ab");
}

TEST(FieldCursor, SkipsTheMessageName) {
    struct {
        std::string body;
        std::uint32_t position;
    } const rows[] = {{"name:a", 5}, {"name\0a:b"s, 5}, {"name", 4}, {":a", 1}, {"", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body);
        Body body(row.body);
        body.cursor.m_Position = 3;
        SkipMessageName(body.cursor);
        EXPECT_EQ(body.cursor.m_Position, row.position);
    }
}

// The C library's scanner is the model: what it makes of a terminated text, this makes of a field without a terminator.
TEST(FieldCursor, ReadsNumbersAsTheScannerDoes) {
    const std::string numbers =
        "0:1:42:" + std::string(99, '0') +
        "7:18446744073709551615:18446744073709551616:99999999999999999999999:-1:+5:-18446744073709551616"
        ": \t\v\r\n\f12:12ab::-:+:ab:- 1:0x10:\"12\":13";
    Body body(numbers);
    std::istringstream texts(numbers);
    for (std::string text; std::getline(texts, text, ':');) {
        SCOPED_TRACE(text);
        unsigned long long scanned = 99;
        const bool expected = std::sscanf(text.c_str() + (text.starts_with('"') ? 1 : 0), "%llu", &scanned) == 1;
        std::uint64_t number = 99;
        EXPECT_EQ(ReadNumberField(body.cursor, number), expected);
        EXPECT_EQ(number, scanned);
    }
}

}  // namespace
