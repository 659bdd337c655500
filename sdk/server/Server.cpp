#include "Server.h"

#include "WireLimits.h"

#include "Zerlane/Utils/Format.h"
#include "Zerlane/Utils/HMLogger.h"

#include <csignal>

namespace Zerlane::server {

namespace {

void log(Utils::HMLogger::Level level, const std::string& message)
{
    Utils::HMLogger* logger = Utils::HMLogger::instance();
    logger->log(level, message);
    logger->release();
}

std::string describe(const Context::ClientData_p& client)
{
    return Utils::Format("% (PID=%) from %:%") % client.name % client.pid % client.address % client.port;
}

// Tells the other clients that this one arrived or left.
wire::Envelope clientNotice(wire::NoticeKind kind, const Context::ClientData_p& client)
{
    wire::Envelope envelope;
    wire::Notice& notice = *envelope.mutable_notice();
    notice.set_kind(kind);
    notice.mutable_client()->set_name(client.name);
    notice.mutable_client()->set_pid(client.pid);
    notice.mutable_client()->set_address(client.address);
    notice.mutable_client()->set_port(client.port);
    return envelope;
}

} // namespace

Server::Server(Options options, std::vector<std::unique_ptr<plugin::Driver>> drivers)
    : m_options(std::move(options)),
      m_acceptor(m_io),
      m_signals(m_io),
      m_host([this](const wire::Notice& notice, const ClientSession* except) { broadcast(notice, except); })
{
    const asio::ip::tcp::endpoint endpoint(asio::ip::make_address(m_options.address), m_options.port);
    m_acceptor.open(endpoint.protocol());
    m_acceptor.set_option(asio::ip::tcp::acceptor::reuse_address(true));
    m_acceptor.bind(endpoint);
    m_acceptor.listen();
    m_port = m_acceptor.local_endpoint().port();
    m_host.open(std::move(drivers));
    if (m_options.stopOnSignals) {
        m_signals.add(SIGINT);
        m_signals.add(SIGTERM);
        m_signals.async_wait([this](const asio::error_code& error, int signal) {
            if (!error) {
                log(Utils::HMLogger::Level::Info, Utils::Format("signal %: stopping") % signal);
                stop();
            }
        });
    }
    accept();
}

Server::~Server()
{
    stop();
    std::map<uint64_t, std::shared_ptr<ClientSession>> sessions;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        sessions = m_sessions;
    }
    for (auto& [id, session] : sessions)
        session->close("the server stops");
    // Each session's reader reports closed() and moves it to m_finished; wait for all of them.
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_sessions.empty())
                break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    reap();
    m_host.close();
}

void Server::run()
{
    m_io.run();
}

void Server::stop()
{
    asio::post(m_io, [this] {
        asio::error_code ignored;
        m_acceptor.close(ignored);
        m_signals.cancel(ignored);
        m_io.stop();
    });
}

std::size_t Server::clientCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::size_t admitted = 0;
    for (const auto& [id, session] : m_sessions)
        admitted += session->admitted() ? 1 : 0;
    return admitted;
}

void Server::accept()
{
    m_acceptor.async_accept([this](const asio::error_code& error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted || !m_acceptor.is_open())
            return;
        reap();
        if (!error) {
            asio::error_code ignored;
            const asio::ip::tcp::endpoint peer = socket.remote_endpoint(ignored);
            const std::string address = peer.address().to_string();
            std::lock_guard<std::mutex> lock(m_mutex);
            // Connections still in their handshake count too, so silent ones cannot pile up.
            if (m_sessions.size() >= 2 * m_options.maxClients) {
                log(Utils::HMLogger::Level::Warning,
                    Utils::Format("closing the connection of %:% at once: too many connections") % address % peer.port());
            } else {
                const uint64_t id = m_nextId++;
                auto session = std::make_shared<ClientSession>(id, socket.release(), address, peer.port(),
                                                               static_cast<ClientSession::Host&>(*this),
                                                               m_options.limits);
                m_sessions[id] = session;
                session->start();
            }
        }
        accept();
    });
}

void Server::reap()
{
    std::vector<std::shared_ptr<ClientSession>> finished;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        finished.swap(m_finished);
    }
    finished.clear(); // joins their threads
}

void Server::broadcast(const wire::Notice& notice, const ClientSession* except)
{
    wire::Envelope envelope;
    *envelope.mutable_notice() = notice;
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [id, session] : m_sessions) {
        if (session.get() != except && session->admitted())
            session->send(envelope);
    }
}

std::string Server::admit(ClientSession& session)
{
    if (session.protocolVersion() != wire::WireLimits::VERSION) {
        return Utils::Format("protocol version % is not supported (this server speaks version %)")
               % session.protocolVersion() % wire::WireLimits::VERSION;
    }
    const wire::Envelope introduced = clientNotice(wire::NOTICE_CLIENT_CONNECTED, session.client());
    // Under the sessions' lock, so that every device change after the welcome's snapshot reaches the
    // client as a notice (one just before it may come twice; the client ignores what it knows).
    std::lock_guard<std::mutex> lock(m_mutex);
    std::size_t admitted = 0;
    for (const auto& [id, other] : m_sessions)
        admitted += other->admitted() ? 1 : 0;
    if (admitted >= m_options.maxClients)
        return Utils::Format("the server already serves % clients, its limit") % admitted;
    wire::Envelope welcome;
    welcome.mutable_welcome()->set_version(wire::WireLimits::VERSION);
    for (wire::DeviceInfo& device : m_host.devices())
        *welcome.mutable_welcome()->add_devices() = std::move(device);
    // The welcome goes first, before any notice another thread may broadcast once this client counts.
    session.send(welcome);
    for (const auto& [id, other] : m_sessions) {
        if (other->admitted())
            other->send(introduced);
    }
    session.setAdmitted();
    log(Utils::HMLogger::Level::Info, "client " + describe(session.client()) + " connected");
    return {};
}

wire::Reply Server::handle(ClientSession& session, const wire::Request& request)
{
    return m_host.handle(session, request);
}

void Server::closed(ClientSession& session, const std::string& reason)
{
    m_host.release(session);
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_sessions.find(session.id());
    if (it == m_sessions.end())
        return;
    if (session.admitted()) {
        log(Utils::HMLogger::Level::Info, "client " + describe(session.client()) + " disconnected (" + reason + ")");
        const wire::Envelope envelope = clientNotice(wire::NOTICE_CLIENT_DISCONNECTED, session.client());
        for (const auto& [id, other] : m_sessions) {
            if (other.get() != &session && other->admitted())
                other->send(envelope);
        }
    } else {
        log(Utils::HMLogger::Level::Warning, "closing the connection of " + session.peer() + ": " + reason);
    }
    m_finished.push_back(it->second);
    m_sessions.erase(it);
    if (!m_io.stopped())
        asio::post(m_io, [this] { reap(); });
}

} // namespace Zerlane::server
