#include "telemetry/json/json_item.h"

#include <cstring>

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

}  // namespace

bool WriteItem(JsonWriter& writer, const char* name, std::string_view value) {
    if (writer.HasFailed() || !WriteSeparator(writer) || !WriteItemName(writer, name) ||
        !writer.WriteEscaped(value.data(), static_cast<std::ptrdiff_t>(value.size()))) {
        return writer.Fail();
    }
    return true;
}
