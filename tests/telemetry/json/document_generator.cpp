#include "tests/telemetry/json/document_generator.h"

using namespace std::string_literals;

static std::vector<std::string> Characters(const std::string& text) {
    std::vector<std::string> characters;
    for (const char unit : text) {
        if ((static_cast<unsigned char>(unit) & 0xC0) == 0x80) {
            characters.back() += unit;
        } else {
            characters.emplace_back(1, unit);
        }
    }
    return characters;
}

std::string DocumentGenerator::Pick(const std::vector<std::string>& choices) {
    return choices[Below(static_cast<std::uint32_t>(choices.size()))];
}

std::string DocumentGenerator::Document() {
    m_Odd = OneIn(3);
    std::string text = Space() + Container(0) + Space();
    if (!m_Odd) return text;
    switch (Below(12)) {
        case 0:
            return Space();
        case 1:
            return Value(9);
        case 2:
            return "\xEF\xBB\xBF" + text;
        case 3:
            return text + "\0"s + Space();
        case 4: {
            const std::size_t more = 28 + Below(8);
            return std::string(more, '[') + text + std::string(more, ']');
        }
        default:
            return text;
    }
}

std::string DocumentGenerator::Container(int depth) {
    const bool isObject = OneIn(2);
    std::string text = isObject ? "{" : "[";
    const std::uint32_t count = Below(depth == 0 ? 6 : 4);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i > 0) text += ',';
        text += Space();
        if (isObject) text += String() + Space() + ":" + Space();
        text += Value(depth + 1) + Space();
    }
    return text + (isObject ? "}" : "]");
}

std::string DocumentGenerator::Value(int depth) {
    switch (Below(depth < 6 ? 5 : 3)) {
        case 0:
            return Pick({"true", "false", "null", "0", "-0", "10", "0.5", "-1.25", "1E+5", "2.5e-3"});
        case 1:
            if (m_Odd && OneIn(4)) return Pick({"1e999", "-2E+400"});
            return std::to_string(Below(1000000));
        case 2:
            return String();
        default:
            return Container(depth);
    }
}

std::string DocumentGenerator::Space() {
    if (m_Odd && OneIn(12)) return "\v";
    return Pick({"", "", "", " ", "\n", "\r\n", "\t"});
}

std::string DocumentGenerator::String() {
    std::string text = "\"";
    for (std::uint32_t i = Below(5); i > 0; --i) {
        text += Pick({"a", "b", "[", "}", ",", ":", " ", "/", R"(\")", R"(\\)", R"(\/)", R"(\n)", R"(\u00e9)",
                      R"(\uD83D\uDE00)", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"});
    }
    if (m_Odd && OneIn(12)) text += Pick({R"(\uDE00)", R"(\ud83d)", "\x7F"});
    return text + "\"";
}

std::string DocumentGenerator::Damage(const std::string& document) {
    const std::vector<std::string> put = {
        "{",        "}",       "[",
        "]",        ",",       ":",
        "\"",       "\\",      "-",
        "+",        ".",       "0",
        "1",        "e",       "E",
        "x",        "t",       "u",
        " ",        "\t",      "\n",
        "\v",       "\f",      "\r",
        "\x01",     "\x1F",    "\x7F",
        "\0"s,      "=",       "\\u12",
        "[]",       "{}",      "\xC2\x80",
        "\xC3\xA9", "true",    "null",
        "\"\"",     "\"a\":1", "\xEF\xBB\xBF",
    };
    std::vector<std::string> characters = Characters(document);
    for (std::uint32_t i = 1 + Below(2); i > 0; --i) {
        const auto size = static_cast<std::uint32_t>(characters.size());
        const auto at = characters.begin() + static_cast<std::ptrdiff_t>(Below(size + 1));
        if (at == characters.end() || OneIn(3)) {
            characters.insert(at, Pick(put));
        } else if (OneIn(3)) {
            characters.erase(at);
        } else if (OneIn(2)) {
            *at = Pick(put);
        } else {
            characters.erase(at, OneIn(2) ? characters.end() : at + 1);
        }
    }
    std::string text;
    for (const std::string& character : characters) text += character;
    return text;
}

std::string DocumentGenerator::Text() {
    std::string text;
    for (std::uint32_t i = Below(20); i > 0; --i) {
        text += OneIn(3) ? Pick({"\xC2\x80", "\xC3\xA9", "\xE2\x82\xAC", "\xEF\xBF\xBF", "\xF0\x9F\x98\x80"})
                         : std::string(1, static_cast<char>(1 + Below(127)));
    }
    return text;
}
