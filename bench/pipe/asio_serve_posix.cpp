#include <unistd.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <optional>

#include "bench/pipe/asio_serve.h"
#include "bench/pipe/asio_session.h"

namespace pipe_bench {

void ServeWithAsio(ServerOptions& options) {
    using Protocol = boost::asio::local::stream_protocol;
    boost::asio::io_context context(1);
    unlink(options.m_Path.c_str());  // an earlier run's
    Protocol::acceptor acceptor(context, Protocol::endpoint(options.m_Path));
    std::optional<AsioSession<Protocol::socket>> session;
    acceptor.async_accept([&](const boost::system::error_code& error, Protocol::socket socket) {
        acceptor.close();
        if (!error) session.emplace(std::move(socket), options).Start();
    });
    context.run();
    unlink(options.m_Path.c_str());
}

}  // namespace pipe_bench
