// Characters, and the rules that contain no other rule: strings, numbers, literals.

#include <limits>

#include "diagnostics/log.h"
#include "telemetry/json/json_plain.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"
#include "telemetry/json/json_validator.h"

namespace {

// A position beyond what the counter holds is shown as the last one.
void Count(std::int32_t& counter, std::ptrdiff_t characters = 1) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    counter = characters < most - counter ? counter + static_cast<std::int32_t>(characters) : most;
}

// Of the form 10xxxxxx, which belongs to the byte before it whatever that is.
bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

std::uint32_t JsonValidator::PeekRareChar() const {
    if (m_Current == m_End || *m_Current == '\0') {
        return 0;
    }
    return ReadUtf8Sequence(m_Current, m_End).m_CodePoint;
}

std::uint32_t JsonValidator::NextRareChar() {
    std::uint32_t codePoint = 0;
    if (m_Current != m_End && *m_Current != '\0') {
        const Utf8Sequence sequence = ReadUtf8Sequence(m_Current, m_End);
        m_Current += sequence.m_Length;
        codePoint = sequence.m_CodePoint;
    }
    if (codePoint == '\n') {
        Count(m_Line);
        m_Column = 1;
    } else {
        Count(m_Column);
    }
    return codePoint;
}

void JsonValidator::SkipWhitespace() {
    while (HasClass(PeekChar(), ClassSpace)) {
        NextChar();
    }
}

// Steps over as much of a string as is plain or a short escape, which no error can come of.
void JsonValidator::SkipPlainChars() {
    const char* it = m_Current;
    for (;;) {
        const char* const plainEnd = SkipPlain(it, m_End);
        if (plainEnd != it && plainEnd != m_End && IsContinuation(*plainEnd)) {
            it = plainEnd - 1;
            break;
        }
        it = plainEnd;
        // With the byte behind it, which could belong to the escaped one.
        if (m_End - it < 3 || *it != '\\' || !HasClass(it[1], ClassEscape) || IsContinuation(it[2])) {
            break;
        }
        it += 2;
    }
    Count(m_Column, it - m_Current);
    m_Current = it;
}

bool JsonValidator::ParseLiteral(const char* literal) {
    for (const char* expected = literal; *expected != '\0'; ++expected) {
        const std::uint32_t found = NextChar();
        if (found != static_cast<std::uint32_t>(*expected)) {
            Log("JSON Validation Error: line %d char %d, reading literal \"%s\" and got '%c'", m_Line, m_Column,
                literal, static_cast<int>(found));
            return false;
        }
    }
    return true;
}

bool JsonValidator::ParseString() {
    if (const std::uint32_t opener = NextChar(); opener != '"') {
        Log("JSON Validation Error: line %d char %d, expected '%c' and got '%c'", m_Line, m_Column, '"',
            static_cast<int>(opener));
        return false;
    }
    for (;;) {
        SkipPlainChars();
        const std::uint32_t character = NextChar();
        if (character == '"') {
            return true;
        }
        if (character == '\\') {
            if (!ParseEscape()) {
                return false;
            }
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
    if (HasClass(character, ClassEscape)) {
        return true;
    }
    if (character != 'u') {
        Log("JSON Validation Error: line %d char %d, found an invalid escape sequence '\\%c' while parsing "
            "string",
            m_Line, m_Column, static_cast<int>(character));
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        if (const std::uint32_t digit = NextChar(); !HasClass(digit, ClassHex)) {
            Log("JSON Validation Error: line %d char %d, found an invalid hex digit '%c' while parsing "
                "unicode "
                "escape sequence",
                m_Line, m_Column, static_cast<int>(digit));
            return false;
        }
    }
    return true;
}

bool JsonValidator::ParseNumber() {
    if (PeekChar() == '-') {
        NextChar();
    }
    if (PeekChar() == '0') {
        NextChar();
    } else if (!ParseDigits()) {
        return false;
    }
    if (PeekChar() == '.') {
        NextChar();
        if (!ParseDigits()) {
            return false;
        }
    }
    if (PeekChar() != 'E' && PeekChar() != 'e') {
        return true;
    }
    NextChar();
    if (PeekChar() == '+' || PeekChar() == '-') {
        NextChar();
    }
    return ParseDigits();
}

// One digit or more.
bool JsonValidator::ParseDigits() {
    if (const std::uint32_t character = PeekChar(); !HasClass(character, ClassDigit)) {
        Log("JSON Validation Error: line %d char %d, expected a digit and got '%c'", m_Line, m_Column,
            static_cast<int>(character));
        return false;
    }
    while (HasClass(PeekChar(), ClassDigit)) {
        NextChar();
    }
    return true;
}
