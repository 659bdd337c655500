#include "camera/DisplayImage.h"

#include "app/YuvConverter.h"

#include <cstring>

namespace {
constexpr uint8_t kGrey = 128;
}

DisplayImage::DisplayImage()
{
    allocatePixels();
}

DisplayImage::~DisplayImage()
{
    delete[] pixels;
}

uint32_t DisplayImage::textureSizeFor(uint32_t size)
{
    uint32_t texture = 1;
    while (texture < size && texture < 0x80000000u)
        texture *= 2;
    return texture;
}

void DisplayImage::allocatePixels()
{
    delete[] pixels;
    pixels = new uint8_t[size_t(byteSize)];
    std::memset(pixels, kGrey, size_t(byteSize));
}

void DisplayImage::resize(uint32_t w, uint32_t h)
{
    const uint32_t oldTextureWidth = textureWidth;
    const uint32_t oldTextureHeight = textureHeight;
    if (w != width) {
        width = w;
        textureWidth = textureSizeFor(w);
    }
    if (h != height) {
        height = h;
        textureHeight = textureSizeFor(h);
    }
    // A texture of other dimensions must be allocated again by the view.
    if (textureWidth != oldTextureWidth || textureHeight != oldTextureHeight)
        textureAllocated = false;
    const int32_t newByteSize = int32_t(uint64_t(textureWidth) * 4 * textureHeight);
    if (newByteSize != byteSize) {
        byteSize = newByteSize;
        allocatePixels();
    }
}

void DisplayImage::fillFromBgr(const uint8_t* src)
{
    YuvConverter::copyBgr(src, pixels, int(width), int(height));
    markChanged();
}

void DisplayImage::fillFromYuy2(const uint8_t* src)
{
    YuvConverter::yuy2ToBgr(src, pixels, int(width), int(height));
    markChanged();
}

void DisplayImage::copyFrom(const DisplayImage& other)
{
    if (&other == this)
        return;
    resize(other.width, other.height);
    std::memcpy(pixels, other.pixels, size_t(byteSize));
    markChanged();
}
