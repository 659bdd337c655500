#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

// A palette file's markup as text, walked before it is parsed into a document tree. The tree costs
// time quadratic in the nesting depth, and the XML reader beneath it time quadratic in the attributes
// of one tag; an internal DTD subset could add attributes or expand entities into markup that no walk
// of the text sees. A file shaped like that is left out instead: a palette needs two levels of
// elements with a handful of attributes, and no DTD.
class PaletteMarkup {
public:
    static constexpr int MaxDepth = 64;
    static constexpr int MaxAttributes = 64; // in one tag

    enum Verdict { Passes, TooDeep, TooManyAttributes, InternalSubset };

    // The text in the encoding the XML reader would choose: a byte-order mark or the UTF-16/32 shape of
    // the first '<', else the XML declaration's encoding, else UTF-8. Nothing when the bytes do not
    // decode, which the reader would refuse too.
    static std::optional<QString> decode(const QByteArray& content);

    // Whether the markup stays within the limits above. A text that is not well-formed may pass: the
    // parse refuses it afterwards, with the walk having bounded what the parse can cost.
    static Verdict check(QStringView text);

private:
    struct Tag {
        qsizetype end = -1; // just past the closing '>', or -1 when there is none
        int attributes = 0;
        bool selfClosing = false;
        bool hasSubset = false; // a '[' outside quotes: a DTD with declarations of its own
    };
    static Tag scanTag(QStringView text, qsizetype start);
    static qsizetype skipPast(QStringView text, qsizetype from, QStringView end);
    static std::optional<QByteArray> declaredEncoding(const QByteArray& content);
};
