#include "bench/service.h"

#include <cstddef>

static constexpr std::size_t kLengthSize = 4;

static std::size_t ReadLength(std::string_view bytes) {
    std::size_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

Service::Service(std::string_view steamId, std::string_view persona, std::string_view ticket) {
    m_Identity.append(":").append(steamId).append(":").append(persona).append(":");
    m_Identity.append(std::to_string(ticket.size() / 2)).append(":").append(ticket);
}

const std::string& Service::Receive(std::string_view bytes) {
    m_Answers.clear();
    m_Pending += bytes;
    std::string_view rest = m_Pending;
    while (rest.size() >= kLengthSize && rest.size() - kLengthSize >= ReadLength(rest)) {
        Answer(rest.substr(kLengthSize, ReadLength(rest)));
        rest.remove_prefix(kLengthSize + ReadLength(rest));
    }
    m_Pending.erase(0, m_Pending.size() - rest.size());
    return m_Answers;
}

void Service::Answer(std::string_view request) {
    constexpr std::string_view kRequest = "STEA:info_request:";
    constexpr std::string_view kResponse = "STEA:info_response:";
    if (!request.starts_with(kRequest)) return;
    const std::string_view number = request.substr(kRequest.size());
    const std::size_t length = kResponse.size() + number.size() + m_Identity.size();
    for (std::size_t i = 0; i < kLengthSize; ++i) m_Answers += static_cast<char>(length >> (8 * i) & 0xFF);
    m_Answers.append(kResponse).append(number).append(m_Identity);
}
