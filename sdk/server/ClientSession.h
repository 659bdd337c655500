#pragma once

#include "SessionOutbox.h"
#include "SocketStream.h"
#include "zerlane_wire.pb.h"

#include "Zerlane/Context.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace Zerlane::server {

// One connected client: a reader thread (handshake, then requests in order) and a writer thread
// (replies, notices and samples from the outbox). Any fault of the client (a bad message, silence
// during the handshake, replies left unread, a dropped connection) ends this session and nothing else.
class ClientSession : public std::enable_shared_from_this<ClientSession> {
public:
    // What the session asks of the server, on its reader thread.
    class Host {
    public:
        virtual ~Host() = default;
        // Sends the client its welcome and returns an empty text, or returns why it is refused (the
        // session then tells the client and ends).
        virtual std::string admit(ClientSession& session) = 0;
        virtual wire::Reply handle(ClientSession& session, const wire::Request& request) = 0;
        // The session has ended (called once, last).
        virtual void closed(ClientSession& session, const std::string& reason) = 0;
    };

    struct Limits {
        std::chrono::milliseconds handshakeTimeout {5000};
        std::size_t maxUnreadMessageBytes = 8u << 20;
    };

    ClientSession(uint64_t id, int fd, std::string address, uint16_t port, Host& host, Limits limits);
    ~ClientSession();

    ClientSession(const ClientSession&) = delete;
    ClientSession& operator=(const ClientSession&) = delete;

    void start();
    // Ends the session from any thread; the reader then reports closed().
    void close(const std::string& reason);

    uint64_t id() const { return m_id; }
    // Who the client is; set during the handshake.
    const Context::ClientData_p& client() const { return m_client; }
    std::string peer() const { return m_client.address + ":" + std::to_string(m_client.port); }
    bool admitted() const { return m_admitted.load(); }
    // From now on the server's notices reach this client (set by the server with its welcome).
    void setAdmitted() { m_admitted = true; }
    uint32_t protocolVersion() const { return m_version; }

    // A message for this client; ends the session when the client leaves too much unread.
    void send(const wire::Envelope& envelope);
    SessionOutbox& outbox() { return m_outbox; }

private:
    void readLoop();
    void writeLoop();
    void fail(const std::string& reason);

    const uint64_t m_id;
    Context::ClientData_p m_client;
    Host& m_host;
    const Limits m_limits;
    wire::SocketStream m_stream;
    SessionOutbox m_outbox;
    std::atomic<bool> m_admitted {false};
    uint32_t m_version = 0;
    std::mutex m_reasonMutex;
    std::string m_reason; // the first fault, when the writer or close() saw it first
    std::thread m_reader;
    std::thread m_writer;
};

} // namespace Zerlane::server
