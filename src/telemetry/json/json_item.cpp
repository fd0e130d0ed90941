#include "telemetry/json/json_item.h"

#include <cinttypes>
#include <cstring>

#include "diagnostics/text.h"

namespace {

bool WriteSeparator(JsonWriter& writer) {
    if ((writer.m_Status & JsonWriter::StatusNeedComma) != 0 && !writer.WriteRaw(",")) {
        return false;
    }
    return writer.WriteLineBreak(writer.m_Depth > 0, writer.m_Depth);
}

bool WriteItemName(JsonWriter& writer, const char* name) {
    if (name == nullptr) {
        return true;
    }
    const auto length = static_cast<std::ptrdiff_t>(std::strlen(name));
    if (writer.IsKeyValue()) {
        return writer.WriteEscaped(name, length) && writer.WriteRaw('=');
    }
    return writer.WriteRaw('"') && writer.WriteEscaped(name, length) && writer.WriteRaw('"') && writer.WriteRaw(':');
}

// `length` is what FormatText gave: negative if the value couldn't be formatted.
bool WriteItem(JsonWriter& writer, const char* name, const char* value, int length) {
    if (writer.HasFailed() || length < 0 || !WriteSeparator(writer) || !WriteItemName(writer, name) ||
        !writer.WriteEscaped(value, length)) {
        return writer.Fail();
    }
    return true;
}

}  // namespace

bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, const char* value) {
    return WriteItem(writer, name, scratch, FormatText(scratch, sizeof scratch, "%s", value));
}

bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, char value) {
    return WriteItem(writer, name, scratch, FormatText(scratch, sizeof scratch, "%c", value));
}

bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, std::int32_t value) {
    return WriteItem(writer, name, scratch, FormatText(scratch, sizeof scratch, "%" PRId32, value));
}

bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, std::uint64_t value) {
    return WriteItem(writer, name, scratch, FormatText(scratch, sizeof scratch, "%" PRIu64, value));
}

bool WriteName(JsonWriter& writer, JsonScratch& scratch, const char* name) {
    return WriteValue(writer, scratch, name, "");
}
