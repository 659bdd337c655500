#pragma once

#include <cstdint>

// The picture of one buffer slot as a view uploads it: packed rows of `width` pixels (3 bytes B, G, R
// for colour images, 4 bytes RGBA for palette-coloured ones) in a block big enough for a texture of
// textureWidth x textureHeight RGBA pixels, the power-of-two sizes that hold the image.
//
// Every change of the pixels gives the image a new `generation`, a number no other image or change
// has had in this process. What a view has uploaded is the view's own business (it remembers the
// generation it uploaded), so nothing here is written by the readers.
class DisplayImage {
public:
    DisplayImage();
    ~DisplayImage();

    DisplayImage(const DisplayImage&) = delete;
    DisplayImage& operator=(const DisplayImage&) = delete;

    // Reallocates the pixel block only when its byte size changes.
    void resize(uint32_t w, uint32_t h);

    // Copies width x height x 3 bytes of B, G, R pixels as they are.
    void fillFromBgr(const uint8_t* src);
    // Converts width x height pixels of YUY2 into B, G, R.
    void fillFromYuy2(const uint8_t* src);
    // Takes over another image's size and pixels (no reallocation when the byte sizes match).
    void copyFrom(const DisplayImage& other);
    // The pixel block as 32-bit colour words, for palette colouring (width x height of them, row by row).
    uint32_t* words() { return reinterpret_cast<uint32_t*>(pixels); }
    // New pixel data was written: views upload the image again.
    void markChanged();

    static uint32_t textureSizeFor(uint32_t size);

    uint32_t width = 320;
    uint32_t height = 240;
    uint32_t textureWidth = 512;
    uint32_t textureHeight = 256;
    int32_t byteSize = 524288;
    uint8_t* pixels = nullptr; // byteSize bytes, mid-grey at construction
    uint64_t generation = 0;   // renewed whenever new pixels are written; never 0 after construction

private:
    void allocatePixels();
};
