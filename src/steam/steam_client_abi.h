#pragma once

// The binary contract with steam_api64.dll, which another compiler builds: what lies in which slot of its objects'
// function tables, and at which offset of ours. Worker only.
//
// What makes a class fit whichever compiler reads it:
// - its virtual functions are the slots, in order, counted from 0, and nothing else is virtual: a virtual destructor
//   takes one slot in one convention and two in the other;
// - no two of its functions share a name: one compiler lays overloads out as declared, the other groups and reverses
//   them;
// - none returns a class by value: the conventions pass the place for it differently.
// Slots that the program has no use for are named as reserved and their signatures are unknown: they are
// never called. Slots behind the last one in use aren't declared.

#include <cstddef>
#include <cstdint>

static_assert(sizeof(void*) == 8, "the contract is that of the 64-bit DLL");
static_assert(sizeof(bool) == 1, "a result of type bool comes in the lowest byte of its register");

using HSteamUser = std::int32_t;
using HSteamPipe = std::int32_t;
using HAuthTicket = std::uint32_t;
using SteamAPICall_t = std::uint64_t;

struct CSteamID {
    std::uint64_t m_Value;
};
static_assert(sizeof(CSteamID) == 8);
static_assert(alignof(CSteamID) == 8);

// The versions of the interfaces that this contract describes, as they are asked for.
inline constexpr char kSteamUserVersion[] = "SteamUser019";
inline constexpr char kSteamFriendsVersion[] = "SteamFriends015";
inline constexpr char kSteamUtilsVersion[] = "SteamUtils008";
inline constexpr char kSteamAppsVersion[] = "STEAMAPPS_INTERFACE_VERSION008";
inline constexpr char kSteamUserStatsVersion[] = "STEAMUSERSTATS_INTERFACE_VERSION011";
inline constexpr char kSteamControllerVersion[] = "SteamController004";

// Held, never called.
class ISteamUtils;
class ISteamApps;
class ISteamUserStats;
class ISteamController;

class ISteamUser {
  public:
    virtual void ReservedSlot00() = 0;
    virtual bool BLoggedOn() = 0;
    // Returns `result`. On the other side this is a function that returns a class of 8 bytes by value: there
    // the place for the result comes as an argument behind `this`, and goes back as the result.
    virtual CSteamID* GetSteamID(CSteamID* result) = 0;
    virtual void ReservedSlot03() = 0;
    virtual void ReservedSlot04() = 0;
    virtual void ReservedSlot05() = 0;
    virtual void ReservedSlot06() = 0;
    virtual void ReservedSlot07() = 0;
    virtual void ReservedSlot08() = 0;
    virtual void ReservedSlot09() = 0;
    virtual void ReservedSlot10() = 0;
    virtual void ReservedSlot11() = 0;
    virtual void ReservedSlot12() = 0;
    // Writes at most `capacity` bytes to `ticket` and their count to `length`. 0: no ticket. The count comes
    // from outside: check it before use.
    virtual HAuthTicket GetAuthSessionTicket(void* ticket, std::int32_t capacity, std::uint32_t* length) = 0;

  protected:
    ~ISteamUser() = default;
};

class ISteamFriends {
  public:
    // UTF-8 with a NUL behind it, valid until the next call; owned by the DLL.
    virtual const char* GetPersonaName() = 0;

  protected:
    ~ISteamFriends() = default;
};

