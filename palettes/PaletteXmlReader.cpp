#include "palettes/PaletteXmlReader.h"

#include "app/shared/ViewerLog.h"
#include "palettes/DepthPalette.h"
#include "palettes/PaletteFile.h"
#include "palettes/PaletteMarkup.h"
#include "palettes/PaletteRule.h"

#include <Zerlane/Utils/Format.h>

#include <QDomDocument>
#include <QDomElement>

#include <optional>
#include <vector>

namespace {

void logWarning(const char* text, const QString& value)
{
    ViewerLog::warning(Zerlane::Utils::Format(text) % value.toStdString());
}

void logWarning(const char* text, quint32 value)
{
    ViewerLog::warning(Zerlane::Utils::Format(text) % value);
}

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

std::optional<PaletteRule> readGradient(const QDomElement& element, quint32 range)
{
    const auto ai = readIndex(element, "ai", "Conversion error in 'gradient' element's 'ai' attribute : %",
                              "'gradient' element's 'ai' attribute out of range : %", range);
    if (!ai)
        return std::nullopt;
    const auto bi = readIndex(element, "bi", "Conversion error in 'gradient' element's 'bi' attribute : %",
                              "'gradient' element's 'bi' attribute out of range : %", range);
    if (!bi)
        return std::nullopt;
    const auto ac = readColour(element, "ac", "Conversion error in 'color' element's 'ac' attribute : %");
    if (!ac)
        return std::nullopt;
    const auto bc = readColour(element, "bc", "Conversion error in 'color' element's 'bc' attribute : %");
    if (!bc)
        return std::nullopt;
    const bool hsv = element.attribute(QStringLiteral("mode")).toLower() == QLatin1String("hsv");
    return PaletteRule{hsv ? PaletteRule::HsvGradient : PaletteRule::RgbGradient, *ai, *bi, *ac, *bc};
}

std::optional<PaletteRule> readAplat(const QDomElement& element, quint32 range)
{
    const auto ai = readIndex(element, "ai", "Conversion error in 'aplat' element's 'ai' attribute : %",
                              "'aplat' element's 'ai' attribute out of range : %", range);
    if (!ai)
        return std::nullopt;
    const auto bi = readIndex(element, "bi", "Conversion error in 'color' element's 'bi' attribute : %",
                              "'aplat' element's 'bi' attribute out of range : %", range);
    if (!bi)
        return std::nullopt;
    const auto c = readColour(element, "c", "Conversion error in 'color' element's 'c' attribute : %", true);
    if (!c)
        return std::nullopt;
    return PaletteRule{PaletteRule::Plain, *ai, *bi, *c, *c};
}

std::optional<PaletteRule> readColor(const QDomElement& element, quint32 range)
{
    const auto i = readIndex(element, "i", "Conversion error in 'color' element's 'i' attribute : %",
                             "'color' element's 'i' attribute out of range : %", range);
    if (!i)
        return std::nullopt;
    const auto c = readColour(element, "c", "Conversion error in 'color' element 'c' attribute : %");
    if (!c)
        return std::nullopt;
    return PaletteRule{PaletteRule::Plain, *i, *i, *c, *c};
}

// The rules of the child elements in document order (a gradient or aplat whose end comes before its
// start is kept and writes nothing); nothing after the first faulty element, which stops the load.
std::optional<std::vector<PaletteRule>> readRules(const QDomNode& root, quint32 range)
{
    std::vector<PaletteRule> rules;
    for (QDomNode child = root.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (!child.isElement())
            continue;
        const QDomElement element = child.toElement();
        const QString tag = element.tagName().toLower();
        std::optional<PaletteRule> rule;
        if (tag == QLatin1String("gradient"))
            rule = readGradient(element, range);
        else if (tag == QLatin1String("aplat"))
            rule = readAplat(element, range);
        else if (tag == QLatin1String("color"))
            rule = readColor(element, range);
        else
            continue;
        if (!rule)
            return std::nullopt;
        rules.push_back(*rule);
    }
    return rules;
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

// The markup of the file, or nothing: silently when it cannot be read or decoded, with a log line
// when it is beyond the limits of what is parsed.
std::optional<QString> readMarkup(const QByteArray& path)
{
    const std::optional<QByteArray> content = PaletteFile::read(path);
    if (!content)
        return std::nullopt;
    std::optional<QString> text = PaletteMarkup::decode(*content);
    if (!text)
        return std::nullopt;
    const std::string file = path.toStdString();
    switch (PaletteMarkup::check(*text)) {
    case PaletteMarkup::Passes:
        return text;
    case PaletteMarkup::TooDeep:
        ViewerLog::warning(Zerlane::Utils::Format("Palette file % nests elements more than % deep, left out") % file
                           % PaletteMarkup::MaxDepth);
        break;
    case PaletteMarkup::TooManyAttributes:
        ViewerLog::warning(Zerlane::Utils::Format("Palette file % has a tag with more than % attributes, left out")
                           % file % PaletteMarkup::MaxAttributes);
        break;
    case PaletteMarkup::InternalSubset:
        ViewerLog::warning(Zerlane::Utils::Format("Palette file % declares entities or attributes in a DTD, left out")
                           % file);
        break;
    }
    return std::nullopt;
}

} // namespace

DepthPalette* PaletteXmlReader::read(const QByteArray& path)
{
    const std::optional<QString> markup = readMarkup(path);
    if (!markup)
        return nullptr;
    // Parsed from the text that was checked, so that the tree holds nothing the check did not see.
    QDomDocument document;
    if (!document.setContent(*markup))
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
    const std::optional<std::vector<PaletteRule>> rules = readRules(root, attributes->range);
    if (!rules) {
        delete palette;
        return nullptr;
    }
    palette->applyRules(*rules);
    return palette;
}
