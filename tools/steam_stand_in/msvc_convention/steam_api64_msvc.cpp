// A stand-in for the Steam client as Microsoft's compiler would build it. It is written like any C++ of that
// compiler's, with classes of its own: overloads share a name, a class is returned by value. ../README.md tells what it
// does.
//
// It has no library to call, and no record to write: a caller that breaches the contract gets nothing.

using Handle = int;
using uint8 = unsigned char;
using uint32 = unsigned int;
using uint64 = unsigned long long;
static_assert(sizeof(uint64) == 8);

namespace {

constexpr Handle kUser = 33;
constexpr Handle kPipe = 44;
constexpr uint32 kTicketHandle = 8194;
constexpr uint64 kSteamId = 76561197960265730;
constexpr char kPersonaName[] = "Built: elsewhere";
constexpr uint8 kTicket[] = {0x4D, 0x53, 0x56, 0x43, 0x00, 0xFF, 0x80, 0x7F};

bool IsSame(const char* a, const char* b) {
    if (a == nullptr) return false;
    while (*a != '\0' && *a == *b) ++a, ++b;
    return *a == *b;
}

class SteamId {
  public:
    SteamId() : m_Bits(0) {}
    explicit SteamId(uint64 bits) : m_Bits(bits) {}
    uint64 Bits() const { return m_Bits; }

  private:
    uint64 m_Bits;
};

class User {
  public:
    virtual Handle Slot0() { return 0; }
    virtual bool BLoggedOn() { return true; }
    virtual SteamId GetSteamID() { return SteamId(kSteamId); }
    virtual void Slot3() {}
    virtual void Slot4() {}
    virtual void Slot5() {}
    virtual void Slot6() {}
    virtual void Slot7() {}
    virtual void Slot8() {}
    virtual void Slot9() {}
    virtual void Slot10() {}
    virtual void Slot11() {}
    virtual void Slot12() {}
    virtual uint32 GetAuthSessionTicket(void* ticket, int capacity, uint32* length) {
        if (ticket == nullptr || length == nullptr || capacity != 1024) return 0;
        volatile uint8* const bytes = static_cast<uint8*>(ticket);  // volatile: else it becomes a memcpy
        for (uint32 i = 0; i < sizeof kTicket; ++i) bytes[i] = kTicket[i];
        *length = sizeof kTicket;
        return kTicketHandle;
    }
};

class Friends {
  public:
    virtual const char* GetPersonaName() { return kPersonaName; }
};

class Utils {
  public:
    virtual void Slot0() {}
};

constinit User g_User;
constinit Friends g_Friends;
constinit Utils g_Utils;
constinit Utils g_Apps;
constinit Utils g_UserStats;
constinit Utils g_Controller;

template <class Interface>
Interface* Give(Interface& object, Handle pipe, const char* version, const char* rightVersion) {
    return pipe == kPipe && IsSame(version, rightVersion) ? &object : nullptr;
}

class Client {
  public:
    virtual void Slot0() {}
    virtual void Slot1() {}
    virtual void Slot2() {}
    virtual void Slot3() {}
    virtual void Slot4() {}
    virtual User* GetISteamUser(Handle user, Handle pipe, const char* version) {
        return user == kUser ? Give(g_User, pipe, version, "SteamUser019") : nullptr;
    }
    virtual void Slot6() {}
    virtual void Slot7() {}
    virtual Friends* GetISteamFriends(Handle user, Handle pipe, const char* version) {
        return user == kUser ? Give(g_Friends, pipe, version, "SteamFriends015") : nullptr;
    }
    virtual Utils* GetISteamUtils(Handle pipe, const char* version) {
        return Give(g_Utils, pipe, version, "SteamUtils008");
    }
    virtual void Slot10() {}
    virtual void Slot11() {}
    virtual void Slot12() {}
    virtual Utils* GetISteamUserStats(Handle user, Handle pipe, const char* version) {
        return user == kUser ? Give(g_UserStats, pipe, version, "STEAMUSERSTATS_INTERFACE_VERSION011") : nullptr;
    }
    virtual void Slot14() {}
    virtual Utils* GetISteamApps(Handle user, Handle pipe, const char* version) {
        return user == kUser ? Give(g_Apps, pipe, version, "STEAMAPPS_INTERFACE_VERSION008") : nullptr;
    }
    virtual void Slot16() {}
    virtual void Slot17() {}
    virtual void Slot18() {}
    virtual void Slot19() {}
    virtual void Slot20() {}
    virtual void Slot21() {}
    virtual void Slot22() {}
    virtual void Slot23() {}
    virtual void Slot24() {}
    virtual Utils* GetISteamController(Handle user, Handle pipe, const char* version) {
        return user == kUser ? Give(g_Controller, pipe, version, "SteamController004") : nullptr;
    }
};

constinit Client g_Client;

// The receiver's class as this side declares it. The compiler puts the overload that is declared last first.
class CallbackBase {
  public:
    virtual void Run(void* payload) = 0;
    virtual void Run(void* payload, bool ioFailure, uint64 call) = 0;
    virtual int GetCallbackSizeBytes() = 0;

    uint8 m_Flags;
    int m_Id;
};

struct TicketResponse {
    uint32 m_Ticket;
    int m_Result;
};
struct OverlayActivated {
    uint8 m_Active;
};

constexpr uint8 kRegistered = 1;
constexpr int kTicketResponseId = 163;
constexpr int kOverlayActivatedId = 331;

CallbackBase* g_Receivers[4];
int g_Pumps;

// The receiver with this id, if it also says that its payload has this size.
CallbackBase* FindReceiver(int id, int size) {
    for (CallbackBase* const receiver : g_Receivers) {
        if (receiver != nullptr && receiver->m_Id == id && receiver->GetCallbackSizeBytes() == size) return receiver;
    }
    return nullptr;
}

}  // namespace

extern "C" {

// The linker doesn't know this convention's run-time library.
int _purecall() {
    __builtin_trap();
}

int DllMain(void*, uint32, void*) {
    return 1;
}

bool SteamAPI_Init() {
    g_Pumps = 0;
    return true;
}

void SteamAPI_Shutdown() {}

Handle SteamAPI_GetHSteamUser() {
    return kUser;
}

Handle SteamAPI_GetHSteamPipe() {
    return kPipe;
}

Client* SteamClient() {
    return &g_Client;
}

void SteamAPI_RegisterCallback(CallbackBase* receiver, int id) {
    for (CallbackBase*& place : g_Receivers) {
        if (place != nullptr) continue;
        place = receiver;
        receiver->m_Id = id;
        receiver->m_Flags = static_cast<uint8>(receiver->m_Flags | kRegistered);
        return;
    }
}

void SteamAPI_UnregisterCallback(CallbackBase* receiver) {
    for (CallbackBase*& place : g_Receivers) {
        if (place != receiver) continue;
        place = nullptr;
        receiver->m_Flags = static_cast<uint8>(receiver->m_Flags & ~kRegistered);
    }
}

void SteamAPI_RunCallbacks() {
    ++g_Pumps;
    if (g_Pumps == 1) {
        TicketResponse response = {kTicketHandle, 1};
        if (CallbackBase* const receiver = FindReceiver(kTicketResponseId, sizeof response)) {
            receiver->Run(&response);
        }
    }
    if (g_Pumps == 2) {
        OverlayActivated overlay = {1};
        if (CallbackBase* const receiver = FindReceiver(kOverlayActivatedId, sizeof overlay)) {
            receiver->Run(&overlay, false, 0x0123456789ABCDEF);
        }
    }
}

}  // extern "C"
