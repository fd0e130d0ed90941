#pragma once

// One client of the service on Boost.Asio, over whatever stream the system has for pipes.

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <string>
#include <utility>

#include "bench/pipe/server_options.h"

namespace pipe_bench {

// Lives until the last of its operations has been handled.
template <class Stream>
class AsioSession {
  public:
    AsioSession(Stream stream, ServerOptions& options) : m_Stream(std::move(stream)), m_Options(options) {}

    void Start() { Read(); }

  private:
    // After the client has left there is no next operation, and so the end of the loop.
    void Read() {
        m_Stream.async_read_some(boost::asio::buffer(m_Buffer),
                                 [this](const boost::system::error_code& error, std::size_t count) {
                                     if (!error) Answer({m_Buffer.data(), count});
                                 });
    }

    void Answer(std::string_view bytes) {
        m_Answers.clear();
        if (!m_Options.m_Service.Receive(bytes, m_Answers)) return;
        m_Rest = m_Answers;
        WriteRest();
    }

    void WriteRest() {
        if (m_Rest.empty()) {
            Read();
            return;
        }
        boost::asio::async_write(m_Stream, boost::asio::buffer(Service::NextWrite(m_Rest, m_Options.m_Together)),
                                 [this](const boost::system::error_code& error, std::size_t) {
                                     if (!error) WriteRest();
                                 });
    }

    Stream m_Stream;
    ServerOptions& m_Options;
    std::array<char, 65536> m_Buffer;
    std::string m_Answers;
    std::string_view m_Rest;  // of the answers
};

}  // namespace pipe_bench
