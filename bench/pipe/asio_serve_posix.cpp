#include <unistd.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <optional>

#include "bench/pipe/asio_serve.h"
#include "bench/pipe/asio_session.h"

namespace pipe_bench {

void ServeWithAsio(const std::string& path, Service& service) {
    using Protocol = boost::asio::local::stream_protocol;
    boost::asio::io_context context(1);
    unlink(path.c_str());  // an earlier run's
    Protocol::acceptor acceptor(context, Protocol::endpoint(path));
    std::optional<AsioSession<Protocol::socket>> session;
    acceptor.async_accept([&](const boost::system::error_code& error, Protocol::socket socket) {
        acceptor.close();
        if (!error) session.emplace(std::move(socket), service).Start();
    });
    context.run();
    unlink(path.c_str());
}

}  // namespace pipe_bench
