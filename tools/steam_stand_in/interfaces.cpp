#include "tools/steam_stand_in/interfaces.h"

#include <string>

#include "tools/steam_stand_in/record.h"
#include "tools/steam_stand_in/script.h"
#include "tools/steam_stand_in/session.h"

// A slot that nobody may call.
#define RESERVED_SLOT(number)                            \
    void ReservedSlot##number() override {               \
        RecordError("a call of reserved slot " #number); \
    }

namespace {

class StandInUser final : public ISteamUser {
  public:
    RESERVED_SLOT(00)
    RESERVED_SLOT(03)
    RESERVED_SLOT(04)
    RESERVED_SLOT(05)
    RESERVED_SLOT(06)
    RESERVED_SLOT(07)
    RESERVED_SLOT(08)
    RESERVED_SLOT(09)
    RESERVED_SLOT(10)
    RESERVED_SLOT(11)
    RESERVED_SLOT(12)

    bool BLoggedOn() override {
        session::Enter("ISteamUser::BLoggedOn");
        const bool loggedOn = script::IsLoggedOn();
        Record(loggedOn ? "ISteamUser::BLoggedOn -> true" : "ISteamUser::BLoggedOn -> false");
        return loggedOn;
    }

    CSteamID* GetSteamID(CSteamID* result) override {
        session::Enter("ISteamUser::GetSteamID");
        result->m_Value = script::SteamId();
        Record("ISteamUser::GetSteamID -> " + std::to_string(result->m_Value));
        return result;
    }

    HAuthTicket GetAuthSessionTicket(void* place, std::int32_t capacity, std::uint32_t* length) override {
        session::Enter("ISteamUser::GetAuthSessionTicket");
        if (place == nullptr || length == nullptr || capacity != 1024) {
            RecordError("ISteamUser::GetAuthSessionTicket with other arguments than a place, 1024, a length");
            return 0;
        }
        std::string ticket = script::Ticket();
        if (ticket.size() > static_cast<std::size_t>(capacity)) {
            RecordError("STEAM_STAND_IN_TICKET is too long");
            ticket.resize(static_cast<std::size_t>(capacity));
        }
        const bool refused = script::IsRefused("Ticket");
        const std::optional<std::uint32_t> claim = script::TicketLength();
        if (!refused) ticket.copy(static_cast<char*>(place), ticket.size());
        if (claim || !refused) *length = claim.value_or(static_cast<std::uint32_t>(ticket.size()));
        const HAuthTicket handle = refused ? 0 : script::kTicketHandle;
        Record("ISteamUser::GetAuthSessionTicket capacity=" + std::to_string(capacity) +
               " length=" + std::to_string(*length) + " -> " + std::to_string(handle));
        return handle;
    }
};

class StandInFriends final : public ISteamFriends {
  public:
    const char* GetPersonaName() override {
        session::Enter("ISteamFriends::GetPersonaName");
        m_Name = script::PersonaName();
        Record("ISteamFriends::GetPersonaName -> " + m_Name);
        return m_Name.c_str();
    }

  private:
    std::string m_Name;
};

// Stands for an interface that is held and never called: there is no table of functions behind it.
template <class Interface>
Interface* Opaque() {
    static void* object = nullptr;
    return reinterpret_cast<Interface*>(&object);
}

class StandInClient final : public ISteamClient {
  public:
    RESERVED_SLOT(00)
    RESERVED_SLOT(01)
    RESERVED_SLOT(02)
    RESERVED_SLOT(03)
    RESERVED_SLOT(04)
    RESERVED_SLOT(06)
    RESERVED_SLOT(07)
    RESERVED_SLOT(10)
    RESERVED_SLOT(11)
    RESERVED_SLOT(12)
    RESERVED_SLOT(14)
    RESERVED_SLOT(16)
    RESERVED_SLOT(17)
    RESERVED_SLOT(18)
    RESERVED_SLOT(19)
    RESERVED_SLOT(20)
    RESERVED_SLOT(21)
    RESERVED_SLOT(22)
    RESERVED_SLOT(23)
    RESERVED_SLOT(24)

    ISteamUser* GetISteamUser(HSteamUser user, HSteamPipe pipe, const char* version) override {
        return Give<ISteamUser>("SteamUser", &user, pipe, version, kSteamUserVersion, &m_User);
    }
    ISteamFriends* GetISteamFriends(HSteamUser user, HSteamPipe pipe, const char* version) override {
        return Give<ISteamFriends>("SteamFriends", &user, pipe, version, kSteamFriendsVersion, &m_Friends);
    }
    ISteamUtils* GetISteamUtils(HSteamPipe pipe, const char* version) override {
        return Give("SteamUtils", nullptr, pipe, version, kSteamUtilsVersion, Opaque<ISteamUtils>());
    }
    ISteamApps* GetISteamApps(HSteamUser user, HSteamPipe pipe, const char* version) override {
        return Give("SteamApps", &user, pipe, version, kSteamAppsVersion, Opaque<ISteamApps>());
    }
    ISteamUserStats* GetISteamUserStats(HSteamUser user, HSteamPipe pipe, const char* version) override {
        return Give("SteamUserStats", &user, pipe, version, kSteamUserStatsVersion, Opaque<ISteamUserStats>());
    }
    ISteamController* GetISteamController(HSteamUser user, HSteamPipe pipe, const char* version) override {
        return Give("SteamController", &user, pipe, version, kSteamControllerVersion, Opaque<ISteamController>());
    }

  private:
    // `object` if the arguments are right and the script doesn't refuse it. `user` is null where none is passed.
    template <class Interface>
    Interface* Give(const std::string& name, const HSteamUser* user, HSteamPipe pipe, const char* version,
                    const std::string& rightVersion, Interface* object) {
        const std::string call = std::string("ISteamClient::GetI").append(name);
        session::Enter(call);
        const std::string given = version == nullptr ? "null" : version;
        const bool right =
            (user == nullptr || *user == script::kUserHandle) && pipe == script::kPipeHandle && given == rightVersion;
        const bool gives = right && !script::IsRefused(name);
        std::string line = call;
        if (user != nullptr) line += " user=" + std::to_string(*user);
        line += " pipe=" + std::to_string(pipe);
        Record(line.append(" version=").append(given).append(gives ? " -> object" : " -> null"));
        if (!right) RecordError(call + " with a wrong handle or version");
        return gives ? object : nullptr;
    }

    StandInUser m_User;
    StandInFriends m_Friends;
};

}  // namespace

ISteamClient& TheSteamClient() {
    static StandInClient client;
    return client;
}
