#include "steam/steam_client_abi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

std::size_t g_CalledSlot;

template <std::size_t slot>
void* NoteSlot(void*) {
    g_CalledSlot = slot;
    return nullptr;
}

// An object of a foreign DLL: it begins with the pointer to a table of functions, each of which tells its slot.
class ForeignObject {
  public:
    template <class Interface>
    Interface* As() {
        return reinterpret_cast<Interface*>(this);
    }

  private:
    using Function = void* (*)(void*);
    template <std::size_t... slots>
    static const Function* TableOf(std::index_sequence<slots...>) {
        static const Function table[] = {NoteSlot<slots>...};
        return table;
    }

    const Function* m_Table = TableOf(std::make_index_sequence<32>());
};

TEST(SteamClientAbi, EachOperationIsInItsSlot) {
    ForeignObject object;
    const auto client = object.As<ISteamClient>();
    const auto user = object.As<ISteamUser>();
    const std::pair<std::size_t, std::function<void()>> rows[] = {
        {5, [&] { client->GetISteamUser(1, 2, ""); }},
        {8, [&] { client->GetISteamFriends(1, 2, ""); }},
        {9, [&] { client->GetISteamUtils(2, ""); }},
        {13, [&] { client->GetISteamUserStats(1, 2, ""); }},
        {15, [&] { client->GetISteamApps(1, 2, ""); }},
        {25, [&] { client->GetISteamController(1, 2, ""); }},
        {1, [&] { user->BLoggedOn(); }},
        {2, [&] { user->GetSteamID(nullptr); }},
        {13, [&] { user->GetAuthSessionTicket(nullptr, 0, nullptr); }},
        {0, [&] { object.As<ISteamFriends>()->GetPersonaName(); }},
    };
    for (const auto& [slot, call] : rows) {
        g_CalledSlot = 99;
        call();
        EXPECT_EQ(g_CalledSlot, slot);
    }
}

// A receiver as the program has them.
struct Receiver final : CCallbackBase {
    void RunWithCallResult(void* payload, bool, SteamAPICall_t) override { Note("3 ", payload); }
    void Run(void* payload) override { Note("1 ", payload); }
    int GetCallbackSizeBytes() override { return 8; }
    void Note(const std::string& arguments, void* payload) {
        received.push_back(arguments + static_cast<const char*>(payload));
    }

    std::vector<std::string> received;
};

// What the DLL finds in an object of the program's, read as it reads it.
TEST(CallbackBase, HasTheSlotsThatTheDllCalls) {
    Receiver receiver;
    CCallbackBase* const object = &receiver;
    void** const table = *reinterpret_cast<void***>(object);
    char payload[] = "payload";
    reinterpret_cast<void (*)(void*, void*, bool, std::uint64_t)>(table[0])(object, payload, true, 7);
    reinterpret_cast<void (*)(void*, void*)>(table[1])(object, payload);
    EXPECT_THAT(receiver.received, testing::ElementsAre("3 payload", "1 payload"));
    EXPECT_EQ(reinterpret_cast<int (*)(void*)>(table[2])(object), 8);
}

}  // namespace
