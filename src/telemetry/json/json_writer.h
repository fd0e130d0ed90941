#pragma once

// A streaming text writer over its user's buffer. It allocates nothing and never grows; it puts in the commas, escapes
// strings, and remembers a failure, so that a whole series of calls can be made and the last result tested.
//
// Set m_Buffer and m_Capacity and begin: Begin, items and nested containers, one End for each opening. At depth 0 items
// may stand without a container too. The text is in m_Buffer, terminated, after every call that wrote something; after
// a failure it ends with the last write that fitted, which may be inside a string. Nothing checks that all containers
// have been closed.
//
// Names and texts are NUL-terminated UTF-8. Each operation gives true while nothing has failed, unless it says
// otherwise. Lack of room is logged once, a wrong depth at each call; a name that isn't allowed where it stands is not
// logged. One thread.

#include <cstddef>
#include <cstdint>

struct JsonWriter {
    static constexpr std::int32_t kMaxDepth = 32;

    // m_Options
    static constexpr std::uint32_t OptionPretty = 1 << 0;         // line breaks, tabs for indentation
    static constexpr std::uint32_t OptionEscapeUnicode = 1 << 1;  // bytes above 0x80 as \uXXXX

    // m_Status
    static constexpr std::uint8_t StatusFailed = 1 << 0;       // never cleared
    static constexpr std::uint8_t StatusNeedComma = 1 << 1;    // the next item is preceded by one
    static constexpr std::uint8_t StatusMeasureOnly = 1 << 2;  // nothing is stored, m_Cursor counts

    std::uint32_t m_Containers = 0;    // a bit for each open one, the innermost in bit 0; 1: object, 0: array
    std::int32_t m_Depth = 0;          // number of open containers
    char* m_Buffer = nullptr;          // not owned; may be null when only measuring
    std::uint32_t m_Cursor = 0;        // offset of the next byte, so the length of the text
    std::uint32_t m_Capacity = 0;      // bytes in the buffer, one of them for the terminator
    std::uint32_t m_KeyValueMode = 0;  // 0: JSON, else the key=value form: {a=1,b={x,"y z"}}
    std::uint32_t m_Options = 0;
    std::uint8_t m_Status = 0;

    // Open an object, and an array. A null name is none: an array's item, or anything at depth 0.
    bool Begin();
    bool BeginArray(const char* name);

    // Closes the innermost container.
    bool End();

    // An item needs a name in an object, and has none in an array.
    bool WriteBool(const char* name, bool value);
    bool WriteInt(const char* name, std::int32_t value);
    bool WriteUInt64(const char* name, std::uint64_t value);

    // The only one whose refusal is no failure of the writer: a name that isn't allowed, or a null text, gives false
    // and changes nothing.
    bool WriteString(const char* name, const char* text);

    // Output as it is: no separator, no escaping.
    bool WriteRaw(const char* text);
    bool WriteRaw(char character);

    // Escaped output without separator and quotes. Control characters that have no letter become \x and hexadecimal
    // digits, which isn't JSON: the validator refuses such a text. With a length of 0 or less always true.
    bool WriteEscaped(const char* text, std::ptrdiff_t length);

    // A backslash and the character's letter. False, without a failure, if it has none.
    bool WriteEscapedChar(char character);

    bool HasFailed() const { return (m_Status & StatusFailed) != 0; }

  private:
    using Scratch = char[1024];  // a value as text, before it is escaped

    // The common steps of all named items: separator, line break, name, and the value, which is escaped like any text.
    // Brackets and numbers go this way too. WriteName leaves the value to its caller.
    bool WriteValue(Scratch& scratch, const char* name, const char* value);
    bool WriteValue(Scratch& scratch, const char* name, char value);
    bool WriteValue(Scratch& scratch, const char* name, std::int32_t value);
    bool WriteValue(Scratch& scratch, const char* name, std::uint64_t value);
    bool WriteName(Scratch& scratch, const char* name);

    bool StartItem(const char* name);
    bool FinishItem(const Scratch& scratch, int length);
    bool WriteLineBreak(bool lineFeed, std::int32_t tabs);
    bool WriteCodePointEscape(const char* text, const char* end, std::size_t& length);
    void Store(const char* text, std::uint32_t length);
    bool IsNameAllowed(const char* name) const;
    bool NeedsQuotes(const char* text) const;
    std::int32_t Available() const;
    bool IsKeyValue() const { return m_KeyValueMode != 0; }
    bool Fail();
};
