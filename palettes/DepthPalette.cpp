#include "palettes/DepthPalette.h"

#include "app/shared/ViewerLog.h"

#include <Zerlane/Utils/Format.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

constexpr quint32 kOpaque = 0xFF000000u;

void logWarning(const char* text, const QString& value)
{
    ViewerLog::warning(Zerlane::Utils::Format(text) % value.toStdString());
}

void logWarning(const char* text, quint32 value)
{
    ViewerLog::warning(Zerlane::Utils::Format(text) % value);
}

// Truncation toward zero, the way every colour conversion of the palettes rounds.
int truncated(float value)
{
    return int(value);
}

// Start + (k x difference) / span per byte of two 0xRRGGBB values, truncating toward zero.
quint32 interpolateBytes(quint32 startRrggbb, quint32 endRrggbb, int k, int span)
{
    quint32 result = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        const int a = int((startRrggbb >> shift) & 0xFF);
        const int b = int((endRrggbb >> shift) & 0xFF);
        const int value = a + (span == 0 ? 0 : (k * (b - a)) / span);
        result |= quint32(value & 0xFF) << shift;
    }
    return result;
}

quint32 hsvWordFromBytes(quint32 rrggbb)
{
    const float hue = float(((rrggbb >> 16) & 0xFF) * 360) / 255.0f;
    const float saturation = float((rrggbb >> 8) & 0xFF) / 255.0f;
    const float value = float(rrggbb & 0xFF) / 255.0f;
    return DepthPalette::hsvToRgb(hue, saturation, value);
}

// ---- XML loading -------------------------------------------------------------------------------

std::optional<quint32> readIndex(const QDomElement& element, const char* attribute, const char* conversionMessage,
                                 const char* rangeMessage, quint32 range)
{
    const QString text = element.attribute(QString::fromLatin1(attribute));
    bool ok = false;
    const quint32 value = text.toUInt(&ok, 10);
    if (!ok) {
        logWarning(conversionMessage, text);
        return std::nullopt;
    }
    if (value > range) {
        logWarning(rangeMessage, value);
        return std::nullopt;
    }
    return value;
}

std::optional<quint32> readColour(const QDomElement& element, const char* attribute, const char* conversionMessage,
                                  bool upperCaseInMessage = false)
{
    const QString text = element.attribute(QString::fromLatin1(attribute));
    bool ok = false;
    const quint32 value = text.toUInt(&ok, 16);
    if (!ok) {
        logWarning(conversionMessage, upperCaseInMessage ? text.toUpper() : text);
        return std::nullopt;
    }
    return value;
}

bool applyGradient(DepthPalette& palette, const QDomElement& element, quint32 range)
{
    const auto ai = readIndex(element, "ai", "Conversion error in 'gradient' element's 'ai' attribute : %",
                              "'gradient' element's 'ai' attribute out of range : %", range);
    if (!ai)
        return false;
    const auto bi = readIndex(element, "bi", "Conversion error in 'gradient' element's 'bi' attribute : %",
                              "'gradient' element's 'bi' attribute out of range : %", range);
    if (!bi)
        return false;
    const auto ac = readColour(element, "ac", "Conversion error in 'color' element's 'ac' attribute : %");
    if (!ac)
        return false;
    const auto bc = readColour(element, "bc", "Conversion error in 'color' element's 'bc' attribute : %");
    if (!bc)
        return false;
    const bool hsv = element.attribute(QStringLiteral("mode")).toLower() == QLatin1String("hsv");
    if (*ai <= *bi) {
        if (hsv)
            palette.fillHsvGradient(*ai, *bi, *ac, *bc);
        else
            palette.fillRgbGradient(*ai, *bi, *ac, *bc);
    }
    return true;
}

