#include "steam/steam_client_abi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "platform/windows_api.h"
#include "tests/steam/stand_in_dlls.h"

namespace {

using ::testing::ElementsAre;

// What lies in slot `index` of the function table that `object` begins with.
template <class Function>
Function Slot(void* object, std::size_t index) {
    return reinterpret_cast<Function>((*static_cast<void***>(object))[index]);
}

std::string Bytes(const void* data, std::size_t size) {
    return {static_cast<const char*>(data), size};
}

// Payloads of the two callbacks that the stand-ins deliver.
std::string TicketPayload(HAuthTicket ticket) {
    const GetAuthSessionTicketResponse_t response = {ticket, 1};
    return Bytes(&response, sizeof response);
}
const std::string kOverlayPayload = "\x01";

// A receiver made by hand: a table of three plain functions, a byte of flags, an id.
struct RawReceiver {
    explicit RawReceiver(int size) : m_Size(size) {}

    static void RunWithCallResult(RawReceiver* self, void* payload, bool, std::uint64_t) {
        self->m_Received.push_back("3 " + Bytes(payload, static_cast<std::size_t>(self->m_Size)));
    }
    static void Run(RawReceiver* self, void* payload) {
        self->m_Received.push_back("1 " + Bytes(payload, static_cast<std::size_t>(self->m_Size)));
    }
    static int GetCallbackSizeBytes(RawReceiver* self) { return self->m_Size; }

    static inline void* const kTable[] = {reinterpret_cast<void*>(&RawReceiver::RunWithCallResult),
                                          reinterpret_cast<void*>(&RawReceiver::Run),
                                          reinterpret_cast<void*>(&RawReceiver::GetCallbackSizeBytes)};

    void* const* m_Table = kTable;  // offset 0
    std::uint8_t m_Flags = 0x80;    // offset 8; only the lowest bit is the DLL's
    std::int32_t m_Id = 0;          // offset 12
    int m_Size;
    std::vector<std::string> m_Received;  // the number of the form's arguments, and the payload

    CCallbackBase* Pointer() { return reinterpret_cast<CCallbackBase*>(this); }
};
static_assert(offsetof(RawReceiver, m_Flags) == 8 && offsetof(RawReceiver, m_Id) == 12);

// A receiver as the program has them.
struct Receiver final : CCallbackBase {
    explicit Receiver(int size) : m_Size(size) {}
    void RunWithCallResult(void* payload, bool, SteamAPICall_t) override {
        m_Received.push_back("3 " + Bytes(payload, static_cast<std::size_t>(m_Size)));
    }
    void Run(void* payload) override { m_Received.push_back("1 " + Bytes(payload, static_cast<std::size_t>(m_Size))); }
    int GetCallbackSizeBytes() override { return m_Size; }

    int m_Size;
    std::vector<std::string> m_Received;
};

class SteamClientAbi : public ::testing::TestWithParam<StandInDll> {
  protected:
    void SetUp() override {
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("STEAM_STAND_IN_CALLBACKS", "1:163:0110000001000000;2:331:01:result");
        WCHAR executable[1024] = {};
        GetModuleFileNameW(nullptr, executable, 1023);
        std::basic_string<WCHAR> path = executable;
        path.resize(path.find_last_of(WIDE_TEXT("\\/")));
        path.append(GetParam().m_Path.begin(), GetParam().m_Path.end());
        m_Dll = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        ASSERT_NE(m_Dll, nullptr);
        ASSERT_TRUE(Export<SteamAPI_Init_t>("SteamAPI_Init")());
        m_Client = Export<SteamClient_t>("SteamClient")();
        ASSERT_NE(m_Client, nullptr);
    }

    void TearDown() override {
        if (m_Client != nullptr) Export<SteamAPI_Shutdown_t>("SteamAPI_Shutdown")();
        if (m_Dll != nullptr) FreeLibrary(m_Dll);
        SetEnvironmentVariableA("SteamAppId", nullptr);
        SetEnvironmentVariableA("STEAM_STAND_IN_CALLBACKS", nullptr);
    }

