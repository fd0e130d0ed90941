#include "pipe/frame_router.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pipe/subsystem_base.h"

namespace {

using namespace std::string_literals;
using Bodies = std::vector<std::string>;

class Recorder final : public SubsystemBase {
  public:
    Recorder(const char* id, Bodies& bodies) : m_Id(id), m_Bodies(bodies) {}
    void Init() override {}
    void Shutdown() override {}
    const char* GetName() override { return "Recorder"; }
    const char* GetId() override { return m_Id; }
    void HandleMessage(ReceivedMessage& message) override {
        const auto* const body = message.m_Frame + message.m_BodyOffset;
        EXPECT_EQ(message.m_Cursor.m_Data, body);
        EXPECT_EQ(message.m_Cursor.m_Length, message.m_BodyLength);
        EXPECT_EQ(message.m_Cursor.m_Position, 0u);
        EXPECT_LE(message.m_BodyOffset + message.m_BodyLength, message.m_Available);
        m_Bodies.push_back(m_Id + " "s + std::string(body, body + message.m_BodyLength));
    }

  private:
    const char* m_Id;
    Bodies& m_Bodies;
};

std::string Frame(std::string_view content) {
    std::string frame = {static_cast<char>(content.size()), static_cast<char>(content.size() >> 8), 0, 0};
    return frame.append(content);
}

class FrameRouter : public testing::Test {
  protected:
    FrameRouter() {
        for (const char* const id : {"STEA", "XY"}) g_Subsystems.push_back(std::make_unique<Recorder>(id, delivered));
    }
    ~FrameRouter() override { g_Subsystems.clear(); }

    // In a block of exactly its size, so that the sanitizers see a look behind the end.
    Bodies Route(const std::string& bytes) {
        const auto block = std::make_unique<unsigned char[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), block.get());
        delivered.clear();
        RouteFrames(block.get(), static_cast<unsigned>(bytes.size()));
        return delivered;
    }

    Bodies delivered;
};

TEST_F(FrameRouter, GivesEachFrameToTheSubsystemThatItNames) {
    const std::string one = Frame("STEA:one");
    struct {
        std::string what;
        std::string bytes;
        Bodies delivered;
    } const rows[] = {
        {"two in one read, for two subsystems", one + Frame("XY:two"), {"STEA one", "XY two"}},
        {"six bytes behind it", one + "\x02\0\0\0ab"s, {"STEA one"}},
        {"an unknown id is passed over", Frame("NOBO:x") + one, {"STEA one"}},
        {"a longer id still matches; its rest is body", Frame("STEAM:x"), {"STEA :x"}},
        {"any byte may separate", Frame("STEA\0x"s), {"STEA x"}},
        {"no body: not delivered", Frame("STEA:") + one, {"STEA one"}},
        {"the smallest body", Frame("STEA:x"), {"STEA x"}},
        {"length 0 steps over its own four bytes", "\0\0\0\0"s + one, {"STEA one"}},
        {"the shortest frame that is looked at", Frame("XY:") + Frame("XY:a"), {"XY a"}},
        {"one byte is missing", one.substr(0, one.size() - 1), {}},
        {"the start of another behind it", one + one.substr(0, 9), {"STEA one"}},
        {"the fourth byte counts", "\x08\0\0\x01STEA:one"s, {}},
        {"a length that wraps around", "\xFF\xFF\xFF\xFFSTEA:one"s, {}},
        {"garbage", "GET / HTTP/1.1\r\n\r\n", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Route(row.bytes), row.delivered);
    }
}

}  // namespace
