#include "telemetry/json/json_validator.h"

#include "diagnostics/log.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"

bool ValidateDocument(const char* text, std::size_t length) {
    JsonValidator validator;
    validator.m_Current = text;
    validator.m_End = text + length;
    validator.SkipWhitespace();
    switch (const std::uint32_t character = validator.PeekChar(); character) {
        case '{':
            if (!validator.ParseObject()) return false;
            break;
        case '[':
            if (!validator.ParseArray()) return false;
            break;
        default:
            // Decides nothing: an empty text passes below, any other is content that doesn't belong there.
            Log("JSON Validation Error: line %d, character '%c' was not { or [", validator.m_Line,
                static_cast<int>(character));
    }
    validator.SkipWhitespace();
    if (validator.m_Current == validator.m_End) return true;
    Log("JSON Validation Error: line %d char %d, extra data following end of first object", validator.m_Line,
        validator.m_Column);
    Log("JSON Validation Error: extra content = '%s'", validator.m_Current);
    return false;
}

std::uint32_t JsonValidator::PeekChar() const {
    if (m_Current == m_End || *m_Current == '\0') return 0;
    return ReadUtf8Sequence(m_Current, m_End).m_CodePoint;
}

std::uint32_t JsonValidator::NextChar() {
    const std::uint32_t codePoint = PeekChar();
    if (m_Current != m_End && *m_Current != '\0') m_Current += ReadUtf8Sequence(m_Current, m_End).m_Length;
    if (codePoint == '\n') {
        ++m_Line;
        m_Column = 1;
    } else {
        ++m_Column;
    }
    return codePoint;
}

void JsonValidator::SkipWhitespace() {
    while (HasClass(PeekChar(), ClassSpace)) NextChar();
}

bool JsonValidator::ParseObject() {
    if (IsTooDeep()) return false;
    SkipWhitespace();
    if (!ExpectInObject('{')) return false;
    SkipWhitespace();
    if (PeekChar() == '}') {
        NextChar();
        return true;
    }
    while (ParseMember()) {
        SkipWhitespace();
        if (PeekChar() != ',') return ExpectInObject('}');
        NextChar();
        SkipWhitespace();
    }
    return false;
}

bool JsonValidator::ParseMember() {
    if (!ParseString()) return false;
    SkipWhitespace();
    if (!ExpectInObject(':')) return false;
    SkipWhitespace();
    return ParseValue();
}

bool JsonValidator::ParseArray() {
    if (IsTooDeep()) return false;
    SkipWhitespace();
    if (!ExpectInArray('[')) return false;
    SkipWhitespace();
    if (PeekChar() == ']') {
        NextChar();
        return true;
    }
    while (ParseValue()) {
        SkipWhitespace();
        if (PeekChar() != ',') return ExpectInArray(']');
        NextChar();
        SkipWhitespace();
    }
    return false;
}

bool JsonValidator::IsTooDeep() const {
    if (m_Nesting < kMaxNesting) return false;
    Log("JSON Validation Error: Depth exceeds maxium (%d)", kMaxNesting);
    return true;
}

bool JsonValidator::ExpectInObject(char expected) {
    const std::uint32_t found = NextChar();
    if (found == static_cast<std::uint32_t>(expected)) return true;
    Log("JSON Validation Error: line %d char %d, reading object, expected '%c' and got '%c'", m_Line, m_Column,
        expected, static_cast<int>(found));
    return false;
}

bool JsonValidator::ExpectInArray(char expected) {
    const std::uint32_t found = NextChar();
    if (found == static_cast<std::uint32_t>(expected)) return true;
    Log("JSON Validation Error: line %d char %d, reading array, expected '%c' and got '%c'", m_Line, m_Column, expected,
        static_cast<int>(found));
    return false;
}

bool JsonValidator::ParseValue() {
    const std::uint32_t character = PeekChar();
    if (character == '"') return ParseString();
    if (HasClass(character, ClassDigit) || character == '-') return ParseNumber();
    if (character == '{' || character == '[') {
        ++m_Nesting;
        const bool valid = character == '{' ? ParseObject() : ParseArray();
        --m_Nesting;
        return valid;
    }
    if (character == 't') return ParseLiteral("true");
    if (character == 'f') return ParseLiteral("false");
    if (character == 'n') return ParseLiteral("null");
    Log("JSON Validation Error: line %d char %d, reading a value, found unexpected char '%c'", m_Line, m_Column,
        static_cast<int>(character));
    return false;
}

bool JsonValidator::ParseLiteral(const char* literal) {
    for (const char* expected = literal; *expected != '\0'; ++expected) {
        const std::uint32_t found = NextChar();
        if (found == static_cast<std::uint32_t>(*expected)) continue;
        Log("JSON Validation Error: line %d char %d, reading literal \"%s\" and got '%c'", m_Line, m_Column, literal,
            static_cast<int>(found));
        return false;
    }
    return true;
}

bool JsonValidator::ParseString() {
    if (const std::uint32_t found = NextChar(); found != '"') {
        Log("JSON Validation Error: line %d char %d, expected '%c' and got '%c'", m_Line, m_Column, '"',
            static_cast<int>(found));
        return false;
    }
    for (;;) {
        const std::uint32_t character = NextChar();
        if (character == '"') return true;
        if (character == '\\') {
            if (!ParseEscape()) return false;
        } else if (HasClass(character, ClassControl)) {
            // The end of the text too, as 0.
            Log("JSON Validation Error: line %d char %d, found a control character 0x%x while parsing string", m_Line,
                m_Column, character);
            return false;
        }
    }
}

// What follows a backslash.
bool JsonValidator::ParseEscape() {
    const std::uint32_t character = NextChar();
    if (HasClass(character, ClassEscape)) return true;
    if (character != 'u') {
        Log("JSON Validation Error: line %d char %d, found an invalid escape sequence '\\%c' while parsing string",
            m_Line, m_Column, static_cast<int>(character));
        return false;
    }
    return ParseHexDigit() && ParseHexDigit() && ParseHexDigit() && ParseHexDigit();
}

bool JsonValidator::ParseHexDigit() {
    const std::uint32_t digit = NextChar();
    if (HasClass(digit, ClassHex)) return true;
    Log("JSON Validation Error: line %d char %d, found an invalid hex digit '%c' while parsing unicode escape sequence",
        m_Line, m_Column, static_cast<int>(digit));
    return false;
}

bool JsonValidator::ParseNumber() {
    if (PeekChar() == '-') NextChar();
    if (PeekChar() == '0') {
        NextChar();
    } else if (!ParseDigits()) {
        return false;
    }
    if (PeekChar() == '.') {
        NextChar();
        if (!ParseDigits()) return false;
    }
    if (PeekChar() != 'E' && PeekChar() != 'e') return true;
    NextChar();
    if (PeekChar() == '+' || PeekChar() == '-') NextChar();
    return ParseDigits();
}

// One digit or more.
bool JsonValidator::ParseDigits() {
    if (const std::uint32_t character = PeekChar(); !HasClass(character, ClassDigit)) {
        Log("JSON Validation Error: line %d char %d, expected a digit and got '%c'", m_Line, m_Column,
            static_cast<int>(character));
        return false;
    }
    while (HasClass(PeekChar(), ClassDigit)) NextChar();
    return true;
}
