#include "ServerConnection.h"

#include "FrameReader.h"
#include "FrameWriter.h"
#include "ServerConnector.h"
#include "ValueCodec.h"
#include "WireLimits.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/HMLogger.h"

#include <cerrno>
#include <unistd.h>

namespace Zerlane::detail {

ServerConnection::ServerConnection(const std::string& host, uint16_t port)
    : m_where(host + ":" + std::to_string(port)),
      m_stream(std::make_unique<wire::SocketStream>(ServerConnector::connect(host, port)))
{
    wire::Envelope hello;
    hello.mutable_hello()->set_magic(wire::WireLimits::MAGIC);
    hello.mutable_hello()->set_version(wire::WireLimits::VERSION);
    hello.mutable_hello()->set_name(program_invocation_short_name);
    hello.mutable_hello()->set_pid(static_cast<int32_t>(::getpid()));
    try {
        m_stream->write(wire::FrameWriter::frame(hello));
        m_stream->setDeadline(std::chrono::steady_clock::now()
                              + std::chrono::milliseconds(ServerConnector::CONNECT_TIMEOUT_MS));
        wire::FrameReader reader(*m_stream);
        wire::Envelope answer = reader.readEnvelope();
        m_stream->clearDeadline();
        if (!answer.has_welcome())
            throw TransportException("its first message is not a welcome");
        m_welcome = std::move(*answer.mutable_welcome());
    } catch (const TransportException& e) {
        throw TransportException("connected to " + m_where + ", but no Zerlane server answered there (" + e.what()
                                 + ")");
    }
    if (!m_welcome.refusal().empty())
        throw TransportException("the Zerlane server at " + m_where + " refused the connection: " + m_welcome.refusal());
    if (m_welcome.devices_size() > wire::WireLimits::MAX_DEVICES)
        throw TransportException("the Zerlane server at " + m_where + " lists too many devices");
}

ServerConnection::~ServerConnection()
{
    close();
}

void ServerConnection::startReading(Receiver* receiver)
{
    m_receiver = receiver;
    m_reader = std::thread([this] { readLoop(); });
}

void ServerConnection::close()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
    }
    m_stream->shutdown();
    if (m_reader.joinable() && m_reader.get_id() != std::this_thread::get_id())
        m_reader.join();
    markLost("the connection was closed");
}

void ServerConnection::ensureOpen() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_lost)
        throw TransportException(*m_lost);
}

wire::Reply ServerConnection::call(wire::Request request)
{
    uint64_t serial = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_lost)
            throw TransportException(*m_lost);
        serial = m_nextSerial++;
        m_waiting[serial];
    }
    request.set_serial(serial);
    wire::Envelope envelope;
    *envelope.mutable_request() = std::move(request);
    try {
        std::lock_guard<std::mutex> lock(m_writeMutex);
        m_stream->write(wire::FrameWriter::frame(envelope));
    } catch (const TransportException& e) {
        markLost(e.what());
    }

    std::unique_lock<std::mutex> lock(m_mutex);
    const bool answered = m_replied.wait_for(lock, std::chrono::milliseconds(REPLY_TIMEOUT_MS), [&] {
        return m_lost || m_waiting[serial].has_value();
    });
    std::optional<wire::Reply> reply = std::move(m_waiting[serial]);
    m_waiting.erase(serial);
    if (!reply) {
        if (m_lost)
            throw TransportException(*m_lost);
        if (!answered)
            throw TransportException("the Zerlane server at " + m_where + " did not answer within "
                                     + std::to_string(REPLY_TIMEOUT_MS / 1000) + " s");
    }
    lock.unlock();
    if (reply->error() != wire::ERROR_NONE)
        wire::ValueCodec::throwError(reply->error(), reply->message());
    return std::move(*reply);
}

void ServerConnection::markLost(const std::string& reason)
{
    bool report = false;
    std::string message;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_lost)
            return;
        message = "the connection to the Zerlane server at " + m_where + " was lost (" + reason + ")";
        m_lost = message;
        report = !m_closing;
    }
    m_replied.notify_all();
    m_stream->shutdown();
    if (report && m_receiver)
        m_receiver->lost(message);
}

void ServerConnection::readLoop()
{
    wire::FrameReader reader(*m_stream);
    try {
        for (;;) {
            wire::Envelope envelope = reader.readEnvelope();
            switch (envelope.body_case()) {
            case wire::Envelope::kReply: {
                std::lock_guard<std::mutex> lock(m_mutex);
                auto it = m_waiting.find(envelope.reply().serial());
                if (it != m_waiting.end())
                    it->second = std::move(*envelope.mutable_reply());
                m_replied.notify_all();
                break;
            }
            case wire::Envelope::kNotice:
                m_receiver->notice(envelope.notice());
                break;
            case wire::Envelope::kSample: {
                wire::SampleCodec::Sample sample = wire::SampleCodec::decode(envelope.sample(), reader, m_pool);
                m_receiver->sample(envelope.sample().node(), std::move(sample));
                break;
            }
            default: throw TransportException("the server sent a message a server does not send");
            }
        }
    } catch (const std::exception& e) {
        markLost(e.what());
    }
}

} // namespace Zerlane::detail
