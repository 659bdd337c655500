#include "app/shared/TextUtils.h"

#include "Zerlane/Zerlane.h"


#include <cstdlib>

namespace {

const char* const kSpecialReasons[] = {"Low confidence", "Saturated", "Aliased", "Kamikaze"};

QString unknownCode(quint32 value)
{
    return QStringLiteral("Unknown (%1)").arg(int(qint16(quint16(value))));
}

QString specialValueText16(quint32 value, quint32 firstCode)
{
    const quint32 code = value & 0xFFFFu;
    if (code >= firstCode && code < firstCode + 4)
        return QString::fromLatin1(kSpecialReasons[code - firstCode]);
    return unknownCode(value);
}

QString microsecondDigits(quint64 microseconds)
{
    const qint32 low = qint32(quint32(microseconds & 0xFFFFFFFFu));
    const qint64 digits = std::llabs(qint64(low)) % 1000000;
    return QStringLiteral("%1").arg(digits, 6, 10, QLatin1Char('0'));
}

} // namespace

QString specialValueTextPhase(quint32 value)
{
    return specialValueText16(value, 32769);
}

QString specialValueTextDepth(quint32 value)
{
    return specialValueText16(value, 32001);
}

QString specialValueTextFloat(float value)
{
    for (int i = 0; i < 4; ++i) {
        if (value == float(-(i + 1)))
            return QString::fromLatin1(kSpecialReasons[i]);
    }
    return QStringLiteral("Unknown (%1)").arg(QString::number(double(value), 'g', 6));
}

QString powerLineFrequencyText(int value)
{
    switch (value) {
    case 0:
        return QStringLiteral("Disabled");
    case 1:
        return QStringLiteral("50Hz");
    case 2:
        return QStringLiteral("60Hz");
    default:
        return QStringLiteral("Bad value");
    }
}

QString timeText(quint64 microseconds)
{
    return QStringLiteral("%1.%2").arg(microseconds / 1000000u).arg(microsecondDigits(microseconds));
}

QString timeText(qint64 microseconds)
{
    return QStringLiteral("%1.%2").arg(microseconds / 1000000).arg(microsecondDigits(quint64(microseconds)));
}

QString deviceText(const Zerlane::Device& device)
{
    try {
        return QString("%1 (%2)")
            .arg(QString::fromStdString(Zerlane::Device::Model_toString(device.getModel())),
                 QString::fromStdString(device.getSerialNumber()));
    } catch (const Zerlane::Exception&) {
        return QString("?");
    }
}

QString nodeKindText(const Zerlane::Node& node)
{
    if (node.is<Zerlane::AudioNode>())
        return "Audio Node";
    if (node.is<Zerlane::ColorNode>())
        return "Color Node";
    if (node.is<Zerlane::DepthNode>())
        return "Depth Node";
    return "Unsupported Node";
}
