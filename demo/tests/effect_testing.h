#pragma once

#include "gl_recorder.h"
#include "picture_files.h"

#include "am.h"
#include "fe_texturemanager.h"
#include "tw_effect3d.h"

#include <gtest/gtest.h>

#include <cstdlib>

// Sets effects up and plays them in front of the recorder. All pictures of the effects are there, each of four texels.
// Make the effects after the stage, so that they let go of their pictures before it.
class Stage
{
public:
    Stage()
    {
        GLRecorder::reset();
        for (const char* name : {PictureFiles::LANDSCAPE, PictureFiles::ENVIRONMENT, PictureFiles::FONT,
                                 PictureFiles::GREETINGS, PictureFiles::OVERLAY, PictureFiles::LOGO,
                                 PictureFiles::LOGO_GHOST, PictureFiles::BANNER, PictureFiles::SUN})
        {
            AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, name));
            image->resize(2, 2);
            std::fill_n(image->getWriteData(), 16, static_cast<unsigned char>(255));
            Fennel::TextureFormat format;
            format.type = Fennel::TextureFormat::TEXTURE2D | Fennel::TextureFormat::MIPMAP;
            mPictures[name] = mTextures.loadTexture(name, image, format);
        }
    }

    void setup(Tidewheel::Effect3D& effect)
    {
        effect.mTextureManager = &mTextures;
        effect.setup(mArchives);
        GLRecorder::gl.beginFrame();
    }

    // One frame with this effect alone. It must make no call that OpenGL refuses, and pop the matrices that it pushes.
    void draw(Tidewheel::Effect3D& effect, float time, float position = 0, float delta = 0)
    {
        GLRecorder::gl.beginFrame();
        effect.update(time, delta, position);
        EXPECT_EQ(GLRecorder::gl.faults, std::vector<std::string>());
        EXPECT_EQ(GLRecorder::gl.state.matrixMode, GLenum(GL_MODELVIEW));
        for (GLenum mode : {GL_MODELVIEW, GL_PROJECTION}) EXPECT_LE(GLRecorder::gl.state.stacks[mode].size(), 1u);
    }

    AM::ArchiveManager mArchives;
    Fennel::TextureManager mTextures{&mArchives};
    std::map<std::string, Fennel::Texture> mPictures;
};

// Sends a trigger and, where the effect has one, a spline.
inline void trigger(Tidewheel::Effect3D& effect, const std::string& name, const std::string& value = "", float time = 0)
{
    effect.executeTrigger(time, name, value);
}
