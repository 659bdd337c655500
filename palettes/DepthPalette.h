#pragma once

#include "palettes/PaletteRule.h"

#include <QByteArray>
#include <QtGlobal>

#include <vector>

// A named table of 65,536 colour words that turns a 16-bit value into a colour. A word holds red in
// bits 0-7, green 8-15, blue 16-23 and alpha 24-31, so in memory the table reads as RGBA bytes.
// `size` is the number of meaningful entries; the table always has TableSize entries.
class DepthPalette {
public:
    static constexpr quint32 TableSize = 0x10000;
    static constexpr quint32 Untouched = 0xFF0000FF; // opaque red, in every entry no rule wrote

    DepthPalette(const QByteArray& name, quint32 size);
    DepthPalette(const DepthPalette& other);
    DepthPalette& operator=(const DepthPalette& other);
    ~DepthPalette();

    QByteArray name() const { return m_name; }
    quint32 size() const { return m_size; }
    quint32* colors() { return m_colors; }
    const quint32* colors() const { return m_colors; }

    bool operator==(const DepthPalette& other) const;
    bool operator!=(const DepthPalette& other) const { return !(*this == other); }

    // "Grey scale": white at 0 down to black; "Inverted grey scale": black at 0 up to white.
    static DepthPalette* greyScale(quint32 size);
    static DepthPalette* invertedGreyScale(quint32 size);
    // The palette of an XML file, or nullptr (with a warning on the library log for a malformed file,
    // or for one beyond the loader's limits: see PaletteXmlReader).
    static DepthPalette* fromXmlFile(const QByteArray& path);

    // Colour word helpers.
    static quint32 red(quint32 word) { return word & 0xFF; }
    static quint32 green(quint32 word) { return (word >> 8) & 0xFF; }
    static quint32 blue(quint32 word) { return (word >> 16) & 0xFF; }
    static quint32 makeColor(quint32 r, quint32 g, quint32 b) { return (r & 0xFF) | (g & 0xFF) << 8 | (b & 0xFF) << 16; }
    // A 0xRRGGBB value as a colour word with alpha 0.
    static quint32 fromRrggbb(quint32 value) { return makeColor(value >> 16, value >> 8, value); }
    // HSV (hue in degrees 0..360, saturation and value 0..1) to a colour word with alpha 0, in single
    // precision with every conversion to an integer truncated.
    static quint32 hsvToRgb(float hue, float saturation, float value);

    // Entries first..last inclusive (both below TableSize), colours given as 0xRRGGBB. Gradients
    // write alpha 255, fill writes alpha 0. first == last writes the start colour.
    void fillRgbGradient(quint32 first, quint32 last, quint32 startRrggbb, quint32 endRrggbb);
    void fillHsvGradient(quint32 first, quint32 last, quint32 startRrggbb, quint32 endRrggbb);
    void fill(quint32 first, quint32 last, quint32 rrggbb);
    // Every entry a rule covers (entries from TableSize on are left out), the rules taken in order so
    // that later ones overwrite earlier ones; each entry is computed once.
    void applyRules(const std::vector<PaletteRule>& rules);

private:
    void write(const PaletteRule& rule);

    QByteArray m_name;
    quint32 m_size;
    quint32* m_colors;
};
