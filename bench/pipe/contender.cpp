#include "bench/pipe/contender.h"

#include <stdexcept>
#include <thread>

#include "bench/pipe/pipe_path.h"

namespace pipe_bench {

namespace {

constexpr std::size_t kLengthSize = 4;
constexpr std::size_t kBufferSize = 65536;

std::size_t ReadLength(const std::string& bytes) {
    std::size_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

}  // namespace

const std::string& RequestFrame() {
    using namespace std::string_literals;
    static const std::string frame = "\x1C\0\0\0STEA:info_request:1000000007"s;
    return frame;
}

Contender::Contender(std::string name, const std::string& pipe) : m_Name(std::move(name)), m_Buffer(kBufferSize) {
    constexpr int kTries = 200;
    constexpr std::chrono::milliseconds kPause{50};  // what the helper needs to listen again
    const std::string path = PipePath(pipe);
    for (int i = 0; i < kTries; ++i) {
        std::this_thread::sleep_for(kPause);
        if (m_Connection.TryOpen(path)) return;
    }
    throw std::runtime_error(m_Name + ": nobody serves " + path);
}

std::string Contender::Ask() {
    m_Connection.Write(RequestFrame());
    std::string answer;
    do {
        answer.append(m_Buffer.data(), m_Connection.Read(m_Buffer.data(), m_Buffer.size()));
    } while (answer.size() < kLengthSize || answer.size() < kLengthSize + ReadLength(answer));
    if (answer.size() != kLengthSize + ReadLength(answer)) throw std::runtime_error(m_Name + ": more than one answer");
    m_AnswerSize = answer.size();
    return answer;
}

std::chrono::nanoseconds Contender::Exchange(std::string_view requests, std::size_t count) {
    using Clock = std::chrono::steady_clock;
    const std::size_t expected = count * m_AnswerSize;
    std::size_t received = 0;
    const Clock::time_point begin = Clock::now();
    m_Connection.Write(requests);
    while (received < expected) received += m_Connection.Read(m_Buffer.data(), m_Buffer.size());
    const Clock::time_point end = Clock::now();
    if (received > expected) throw std::runtime_error(m_Name + ": more answers than requests");
    return end - begin;
}

}  // namespace pipe_bench
