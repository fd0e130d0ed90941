#pragma once

// Reads the fields of a message body, one after the other, without copying the body.
//
// Fields are separated by ":". A field that begins with a double quote ends at the next double quote that no backslash
// protects, and may so hold a ":"; behind the closing quote stands ":", a NUL or the end of the body. A separator at
// the very end opens no empty last field. No operation looks at a byte beyond the body, and none needs a terminator
// there. All of this runs on a wait thread, inside one HandleMessage.

#include <cstdint>
#include <string>

struct FieldCursor {
    const unsigned char* m_Data = nullptr;  // first byte of the body; not owned
    std::uint32_t m_Length = 0;             // bytes in the body
    std::uint32_t m_Position = 0;           // next byte to look at; at or past m_Length: no more fields
};

// Puts the cursor on the first field behind the message name, which ends at the first ":" or NUL.
void SkipMessageName(FieldCursor& cursor);

// Gives the first byte of the next field and moves the cursor behind it. `end`, which may be null, gets the pointer
// behind the field's last byte; quotes are left out, backslashes stay in. Null if there is no field (nothing is
// logged, `end` isn't set), or if the field is quoted wrongly: then one line is logged and the rest of the body is
// given up.
const unsigned char* NextField(FieldCursor& cursor, const unsigned char** end);

// Appends the next field to `out`, each backslash dropped that isn't itself protected by one. False, with `out`
// untouched, where NextField gives null.
bool ReadStringField(FieldCursor& cursor, std::string& out);

// Reads the next field as ScanText does with "%llu": white space, a sign, digits; what follows them is ignored, a
// number too large counts as the largest. False, with `value` untouched, if there is no field or no number in it.
bool ReadNumberField(FieldCursor& cursor, std::uint64_t& value);
