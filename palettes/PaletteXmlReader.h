#pragma once

#include <QByteArray>

class DepthPalette;

// Loads a palette from an XML file (the format DepthPalette's users know: a `palette` root with `name`
// and `range`, then `gradient`, `color` and `aplat` elements applied in document order). Every error
// is a warning on the library log followed by no palette; a file that cannot be opened or parsed
// gives no message.
//
// The palette dialog loads every "*.xml" of the current directory, so a load is bounded whatever the
// file holds: only regular files of at most PaletteFile::MaxBytes are read, markup beyond
// PaletteMarkup's limits (nesting depth, attributes of one tag, an internal DTD subset) is left out
// with a log line, and the elements are all checked before any entry is computed, each entry once.
class PaletteXmlReader {
public:
    static DepthPalette* read(const QByteArray& path);
};
