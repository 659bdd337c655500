#pragma once

// A zerlane-server of the test's own, in process, on an ephemeral loopback port (never the default
// one), serving the simulated cameras of this process.

#include "Server.h"

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/PluginLibrary.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class PrivateServer {
public:
    explicit PrivateServer(Zerlane::server::Server::Options options = {})
    {
        options.address = "127.0.0.1";
        options.port = 0;
        m_server = std::make_unique<Zerlane::server::Server>(options, Zerlane::plugin::PluginLibrary::createDrivers());
        m_thread = std::thread([this] { m_server->run(); });
    }
    ~PrivateServer() { stop(); }

    // Shuts the server down as a killed one looks to its clients: every connection drops.
    void stop()
    {
        if (!m_server)
            return;
        m_server->stop();
        m_thread.join();
        m_server.reset();
    }

    uint16_t port() const { return m_port = m_server ? m_server->port() : m_port; }
    Zerlane::server::Server& server() { return *m_server; }
    Zerlane::Context connect() const { return Zerlane::Context::create("127.0.0.1", port()); }

private:
    std::unique_ptr<Zerlane::server::Server> m_server;
    std::thread m_thread;
    mutable uint16_t m_port = 0;
};

// Collects the library's log lines while it lives.
class LogCapture {
public:
    // Holds a reference to the logger throughout: the last release() would drop the listener with it.
    LogCapture() : m_logger(Zerlane::Utils::HMLogger::instance())
    {
        m_id = m_logger->addListener([this](Zerlane::Utils::HMLogger::Level, const std::string& line) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back(line);
        });
    }
    ~LogCapture()
    {
        m_logger->removeListener(m_id);
        m_logger->release();
    }
    // The lines containing `text`.
    std::vector<std::string> matching(const std::string& text) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::string> found;
        for (const std::string& line : m_lines) {
            if (line.find(text) != std::string::npos)
                found.push_back(line);
        }
        return found;
    }

private:
    Zerlane::Utils::HMLogger* m_logger;
    int m_id = 0;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};
