#include "render2texture.h"

#include "effect_helpers.h"

GLuint render_texture = 0;

Render2Texture::~Render2Texture()
{
    glDeleteTextures(1, &render_texture);
    render_texture = 0;
}

// Black until the first picture is taken, so that every run shows the same.
void Render2Texture::setup(AM::ArchiveManager&)
{
    const std::vector<unsigned char> black(COPY_SIZE * COPY_SIZE * 3);
    glGenTextures(1, &render_texture);
    glBindTexture(GL_TEXTURE_2D, render_texture);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, COPY_SIZE, COPY_SIZE, 0, GL_RGB, GL_UNSIGNED_BYTE, black.data());
    setTextureFilter(GL_LINEAR);
}

void Render2Texture::update(float, float, float)
{
    glBindTexture(GL_TEXTURE_2D, render_texture);
    copyFrame();
}
