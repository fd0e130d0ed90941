#include "bench/client.h"

#include <stdexcept>
#include <thread>

#include "clients/cpp/tollmere_launcher_client.h"

static constexpr std::size_t kLengthSize = 4;

static std::size_t ReadLength(const char* bytes) {
    std::size_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

void WaitUntilListening(const std::string& path) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
    while (!IsListening(path)) {
        if (Clock::now() > end) throw std::runtime_error("nobody listens at " + path);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void Client::Open() {
    WaitUntilListening(m_Path);
    m_Pipe.emplace(PipeEnd::Open(m_Path));
}

std::string_view Client::Ask(const std::string& frame) {
    bool there = m_Pipe->Write(frame);
    std::size_t size = 0;
    while (there && (size < kLengthSize || size < kLengthSize + ReadLength(m_Buffer.data()))) {
        const std::size_t count = m_Pipe->Read(m_Buffer.data() + size, m_Buffer.size() - size);
        there = count > 0;
        size += count;
    }
    if (!there) throw std::runtime_error(m_Name + " has left or answers with too much");
    return {m_Buffer.data(), size};
}

std::vector<Client> MakeClients(const Texts& arguments, std::size_t first) {
    std::vector<Client> clients;
    for (std::size_t i = first; i + 1 < arguments.size(); i += 2) clients.emplace_back(arguments[i], arguments[i + 1]);
    return clients;
}

const std::string& InfoFrame() {
    static const std::string frame = launcher::MakeFrame(launcher::InfoRequest(1'000'000'007));
    return frame;
}
