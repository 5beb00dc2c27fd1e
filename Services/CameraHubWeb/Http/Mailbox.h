#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <functional>
#include <mutex>
#include <utility>

namespace CameraHubWeb {

/// The way to the server's thread for whoever may outlive it. Any thread.
class Mailbox {
public:
    explicit Mailbox(boost::asio::io_context& context) : _context(&context) {}

    /// Done there soon; dropped where the server has ended.
    void post(std::function<void()> work) {
        const std::lock_guard lock(_mutex);
        if (_context)
            boost::asio::post(*_context, std::move(work));
    }

    /// The thread has ended.
    void close() {
        const std::lock_guard lock(_mutex);
        _context = nullptr;
    }

private:
    std::mutex _mutex;
    boost::asio::io_context* _context;
};

} // namespace CameraHubWeb
