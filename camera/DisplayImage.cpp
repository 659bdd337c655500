#include "camera/DisplayImage.h"

#include "app/shared/YuvConverter.h"

#include <atomic>
#include <cstring>

namespace {
constexpr uint8_t kGrey = 128;
std::atomic<uint64_t> g_lastGeneration{0};
} // namespace

void DisplayImage::markChanged()
{
    generation = ++g_lastGeneration;
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
    markChanged(); // a new block: whatever a view uploaded before is not these pixels
}

void DisplayImage::resize(uint32_t w, uint32_t h)
{
    if (w != width) {
        width = w;
        textureWidth = textureSizeFor(w);
    }
    if (h != height) {
        height = h;
        textureHeight = textureSizeFor(h);
    }
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
