#pragma once

// An object that the Steam client calls back into. Worker only: registration, the calls (inside SteamAPI_RunCallbacks)
// and the unregistration. Logs nothing.

#include "steam/steam_client_abi.h"

class sysSteamApi;

// The mapped functions of the owner; without them, or without an owner, these do nothing.
void RegisterWithSteam(sysSteamApi* owner, CCallbackBase* callback, int callbackId);
void UnregisterFromSteam(sysSteamApi* owner, CCallbackBase* callback);

// Hands payloads of type P to a member function of T. N tells apart two of the same T and P.
template <class T, class P, int N>
class sysSteamCallback final : private CCallbackBase {
  public:
    using Handler = void (T::*)(void* payload);

    // `owner` isn't owned and must outlive the object.
    explicit sysSteamCallback(sysSteamApi* owner) : m_Owner(owner) {}
    ~sysSteamCallback() { Unregister(); }
    sysSteamCallback(const sysSteamCallback&) = delete;
    sysSteamCallback& operator=(const sysSteamCallback&) = delete;

    void Register(T* target, Handler handler) {
        Unregister();
        m_Target = target;
        m_Handler = handler;
        RegisterWithSteam(m_Owner, this, P::k_iCallback);
    }

    void Unregister() {
        if ((m_nCallbackFlags & k_ECallbackFlagsRegistered) != 0) UnregisterFromSteam(m_Owner, this);
    }

  private:
    // The client must not meet our exceptions.
    void RunWithCallResult(void* pvParam, bool, SteamAPICall_t) noexcept override { Run(pvParam); }
    void Run(void* pvParam) noexcept override { (m_Target->*m_Handler)(pvParam); }
    int GetCallbackSizeBytes() override { return static_cast<int>(sizeof(P)); }

    sysSteamApi* m_Owner;
    T* m_Target = nullptr;
    Handler m_Handler = nullptr;
};
