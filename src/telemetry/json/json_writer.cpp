#include "telemetry/json/json_writer.h"

#include <cstring>

#include "diagnostics/log.h"
#include "telemetry/json/json_item.h"
#include "telemetry/json/json_tables.h"

bool JsonWriter::Begin() {
    if (m_Depth + 1 > kMaxDepth) {
        Log("Failed to Begin() - m_Depth(%d) + 1 > %d.", m_Depth, kMaxDepth);
        return Fail();
    }
    return Open('{', 1, nullptr);
}

bool JsonWriter::BeginArray(const char* name) {
    if (m_Depth + 1 > kMaxDepth) {
        Log("Failed to BeginArray() '%s' - m_Depth(%d) + 1 > %d.", name == nullptr ? "" : name, m_Depth, kMaxDepth);
        return Fail();
    }
    return Open(IsKeyValue() ? '{' : '[', 0, name);
}

bool JsonWriter::Open(char bracket, std::uint32_t containerBit, const char* name) {
    if (!IsNameAllowed(name)) {
        return Fail();
    }
    if (!WriteItem(*this, name, {&bracket, 1})) {
        return false;
    }
    m_Containers = m_Containers << 1 | containerBit;
    ++m_Depth;
    return true;
}

bool JsonWriter::End() {
    if (m_Depth <= 0) {
        Log("Failed to End() - m_Depth(%d) must be > 0.", m_Depth);
        return Fail();
    }
    const bool isObject = (m_Containers & 1) != 0;
    if (!WriteLineBreak(true, m_Depth - 1) || !WriteRaw(isObject || IsKeyValue() ? '}' : ']')) {
        return false;
    }
    --m_Depth;
    m_Containers >>= 1;
    return true;
}

bool JsonWriter::WriteBool(const char* name, bool value) {
    return IsNameAllowed(name) ? WriteItem(*this, name, value ? "true" : "false") : Fail();
}

bool JsonWriter::WriteInt(const char* name, std::int32_t value) {
    return IsNameAllowed(name) ? WriteNumber(*this, name, value) : Fail();
}

bool JsonWriter::WriteUInt64(const char* name, std::uint64_t value) {
    return IsNameAllowed(name) ? WriteNumber(*this, name, value) : Fail();
}

bool JsonWriter::WriteString(const char* name, const char* text) {
    if (!IsNameAllowed(name) || text == nullptr) {
        return false;
    }
    if (!WriteItem(*this, name, {})) {
        return false;
    }
    const bool quoted = NeedsQuotes(text);
    if (quoted) {
        WriteRaw('"');
    }
    WriteEscaped(text, static_cast<std::ptrdiff_t>(std::strlen(text)));
    if (quoted) {
        WriteRaw('"');
    }
    return !HasFailed();
}

bool JsonWriter::IsNameAllowed(const char* name) const {
    if (m_Depth <= 0) {
        return true;
    }
    const bool inObject = (m_Containers & 1) != 0;
    return inObject ? name != nullptr || IsKeyValue() : name == nullptr;
}

bool JsonWriter::NeedsQuotes(const char* text) const {
    if (!IsKeyValue()) {
        return true;
    }
    for (; *text != '\0'; ++text) {
        if (HasClass(*text, ClassStructural | ClassSpace)) {
            return true;
        }
    }
    return false;
}

bool JsonWriter::Fail() {
    m_Status |= StatusFailed;
    return false;
}
