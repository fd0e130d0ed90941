// The auth session ticket: requested once, kept as text for the life of the process. Steam's confirmation, or its
// time-out, ends a wait and never changes what the launcher gets.

#include <cstring>
#include <string>

#include "diagnostics/log.h"
#include "steam/steam_api.h"

static constexpr std::uint32_t kTicketTimeOutMilliseconds = 10'000;

void sysSteamApi::RequestAuthTicket() {
    if (m_User == nullptr) return;
    std::memset(m_TicketText, 0, sizeof m_TicketText);
    Log("Requesting steam auth session ticket.");
    // Zeroed: a library that writes less than it says mustn't send our stack to the launcher.
    unsigned char ticket[kTicketCapacity] = {};
    const HAuthTicket handle = m_User->GetAuthSessionTicket(ticket, kTicketCapacity, &m_TicketLength);
    if (handle == 0) {
        Log("Invalid Steam Ticket");
        return;
    }
    m_AuthTicket = handle;

    // A length beyond the buffer says that there is no ticket in it.
    const bool fits = m_TicketLength <= sizeof ticket;
    std::string text;
    for (std::uint32_t i = 0; fits && i < m_TicketLength; ++i) {
        char digits[16];
        FormatText16(digits, "%02X", static_cast<unsigned>(ticket[i]));
        text += digits;
    }
    std::memcpy(m_TicketText, text.c_str(), text.size() + 1);
    if (text.size() != std::size_t{2} * m_TicketLength) {
        Log("Invalid auth ticket");
        m_TicketLength = 0;
        return;
    }
    m_TicketRequestTime = timeGetTime();
}

void sysSteamApi::CheckTicketTimeout() {
    if (m_TicketRequestTime == 0) return;
    // Unsigned: a wrap of the millisecond counter does no harm.
    const std::uint32_t elapsed = timeGetTime() - m_TicketRequestTime;
    if (elapsed <= kTicketTimeOutMilliseconds) return;
    Log("Timed out waiting for Steam Ticket authentication.");
    m_AuthTicket = 0;
    m_TicketRequestTime = 0;
}

void sysSteamApi::OnGetAuthSessionTicketResponse(void* payload) {
    if (payload == nullptr) return;
    const auto& response = *static_cast<const GetAuthSessionTicketResponse_t*>(payload);
    Log("OnGetAuthSessionTicketResponse: result (%d), hAuthTicket (%u)", static_cast<int>(response.m_eResult),
        static_cast<unsigned>(response.m_hAuthTicket));
    if (m_AuthTicket != 0 && m_AuthTicket == response.m_hAuthTicket) {
        m_TicketRequestTime = 0;
        m_AuthTicket = 0;
    }
}
