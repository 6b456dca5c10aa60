#include "fe_exception.h"
#include "gl_recorder.h"
#include "fe_scenes.h"
#include "fe_texturemanager.h"

#include "tw_exception.h"

#include <gtest/gtest.h>

using Fennel::Texture;
using Fennel::TextureFormat;
using GLRecorder::call;
using GLRecorder::gl;

namespace
{

TextureFormat formatOf(int type)
{
    TextureFormat format;
    format.type = type;
    return format;
}

const TextureFormat picture = formatOf(TextureFormat::TEXTURE2D | TextureFormat::MIPMAP);

GLuint nameOf(const Texture& texture)
{
    return static_cast<GLuint>(texture->getSortableID());
}

const std::vector<unsigned char> pixels = {1, 2, 3, 255, 4, 5, 6, 255};

class TextureManagerTest : public testing::Test
{
protected:
    TextureManagerTest()
    {
        GLRecorder::reset();
        for (const char* name : {"a.png", "b.png"}) archives.addPicture(name, makeImage(2, 1, pixels));
    }

    Archives archives;
    Fennel::TextureManager manager{&archives};
};

} // namespace

TEST_F(TextureManagerTest, oneNameAndFormatIsOneTextureForAsLongAsAHandleLives)
{
    {
        const Texture first = manager.loadTexture("a.png", picture, "");
        Texture second = manager.loadTexture("a.png", picture, "");
        EXPECT_EQ(nameOf(first), nameOf(second));
        EXPECT_NE(nameOf(first), nameOf(manager.loadTexture("a.png", formatOf(TextureFormat::TEXTURE2D), "")));
        EXPECT_EQ(manager.mTextures.size(), 1u);

        // A name of its own in the key: the first file under it wins.
        const Texture named = manager.loadTexture("a.png", picture, "id");
        EXPECT_EQ(nameOf(named), nameOf(manager.loadTexture("b.png", picture, "id")));

        second = *&second;
        EXPECT_EQ(first->mRefCount, 2u);
        second = named;
        EXPECT_EQ(first->mRefCount, 1u);
    }
    EXPECT_TRUE(manager.mTextures.empty());
    EXPECT_EQ(gl.count("glDeleteTextures"), 0) << "names are freed by dispatch alone";
    const int made = gl.count("glGenTextures");
    manager.loadTexture("a.png", picture, "");
    EXPECT_EQ(gl.count("glGenTextures"), made + 1);
}

TEST_F(TextureManagerTest, formatAndImageDecideTheKindOfUpload)
{
    const std::string uploads[] = {call("glTexImage1D", GL_TEXTURE_1D, 0, 4, 256, 0, GL_BGRA, GL_UNSIGNED_BYTE),
                                   call("glTexImage2D", GL_TEXTURE_2D, 0, 4, 256, 1, 0, GL_BGRA, GL_UNSIGNED_BYTE),
                                   call("gluBuild1DMipmaps", GL_TEXTURE_1D, 4, 256, GL_BGRA, GL_UNSIGNED_BYTE),
                                   call("gluBuild2DMipmaps", GL_TEXTURE_2D, 4, 256, 1, GL_BGRA, GL_UNSIGNED_BYTE)};
    const int types[] = {1, 3, 33, 34}; // 2D wins where both are allowed
    for (int i = 0; i < 4; ++i)
    {
        GLRecorder::reset();
        const GLenum target = i % 2 ? GL_TEXTURE_2D : GL_TEXTURE_1D;
        const Texture texture = manager.loadTexture("row", makeImage(256, 1, {}), formatOf(types[i]));
        EXPECT_EQ(gl.calls, (std::vector<std::string>{"glGenTextures", call("glBindTexture", target, 1), uploads[i],
                                                      call("glTexParameterf", target, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                                                      call("glTexParameterf", target, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
                                                      call("glTexParameterf", target, GL_TEXTURE_WRAP_S, GL_REPEAT),
                                                      call("glTexParameterf", target, GL_TEXTURE_WRAP_T, GL_REPEAT),
                                                      call("glBindTexture", target, 0)}));
    }
}

TEST_F(TextureManagerTest, aModeSwitchFreesTheNamesAndBringsThePixelsBack)
{
    const Texture texture = manager.loadTexture("a.png", picture, "");
    EXPECT_EQ(gl.textures[nameOf(texture)], pixels);
    manager.dispatch();
    manager.dispatch();
    EXPECT_TRUE(gl.textures.empty());
    EXPECT_EQ(gl.count("glDeleteTextures"), 1);
    manager.restore();
    EXPECT_EQ(gl.textures[nameOf(texture)], pixels);
}

TEST_F(TextureManagerTest, whatCannotBecomeATextureLeavesNothingBehind)
{
    const auto errorOf = [&](const char* file, int type) {
        try
        {
            manager.loadTexture(file, formatOf(type), "");
            return std::string("loaded");
        }
        catch (const std::exception& exception)
        {
            return std::string(exception.what());
        }
    };
    EXPECT_EQ(errorOf("none.png", 34), "AM::loadImage, File not found (none.png)");
    EXPECT_EQ(errorOf("a.png", 50), "Could not creat render-target, proper extensions not found!");
    EXPECT_EQ(errorOf("a.png", 32), "Could not load 1x2 image");
    EXPECT_THROW(manager.loadTexture("null", AM::Image(), picture), AM::Exception);
    gl.error = GL_OUT_OF_MEMORY; // found at the first check, right behind glGenTextures
    EXPECT_THROW(manager.loadTexture("a.png", picture, ""), Tidewheel::Exception);
    EXPECT_TRUE(gl.textures.empty());
    EXPECT_TRUE(manager.mTextures.empty());
    EXPECT_TRUE(archives.mImageManager->mImageCache.empty());
}
