// The JSON tools against a parser that nobody here wrote, and against each other, over generated documents.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "telemetry/json/json_string.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_validator.h"
#include "telemetry/json/json_writer.h"
#include "tests/telemetry/json/document_generator.h"
#include "tests/telemetry/json/json_log.h"
#include "tests/telemetry/json/other_parser.h"

namespace {

using Json = nlohmann::json;

bool IsBlank(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return HasClass(c, ClassSpace); });
}

TEST(JsonDifferential, VerdictsAreThoseOfAnotherParser) {
    DocumentGenerator generator(20240607);
    std::map<std::string, int> seen;
    for (int i = 0; i < 9000; ++i) {
        std::string text = generator.Document();
        if (i % 3 != 0) text = generator.Damage(text);
        SCOPED_TRACE(text);
        const bool verdict = WeAccept(text);
        ++seen[verdict ? "accepted" : "refused"];
        const std::size_t lines = TakeLog().size();
        EXPECT_EQ(verdict, lines == 0 || (lines == 1 && IsBlank(text)));
        EXPECT_TRUE(!verdict || !TheyAccept(text) || AreWalkedAlike(text));
        for (const std::string& difference : RemoveDifferences(text)) ++seen[difference];
        ASSERT_EQ(WeAccept(text), TheyAccept(text)) << "a difference without a name: " << text;
        TakeLog();
    }
    EXPECT_GT(seen["accepted"], 2000);
    EXPECT_GT(seen["refused"], 2000);
    for (const std::string& difference : NamedDifferences()) EXPECT_GT(seen[difference], 5) << difference;
}

bool HasLetterlessControl(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return HasClass(c, ClassControl) && std::string("\b\f\n\r\t").find(c) == std::string::npos;
    });
}

// Documents of the store's shape, by the writer in any of its options.
TEST(JsonDifferential, WhatTheWriterWritesComesBack) {
    DocumentGenerator generator(7);
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        const std::string name = generator.Text();
        const std::string data = generator.Text();
        char buffer[1000];
        JsonWriter writer;
        writer.m_Buffer = buffer;
        writer.m_Capacity = sizeof buffer;
        writer.m_Options = generator.Below(4);
        writer.Begin();
        writer.BeginArray("m");
        writer.Begin();
        writer.WriteString(name.c_str(), data.c_str());
        writer.WriteUInt64("time", 18446744073709551615u);
        writer.End();
        writer.End();
        ASSERT_TRUE(writer.End());
        const std::string text(buffer, writer.m_Cursor);
        SCOPED_TRACE(text);
        const bool plain = !HasLetterlessControl(name + data);
        ASSERT_EQ(plain, WeAccept(text));
        refused += plain ? 0 : 1;
        if (!plain) continue;
        if ((writer.m_Options & JsonWriter::OptionEscapeUnicode) != 0) continue;  // cuts what is above U+FFFF
        const Json entry = Json::parse(text)["m"][0];
        EXPECT_EQ(data, entry[name]);
        EXPECT_EQ(18446744073709551615u, entry["time"]);
        JsonToken token;
        ASSERT_TRUE(ParseToken(token, text.data(), writer.m_Cursor));
        ASSERT_TRUE(FindMember(token, "m", token));
        ASSERT_TRUE(FirstChild(token, token));
        if (name.empty()) continue;
        ASSERT_TRUE(FirstChild(token, token));
        std::size_t length = 0;
        ASSERT_TRUE(GetString(token, buffer, sizeof buffer, &length));
        EXPECT_EQ(data, std::string(buffer, length));
    }
    EXPECT_GT(refused, 300);
    TakeLog();
}

}  // namespace