bool applyAplat(DepthPalette& palette, const QDomElement& element, quint32 range)
{
    const auto ai = readIndex(element, "ai", "Conversion error in 'aplat' element's 'ai' attribute : %",
                              "'aplat' element's 'ai' attribute out of range : %", range);
    if (!ai)
        return false;
    const auto bi = readIndex(element, "bi", "Conversion error in 'color' element's 'bi' attribute : %",
                              "'aplat' element's 'bi' attribute out of range : %", range);
    if (!bi)
        return false;
    const auto c = readColour(element, "c", "Conversion error in 'color' element's 'c' attribute : %", true);
    if (!c)
        return false;
    if (*ai <= *bi)
        palette.fill(*ai, *bi, *c);
    return true;
}

bool applyColor(DepthPalette& palette, const QDomElement& element, quint32 range)
{
    const auto i = readIndex(element, "i", "Conversion error in 'color' element's 'i' attribute : %",
                             "'color' element's 'i' attribute out of range : %", range);
    if (!i)
        return false;
    const auto c = readColour(element, "c", "Conversion error in 'color' element 'c' attribute : %");
    if (!c)
        return false;
    palette.fill(*i, *i, *c);
    return true;
}

// Applies the child elements in document order; false after the first faulty one.
bool applyElements(DepthPalette& palette, const QDomNode& root, quint32 range)
{
    for (QDomNode child = root.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (!child.isElement())
            continue;
        const QDomElement element = child.toElement();
        const QString tag = element.tagName().toLower();
        bool ok = true;
        if (tag == QLatin1String("gradient"))
            ok = applyGradient(palette, element, range);
        else if (tag == QLatin1String("aplat"))
            ok = applyAplat(palette, element, range);
        else if (tag == QLatin1String("color"))
            ok = applyColor(palette, element, range);
        if (!ok)
            return false;
    }
    return true;
}

struct RootAttributes {
    QByteArray name = QByteArrayLiteral("Unnamed XML Palette");
    quint32 range = 0;
};

// Attribute names of the root are compared in lower case.
std::optional<RootAttributes> readRootAttributes(const QDomNode& root)
{
    RootAttributes result;
    const QDomNamedNodeMap attributes = root.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QDomAttr attribute = attributes.item(i).toAttr();
        const QString name = attribute.name().toLower();
        if (name == QLatin1String("name")) {
            result.name = attribute.value().toUtf8();
        } else if (name == QLatin1String("range")) {
            bool ok = false;
            result.range = attribute.value().toUShort(&ok, 10);
            if (!ok) {
                logWarning("Conversion error in 'palette' element's 'range' attribute : %", attribute.value());
                return std::nullopt;
            }
        }
    }
    return result;
}

} // namespace

DepthPalette::DepthPalette(const QByteArray& name, quint32 size)
    : m_name(name), m_size(size), m_colors(new quint32[TableSize])
{
    if (size > TableSize)
        logWarning("Requested palette range too big : %", size);
    std::fill(m_colors, m_colors + TableSize, Untouched);
}

DepthPalette::DepthPalette(const DepthPalette& other)
    : m_name(other.m_name), m_size(other.m_size), m_colors(new quint32[TableSize])
{
    std::memcpy(m_colors, other.m_colors, TableSize * sizeof(quint32));
}

DepthPalette& DepthPalette::operator=(const DepthPalette& other)
{
    if (this != &other) {
        m_size = other.m_size;
        m_name = other.m_name;
        std::memcpy(m_colors, other.m_colors, TableSize * sizeof(quint32));
    }
    return *this;
}

DepthPalette::~DepthPalette()
{
    delete[] m_colors;
}

bool DepthPalette::operator==(const DepthPalette& other) const
{
    if (this == &other)
        return true;
    return m_size == other.m_size && m_name == other.m_name &&
           std::memcmp(m_colors, other.m_colors, TableSize * sizeof(quint32)) == 0;
}

