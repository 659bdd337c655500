#pragma once

#include <cstdint>

class DisplayImage;

// One OpenGL texture showing the images of a buffer's slots. The texture's storage is allocated
// (glTexImage2D without data) only when the image's texture size differs from what the texture holds,
// and an image is uploaded (glTexSubImage2D) only when its generation differs from the one uploaded
// last, so alternating slots are each uploaded once per sample and a repaint without a new sample
// uploads nothing. The view owns this state; the buffer's images know nothing of it. Needs the
// widget's GL context to be current.
class BufferTexture {
public:
    // Generates the texture name if there is none (a new context) with nearest filtering. With
    // borderWrap, coordinates outside 0..1 show the border colour (clampToBorder) or the edge texels.
    void create(bool borderWrap, bool clampToBorder);
    // Deletes the texture name (the context must be current) and forgets what it held.
    void destroy();
    // The context went away with its textures: forget the name without deleting it.
    void abandon();
    bool isCreated() const { return m_name != 0; }
    unsigned int name() const { return m_name; }
    void bind() const;

    // The texture shows the image (read under its buffer's lock). Returns true when it uploaded.
    bool show(const DisplayImage& image, unsigned int format);

    // The next show() uploads whatever it is given.
    void forgetContents();

private:
    void ensureStorage(uint32_t width, uint32_t height, unsigned int format);

    unsigned int m_name = 0;
    uint32_t m_storageWidth = 0;
    uint32_t m_storageHeight = 0;
    uint64_t m_generation = 0; // generation of the image last uploaded, 0 for none
};
