// What the pipe's two directions take from the heap. A program of its own, because it counts in the global operators:
// nothing on the way in, one block for each message on the way out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include "pipe/frame_router.h"
#include "pipe/named_pipe_server.h"
#include "service/steam_subsystem.h"
#include "tests/support/limits.h"
#include "tools/launcher_client/frames.h"
#include "tools/launcher_client/pipe_client.h"

namespace {

// Where the thread that sets it counts its allocations.
struct Count {
    int all = 0;
    int blocks = 0;  // of exactly blockSize bytes
    std::size_t blockSize = 0;
};
thread_local Count* t_Count = nullptr;

void* Allocate(std::size_t size) noexcept {
    if (t_Count != nullptr) {
        ++t_Count->all;
        t_Count->blocks += size == t_Count->blockSize ? 1 : 0;
    }
    return std::malloc(size);
}

void* AllocateOrThrow(std::size_t size) {
    void* const block = Allocate(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

// All forms but the aligned ones: a sanitizer's own would not call one another.
void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

constexpr int kFrames = 1000;

// Reads the number and then the other fields of each message.
class Reader final : public SubsystemBase {
  public:
    void Init() override {}
    void Shutdown() override {}
    const char* GetName() override { return "Reader"; }
    const char* GetId() override { return "STEA"; }
    void HandleMessage(ReceivedMessage& message) override {
        std::uint64_t number = 0;
        SkipMessageName(message.m_Cursor);
        if (ReadNumberField(message.m_Cursor, number)) m_Fields += number;
        while (NextField(message.m_Cursor, nullptr) != nullptr) ++m_Fields;
    }

    std::uint64_t m_Fields = 0;
};

class Allocations : public testing::Test {
  protected:
    Allocations() { g_Subsystems.emplace_back(reader); }
    ~Allocations() override {
        NamedPipeServer::StopDeliveries();
        NamedPipeServer::Destroy();
        g_Subsystems.clear();
    }

    // Frames that count four each, if all is read, and others that count nothing.
    static std::string Frames(int count) {
        std::string bytes;
        for (int i = 0; i < count; ++i) {
            bytes += launcher::MakeFrame("some_request:1:\"a \\\"quoted\\\" field\":plain:\"\"");
            bytes += launcher::MakeFrame("some_request:1", "NOBODY") + std::string(4, '\0');
        }
        return bytes + std::string(6, '\x7f');
    }

    // The pipe with a client that has written `bytes`, again and again until `OnData` has been called `times`.
    void Serve(const std::string& bytes, int times, std::function<void(unsigned char*, unsigned)> onData) {
        callbacks.OnData = [this, onData = std::move(onData)](unsigned char* data, unsigned size) {
            onData(data, size);
            ++reads;
        };
        const std::string name = "tollmere-test-" + std::to_string(GetCurrentProcessId());
        ASSERT_TRUE(NamedPipeServer::Create("\\\\.\\pipe\\" + name, &callbacks));
        ASSERT_TRUE(client.Open(name, test_support::Limit()));
        for (int i = 1; i <= times; ++i) {
            ASSERT_EQ(client.Write(bytes, test_support::Limit()), launcher::Outcome::Done);
            ASSERT_TRUE(test_support::WaitUntil([&] { return reads >= i; }));
        }
    }

    Reader* const reader = new Reader;
    PipeCallbacks callbacks;
    launcher::PipeClient client;
    Count count;
    std::atomic<int> reads = 0;
};

TEST_F(Allocations, RoutingAndReadingFieldsTakesNone) {
    const std::string bytes = Frames(kFrames);
    t_Count = &count;
    RouteFrames(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
    t_Count = nullptr;
    EXPECT_EQ(reader->m_Fields, 4u * kFrames);
    EXPECT_EQ(count.all, 0);
}

// From the end of one delivery to the end of another, many reads later: whatever the wait thread does in between. The
// layer that stands in for Windows takes nothing there, either.
TEST_F(Allocations, ReadsAndTheirArmingAnewTakeNone) {
    constexpr int kReads = 50;
    Serve(Frames(10), kReads, [this](unsigned char* data, unsigned size) {
        RouteFrames(data, size);
        t_Count = reads + 1 < kReads ? &count : nullptr;
    });
    EXPECT_EQ(reader->m_Fields, 4u * 10 * kReads);
    EXPECT_EQ(count.all, 0);
}

// Most of them wait behind a write in flight: nobody reads. What is queued is the block itself, not a copy of it.
TEST_F(Allocations, AMessageTakesOneBlockOfItsFramesSize) {
    const std::string text(2048, 'x');
    count.blockSize = launcher::MakeFrame(text).size();
    int ofTheFirst = 0;
    Serve("go", 1, [&](unsigned char*, unsigned) {
        t_Count = &count;
        for (int i = 0; i < kFrames; ++i) {
            EXPECT_TRUE(reader->SendSubsystemMessage(text));
            if (i == 0) ofTheFirst = count.all;
        }
        t_Count = nullptr;
    });
    EXPECT_EQ(ofTheFirst, 1);
    EXPECT_EQ(count.blocks, kFrames);
    EXPECT_LE(count.all - count.blocks, kFrames / 25) << "the queue's own storage";
}

TEST_F(Allocations, AnInfoRequestTakesItsAnswersTextAndFrame) {
    sysSteamApi api;
    std::memset(api.m_PersonaName, 'p', sizeof api.m_PersonaName - 1);
    std::memset(api.m_TicketText, 'A', sizeof api.m_TicketText - 1);
    api.m_SteamId = api.m_TicketLength = 0xFFFFFFFF;
    g_Subsystems[0] = std::make_unique<SteamSubsystem>(&api);
    Serve(launcher::MakeFrame("info_request:18446744073709551615"), 1, [&](unsigned char* data, unsigned size) {
        t_Count = &count;
        RouteFrames(data, size);
        t_Count = nullptr;
    });
    EXPECT_EQ(count.all, 2);
}

}  // namespace
