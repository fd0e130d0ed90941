#pragma once

// A pipe server with an owner that writes down what it is told, and a client at the other end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "clients/cpp/tollmere_launcher_client.h"
#include "pipe/named_pipe_server.h"
#include "pipe/overlapped_operation.h"
#include "support/limits.h"
#include "support/open_pipe.h"
#include "tests/support/log_capture.h"

class PipeServerFixture : public testing::Test {
  protected:
    PipeServerFixture() {
        static int number = 0;
        m_Name = "tollmere-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
        m_Callbacks.OnConnected = [this] { ++connects; };
        m_Callbacks.OnDisconnected = [this] { ++disconnects; };
        m_Callbacks.OnData = [this](unsigned char* data, unsigned int size) {
            m_Delivered.assign(reinterpret_cast<const char*>(data), size);
            m_OnData(m_Delivered);
        };
    }
    ~PipeServerFixture() override { Stop(); }

    static OutgoingFrame Block(const std::string& bytes) {
        OutgoingFrame frame;
        frame.m_Size = static_cast<std::uint32_t>(bytes.size());
        frame.m_Data = std::make_unique<unsigned char[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), frame.m_Data.get());
        return frame;
    }
    static bool Send(const std::string& bytes) {
        OutgoingFrame frame = Block(bytes);
        return NamedPipeServer::Send(frame);
    }

    const std::string& Name() const { return m_Name; }
    std::string FullName() const { return "\\\\.\\pipe\\" + m_Name; }
    bool Start() { return NamedPipeServer::Create(FullName(), &m_Callbacks); }
    void Stop() {
        NamedPipeServer::StopDeliveries();
        NamedPipeServer::Destroy();
    }
    // What a read delivers is given to `handler`; set it before the client writes.
    void OnData(std::function<void(const std::string&)> handler) {
        const LockGuard lock(g_CompletionLock);
        m_OnData = std::move(handler);
    }

    bool StartAndConnect() { return Start() && Connect(); }
    bool Connect() { return support::OpenPipe(client, m_Name, support::Limit()); }
    bool Write(const std::string& bytes) { return client.Write(bytes, support::Limit()) == launcher::Outcome::Done; }
    // Exactly `size` bytes, or fewer if the connection ends first.
    std::string Read(std::size_t size) {
        std::string bytes;
        while (bytes.size() < size && client.Read(bytes, support::Limit()) == launcher::Outcome::Done) {
        }
        return bytes;
    }
    // By a handler that sends back what came. The next read is pending soon after.
    bool IsServed() { return Write("a") && Read(1) == "a" && Write("b") && Read(1) == "b"; }
    bool Disconnected(int times) {
        return support::WaitUntil([&] { return disconnects == times; });
    }

    test_support::LogCapture log;
    launcher::PipeClient client;
    std::atomic<int> connects = 0;
    std::atomic<int> disconnects = 0;

  private:
    std::string m_Name;
    PipeCallbacks m_Callbacks;
    std::string m_Delivered;  // by the latest read
    std::function<void(const std::string&)> m_OnData = [](const std::string& bytes) { Send(bytes); };
};
