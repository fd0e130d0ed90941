#pragma once

// The service on Boost.Asio, over whatever stream the system has for pipes: bench_asio PATH STEAMID PERSONA TICKET.
// Serves one client and ends when that leaves.

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include "bench/service.h"

// Lives until the last of its operations has been handled.
template <class Stream>
class AsioSession {
  public:
    AsioSession(Stream stream, Service& service) : m_Stream(std::move(stream)), m_Service(service) {}

    // After the client has left there is no next operation, and so the end of the loop.
    void Read() {
        m_Stream.async_read_some(boost::asio::buffer(m_Buffer),
                                 [this](const boost::system::error_code& error, std::size_t count) {
                                     if (!error) Answer({m_Buffer.data(), count});
                                 });
    }

  private:
    void Answer(std::string_view bytes) {
        boost::asio::async_write(m_Stream, boost::asio::buffer(m_Service.Receive(bytes)),
                                 [this](const boost::system::error_code& error, std::size_t) {
                                     if (!error) Read();
                                 });
    }

    Stream m_Stream;
    Service& m_Service;
    std::array<char, 65536> m_Buffer;
};
