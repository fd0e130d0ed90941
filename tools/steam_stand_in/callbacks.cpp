#include "tools/steam_stand_in/callbacks.h"

#include <algorithm>

#include "tools/steam_stand_in/record.h"
#include "tools/steam_stand_in/session.h"

namespace callbacks {

namespace {

// Any number will do; the receiver has no use for it.
constexpr SteamAPICall_t kCallHandle = 0x0123456789ABCDEF;

std::vector<CCallbackBase*> g_Registered;
std::vector<script::Callback> g_Scripted;
unsigned g_Pumps = 0;

bool IsRegistered(const CCallbackBase* object) {
    return std::find(g_Registered.begin(), g_Registered.end(), object) != g_Registered.end();
}

std::string Describe(const script::Callback& callback) {
    std::string text = "id=" + std::to_string(callback.m_Id);
    text += callback.m_AsCallResult ? " arguments=3" : " arguments=1";
    text += callback.m_Payload ? " size=" + std::to_string(callback.m_Payload->size()) : " null";
    return text;
}

void DeliverTo(CCallbackBase* object, const script::Callback& callback) {
    // A copy, aligned as any payload: the receiver may write to it.
    std::vector<std::uint64_t> place(callback.m_Payload.value_or("").size() / sizeof(std::uint64_t) + 1);
    void* payload = nullptr;
    if (callback.m_Payload) {
        const int size = object->GetCallbackSizeBytes();
        if (size != static_cast<int>(callback.m_Payload->size())) {
            RecordError("callback " + Describe(callback) + " for a receiver of size " + std::to_string(size));
            return;
        }
        payload = place.data();
        callback.m_Payload->copy(static_cast<char*>(payload), callback.m_Payload->size());
    }
    if (callback.m_AsCallResult) {
        object->RunWithCallResult(payload, false, kCallHandle);
    } else {
        object->Run(payload);
    }
}

void Deliver(const script::Callback& callback) {
    Record("deliver " + Describe(callback));
    bool taken = false;
    // A copy, each tested again: a receiver may register and unregister.
    const std::vector<CCallbackBase*> objects = g_Registered;
    for (CCallbackBase* const object : objects) {
        if (!IsRegistered(object) || object->m_iCallback != callback.m_Id) continue;
        taken = true;
        DeliverTo(object, callback);
    }
    if (!taken) RecordError("nobody is registered for callback " + std::to_string(callback.m_Id));
}

}  // namespace

void Start(std::vector<script::Callback> scripted) {
    g_Registered.clear();
    g_Scripted = std::move(scripted);
    g_Pumps = 0;
}

void Stop() {
    for (CCallbackBase* const object : g_Registered) {
        RecordError("SteamAPI_Shutdown with id=" + std::to_string(object->m_iCallback) + " registered");
        object->m_nCallbackFlags &= static_cast<std::uint8_t>(~k_ECallbackFlagsRegistered);
    }
    g_Registered.clear();
}

void Register(CCallbackBase* object, int id) {
    session::Enter("SteamAPI_RegisterCallback");
    if (object == nullptr) {
        RecordError("SteamAPI_RegisterCallback of null");
        return;
    }
    Record("SteamAPI_RegisterCallback id=" + std::to_string(id) +
           " size=" + std::to_string(object->GetCallbackSizeBytes()));
    if (IsRegistered(object)) {
        RecordError("SteamAPI_RegisterCallback of an object that is registered");
    } else {
        g_Registered.push_back(object);
    }
    object->m_iCallback = id;
    object->m_nCallbackFlags |= k_ECallbackFlagsRegistered;
}

void Unregister(CCallbackBase* object) {
    session::Enter("SteamAPI_UnregisterCallback");
    // An object that was never registered may not even exist: it isn't looked at.
    if (!IsRegistered(object)) {
        RecordError("SteamAPI_UnregisterCallback of an object that isn't registered");
        return;
    }
    Record("SteamAPI_UnregisterCallback id=" + std::to_string(object->m_iCallback));
    std::erase(g_Registered, object);
    object->m_nCallbackFlags &= static_cast<std::uint8_t>(~k_ECallbackFlagsRegistered);
}

void Pump() {
    session::Enter("SteamAPI_RunCallbacks");
    ++g_Pumps;
    const auto isDue = [](const script::Callback& callback) { return callback.m_Pump == g_Pumps; };
    const bool delivers = std::any_of(g_Scripted.begin(), g_Scripted.end(), isDue);
    if (g_Pumps == 1 || delivers) Record("SteamAPI_RunCallbacks pump=" + std::to_string(g_Pumps));
    for (std::size_t i = 0; i < g_Scripted.size(); ++i) {
        if (isDue(g_Scripted[i])) Deliver(g_Scripted[i]);
    }
}

unsigned PumpCount() {
    return g_Pumps;
}

}  // namespace callbacks
