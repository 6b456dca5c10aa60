#pragma once

#include "am.h"
#include "fe_texturemanager.h"
#include "tw_device_sdl3d.h"
#include "tw_effect3d.h"
#include "tw_glinclude.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

// A window of 800 by 600 on the runtime's own device, in which effects draw for real and pixels can be looked at.
class EffectWindow : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        device = std::make_unique<Tidewheel::DeviceSDL3D>();
        device->open("effects", 800, 600, false);
    }

    static void TearDownTestSuite() { device.reset(); }

    // Makes a picture that the effects then find under its name. `paint` gives the colour 0xAARRGGBB of a texel, from
    // the top left.
    template <typename Paint> void addPicture(const std::string& name, int width, int height, Paint paint)
    {
        AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, name));
        image->resize(width, height);
        unsigned char* byte = image->getWriteData();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int shift = 0; shift < 32; shift += 8)
                    *byte++ = static_cast<unsigned char>(static_cast<unsigned int>(paint(x, y)) >> shift);
        Fennel::TextureFormat format;
        format.type = Fennel::TextureFormat::TEXTURE2D | Fennel::TextureFormat::MIPMAP;
        mPictures.push_back(device->mTextureManager->loadTexture(name, image, format));
    }

    void setup(Tidewheel::Effect3D& effect) { effect.setupInternal(device.get(), &mArchives); }

    // One frame on black. Its pixels can be read afterwards.
    template <typename Draw> void frame(Draw draw)
    {
        device->beginFrame();
        fill(0, 0, 800, 600, 0x000000);
        glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        draw();
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        mPixels.resize(800 * 600 * 3);
        device->getScreenShotRGB24(mPixels.data());
        device->endFrame();
    }

    // Within a frame: fills a rectangle, measured from the lower left, with the colour 0xRRGGBB.
    static void fill(int x, int y, int width, int height, int color)
    {
        glPushAttrib(GL_SCISSOR_BIT | GL_COLOR_BUFFER_BIT);
        glEnable(GL_SCISSOR_TEST);
        glScissor(x, y, width, height);
        glClearColor(((color >> 16) & 255) / 255.0f, ((color >> 8) & 255) / 255.0f, (color & 255) / 255.0f, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glPopAttrib();
    }

    // Four quarters of a rectangle in red, green, blue and white: upper left, upper right, lower left, lower right.
    static void fillQuarters(int width, int height)
    {
        fill(0, height / 2, width / 2, height / 2, 0xff0000);
        fill(width / 2, height / 2, width / 2, height / 2, 0x00ff00);
        fill(0, 0, width / 2, height / 2, 0x0000ff);
        fill(width / 2, 0, width / 2, height / 2, 0xffffff);
    }

    const unsigned char* at(int x, int y) const { return &mPixels[(y * 800 + x) * 3]; }

    // Is the pixel, measured from the top left, of the colour 0xRRGGBB?
    testing::AssertionResult isColor(int x, int y, int color, int tolerance = 2) const
    {
        const unsigned char* pixel = at(x, y);
        for (int i = 0; i < 3; ++i)
            if (std::abs(pixel[i] - ((color >> (16 - 8 * i)) & 255)) > tolerance)
                return testing::AssertionFailure() << "pixel " << x << ", " << y << " is " << int(pixel[0]) << ", "
                                                   << int(pixel[1]) << ", " << int(pixel[2]);
        return testing::AssertionSuccess();
    }

    AM::ArchiveManager mArchives;
    std::vector<Fennel::Texture> mPictures;
    std::vector<unsigned char> mPixels;

    inline static std::unique_ptr<Tidewheel::DeviceSDL3D> device;
};
