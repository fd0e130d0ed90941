#pragma once

// Decides whether a text is one well-formed JSON document. It builds nothing and gives no values.
//
// The rules are those of RFC 8259, with these differences: the top level is an object or an array; the vertical tab
// counts as whitespace; DEL is refused inside strings; 32 levels of containers are the most; an empty text passes, with
// a line logged. The text is taken for well-formed UTF-8 and that isn't tested.

#include <cstddef>
#include <cstdint>

// On false one line is logged that says where and why; for what isn't inside the document there are up to three. The
// text is below 2^31 bytes and has a NUL behind them; a NUL within it is an error. One thread; the recursion is
// bounded.
bool ValidateDocument(const char* text, std::size_t length);

// One check: a walk over the text from front to back that stops at the first error. Each rule logs its own error, and
// gives false at once, without a line, if a rule below it failed.
struct JsonValidator {
    static constexpr std::int32_t kMaxNesting = 32;

    std::int32_t m_Nesting = 0;       // containers entered below the top-level one
    std::int32_t m_Line = 1;          // from 1
    std::int32_t m_Column = 1;        // from 1, in characters and not in bytes
    const char* m_Current = nullptr;  // the next character; not owned
    const char* m_End = nullptr;      // the text's end, at its terminator

    bool ParseObject();
    bool ParseArray();
    bool ParseValue();
    bool ParseString();
    bool ParseNumber();
    bool ParseLiteral(const char* literal);

    // The code point of the next character, or 0 at the end of the text and at a NUL. NextChar consumes it, but for the
    // NUL, and counts a column even at the end.
    std::uint32_t PeekChar() const;
    std::uint32_t NextChar();
    void SkipWhitespace();

  private:
    bool IsTooDeep() const;
    bool ExpectInObject(char expected);
    bool ExpectInArray(char expected);
    bool ParseMember();
    bool ParseEscape();
    bool ParseHexDigit();
    bool ParseDigits();
};
