#pragma once

#include "CameraHost.h"
#include "ClientSession.h"

#include "Zerlane/Context.h"

#include <asio.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Zerlane::server {

// zerlane-server's core: accepts clients on a TCP address, admits at most MAX_CLIENTS of them, and
// serves them the cameras of its CameraHost. Each client is a ClientSession; the acceptor runs on the
// thread inside run().
class Server : private ClientSession::Host {
public:
    static constexpr std::size_t MAX_CLIENTS = 64;

    struct Options {
        std::string address = "127.0.0.1";
        uint16_t port = Context::DEFAULT_PORT; // 0: any free port (tests)
        std::size_t maxClients = MAX_CLIENTS;
        ClientSession::Limits limits;
        bool stopOnSignals = false; // SIGINT and SIGTERM end run()
    };

    // Binds the address (throws std::system_error when it cannot) and opens the drivers.
    Server(Options options, std::vector<std::unique_ptr<plugin::Driver>> drivers);
    ~Server() override;

    uint16_t port() const { return m_port; }
    // Serves until stop().
    void run();
    // Any thread.
    void stop();

    std::size_t clientCount() const;
    CameraHost& host() { return m_host; }

private:
    void accept();
    void reap();
    void broadcast(const wire::Notice& notice, const ClientSession* except);

    std::string admit(ClientSession& session) override;
    wire::Reply handle(ClientSession& session, const wire::Request& request) override;
    void closed(ClientSession& session, const std::string& reason) override;

    Options m_options;
    asio::io_context m_io;
    asio::ip::tcp::acceptor m_acceptor;
    asio::signal_set m_signals;
    uint16_t m_port = 0;
    CameraHost m_host;
    uint64_t m_nextId = 1;

    mutable std::mutex m_mutex; // guards the sessions
    std::map<uint64_t, std::shared_ptr<ClientSession>> m_sessions;
    std::vector<std::shared_ptr<ClientSession>> m_finished; // ended, to be joined off their own threads
};

} // namespace Zerlane::server
