#pragma once

// Takes a text apart without building a tree and without copying it. A token is a view of the text: where a name lies
// and where a value lies. What kind the value is follows from its first byte: '{' object, '[' array, '"' string,
// anything else a bare word.
//
// The reader is lenient and judges nothing: let the validator do that first, or a walk over all levels may come to the
// same token many times. It also takes bare words, '=' for ':', commas in a row, and items without a container around
// them. No operation changes the text. None reads behind the text's end, where a NUL has to be. One thread to a token.

#include <cstddef>
#include <cstdint>

// A plain value; of no use once the text is gone. The offsets count from m_Text, which isn't the start of the document:
// it moves forward from token to token.
struct JsonToken {
    const char* m_Text = nullptr;     // not owned; null: an invalid token
    std::uint32_t m_Length = 0;       // bytes from m_Text to the end of the document
    std::int32_t m_NameOffset = -1;   // of the name, behind its quotation mark if it has one; -1: no name
    std::int32_t m_NameLength = -1;   // without quotation marks
    std::int32_t m_ValueOffset = -1;  // of the value's first byte, its quotation mark or bracket included
    std::int32_t m_ValueLength = -1;  // likewise; 1 or more in a valid token
};

// The token at the start of `text`, which may be null. On false the token is invalid; nothing is logged. That is also
// how an empty container shows, and a text of 2^31 bytes or more.
bool ParseToken(JsonToken& token, const char* text, std::uint32_t length);

// The token behind `token`, which may be the same object as `next`. On false `next` is invalid: the container or the
// text has ended, or, with a line logged, something stands there that is no comma.
bool NextToken(const JsonToken& token, JsonToken& next);

// The first token inside of the container `token`, which may be the same object as `child`. On false, without a line,
// `child` is invalid: it's empty, or no container.
bool FirstChild(const JsonToken& token, JsonToken& child);

// The first child of `token` that has this name, compared byte by byte in its raw form. On false, without a line,
// `found` is untouched. `token` and `found` may be the same object. Logs as NextToken does.
bool FindMember(const JsonToken& token, const char* name, JsonToken& found);

// Decodes the value, less its quotation marks, into `buffer` and terminates it. The decoded text is never longer than
// the raw one, and `bufferSize`, in bytes, must be above that: m_ValueLength + 1 always is. Each \uXXXX stands alone,
// halves of a surrogate pair too, and \u0000 puts a NUL into the text.
//
// `writtenLength` gets the bytes written, without the terminator; it may be null. On false, for an invalid token or a
// buffer too small, it is 0 and the buffer is untouched; nothing is logged.
bool GetString(const JsonToken& token, char* buffer, std::size_t bufferSize, std::size_t* writtenLength);

// Decodes the escape sequence at `source`, behind the backslash, and gives the number of bytes read, 1 or more. A byte
// from 0x80 on gives a code point above U+10FFFF, which stands for none.
std::size_t DecodeEscape(const char* source, std::uint32_t& codePoint);
