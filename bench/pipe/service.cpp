#include "bench/pipe/service.h"

#include <charconv>

namespace pipe_bench {

namespace {

constexpr std::size_t kLengthSize = 4;
// Nothing that a launcher says comes near this.
constexpr std::size_t kMaxLength = 1 << 20;
constexpr std::string_view kId = "STEA:";
constexpr std::string_view kRequest = "info_request";
constexpr std::string_view kResponse = "info_response:";

std::size_t ReadLength(std::string_view bytes) {
    std::size_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

void AppendLength(std::size_t length, std::string& bytes) {
    for (std::size_t i = 0; i < kLengthSize; ++i) bytes += static_cast<char>(length >> (8 * i) & 0xFF);
}

// The number in the field behind the message's name; 0 without one.
std::uint64_t RequestId(std::string_view body) {
    std::uint64_t id = 0;
    const std::size_t colon = body.find(':');
    if (colon != std::string_view::npos) std::from_chars(body.data() + colon + 1, body.data() + body.size(), id);
    return id;
}

}  // namespace

Service::Service(std::string_view steamId, std::string_view persona, std::string_view ticket) {
    m_Identity.append(":").append(steamId).append(":").append(persona).append(":");
    m_Identity.append(std::to_string(ticket.size() / 2)).append(":").append(ticket);
}

bool Service::Receive(std::string_view bytes, std::string& answers) {
    // As a rule a read brings whole frames, which needn't be copied.
    if (m_Pending.empty()) {
        if (!TakeFrames(bytes, answers)) return false;
        m_Pending = bytes;
        return true;
    }
    m_Pending += bytes;
    std::string_view rest = m_Pending;
    if (!TakeFrames(rest, answers)) return false;
    m_Pending.erase(0, m_Pending.size() - rest.size());
    return true;
}

std::string_view Service::NextWrite(std::string_view& answers, bool together) {
    const std::size_t size = together || answers.empty() ? answers.size() : kLengthSize + ReadLength(answers);
    const std::string_view next = answers.substr(0, size);
    answers.remove_prefix(size);
    return next;
}

bool Service::TakeFrames(std::string_view& bytes, std::string& answers) const {
    while (bytes.size() >= kLengthSize) {
        const std::size_t length = ReadLength(bytes);
        if (length > kMaxLength) return false;
        if (bytes.size() - kLengthSize < length) break;
        Answer(bytes.substr(kLengthSize, length), answers);
        bytes.remove_prefix(kLengthSize + length);
    }
    return true;
}

void Service::Answer(std::string_view frame, std::string& answers) const {
    if (!frame.starts_with(kId)) return;
    const std::string_view body = frame.substr(kId.size());
    if (!body.starts_with(kRequest)) return;
    char id[20];
    const char* const end = std::to_chars(id, id + sizeof id, RequestId(body)).ptr;
    const auto idSize = static_cast<std::size_t>(end - id);
    AppendLength(kId.size() + kResponse.size() + idSize + m_Identity.size(), answers);
    answers.append(kId).append(kResponse).append(id, idSize).append(m_Identity);
}

}  // namespace pipe_bench
