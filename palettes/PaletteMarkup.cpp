#include "palettes/PaletteMarkup.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace {

std::optional<QString> decodeWith(QStringDecoder decoder, const QByteArray& content)
{
    if (!decoder.isValid())
        return std::nullopt;
    QString text = decoder.decode(content);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

std::optional<QString> PaletteMarkup::decode(const QByteArray& content)
{
    if (const auto detected = QStringConverter::encodingForData(content, u'<'))
        return decodeWith(QStringDecoder(*detected), content);
    // Without a mark the encoding is ASCII-compatible, so a declaration naming another one reads as ASCII.
    if (const std::optional<QByteArray> declared = declaredEncoding(content))
        return decodeWith(QStringDecoder(declared->constData()), content);
    return decodeWith(QStringDecoder(QStringConverter::Utf8), content);
}

std::optional<QByteArray> PaletteMarkup::declaredEncoding(const QByteArray& content)
{
    static const QRegularExpression declaration(
        QStringLiteral("^<\\?xml\\s[^>]*?encoding\\s*=\\s*([\"'])([A-Za-z][A-Za-z0-9._-]*)\\1"));
    const QRegularExpressionMatch match = declaration.match(QString::fromLatin1(content.left(256)));
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(2).toLatin1();
}

PaletteMarkup::Verdict PaletteMarkup::check(QStringView text)
{
    int depth = 0;
    for (qsizetype i = text.indexOf(u'<'); i >= 0;) {
        const QStringView rest = text.mid(i);
        if (rest.startsWith(u"<!--")) {
            i = skipPast(text, i + 4, u"-->");
        } else if (rest.startsWith(u"<![CDATA[")) {
            i = skipPast(text, i + 9, u"]]>");
        } else if (rest.startsWith(u"<?")) {
            i = skipPast(text, i + 2, u"?>");
        } else if (rest.startsWith(u"</")) {
            --depth;
            i = skipPast(text, i + 2, u">");
        } else if (rest.startsWith(u"<!")) {
            const Tag declaration = scanTag(text, i);
            if (declaration.hasSubset)
                return InternalSubset;
            i = declaration.end;
        } else {
            const Tag tag = scanTag(text, i);
            if (tag.attributes > MaxAttributes)
                return TooManyAttributes;
            if (!tag.selfClosing && ++depth > MaxDepth)
                return TooDeep;
            i = tag.end;
        }
        if (i >= 0)
            i = text.indexOf(u'<', i);
    }
    return Passes;
}

PaletteMarkup::Tag PaletteMarkup::scanTag(QStringView text, qsizetype start)
{
    Tag tag;
    QChar quote;
    for (qsizetype i = start + 1; i < text.size(); ++i) {
        const QChar c = text[i];
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'=') {
            ++tag.attributes;
        } else if (c == u'[') {
            tag.hasSubset = true;
        } else if (c == u'>') {
            tag.end = i + 1;
            tag.selfClosing = text[i - 1] == u'/';
            return tag;
        }
    }
    return tag;
}

qsizetype PaletteMarkup::skipPast(QStringView text, qsizetype from, QStringView end)
{
    const qsizetype found = text.indexOf(end, from);
    return found < 0 ? -1 : found + end.size();
}
