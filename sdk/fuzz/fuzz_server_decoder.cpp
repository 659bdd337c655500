// What the server does with a client's bytes: frame and envelope decoding under the limits, the
// handshake check, and the execution of each request (here against a host without cameras, so every
// id is unknown; values and names are still decoded and checked).
#include "CameraHost.h"
#include "ClientSession.h"
#include "FrameReader.h"
#include "MemorySource.h"
#include "ValueCodec.h"

#include "Zerlane/Exceptions.h"

#include <sys/socket.h>

namespace {

class NoHost : public Zerlane::server::ClientSession::Host {
public:
    std::string admit(Zerlane::server::ClientSession&) override { return {}; }
    Zerlane::wire::Reply handle(Zerlane::server::ClientSession&, const Zerlane::wire::Request&) override { return {}; }
    void closed(Zerlane::server::ClientSession&, const std::string&) override {}
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NoHost noHost;
    static Zerlane::server::CameraHost host([](const Zerlane::wire::Notice&, const Zerlane::server::ClientSession*) {});
    static std::shared_ptr<Zerlane::server::ClientSession> session = [] {
        int fds[2];
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, fds);
        return std::make_shared<Zerlane::server::ClientSession>(1, fds[0], "127.0.0.1", 1, noHost,
                                                               Zerlane::server::ClientSession::Limits {});
    }();

    Zerlane::wire::MemorySource source(data, size);
    Zerlane::wire::FrameReader reader(source);
    try {
        for (int i = 0; i < 64; ++i) {
            const Zerlane::wire::Envelope envelope = reader.readEnvelope();
            if (envelope.has_request()) {
                if (envelope.request().has_value())
                    (void)Zerlane::wire::ValueCodec::decode(envelope.request().value());
                (void)host.handle(*session, envelope.request());
            } else if (!envelope.has_hello()) {
                return 0; // the server closes such a connection
            }
        }
    } catch (const Zerlane::Exception&) {
        // a rejected message: the server would close this client's connection
    }
    return 0;
}
