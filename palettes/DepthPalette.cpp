#include "palettes/DepthPalette.h"

#include "app/shared/ViewerLog.h"
#include "palettes/PaletteXmlReader.h"

#include <Zerlane/Utils/Format.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

constexpr quint32 kOpaque = 0xFF000000u;

// Truncation toward zero, the way every colour conversion of the palettes rounds.
int truncated(float value)
{
    return int(value);
}

// The entries that no rule has written yet, walked in order: a written entry points past itself, so
// a later walk jumps over whole written runs (a union-find over the table, with path halving).
class UnwrittenEntries {
public:
    UnwrittenEntries() : m_next(DepthPalette::TableSize + 1)
    {
        std::iota(m_next.begin(), m_next.end(), 0u);
    }

    // The first unwritten entry at or after `index`; TableSize when there is none.
    quint32 from(quint32 index)
    {
        while (m_next[index] != index) {
            m_next[index] = m_next[m_next[index]];
            index = m_next[index];
        }
        return index;
    }

    void markWritten(quint32 index) { m_next[index] = index + 1; }

private:
    std::vector<quint32> m_next;
};

} // namespace

DepthPalette::DepthPalette(const QByteArray& name, quint32 size)
    : m_name(name), m_size(size), m_colors(new quint32[TableSize])
{
    if (size > TableSize)
        ViewerLog::warning(Zerlane::Utils::Format("Requested palette range too big : %") % size);
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
    write({PaletteRule::RgbGradient, first, last, startRrggbb, endRrggbb});
}

void DepthPalette::fillHsvGradient(quint32 first, quint32 last, quint32 startRrggbb, quint32 endRrggbb)
{
    write({PaletteRule::HsvGradient, first, last, startRrggbb, endRrggbb});
}

void DepthPalette::fill(quint32 first, quint32 last, quint32 rrggbb)
{
    write({PaletteRule::Plain, first, last, rrggbb, rrggbb});
}

void DepthPalette::write(const PaletteRule& rule)
{
    const quint32 last = std::min(rule.last, TableSize - 1);
    for (quint32 i = rule.first; i <= last; ++i)
        m_colors[i] = rule.entry(i);
}

void DepthPalette::applyRules(const std::vector<PaletteRule>& rules)
{
    // Later rules overwrite earlier ones. Walked from the last, each entry is computed once, by the rule
    // that has the final say: the work is bounded by the table size plus the number of rules, however
    // much the rules overlap.
    UnwrittenEntries unwritten;
    for (auto rule = rules.rbegin(); rule != rules.rend(); ++rule) {
        if (rule->first >= TableSize || rule->last < rule->first)
            continue;
        const quint32 last = std::min(rule->last, TableSize - 1);
        for (quint32 i = unwritten.from(rule->first); i <= last; i = unwritten.from(i + 1)) {
            m_colors[i] = rule->entry(i);
            unwritten.markWritten(i);
        }
    }
}

DepthPalette* DepthPalette::fromXmlFile(const QByteArray& path)
{
    return PaletteXmlReader::read(path);
}
