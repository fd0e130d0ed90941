// The document, its containers and the values in them. The scalar rules stand in json_validator_scalars.cpp.

#include "telemetry/json/json_validator.h"

#include <algorithm>

#include "diagnostics/log.h"

namespace {

// Bytes of the text in a message: more than a line of the log holds.
constexpr std::ptrdiff_t kMostShown = 0x10000;

}  // namespace

struct JsonValidator::Container {
    char m_Opener;
    char m_Closer;
    bool m_HasNames;
    const char* m_Kind;
};

bool ValidateDocument(const char* text, std::size_t length) {
    JsonValidator validator;
    validator.m_Current = text;
    validator.m_End = text == nullptr ? nullptr : text + length;
    validator.SkipWhitespace();
    switch (const std::uint32_t character = validator.PeekChar(); character) {
        case '{':
            if (!validator.ParseObject()) {
                return false;
            }
            break;
        case '[':
            if (!validator.ParseArray()) {
                return false;
            }
            break;
        default:
            // Decides nothing: an empty text passes below, any other is content that doesn't belong there.
            Log("JSON Validation Error: line %d, character '%c' was not { or [", validator.m_Line,
                static_cast<int>(character));
    }
    validator.SkipWhitespace();
    if (validator.m_Current == validator.m_End) {
        return true;
    }
    Log("JSON Validation Error: line %d char %d, extra data following end of first object", validator.m_Line,
        validator.m_Column);
    const auto rest = std::min<std::ptrdiff_t>(validator.m_End - validator.m_Current, kMostShown);
    Log("JSON Validation Error: extra content = '%.*s'", static_cast<int>(rest), validator.m_Current);
    return false;
}

bool JsonValidator::ParseObject() {
    return ParseContainer({'{', '}', true, "object"});
}

bool JsonValidator::ParseArray() {
    return ParseContainer({'[', ']', false, "array"});
}

bool JsonValidator::ParseContainer(const Container& container) {
    if (m_Nesting >= kMaxNesting) {
        Log("JSON Validation Error: Depth exceeds maxium (%d)", kMaxNesting);
        return false;
    }
    SkipWhitespace();
    if (!ExpectInContainer(container.m_Opener, container)) {
        return false;
    }
    SkipWhitespace();
    if (PeekChar() == static_cast<std::uint32_t>(container.m_Closer)) {
        NextChar();
        return true;
    }
    for (;;) {
        if (container.m_HasNames && !ParseMemberName(container)) {
            return false;
        }
        if (!ParseValue()) {
            return false;
        }
        SkipWhitespace();
        if (PeekChar() != ',') {
            return ExpectInContainer(container.m_Closer, container);
        }
        NextChar();
        SkipWhitespace();
    }
}

// The name and all up to the value.
bool JsonValidator::ParseMemberName(const Container& container) {
    if (!ParseString()) {
        return false;
    }
    SkipWhitespace();
    if (!ExpectInContainer(':', container)) {
        return false;
    }
    SkipWhitespace();
    return true;
}

bool JsonValidator::ExpectInContainer(char expected, const Container& container) {
    const std::uint32_t found = NextChar();
    if (found == static_cast<std::uint32_t>(expected)) {
        return true;
    }
    Log("JSON Validation Error: line %d char %d, reading %s, expected '%c' and got '%c'", m_Line, m_Column,
        container.m_Kind, expected, static_cast<int>(found));
    return false;
}

bool JsonValidator::ParseValue() {
    const std::uint32_t character = PeekChar();
    switch (character) {
        case '"':
            return ParseString();
        case '{':
            return ParseNested(&JsonValidator::ParseObject);
        case '[':
            return ParseNested(&JsonValidator::ParseArray);
        case 't':
            return ParseLiteral("true");
        case 'f':
            return ParseLiteral("false");
        case 'n':
            return ParseLiteral("null");
        case '-':
            return ParseNumber();
        default:
            if (character >= '0' && character <= '9') {
                return ParseNumber();
            }
            Log("JSON Validation Error: line %d char %d, reading a value, found unexpected char '%c'", m_Line, m_Column,
                static_cast<int>(character));
            return false;
    }
}

bool JsonValidator::ParseNested(bool (JsonValidator::*rule)()) {
    ++m_Nesting;
    const bool valid = (this->*rule)();
    --m_Nesting;
    return valid;
}
