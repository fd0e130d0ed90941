// What the pipe's two directions take from the heap. A program of its own, because it counts in the global operators:
// nothing on the way in, one block for each message on the way out.

#include <cstdlib>
#include <new>

#include "clients/cpp/tollmere_launcher_client.h"
#include "pipe/frame_router.h"
#include "pipe/subsystem_base.h"
#include "tests/pipe/pipe_server_fixture.h"

namespace {

// Where the thread that sets it counts its allocations.
struct Count {
    int all = 0;
    int blocks = 0;  // of exactly blockSize bytes
    std::size_t blockSize = 0;
};
thread_local Count* t_Count = nullptr;

}  // namespace

// The forms that the others call, and that of the blocks.
void* operator new(std::size_t size) {
    if (t_Count != nullptr) {
        ++t_Count->all;
        t_Count->blocks += size == t_Count->blockSize ? 1 : 0;
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

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

class Allocations : public PipeServerFixture {
  protected:
    Allocations() { g_Subsystems.emplace_back(reader); }
    ~Allocations() override {
        Stop();
        g_Subsystems.clear();
    }

    Reader* const reader = new Reader;
    Count count;
};

// From the end of one delivery to the end of another, many reads later: routing, the fields, and whatever the wait
// thread does between two reads. The layer that stands in for Windows takes nothing there, either.
TEST_F(Allocations, WhatComesInTakesNone) {
    constexpr int kReads = 50;
    constexpr int kFrames = 10;
    std::string bytes;
    for (int i = 0; i < kFrames; ++i) {
        bytes += launcher::MakeFrame("some_request:1:\"a \\\"quoted\\\" field\":plain:\"\"");
        bytes += launcher::MakeFrame("some_request:1", "NOBODY");
    }
    std::atomic<int> reads = 0;
    OnData([&](const std::string& delivered) {
        RouteFrames(reinterpret_cast<const unsigned char*>(delivered.data()), static_cast<unsigned>(delivered.size()));
        t_Count = reads + 1 < kReads ? &count : nullptr;
        ++reads;
    });
    ASSERT_TRUE(StartAndConnect());
    for (int i = 1; i <= kReads; ++i) {
        ASSERT_TRUE(Write(bytes));
        ASSERT_TRUE(support::WaitUntil([&] { return reads >= i; }));
    }
    EXPECT_EQ(reader->m_Fields, 4u * kFrames * kReads);
    EXPECT_EQ(count.all, 0);
}

// Most of them wait behind a write in flight: nobody reads. What is queued is the block itself, not a copy of it.
TEST_F(Allocations, AMessageTakesOneBlockOfItsFramesSize) {
    constexpr int kMessages = 1000;
    const std::string text(2048, 'x');
    count.blockSize = launcher::MakeFrame(text).size();
    int ofTheFirst = 0;
    std::atomic<bool> done = false;
    OnData([&](const std::string&) {
        t_Count = &count;
        for (int i = 0; i < kMessages; ++i) {
            EXPECT_TRUE(reader->SendSubsystemMessage(text));
            if (i == 0) ofTheFirst = count.all;
        }
        t_Count = nullptr;
        done = true;
    });
    ASSERT_TRUE(StartAndConnect());
    ASSERT_TRUE(Write("go"));
    ASSERT_TRUE(support::WaitUntil([&] { return done.load(); }));
    EXPECT_EQ(ofTheFirst, 1);
    EXPECT_EQ(count.blocks, kMessages);
    EXPECT_LE(count.all - count.blocks, kMessages / 25) << "the queue's own storage";
}

}  // namespace
