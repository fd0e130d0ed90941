// Any series of calls of the JSON writer, in both forms, with all options, into a buffer of any size.

#include <memory>

#include "fuzz/input.h"
#include "telemetry/json/json_validator.h"
#include "telemetry/json/json_writer.h"

namespace {

// Without what has no letter and would be no JSON, if asked for.
std::string Text(Input& input, bool plain) {
    std::string text = input.Bytes(input.Below(200));
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (plain && (byte < 0x20 || byte >= 0x7F)) character = '?';
    }
    return text;
}

// One call. `isRaw` becomes true if the text is no longer the writer's own.
void Call(JsonWriter& writer, Input& input, bool plain, bool& isRaw) {
    const std::string name = Text(input, plain);
    const char* const maybeName = input.Below(4) == 0 ? nullptr : name.c_str();
    switch (input.Below(9)) {
        case 0:
            writer.Begin();
            break;
        case 1:
            writer.BeginArray(maybeName);
            break;
        case 2:
            writer.End();
            break;
        case 3:
            writer.WriteBool(maybeName, input.Below(2) != 0);
            break;
        case 4:
            writer.WriteInt(maybeName, static_cast<std::int32_t>(input.Below(0xFFFFFFFF)));
            break;
        case 5:
            writer.WriteUInt64(maybeName, std::uint64_t{input.Below(0xFFFFFFFF)} << input.Below(33));
            break;
        case 6:
            isRaw = true;
            writer.WriteRaw(name.c_str());
            break;
        case 7:
            isRaw = true;
            writer.WriteEscaped(name.c_str(), static_cast<std::ptrdiff_t>(name.size()));
            break;
        default:
            writer.WriteString(maybeName, Text(input, plain).c_str());
    }
}

// What an input says beside its calls.
struct Series {
    explicit Series(Input& input) : m_Plain(input.Below(2) != 0), m_HasRoot(input.Below(4) != 0) {}

    // All of the calls, and what closes the containers.
    void Run(JsonWriter& writer, Input input) {
        if (m_HasRoot) writer.Begin();
        while (!input.IsEmpty()) {
            Call(writer, input, m_Plain, m_IsRaw);
            Require((writer.m_Status & JsonWriter::StatusMeasureOnly) != 0 || writer.m_Buffer[writer.m_Cursor] == '\0',
                    "the text is terminated");
            if (m_HasRoot && writer.m_Depth == 0) break;
        }
        while (writer.m_Depth > 0 && writer.End()) {
        }
    }

    const bool m_Plain;
    const bool m_HasRoot;
    bool m_IsRaw = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    JsonWriter writer;
    writer.m_Capacity = 1 + input.Below(4096);
    // As large as the writer believes, so that a look beyond it is noticed.
    const auto buffer = std::make_unique<char[]>(writer.m_Capacity);
    writer.m_Buffer = buffer.get();
    writer.m_Options = input.Below(4);
    writer.m_KeyValueMode = input.Below(2);
    JsonWriter measure = writer;
    measure.m_Status = JsonWriter::StatusMeasureOnly;

    Series series(input);
    series.Run(writer, input);
    series.Run(measure, input);
    const bool written = !writer.HasFailed();
    Require(!written || measure.m_Cursor == writer.m_Cursor, "what is measured is what is written");
    if (written && series.m_HasRoot && series.m_Plain && !series.m_IsRaw && writer.m_KeyValueMode == 0) {
        Require(ValidateDocument(buffer.get(), writer.m_Cursor), "the validator takes what the writer wrote");
    }
    return 0;
}
