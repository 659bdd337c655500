#include "ValueCodec.h"

#include "WireLimits.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::wire {

void ValueCodec::encode(const PropertyValue& value, Value& out)
{
    struct Visitor {
        Value& out;
        void operator()(bool v) const { out.set_bool_value(v); }
        void operator()(int32_t v) const { out.set_int_value(v); }
        void operator()(float v) const { out.set_float_value(v); }
        void operator()(const std::string& v) const { out.set_string_value(v); }
        void operator()(ExposureAuto v) const { out.set_exposure_auto(v); }
        void operator()(const DepthNodeConfiguration& v) const
        {
            DepthConfiguration& c = *out.mutable_depth();
            c.set_frame_format(v.frameFormat);
            c.set_frame_rate(v.frameRate);
            c.set_mode(v.mode);
            c.set_saturation(v.saturation);
        }
        void operator()(const ColorNodeConfiguration& v) const
        {
            ColorConfiguration& c = *out.mutable_color();
            c.set_frame_format(v.frameFormat);
            c.set_compression(v.compression);
            c.set_frame_rate(v.frameRate);
            c.set_power_line_frequency(v.powerLineFrequency);
        }
        void operator()(const AudioNodeConfiguration& v) const
        {
            AudioConfiguration& c = *out.mutable_audio();
            c.set_sample_rate(v.audioFormat.sampleRate);
            c.set_bits_per_sample(v.audioFormat.bitsPerSample);
            c.set_channels(v.audioFormat.nbChannels);
        }
    };
    std::visit(Visitor {out}, value);
}

PropertyValue ValueCodec::decode(const Value& value)
{
    switch (value.kind_case()) {
    case Value::kBoolValue: return value.bool_value();
    case Value::kIntValue: return value.int_value();
    case Value::kFloatValue: return value.float_value();
    case Value::kStringValue: return value.string_value();
    case Value::kExposureAuto: return static_cast<ExposureAuto>(value.exposure_auto());
    case Value::kDepth: {
        const DepthConfiguration& c = value.depth();
        return DepthNodeConfiguration {static_cast<FrameFormat>(c.frame_format()), c.frame_rate(),
                                       static_cast<CameraMode>(c.mode()), c.saturation()};
    }
    case Value::kColor: {
        const ColorConfiguration& c = value.color();
        return ColorNodeConfiguration {static_cast<FrameFormat>(c.frame_format()),
                                       static_cast<CompressionType>(c.compression()), c.frame_rate(),
                                       static_cast<PowerLineFrequency>(c.power_line_frequency())};
    }
    case Value::kAudio: {
        const AudioConfiguration& c = value.audio();
        return AudioNodeConfiguration {AudioFormat {c.sample_rate(), c.bits_per_sample(), c.channels()}};
    }
    case Value::KIND_NOT_SET: break;
    }
    throw TransportException("a value without a type");
}

void ValueCodec::encode(const plugin::TypeSpec& spec, TypeSpec& out)
{
    out.set_name(spec.name);
    for (const plugin::PropertySpec& property : spec.properties) {
        PropertySpec& p = *out.add_properties();
        p.set_name(property.name);
        p.set_type(static_cast<int32_t>(property.type));
        p.set_read_only(property.readOnly);
        p.set_hidden(property.hidden);
        p.set_requires_control(property.requiresControl);
    }
}

plugin::TypeSpec ValueCodec::decode(const TypeSpec& spec)
{
    if (spec.properties_size() > WireLimits::MAX_PROPERTIES)
        throw TransportException("a type with too many properties");
    plugin::TypeSpec result;
    result.name = spec.name();
    result.properties.reserve(spec.properties_size());
    for (const PropertySpec& p : spec.properties()) {
        if (p.type() < static_cast<int32_t>(PropertyType::Bool) || p.type() > static_cast<int32_t>(PropertyType::AudioConfiguration))
            throw TransportException("property '" + p.name() + "' has an unknown value type");
        result.properties.push_back(plugin::PropertySpec {p.name(), static_cast<PropertyType>(p.type()), p.read_only(),
                                                          p.hidden(), p.requires_control()});
    }
    return result;
}

void ValueCodec::encodeCurrentException(Reply& reply)
{
    try {
        throw;
    } catch (const ArgumentException& e) {
        reply.set_error(ERROR_ARGUMENT);
        reply.set_message(e.what());
    } catch (const InvalidOperationException& e) {
        reply.set_error(ERROR_INVALID_OPERATION);
        reply.set_message(e.what());
    } catch (const TimeoutException& e) {
        reply.set_error(ERROR_TIMEOUT);
        reply.set_message(e.what());
    } catch (const TransportException& e) {
        reply.set_error(ERROR_TRANSPORT);
        reply.set_message(e.what());
    } catch (const std::exception& e) {
        reply.set_error(ERROR_EXCEPTION);
        reply.set_message(e.what());
    }
}

void ValueCodec::throwError(ErrorKind kind, const std::string& message)
{
    switch (kind) {
    case ERROR_ARGUMENT: throw ArgumentException(message);
    case ERROR_INVALID_OPERATION: throw InvalidOperationException(message);
    case ERROR_TIMEOUT: throw TimeoutException(message);
    case ERROR_TRANSPORT: throw TransportException(message);
    default: throw Exception(message);
    }
}

} // namespace Zerlane::wire