    template <class Function>
    Function Export(const char* name) {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_Dll, name)));
    }

    void Register(CCallbackBase* receiver, int id) {
        Export<SteamAPI_RegisterCallback_t>("SteamAPI_RegisterCallback")(receiver, id);
    }
    void Unregister(CCallbackBase* receiver) {
        Export<SteamAPI_UnregisterCallback_t>("SteamAPI_UnregisterCallback")(receiver);
    }
    void Pump() { Export<SteamAPI_RunCallbacks_t>("SteamAPI_RunCallbacks")(); }

    // An interface by the raw slot of the client's table.
    void* Get(std::size_t slot, const char* version) {
        using Function = void* (*)(void*, std::int32_t, std::int32_t, const char*);
        return Slot<Function>(m_Client, slot)(m_Client, GetParam().m_User, GetParam().m_Pipe, version);
    }

    HMODULE m_Dll = nullptr;
    ISteamClient* m_Client = nullptr;
};

TEST_P(SteamClientAbi, ClientGivesInterfacesFromItsRawSlots) {
    const struct {
        std::size_t m_Slot;
        const char* m_Version;
    } kRows[] = {{5, "SteamUser019"},
                 {8, "SteamFriends015"},
                 {13, "STEAMUSERSTATS_INTERFACE_VERSION011"},
                 {15, "STEAMAPPS_INTERFACE_VERSION008"},
                 {25, "SteamController004"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.m_Version);
        EXPECT_NE(Get(row.m_Slot, row.m_Version), nullptr);
        EXPECT_EQ(Get(row.m_Slot, "SteamUser018"), nullptr);
    }
    using GetUtils = void* (*)(void*, std::int32_t, const char*);
    EXPECT_NE(Slot<GetUtils>(m_Client, 9)(m_Client, GetParam().m_Pipe, "SteamUtils008"), nullptr);
}

TEST_P(SteamClientAbi, UserAndFriendsAnswerFromTheirRawSlots) {
    void* const user = Get(5, "SteamUser019");
    void* const friends = Get(8, "SteamFriends015");
    ASSERT_NE(user, nullptr);
    ASSERT_NE(friends, nullptr);

    EXPECT_TRUE(Slot<bool (*)(void*)>(user, 1)(user));
    std::uint64_t id = 0;
    EXPECT_EQ(Slot<std::uint64_t* (*)(void*, std::uint64_t*)>(user, 2)(user, &id), &id);
    EXPECT_EQ(id, GetParam().m_SteamId);
    EXPECT_EQ(Slot<const char* (*)(void*)>(friends, 0)(friends), GetParam().m_PersonaName);

    char ticket[1024];
    std::uint32_t length = 0;
    using GetTicket = std::uint32_t (*)(void*, void*, std::int32_t, std::uint32_t*);
    EXPECT_EQ(Slot<GetTicket>(user, 13)(user, ticket, 1024, &length), GetParam().m_TicketHandle);
    EXPECT_EQ(Bytes(ticket, length), GetParam().m_Ticket);
}

TEST_P(SteamClientAbi, RawReceiverIsFlaggedAndCalledInBothForms) {
    RawReceiver ticket(8);
    RawReceiver overlay(1);
    Register(ticket.Pointer(), 163);
    Register(overlay.Pointer(), 331);
    EXPECT_EQ(ticket.m_Flags, 0x81);
    EXPECT_EQ(ticket.m_Id, 163);
    EXPECT_EQ(overlay.m_Id, 331);

    Pump();
    EXPECT_THAT(ticket.m_Received, ElementsAre("1 " + TicketPayload(GetParam().m_TicketHandle)));
    EXPECT_THAT(overlay.m_Received, ElementsAre());
    Pump();
    EXPECT_EQ(ticket.m_Received.size(), 1U);
    EXPECT_THAT(overlay.m_Received, ElementsAre("3 " + kOverlayPayload));

    Unregister(ticket.Pointer());
    Unregister(overlay.Pointer());
    EXPECT_EQ(ticket.m_Flags, 0x80);
    EXPECT_EQ(overlay.m_Flags, 0x80);
}

INSTANTIATE_TEST_SUITE_P(StandIns, SteamClientAbi, ::testing::ValuesIn(StandInDlls()),
                         [](const auto& row) { return row.param.m_Name; });

// What the DLL finds in an object of the program's, read as it reads it.
TEST(CallbackBase, HasTheSlotsThatTheDllCalls) {
    Receiver receiver(8);
    CCallbackBase* const object = &receiver;
    std::string payload = "8 bytes.";
    Slot<void (*)(void*, void*, bool, std::uint64_t)>(object, 0)(object, payload.data(), true, 7);
    Slot<void (*)(void*, void*)>(object, 1)(object, payload.data());
    EXPECT_THAT(receiver.m_Received, ElementsAre("3 8 bytes.", "1 8 bytes."));
    EXPECT_EQ(Slot<int (*)(void*)>(object, 2)(object), 8);
}

}  // namespace
