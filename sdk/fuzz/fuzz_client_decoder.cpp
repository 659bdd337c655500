// What a client does with the server's bytes: frame and envelope decoding under the limits, the
// device and type descriptions of a welcome or notice, and samples with their map blocks.
#include "FrameReader.h"
#include "MemorySource.h"
#include "SampleCodec.h"
#include "ValueCodec.h"

#include "Zerlane/Exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Zerlane::Utils::BlockPool pool;
    Zerlane::wire::MemorySource source(data, size);
    Zerlane::wire::FrameReader reader(source);
    const auto devices = [](const auto& list) {
        for (const Zerlane::wire::DeviceInfo& device : list) {
            (void)Zerlane::wire::ValueCodec::decode(device.type());
            for (const Zerlane::wire::NodeInfo& node : device.nodes())
                (void)Zerlane::wire::ValueCodec::decode(node.type());
        }
    };
    try {
        for (int i = 0; i < 64; ++i) {
            const Zerlane::wire::Envelope envelope = reader.readEnvelope();
            switch (envelope.body_case()) {
            case Zerlane::wire::Envelope::kWelcome: devices(envelope.welcome().devices()); break;
            case Zerlane::wire::Envelope::kNotice:
                devices(std::vector<Zerlane::wire::DeviceInfo> {envelope.notice().device()});
                break;
            case Zerlane::wire::Envelope::kReply:
                for (const Zerlane::wire::Value& value : envelope.reply().values())
                    (void)Zerlane::wire::ValueCodec::decode(value);
                break;
            case Zerlane::wire::Envelope::kSample: {
                const Zerlane::wire::SampleCodec::Sample sample =
                    Zerlane::wire::SampleCodec::decode(envelope.sample(), reader, pool);
                (void)sample;
                break;
            }
            default: return 0;
            }
        }
    } catch (const Zerlane::Exception&) {
        // a rejected message: the client would drop the connection and report the server lost
    }
    return 0;
}
