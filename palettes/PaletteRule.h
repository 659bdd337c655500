#pragma once

#include <QtGlobal>

// One rule of a palette: entries first..last inclusive get a gradient or one plain colour. Colours
// are 0xRRGGBB values as a palette file writes them.
class PaletteRule {
public:
    enum Kind { RgbGradient, HsvGradient, Plain };

    Kind kind;
    quint32 first;
    quint32 last;
    quint32 startRrggbb;
    quint32 endRrggbb; // gradients only

    // The colour word the rule gives entry `index` (first <= index <= last): gradients interpolate each
    // byte as start + (k x difference) / span, truncating toward zero, and are opaque; plain colours
    // have alpha 0. A gradient of one entry gives the start colour.
    quint32 entry(quint32 index) const;
};
