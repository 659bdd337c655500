#pragma once

#include "SampleCodec.h"
#include "SocketStream.h"
#include "zerlane_wire.pb.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace Zerlane::detail {

// One client's connection to a Zerlane server: the handshake, synchronous requests, and a reader
// thread that hands notices and samples to a receiver. Once the connection is lost every request
// throws TransportException, at once and from then on.
class ServerConnection {
public:
    // What the reader thread reports to. Its calls must never make a request (the reader would wait
    // for itself).
    class Receiver {
    public:
        virtual ~Receiver() = default;
        virtual void notice(const wire::Notice& notice) = 0;
        virtual void sample(uint32_t node, wire::SampleCodec::Sample&& sample) = 0;
        // The connection is gone (not called after close()).
        virtual void lost(const std::string& message) = 0;
    };

    static constexpr int REPLY_TIMEOUT_MS = 10000;

    // Connects, introduces this process and reads the server's welcome. Throws TransportException.
    ServerConnection(const std::string& host, uint16_t port);
    ~ServerConnection();

    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    const wire::Welcome& welcome() const { return m_welcome; }
    const std::string& where() const { return m_where; }

    void startReading(Receiver* receiver);
    // Closes the socket and waits for the reader; no receiver call is made afterwards.
    void close();

    // Sends the request and waits for its reply; a reply carrying an error is thrown as that exception.
    wire::Reply call(wire::Request request);
    void ensureOpen() const;

private:
    void readLoop();
    void markLost(const std::string& reason);

    std::string m_where;
    std::unique_ptr<wire::SocketStream> m_stream;
    wire::Welcome m_welcome;
    Utils::BlockPool m_pool;
    Receiver* m_receiver = nullptr;
    std::thread m_reader;

    std::mutex m_writeMutex;
    mutable std::mutex m_mutex; // guards the members below
    std::condition_variable m_replied;
    uint64_t m_nextSerial = 1;
    std::map<uint64_t, std::optional<wire::Reply>> m_waiting;
    std::optional<std::string> m_lost;
    bool m_closing = false;
};

} // namespace Zerlane::detail
