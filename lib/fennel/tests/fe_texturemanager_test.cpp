#include "fe_exception.h"
#include "fe_glfake.h"
#include "fe_scenes.h"
#include "fe_texturebase_standard.h"
#include "fe_texturemanager.h"

#include "tw_exception.h"

#include <gtest/gtest.h>

using Fennel::Texture;
using Fennel::TextureFormat;
using Fennel::TextureManager;
using GLFake::call;
using GLFake::gl;

namespace
{

TextureFormat formatOf(int type)
{
    TextureFormat format;
    format.type = type;
    return format;
}

const TextureFormat pictureFormat = formatOf(TextureFormat::TEXTURE2D | TextureFormat::MIPMAP);

GLuint nameOf(const Texture& texture)
{
    return static_cast<GLuint>(texture->getSortableID());
}

class TextureManagerTest : public testing::Test
{
protected:
    TextureManagerTest()
    {
        GLFake::reset();
        for (const char* name : {"a.png", "b.png"})
        {
            AM::Image image = makeImage(2, 1, {1, 2, 3, 255, 4, 5, 6, 255});
            AM::File file = archives.mImageManager->encodeImage(name, image);
            archives[name].assign(reinterpret_cast<const char*>(file->data), file->length);
        }
    }

    Archives archives;
    TextureManager manager{&archives};
};

} // namespace

TEST_F(TextureManagerTest, oneNameAndFormatIsOneTextureForAsLongAsAHandleLives)
{
    {
        const Texture first = manager.loadTexture("a.png", pictureFormat, "");
        Texture second = manager.loadTexture("a.png", pictureFormat, "");
        EXPECT_EQ(nameOf(first), nameOf(second));
        EXPECT_NE(nameOf(first), nameOf(manager.loadTexture("a.png", formatOf(TextureFormat::TEXTURE2D), "")));
        EXPECT_EQ(manager.mTextures.size(), 1u);

        // A name of its own in the key: the first file under it wins.
        const Texture named = manager.loadTexture("a.png", pictureFormat, "id");
        EXPECT_EQ(nameOf(named), nameOf(manager.loadTexture("b.png", pictureFormat, "id")));

        second = *&second;
        EXPECT_EQ(first->mRefCount, 2u);
        second = named;
        EXPECT_EQ(first->mRefCount, 1u);
    }
    EXPECT_TRUE(manager.mTextures.empty());
    EXPECT_EQ(gl.count("glDeleteTextures"), 0) << "names are freed by dispatch alone";

    const int made = gl.count("glGenTextures");
    manager.loadTexture("a.png", pictureFormat, "");
    EXPECT_EQ(gl.count("glGenTextures"), made + 1);
}

TEST_F(TextureManagerTest, keysGoByNameThenWidthHeightDepthAndType)
{
    const auto key = [](const char* name, int w, int h, int d, int type) {
        TextureManager::TextureKey made{name, formatOf(type)};
        made.format.width = w;
        made.format.height = h;
        made.format.depth = d;
        return made;
    };
    const TextureManager::TextureKey ascending[] = {key("a", 9, 9, 9, 9),  key("b", -1, 5, 5, 5), key("b", 0, 1, 9, 9),
                                                    key("b", 0, 2, 1, 9), key("b", 0, 2, 2, 1),  key("b", 0, 2, 2, 2)};
    for (int i = 0; i + 1 < 6; ++i)
    {
        EXPECT_TRUE(ascending[i] < ascending[i + 1]) << i;
        EXPECT_FALSE(ascending[i + 1] < ascending[i]) << i;
    }
}

TEST_F(TextureManagerTest, formatAndImageDecideTheKindOfUpload)
{
    const AM::Image row = makeImage(256, 1, {});
    const struct
    {
        int type;
        GLenum target;
        std::string upload;
    } cases[] = {
        {34, GL_TEXTURE_2D, call("gluBuild2DMipmaps", GL_TEXTURE_2D, 4, 256, 1, GL_BGRA, GL_UNSIGNED_BYTE)},
        {2, GL_TEXTURE_2D, call("glTexImage2D", GL_TEXTURE_2D, 0, 4, 256, 1, 0, GL_BGRA, GL_UNSIGNED_BYTE)},
        {3, GL_TEXTURE_2D, call("glTexImage2D", GL_TEXTURE_2D, 0, 4, 256, 1, 0, GL_BGRA, GL_UNSIGNED_BYTE)},
        {33, GL_TEXTURE_1D, call("gluBuild1DMipmaps", GL_TEXTURE_1D, 4, 256, GL_BGRA, GL_UNSIGNED_BYTE)},
        {1, GL_TEXTURE_1D, call("glTexImage1D", GL_TEXTURE_1D, 0, 4, 256, 0, GL_BGRA, GL_UNSIGNED_BYTE)},
    };
    for (const auto& one : cases)
    {
        GLFake::reset();
        const Texture texture = manager.loadTexture("row", row, formatOf(one.type));
        const std::vector<std::string> expected = {
            "glGenTextures",
            call("glBindTexture", one.target, 1),
            one.upload,
            call("glTexParameterf", one.target, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
            call("glTexParameterf", one.target, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
            call("glTexParameterf", one.target, GL_TEXTURE_WRAP_S, GL_REPEAT),
            call("glTexParameterf", one.target, GL_TEXTURE_WRAP_T, GL_REPEAT),
            call("glBindTexture", one.target, 0)};
        EXPECT_EQ(gl.calls, expected) << one.type;
        EXPECT_EQ(texture->mFormat.width, 256);
        EXPECT_EQ(texture->mFormat.height, 1);
        EXPECT_EQ(texture->mFormat.depth, 1);
    }
}

TEST_F(TextureManagerTest, aModeSwitchFreesTheNamesAndBringsThePixelsBack)
{
    const Texture texture = manager.loadTexture("a.png", pictureFormat, "");
    const std::vector<unsigned char> pixels = {1, 2, 3, 255, 4, 5, 6, 255};
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
    const struct
    {
        const char* file;
        int type;
        const char* text;
    } cases[] = {
        {"none.png", 34, "AM::loadImage, File not found (none.png)"},
        {"a.png", 50, "Could not creat render-target, proper extensions not found!"},
        {"a.png", 32, "Could not load 1x2 image"},
    };
    for (const auto& one : cases)
    {
        try
        {
            manager.loadTexture(one.file, formatOf(one.type), "");
            ADD_FAILURE() << one.text;
        }
        catch (const std::exception& exception)
        {
            EXPECT_STREQ(exception.what(), one.text);
        }
    }
    EXPECT_THROW(manager.loadTexture("null", AM::Image(), pictureFormat), AM::Exception);

    gl.error = GL_OUT_OF_MEMORY; // at the first check, right behind glGenTextures
    EXPECT_THROW(manager.loadTexture("a.png", pictureFormat, ""), Tidewheel::Exception);
    EXPECT_TRUE(gl.textures.empty());
    EXPECT_TRUE(manager.mTextures.empty());
    EXPECT_TRUE(archives.mImageManager->mImageCache.empty());
}
