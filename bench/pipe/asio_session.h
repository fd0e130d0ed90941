#pragma once

// One client of the service on Boost.Asio, over whatever stream the system has for pipes.

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <string>
#include <utility>

#include "bench/pipe/service.h"

namespace pipe_bench {

// Lives until the last of its operations has been handled.
template <class Stream>
class AsioSession {
  public:
    AsioSession(Stream stream, Service& service) : m_Stream(std::move(stream)), m_Service(service) {}

    void Start() { Read(); }

  private:
    // After the client has left there is no next operation, and so the end of the loop.
    void Read() {
        m_Stream.async_read_some(boost::asio::buffer(m_Buffer),
                                 [this](const boost::system::error_code& error, std::size_t count) {
                                     if (!error) Answer({m_Buffer.data(), count});
                                 });
    }

    // All answers to one read go in one write.
    void Answer(std::string_view bytes) {
        m_Answers.clear();
        if (!m_Service.Receive(bytes, m_Answers)) return;
        if (m_Answers.empty()) {
            Read();
            return;
        }
        boost::asio::async_write(m_Stream, boost::asio::buffer(m_Answers),
                                 [this](const boost::system::error_code& error, std::size_t) {
                                     if (!error) Read();
                                 });
    }

    Stream m_Stream;
    Service& m_Service;
    std::array<char, 65536> m_Buffer;
    std::string m_Answers;
};

}  // namespace pipe_bench
