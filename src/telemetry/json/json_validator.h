#pragma once

// Decides whether a text is one well-formed JSON document. It builds nothing and gives no values.
//
// The rules are those of RFC 8259, with these differences: the top level is an object or an array; the
// vertical tab counts as whitespace; DEL is refused inside strings; 32 levels of containers are the most; an
// empty text passes, with a line logged. The text is taken for well-formed UTF-8 and that isn't tested.

#include <cstddef>
#include <cstdint>
#include <limits>

// On false one line is logged that says where and why; for what isn't inside the document there are up to
// three. The text, which may be null, needs no terminator, but a NUL in it is an error. One thread; the
// recursion is bounded.
bool ValidateDocument(const char* text, std::size_t length);

// One check: a walk over the text from front to back that stops at the first error. Each rule logs its own
// error, and gives false at once, without a line, if a rule below it failed.
struct JsonValidator {
    static constexpr std::int32_t kMaxNesting = 32;

    std::int32_t m_Nesting = 0;       // containers entered below the top-level one
    std::int32_t m_Line = 1;          // from 1
    std::int32_t m_Column = 1;        // from 1, in characters and not in bytes
    const char* m_Current = nullptr;  // the next character; not owned
    const char* m_End = nullptr;      // the text's end; nothing there is read

    bool ParseObject();
    bool ParseArray();
    bool ParseValue();
    bool ParseString();
    bool ParseNumber();
    bool ParseLiteral(const char* literal);

    // The code point of the next character, or 0 at the end of the text and at a NUL. NextChar consumes it,
    // but for the NUL, and counts a column even at the end.
    std::uint32_t PeekChar() const;
    std::uint32_t NextChar();
    void SkipWhitespace();

  private:
    struct Container;
    bool IsAtAscii() const;
    std::uint32_t PeekRareChar() const;
    std::uint32_t NextRareChar();
    void SkipPlainChars();
    bool ParseContainer(const Container& container);
    bool ParseNested(bool (JsonValidator::*rule)());
    bool ParseMemberName(const Container& container);
    bool ParseEscape();
    bool ParseDigits();
    bool ExpectInContainer(char expected, const Container& container);
};

// Whether the next character is one byte of ASCII that no counter treats specially. Nearly all are.
inline bool JsonValidator::IsAtAscii() const {
    constexpr auto isAscii = [](char c) { return c >= ' ' && c <= '~'; };
    return m_End - m_Current > 1 && isAscii(m_Current[0]) && isAscii(m_Current[1]);
}

inline std::uint32_t JsonValidator::PeekChar() const {
    return IsAtAscii() ? static_cast<unsigned char>(*m_Current) : PeekRareChar();
}

inline std::uint32_t JsonValidator::NextChar() {
    if (!IsAtAscii() || m_Column == std::numeric_limits<std::int32_t>::max()) {
        return NextRareChar();
    }
    ++m_Column;
    return static_cast<unsigned char>(*m_Current++);
}