DepthPalette* DepthPalette::greyScale(quint32 size)
{
    auto* palette = new DepthPalette(QByteArrayLiteral("Grey scale"), size);
    const quint32 entries = std::min(size, TableSize);
    for (quint32 i = 0; i < entries; ++i) {
        const quint32 g = 255 - (i * 256) / size;
        palette->m_colors[i] = makeColor(g, g, g) | kOpaque;
    }
    return palette;
}

DepthPalette* DepthPalette::invertedGreyScale(quint32 size)
{
    auto* palette = new DepthPalette(QByteArrayLiteral("Inverted grey scale"), size);
    const quint32 entries = std::min(size, TableSize);
    for (quint32 i = 0; i < entries; ++i) {
        const quint32 g = (i * 256) / size;
        palette->m_colors[i] = makeColor(g, g, g) | kOpaque;
    }
    return palette;
}

quint32 DepthPalette::hsvToRgb(float hue, float saturation, float value)
{
    const int v = truncated(value * 255.0f);
    if (hue == 360.0f) {
        const int rest = truncated((1.0f - saturation) * value * 255.0f);
        return makeColor(quint32(v), quint32(rest), quint32(rest));
    }
    const int sector = truncated(hue / 60.0f);
    const float f = hue / 60.0f - float(sector);
    const float p = (1.0f - saturation) * value;
    const float q = (1.0f - saturation * f) * value;
    const float t = (1.0f - (1.0f - f) * saturation) * value;
    const quint32 P = quint32(truncated(p * 255.0f));
    const quint32 Q = quint32(truncated(q * 255.0f));
    const quint32 T = quint32(truncated(t * 255.0f));
    const quint32 V = quint32(v);
    switch (sector) {
    case 0:
        return makeColor(V, T, P);
    case 1:
        return makeColor(Q, V, P);
    case 2:
        return makeColor(P, V, T);
    case 3:
        return makeColor(P, Q, V);
    case 4:
        return makeColor(T, P, V);
    case 5:
        return makeColor(V, P, Q);
    default:
        return 0;
    }
}

void DepthPalette::fillRgbGradient(quint32 first, quint32 last, quint32 startRrggbb, quint32 endRrggbb)
{
    const int span = int(last - first);
    for (int k = 0; k <= span && first + quint32(k) < TableSize; ++k)
        m_colors[first + quint32(k)] = fromRrggbb(interpolateBytes(startRrggbb, endRrggbb, k, span)) | kOpaque;
}

void DepthPalette::fillHsvGradient(quint32 first, quint32 last, quint32 startRrggbb, quint32 endRrggbb)
{
    const int span = int(last - first);
    for (int k = 0; k <= span && first + quint32(k) < TableSize; ++k)
        m_colors[first + quint32(k)] = hsvWordFromBytes(interpolateBytes(startRrggbb, endRrggbb, k, span)) | kOpaque;
}

void DepthPalette::fill(quint32 first, quint32 last, quint32 rrggbb)
{
    const quint32 word = fromRrggbb(rrggbb);
    for (quint32 i = first; i <= last && i < TableSize; ++i)
        m_colors[i] = word;
}

DepthPalette* DepthPalette::fromXmlFile(const QByteArray& path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    QDomDocument document;
    if (!document.setContent(&file))
        return nullptr;

    const QDomNodeList topLevel = document.childNodes();
    if (topLevel.count() != 1) {
        ViewerLog::warning("There should be only one root tag");
        return nullptr;
    }
    const QDomNode root = topLevel.at(0);
    if (root.nodeName().toLower() != QLatin1String("palette")) {
        ViewerLog::warning("Root name should be 'palette'");
        return nullptr;
    }
    const std::optional<RootAttributes> attributes = readRootAttributes(root);
    if (!attributes)
        return nullptr;
    if (attributes->range == 0) {
        ViewerLog::warning("Palette range was not specified");
        return nullptr;
    }

    auto* palette = new DepthPalette(attributes->name, attributes->range + 1);
    if (!applyElements(*palette, root, attributes->range)) {
        delete palette;
        return nullptr;
    }
    return palette;
}
