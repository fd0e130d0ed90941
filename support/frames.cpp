#include "support/frames.h"

#include <charconv>

namespace launcher {

namespace {

constexpr std::size_t kLengthSize = 4;

std::uint32_t ReadLength(std::string_view bytes) {
    std::uint32_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

// Takes the text up to the next ':' off the front of `rest`, the ':' as well; nothing if there is no ':'.
std::optional<std::string_view> TakeFirst(std::string_view& rest) {
    const std::size_t colon = rest.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view field = rest.substr(0, colon);
    rest.remove_prefix(colon + 1);
    return field;
}

// The same off the end.
std::optional<std::string_view> TakeLast(std::string_view& rest) {
    const std::size_t colon = rest.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view field = rest.substr(colon + 1);
    rest = rest.substr(0, colon);
    return field;
}

// False unless `field` is there and is a decimal number that fits, and nothing else.
template <class Number>
bool ReadNumber(std::optional<std::string_view> field, Number& number) {
    if (!field || field->empty()) return false;
    const char* const end = field->data() + field->size();
    const auto [stop, error] = std::from_chars(field->data(), end, number);
    return error == std::errc() && stop == end;
}

std::optional<Answer> ParseInfo(std::string_view fields) {
    InfoResponse info;
    if (!ReadNumber(TakeFirst(fields), info.m_RequestId)) return std::nullopt;
    if (!ReadNumber(TakeFirst(fields), info.m_SteamId)) return std::nullopt;
    // From the end, because the name between may hold any number of colons.
    const std::optional<std::string_view> ticket = TakeLast(fields);
    if (!ReadNumber(TakeLast(fields), info.m_TicketLength)) return std::nullopt;
    info.m_Ticket = *ticket;
    info.m_PersonaName = fields;
    return info;
}

std::optional<Answer> ParseLaunch(std::string_view fields) {
    LaunchResponse launch;
    if (!ReadNumber(TakeFirst(fields), launch.m_RequestId)) return std::nullopt;
    if (!ReadNumber(std::optional(fields), launch.m_ProcessId)) return std::nullopt;
    return launch;
}

std::optional<Answer> ParseFailure(std::string_view fields) {
    Failure failure;
    if (!ReadNumber(std::optional(fields), failure.m_RequestId)) return std::nullopt;
    return failure;
}

}  // namespace

std::string MakeFrame(std::string_view body, std::string_view id) {
    const std::size_t length = id.size() + 1 + body.size();
    std::string frame;
    frame.reserve(kLengthSize + length);
    for (std::size_t i = 0; i < kLengthSize; ++i) frame += static_cast<char>(length >> (8 * i) & 0xFF);
    return frame.append(id).append(1, ':').append(body);
}

void FrameReader::Feed(std::string_view bytes) {
    m_Bytes.append(bytes);
}

std::optional<Frame> FrameReader::Next() {
    if (m_Broken || m_Bytes.size() < kLengthSize) return std::nullopt;
    const std::size_t length = ReadLength(m_Bytes);
    if (length > kMaxLength) {
        m_Broken = true;
        return std::nullopt;
    }
    if (m_Bytes.size() - kLengthSize < length) return std::nullopt;
    std::string_view rest = std::string_view(m_Bytes).substr(kLengthSize, length);
    const std::optional<std::string_view> id = TakeFirst(rest);
    if (!id) {
        m_Broken = true;
        return std::nullopt;
    }
    Frame frame{std::string(*id), std::string(rest)};
    m_Bytes.erase(0, kLengthSize + length);
    return frame;
}

std::string QuoteField(std::string_view text) {
    std::string field = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') field += '\\';
        field += c;
    }
    return field += '"';
}

std::string InfoRequest(std::uint64_t requestId) {
    return "info_request:" + std::to_string(requestId);
}

std::string LaunchRequest(std::uint64_t requestId, std::string_view executable, std::string_view directory,
                          std::string_view arguments) {
    return "launch_request:" + std::to_string(requestId) + ":" + QuoteField(executable) + ":" + QuoteField(directory) +
           ":" + QuoteField(arguments);
}

std::optional<Answer> ParseAnswer(std::string_view body) {
    const std::optional<std::string_view> name = TakeFirst(body);
    if (name == "info_response") return ParseInfo(body);
    if (name == "launch_response") return ParseLaunch(body);
    if (name == "failure") return ParseFailure(body);
    return std::nullopt;
}

std::uint64_t RequestIdOf(const Answer& answer) {
    return std::visit([](const auto& one) { return one.m_RequestId; }, answer);
}

}  // namespace launcher
