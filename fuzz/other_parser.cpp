#include "fuzz/other_parser.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_token.h"
#include "telemetry/json/json_validator.h"

namespace {

using Json = nlohmann::json;

bool IsExponentMark(char character) {
    return character == 'e' || character == 'E';
}

// Puts a 0 where a container opens below the 32nd level. Only for text that is well-formed.
void CutDeepContainers(std::string& text) {
    std::string cut;
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool shown = depth <= 32;
        const bool isCloser = !inString && (c == '}' || c == ']');
        if (!inString && (c == '{' || c == '[') && ++depth == 33) cut += '0';
        if (shown && depth <= 32) cut += c;
        if (isCloser) --depth;
        if (c == '"') inString = !inString;
        if (inString && c == '\\') {
            ++i;
            if (shown) cut += text[i];
        }
    }
    text = cut;
}

bool IsBlank(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return HasClass(c, ClassSpace); });
}

// Each row says what the difference is and who accepts, and rids the text of it.
const struct {
    const char* what;
    bool weAccept;
    void (*repair)(std::string& text);
} kDifferences[] = {
    {"an empty text passes", true,
     [](std::string& text) {
         if (IsBlank(text)) text = "[]";
     }},
    {"the vertical tab is whitespace", true,
     [](std::string& text) { std::replace(text.begin(), text.end(), '\v', ' '); }},
    {"half a surrogate pair may stand alone", true,
     [](std::string& text) {
         for (std::size_t at = 0; (at = text.find("\\u", at)) != std::string::npos; ++at) {
             if (at + 2 < text.size() && (text[at + 2] | 0x20) == 'd') text[at + 2] = '0';
         }
     }},
    {"a number may be of any size", true,
     [](std::string& text) {
         for (std::size_t i = 1; i < text.size(); ++i) {
             if (!IsExponentMark(text[i - 1])) continue;
             std::size_t digit = text[i] == '+' || text[i] == '-' ? i + 1 : i;
             for (; digit < text.size() && HasClass(text[digit], ClassDigit); ++digit) text[digit] = '0';
         }
     }},
    {"a byte order mark is no part of a document", false,
     [](std::string& text) {
         if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
     }},
    {"a NUL ends the text, and is extra content", false,
     [](std::string& text) { text.erase(std::min(text.find('\0'), text.size())); }},
    {"nesting is limited to 32", false, CutDeepContainers},
    {"DEL is refused inside strings", false,
     [](std::string& text) { std::replace(text.begin(), text.end(), '\x7F', 'x'); }},
    {"the top level is a container", false,
     [](std::string& text) {
         text.insert(0, 1, '[');
         text += ']';
     }},
};

// The decoded text, or nothing where escapes of code points are: the reader doesn't join the halves of a pair.
std::string Decoded(const JsonToken& token, bool hasCodePoints) {
    if (hasCodePoints) return {};
    std::string text(static_cast<std::size_t>(token.m_ValueLength) + 1, '\0');
    std::size_t length = 0;
    if (!GetString(token, text.data(), text.size(), &length)) return "?";
    return text.substr(0, length);
}

// The tokens as the reader walks them, and as the other parser reports them: whether they have names, their kinds and
// their texts.
std::string Walk(const JsonToken& parent, bool hasCodePoints) {
    std::string trace;
    JsonToken token;
    for (bool more = FirstChild(parent, token); more; more = NextToken(token, token)) {
        if (token.m_NameOffset >= 0) trace += 'n';
        const char kind = token.m_Text[token.m_ValueOffset];
        if (kind == '{' || kind == '[') {
            trace += kind + Walk(token, hasCodePoints) + (kind == '{' ? '}' : ']');
        } else {
            trace += kind == '"' ? '"' + Decoded(token, hasCodePoints) : "w";
        }
    }
    return trace;
}

struct Tracer : nlohmann::json_sax<Json> {
    explicit Tracer(bool hasCodePoints) : m_HasCodePoints(hasCodePoints) {}
    bool Add(char kind) {
        m_Trace += kind;
        return true;
    }
    bool null() override { return Add('w'); }
    bool boolean(bool) override { return Add('w'); }
    bool number_integer(number_integer_t) override { return Add('w'); }
    bool number_unsigned(number_unsigned_t) override { return Add('w'); }
    bool number_float(number_float_t, const string_t&) override { return Add('w'); }
    bool string(string_t& text) override {
        Add('"');
        if (!m_HasCodePoints) m_Trace += text;
        return true;
    }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Add('{'); }
    bool key(string_t& name) override {
        m_HasEmptyName = m_HasEmptyName || name.empty();
        return Add('n');
    }
    bool end_object() override { return Add('}'); }
    bool start_array(std::size_t) override { return Add('['); }
    bool end_array() override { return Add(']'); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

    const bool m_HasCodePoints;
    std::string m_Trace;
    bool m_HasEmptyName = false;  // which the reader takes for no name, and stops
};

}  // namespace

bool WeAccept(const std::string& text) {
    return ValidateDocument(text.data(), text.size());
}

bool TheyAccept(const std::string& text) {
    return Json::accept(text);
}

void RemoveDifferences(std::string& text) {
    const bool verdict = WeAccept(text);
    for (const auto& difference : kDifferences) {
        if (WeAccept(text) == TheyAccept(text)) break;
        if (verdict == difference.weAccept) difference.repair(text);
    }
}

bool AreWalkedAlike(const std::string& text) {
    const bool hasCodePoints = text.find("\\u") != std::string::npos;
    Tracer tracer(hasCodePoints);
    JsonToken token;
    if (!Json::sax_parse(text, &tracer)) return false;
    if (!ParseToken(token, text.data(), static_cast<std::uint32_t>(text.size()))) return false;
    const char closer = text[static_cast<std::size_t>(token.m_ValueOffset + token.m_ValueLength) - 1];
    const std::string trace = text[static_cast<std::size_t>(token.m_ValueOffset)] + Walk(token, hasCodePoints) + closer;
    JsonToken next;
    return !NextToken(token, next) && (tracer.m_HasEmptyName || tracer.m_Trace == trace);
}