// The DLL owns what these return; null on failure.
class ISteamClient {
  public:
    virtual void ReservedSlot00() = 0;
    virtual void ReservedSlot01() = 0;
    virtual void ReservedSlot02() = 0;
    virtual void ReservedSlot03() = 0;
    virtual void ReservedSlot04() = 0;
    virtual ISteamUser* GetISteamUser(HSteamUser user, HSteamPipe pipe, const char* version) = 0;
    virtual void ReservedSlot06() = 0;
    virtual void ReservedSlot07() = 0;
    virtual ISteamFriends* GetISteamFriends(HSteamUser user, HSteamPipe pipe, const char* version) = 0;
    virtual ISteamUtils* GetISteamUtils(HSteamPipe pipe, const char* version) = 0;
    virtual void ReservedSlot10() = 0;
    virtual void ReservedSlot11() = 0;
    virtual void ReservedSlot12() = 0;
    virtual ISteamUserStats* GetISteamUserStats(HSteamUser user, HSteamPipe pipe, const char* version) = 0;
    virtual void ReservedSlot14() = 0;
    virtual ISteamApps* GetISteamApps(HSteamUser user, HSteamPipe pipe, const char* version) = 0;
    virtual void ReservedSlot16() = 0;
    virtual void ReservedSlot17() = 0;
    virtual void ReservedSlot18() = 0;
    virtual void ReservedSlot19() = 0;
    virtual void ReservedSlot20() = 0;
    virtual void ReservedSlot21() = 0;
    virtual void ReservedSlot22() = 0;
    virtual void ReservedSlot23() = 0;
    virtual void ReservedSlot24() = 0;
    virtual ISteamController* GetISteamController(HSteamUser user, HSteamPipe pipe, const char* version) = 0;

  protected:
    ~ISteamClient() = default;
};

// Bit of CCallbackBase::m_nCallbackFlags.
inline constexpr std::uint8_t k_ECallbackFlagsRegistered = 1;

// An object of ours that the DLL calls. It writes both fields: it sets the bit and the id at the registration
// and clears the bit at its end; we only test the bit. To the DLL slots 0 and 1 have the name Run, which is
// why ours differ.
class CCallbackBase {
  public:
    virtual void RunWithCallResult(void* pvParam, bool bIOFailure, SteamAPICall_t hSteamAPICall) = 0;
    virtual void Run(void* pvParam) = 0;
    virtual int GetCallbackSizeBytes() = 0;  // of the payload

    std::uint8_t m_nCallbackFlags = 0;
    std::int32_t m_iCallback = 0;

  protected:
    CCallbackBase() = default;
    ~CCallbackBase() = default;
    CCallbackBase(const CCallbackBase&) = default;
    CCallbackBase& operator=(const CCallbackBase&) = default;
};

#if defined(__GNUC__)
#pragma GCC diagnostic push
// Conditionally supported for a class with virtual functions; each of our compilers supports it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif
static_assert(sizeof(CCallbackBase) == 16);
static_assert(offsetof(CCallbackBase, m_nCallbackFlags) == 8);
static_assert(offsetof(CCallbackBase, m_iCallback) == 12);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

// Payloads, as Run gets them.

struct GameOverlayActivated_t {
    static constexpr int k_iCallback = 331;

    std::uint8_t m_bActive;
};
static_assert(sizeof(GameOverlayActivated_t) == 1);

struct GetAuthSessionTicketResponse_t {
    static constexpr int k_iCallback = 163;

    HAuthTicket m_hAuthTicket;
    std::int32_t m_eResult;
};
static_assert(sizeof(GetAuthSessionTicketResponse_t) == 8);
static_assert(offsetof(GetAuthSessionTicketResponse_t, m_eResult) == 4);

// The exports, each of the name before the "_t". Init: true when the client is up. The handles: 0 on failure.
using SteamAPI_Init_t = bool (*)();
using SteamAPI_Shutdown_t = void (*)();
using SteamAPI_RunCallbacks_t = void (*)();
using SteamAPI_RegisterCallback_t = void (*)(CCallbackBase* callback, int callbackId);
using SteamAPI_UnregisterCallback_t = void (*)(CCallbackBase* callback);
using SteamClient_t = ISteamClient* (*)();
using SteamAPI_GetHSteamUser_t = HSteamUser (*)();
using SteamAPI_GetHSteamPipe_t = HSteamPipe (*)();
