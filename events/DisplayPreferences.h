#pragma once

#include <QtGlobal>

// The preferences that are used for every sample or every paint: the standard-deviation frame count
// of the sample handler and what the views draw with. The camera manager keeps the current copy, so
// that neither the event thread nor a paint reads the settings store; the window loads it at start,
// and whatever changes a preference must store it there too. The member initialisers are the
// preferences' defaults.
struct DisplayPreferences {
    int sdNumFrames = 100;                    // "view2d/sdNumFrames"
    quint32 roiColor = 0x3399FF;              // "view2d/roiColor", 0xRRGGBB
    int dotSize = 2;                          // "view3d/dotSize"
    bool displayTriangles = false;            // "view3d/displayTriangles"
    bool displayAxis = true;                  // "view3d/displayAxis"
    bool displayAxisLabels = false;           // "view3d/displayAxisLabels"
    quint32 nonMappedUvPixelsColor = 0x000000; // "view3d/nonMappedUvPixelsColor"
    quint32 backgroundColor = 0x000000;       // "view3d/backgroundColor"

    bool operator==(const DisplayPreferences&) const = default;
};
