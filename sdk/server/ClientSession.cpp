#include "ClientSession.h"

#include "FrameReader.h"
#include "FrameWriter.h"
#include "WireLimits.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::server {

ClientSession::ClientSession(uint64_t id, int fd, std::string address, uint16_t port, Host& host, Limits limits)
    : m_id(id), m_host(host), m_limits(limits), m_stream(fd), m_outbox(limits.maxUnreadMessageBytes)
{
    m_client.address = std::move(address);
    m_client.port = port;
}

ClientSession::~ClientSession()
{
    m_outbox.close();
    m_stream.shutdown();
    for (std::thread* thread : {&m_reader, &m_writer}) {
        if (thread->joinable() && thread->get_id() != std::this_thread::get_id())
            thread->join();
        else if (thread->joinable())
            thread->detach();
    }
}

void ClientSession::start()
{
    m_reader = std::thread([this] { readLoop(); });
}

void ClientSession::fail(const std::string& reason)
{
    {
        std::lock_guard<std::mutex> lock(m_reasonMutex);
        if (m_reason.empty())
            m_reason = reason;
    }
    m_outbox.close();
    m_stream.shutdown();
}

void ClientSession::close(const std::string& reason)
{
    fail(reason);
}

void ClientSession::send(const wire::Envelope& envelope)
{
    if (!m_outbox.pushMessage(wire::FrameWriter::frame(envelope)))
        fail("it leaves its replies and notices unread");
}

void ClientSession::readLoop()
{
    std::string reason;
    try {
        wire::FrameReader reader(m_stream);
        m_stream.setDeadline(std::chrono::steady_clock::now() + m_limits.handshakeTimeout);
        wire::Envelope first = reader.readEnvelope();
        m_stream.clearDeadline();
        if (!first.has_hello() || first.hello().magic() != wire::WireLimits::MAGIC)
            throw TransportException("it does not speak the Zerlane protocol");
        m_client.name = first.hello().name().substr(0, 256);
        m_client.pid = first.hello().pid();
        m_version = first.hello().version();

        const std::string refusal = m_host.admit(*this);
        if (!refusal.empty()) {
            wire::Envelope welcome;
            welcome.mutable_welcome()->set_version(wire::WireLimits::VERSION);
            welcome.mutable_welcome()->set_refusal(refusal);
            m_stream.write(wire::FrameWriter::frame(welcome));
            throw TransportException("refused: " + refusal);
        }
        m_writer = std::thread([this] { writeLoop(); });

        for (;;) {
            wire::Envelope envelope = reader.readEnvelope();
            if (!envelope.has_request())
                throw TransportException("it sent a message that is not a request");
            wire::Envelope reply;
            *reply.mutable_reply() = m_host.handle(*this, envelope.request());
            send(reply);
        }
    } catch (const std::exception& e) {
        reason = e.what();
    }
    {
        std::lock_guard<std::mutex> lock(m_reasonMutex);
        if (!m_reason.empty())
            reason = m_reason;
    }
    m_outbox.close();
    m_stream.shutdown();
    m_host.closed(*this, reason);
}

void ClientSession::writeLoop()
{
    std::string header;
    std::vector<uint32_t> prefixes;
    try {
        while (std::optional<SessionOutbox::Item> item = m_outbox.next()) {
            if (item->sample)
                m_stream.write(wire::SampleCodec::buffers(*item->sample, item->dropped, header, prefixes));
            else
                m_stream.write(item->message);
        }
    } catch (const std::exception& e) {
        fail(e.what());
    }
}

} // namespace Zerlane::server
