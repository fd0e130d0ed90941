#include "tests/e2e/helper_fixture.h"
#include "tests/support/limits.h"

namespace e2e {

namespace {

using launcher::MakeFrame;

// Whatever a launcher writes, the helper answers what it understands and goes on.
class PipeInput : public HelperFixture {
  protected:
    PipeInput() {
        StartService();
        Connect();
    }

    static std::string Answer(int requestId) {
        return "info_response:" + std::to_string(requestId) + ":" + kSteamId + ":" + kPersona + ":10:" + kTicket;
    }
};

TEST_F(PipeInput, FramesOfOneWriteAreAnsweredInOrder) {
    SendBytes(MakeFrame("info_request:1") +           //
              MakeFrame("info_request:2", "ABCD") +   // another subsystem's
              MakeFrame("") +                         // no body
              MakeFrame("no_such_request:3") +        //
              std::string(4, '\0') +                  // a length of 0
              MakeFrame("info_request:4") +           //
              MakeFrame("info_request:5", "STEAM") +  // also goes to STEA, with a body that means nothing to it
              MakeFrame("info_request:6"));
    for (const int id : {1, 4, 6}) ExpectAnswer(Answer(id));
    CloseFromOutside();
}

TEST_F(PipeInput, AFrameInTwoReadsLosesItsFirstPart) {
    // The second part of frame 2 is a frame itself, and is taken for one.
    const std::string embedded = MakeFrame("info_request:3");
    const std::string frame = MakeFrame("info_request:2:" + embedded);
    SendBytes(MakeFrame("info_request:1") + frame.substr(0, frame.size() - embedded.size()));
    ExpectAnswer(Answer(1));
    SendBytes(embedded);
    ExpectAnswer(Answer(3));
    Send("info_request:4");
    ExpectAnswer(Answer(4));
    CloseFromOutside();
}

TEST_F(PipeInput, AFrameMayFillARead) {
    const std::string head = "info_request:8:";
    Send(head + std::string(launcher::kMaxWrite - 9 - head.size(), 'x'));
    ExpectAnswer(Answer(8));
    CloseFromOutside();
}

TEST_F(PipeInput, NothingThatIsWrittenEndsTheService) {
    std::string everyByte;
    for (int i = 0; i < 256; ++i) everyByte += static_cast<char>(i);
    const struct {
        const char* what;
        std::string bytes;
    } rows[] = {
        {"one byte", "S"},
        {"six bytes of a frame", MakeFrame("info_request:1").substr(0, 6)},
        {"the largest length", "\xFF\xFF\xFF\xFFSTEA:info_request:1"},
        {"a length that fits in three bytes", std::string("\x13\0\0\1", 4) + "STEA:info_request:1"},
        {"zeros", std::string(64, '\0')},
        {"text without a length", "info_request:1\r\n"},
        {"every byte", everyByte},
        {"a frame longer than a read", MakeFrame("info_request:1:" + std::string(70000, 'x'))},
        {"a full read of ones", std::string(launcher::kMaxWrite, '\xFF')},
        {"a full read but one", std::string(launcher::kMaxWrite - 1, ':')},
        {"a megabyte", std::string(1 << 20, '\x01')},
        {"zeros in a body", MakeFrame(std::string("info_request\0:\0\0", 16))},
        {"an unfinished launch", MakeFrame("launch_request:1:\"C:\\")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        SendBytes(row.bytes);
        ExpectAnswerInTheEnd();
        // With a fresh connection nothing is left of what was read together.
        Leave();
        Connect();
        ExpectService(77);
        ASSERT_FALSE(HasFailure());
    }
    CloseFromOutside();
}

}  // namespace

}  // namespace e2e
