#include "views/BufferTexture.h"

#include "camera/DisplayImage.h"

#include <GL/gl.h>

#ifndef GL_CLAMP_TO_BORDER
#define GL_CLAMP_TO_BORDER 0x812D
#endif

void BufferTexture::create(bool borderWrap, bool clampToBorder)
{
    if (m_name)
        return;
    GLuint name = 0;
    glGenTextures(1, &name);
    m_name = name;
    forgetContents();
    m_storageWidth = m_storageHeight = 0;
    glBindTexture(GL_TEXTURE_2D, m_name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    if (borderWrap) {
        const GLint wrap = clampToBorder ? GL_CLAMP_TO_BORDER : GL_CLAMP;
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    }
}

void BufferTexture::destroy()
{
    if (m_name) {
        const GLuint name = m_name;
        glDeleteTextures(1, &name);
    }
    abandon();
}

void BufferTexture::abandon()
{
    m_name = 0;
    m_storageWidth = m_storageHeight = 0;
    forgetContents();
}

void BufferTexture::bind() const
{
    glBindTexture(GL_TEXTURE_2D, m_name);
}

void BufferTexture::forgetContents()
{
    m_generation = 0;
}

void BufferTexture::ensureStorage(uint32_t width, uint32_t height, unsigned int format)
{
    if (width == m_storageWidth && height == m_storageHeight)
        return;
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, GLsizei(width), GLsizei(height), 0, format, GL_UNSIGNED_BYTE, nullptr);
    m_storageWidth = width;
    m_storageHeight = height;
    forgetContents(); // new storage holds nothing yet
}

bool BufferTexture::show(const DisplayImage& image, unsigned int format)
{
    ensureStorage(image.textureWidth, image.textureHeight, format);
    if (m_generation == image.generation)
        return false;
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, GLsizei(image.width), GLsizei(image.height), format, GL_UNSIGNED_BYTE,
                    image.pixels);
    m_generation = image.generation;
    return true;
}
