#pragma once

#include <cstdint>

class DisplayImage;

// One OpenGL texture fed from the two sample slots of a buffer. The texture's storage is allocated
// (glTexImage2D without data) only when the slot's texture size differs from what the texture holds,
// and an image is uploaded (glTexSubImage2D) only when the texture holds another slot or the slot's
// image was written again since its last upload, so alternating slots are each uploaded once and a
// repaint without a new sample uploads nothing. Needs the widget's GL context to be current.
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

    // The texture shows `slot` of a buffer whose images carry their own uploaded flags (the view's own
    // buffer). Sets the image's textureAllocated and uploaded flags. Returns true when it uploaded.
    bool show(DisplayImage& image, int slot, unsigned int format);
    // The texture shows `slot` of another view's buffer, whose flags this texture must not touch; a
    // change of `generation` (the slot's capture time) means the slot has been written again.
    bool showShared(const DisplayImage& image, int slot, int64_t generation, unsigned int format);

    // The next show() uploads whatever slot it is given.
    void forgetContents();

private:
    void ensureStorage(uint32_t width, uint32_t height, unsigned int format);
    void upload(const DisplayImage& image, unsigned int format);

    unsigned int m_name = 0;
    uint32_t m_storageWidth = 0;
    uint32_t m_storageHeight = 0;
    int m_slot = -1;               // slot whose image the texture holds, -1 for none
    int64_t m_generation = -1;     // showShared: the slot's capture time at that upload
};
