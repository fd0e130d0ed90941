#include "tools/probe/conversation.h"

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/open_pipe.h"
#include "tools/probe/report.h"

namespace {

class Conversation {
  public:
    explicit Conversation(const Options& options) : m_Options(options) {}

    ExitStatus Run() {
        if (!support::OpenPipe(m_Pipe, m_Options.m_Pipe, m_Options.m_Timeout)) return NotConnected();
        Narrate("launcher: connected to " + m_Options.m_Pipe);
        ExitStatus status = ExitStatus::Done;
        for (const Command& command : m_Options.m_Commands) {
            status = CarryOut(command);
            if (status != ExitStatus::Done) break;
        }
        m_Pipe.Close();
        Narrate("launcher: left");
        return status;
    }

  private:
    ExitStatus CarryOut(const Command& command) {
        m_Deadline = Clock::now() + m_Options.m_Timeout;
        Narrate("launcher -> helper: " + command.m_Text);
        const launcher::Outcome outcome = m_Pipe.Write(command.m_Bytes, m_Options.m_Timeout);
        if (outcome != launcher::Outcome::Done) return NoAnswer(outcome);

        ExitStatus status = ExitStatus::Done;
        for (unsigned taken = 0; taken < command.m_Answers;) {
            launcher::Frame frame;
            const ExitStatus received = Receive(frame);
            if (received != ExitStatus::Done) return received;
            const std::optional<launcher::Answer> answer = launcher::ParseAnswer(frame.m_Body);
            if (!answer || !Counts(command, *answer)) continue;
            ++taken;
            ReportAnswer(*answer, m_Options.m_Json);
            if (std::holds_alternative<launcher::Failure>(*answer)) status = ExitStatus::Failure;
        }
        return status;
    }

    static bool Counts(const Command& command, const launcher::Answer& answer) {
        return command.m_IsRaw || launcher::RequestIdOf(answer) == command.m_RequestId;
    }

    // The next frame from the helper, waiting until the command's deadline.
    ExitStatus Receive(launcher::Frame& frame) {
        for (;;) {
            if (std::optional<launcher::Frame> next = m_Frames.Next()) {
                frame = std::move(*next);
                Narrate("helper -> launcher: " + frame.m_Body);
                return ExitStatus::Done;
            }
            if (m_Frames.IsBroken()) {
                ReportError("what the other end says isn't made of frames");
                return ExitStatus::NoAnswer;
            }
            std::string bytes;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_Deadline - Clock::now());
            const launcher::Outcome outcome = m_Pipe.Read(bytes, left);
            if (outcome != launcher::Outcome::Done) return NoAnswer(outcome);
            m_Frames.Feed(bytes);
        }
    }

    ExitStatus NotConnected() const {
        if (m_Pipe.FoundBusy()) {
            ReportError("the pipe " + m_Options.m_Pipe + " is busy: it serves another client, or doesn't listen");
            return ExitStatus::Busy;
        }
        ReportError("nobody serves the pipe " + m_Options.m_Pipe);
        return ExitStatus::NoPipe;
    }

    ExitStatus NoAnswer(launcher::Outcome outcome) const {
        ReportError(outcome == launcher::Outcome::Lost
                        ? "the connection is lost"
                        : "no answer within " + std::to_string(m_Options.m_Timeout.count()) + " ms");
        return ExitStatus::NoAnswer;
    }

    void Narrate(const std::string& text) const {
        if (m_Options.m_Verbose) ReportEvent(text);
    }

    using Clock = std::chrono::steady_clock;

    const Options& m_Options;
    launcher::PipeClient m_Pipe;
    launcher::FrameReader m_Frames;
    Clock::time_point m_Deadline;
};

}  // namespace

ExitStatus Converse(const Options& options) {
    return Conversation(options).Run();
}
