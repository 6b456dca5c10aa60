#include "tw_device_sdl2d.h"
#include "tw_device_sdl3d.h"
#include "tw_effect3d.h"
#include "tw_exception.h"
#include "tw_glinclude.h"
#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"

#include "am_image.h"
#include "fe_texturemanager.h"

#include <SDL.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace
{

using Pixel = std::array<int, 3>; // red, green, blue

class DeviceTest : public testing::Test
{
protected:
    void open(int width, int height)
    {
        mDevice.open("device", width, height, false);
        // The window manager may have sent events of its own.
        mEvents.count = 0;
        mDevice.updateEvents(mEvents);
        mEvents.count = 0;
    }

    // The colour of a pixel of the frame, counted from the top left.
    Pixel at(int x, int y) const
    {
        unsigned char pixel[4];
        glReadPixels(x, mDevice.getHeight() - 1 - y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
        return {pixel[0], pixel[1], pixel[2]};
    }

    void clear(float red, float green, float blue)
    {
        glClearColor(red, green, blue, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }

    // The events of one poll after these have been queued.
    void poll(const std::vector<SDL_Event>& queue)
    {
        for (SDL_Event event : queue) SDL_PushEvent(&event);
        mEvents.count = 0;
        mDevice.updateEvents(mEvents);
    }

    static SDL_Event key(Uint8 type, SDLKey symbol, int modifiers = 0)
    {
        SDL_Event event = {};
        event.type = type;
        event.key.keysym.sym = symbol;
        event.key.keysym.mod = static_cast<SDLMod>(modifiers);
        event.key.keysym.scancode = 9;
        return event;
    }

    Tidewheel::DeviceSDL3D mDevice;
    Tidewheel::Event mRecords[Tidewheel::Events::CAPACITY];
    Tidewheel::Events mEvents{0, mRecords};
};

TEST_F(DeviceTest, keysCarryTheModifiersOfTheirMoment)
{
    open(64, 64);
    poll({key(SDL_KEYDOWN, SDLK_s, KMOD_RCTRL), key(SDL_KEYUP, SDLK_s, KMOD_LSHIFT | KMOD_NUM),
          key(SDL_KEYDOWN, SDLK_LSHIFT, KMOD_RALT | KMOD_CAPS)});
    ASSERT_EQ(3, mEvents.count);
    const Tidewheel::Event& down = mRecords[0];
    EXPECT_EQ(Tidewheel::EVENT_KEYDOWN, down.type);
    EXPECT_EQ(115, down.key);
    EXPECT_EQ(9, down.scancode);
    EXPECT_TRUE(down.ctrl && !down.shift && !down.alt);
    EXPECT_EQ(Tidewheel::EVENT_KEYUP, mRecords[1].type);
    EXPECT_TRUE(!mRecords[1].ctrl && mRecords[1].shift && !mRecords[1].alt);
    EXPECT_EQ(304, mRecords[2].key);
    EXPECT_TRUE(!mRecords[2].ctrl && !mRecords[2].shift && mRecords[2].alt);
    EXPECT_TRUE(mDevice.mAlt);
}

TEST_F(DeviceTest, aQuitAndAFullListEndThePollAndNothingIsLost)
{
    open(64, 64);
    SDL_Event quit = {};
    quit.type = SDL_QUIT;
    poll({key(SDL_KEYDOWN, SDLK_a), quit, key(SDL_KEYDOWN, SDLK_b)});
    ASSERT_EQ(2, mEvents.count);
    EXPECT_EQ(Tidewheel::EVENT_QUIT, mRecords[1].type);
    poll({});
    ASSERT_EQ(1, mEvents.count);
    EXPECT_EQ(SDLK_b, mRecords[0].key);

    std::vector<SDL_Event> burst(20, key(SDL_KEYDOWN, SDLK_a));
    burst[10] = key(SDL_KEYDOWN, SDLK_c);
    burst.push_back(key(SDL_KEYDOWN, SDLK_ESCAPE));
    poll(burst);
    ASSERT_EQ(Tidewheel::Events::CAPACITY, mEvents.count);
    poll({});
    ASSERT_EQ(Tidewheel::Events::CAPACITY, mEvents.count);
    EXPECT_EQ(SDLK_c, mRecords[0].key);
    poll({});
    ASSERT_EQ(1, mEvents.count);
    EXPECT_EQ(SDLK_ESCAPE, mRecords[0].key);
}

TEST_F(DeviceTest, everyFrameStartsFromTheSameState)
{
    open(64, 32);
    for (int frame = 0; frame < 40; frame++) // more than the attribute stack is deep
    {
        mDevice.beginFrame();
        GLint depth = 0, function = 0, viewport[4];
        glGetIntegerv(GL_CLIENT_ATTRIB_STACK_DEPTH, &depth);
        glGetIntegerv(GL_DEPTH_FUNC, &function);
        glGetIntegerv(GL_VIEWPORT, viewport);
        GLfloat colour[4], projection[16];
        glGetFloatv(GL_CURRENT_COLOR, colour);
        glGetFloatv(GL_PROJECTION_MATRIX, projection);
        EXPECT_EQ(1, depth);
        EXPECT_EQ(GL_LEQUAL, function);
        EXPECT_EQ(64, viewport[2]);
        EXPECT_EQ(0.5f, colour[3]);
        EXPECT_NEAR(2.41421f, projection[5], 1e-4f); // the cotangent of half of 45 degrees
        EXPECT_NEAR(2.41421f / 2.0f, projection[0], 1e-4f);
        EXPECT_FALSE(glIsEnabled(GL_FOG) || glIsEnabled(GL_BLEND) || glIsEnabled(GL_TEXTURE_2D));

        for (const GLenum feature : {GL_FOG, GL_BLEND, GL_TEXTURE_2D}) glEnable(feature);
        glDepthFunc(GL_GREATER);
        glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
        glViewport(0, 0, 1, 1);
        mDevice.endFrame();
    }
    EXPECT_EQ(static_cast<GLenum>(GL_NO_ERROR), glGetError());
}

TEST_F(DeviceTest, anErrorLeftByAnEffectIsFoundByTheNextFrame)
{
    open(64, 64);
    mDevice.beginFrame();
    glEnable(0xFFFF);
    mDevice.endFrame();
    try
    {
        mDevice.beginFrame();
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const Tidewheel::Exception& exception)
    {
        const std::string text = exception.what();
        EXPECT_EQ(0u, text.find("[Tidewheel] GL-error at ["));
        EXPECT_NE(std::string::npos,
                  text.find("lib/tidewheel/source/tw_device_sdl3d.cpp\nLine: glShadeModel(GL_SMOOTH)\n"
                            "Error: 'GL_INVALID_ENUM'"))
            << text;
    }
}

TEST_F(DeviceTest, picturesComeOutTopRowFirst)
{
    open(66, 34); // rows of 3 bytes a pixel that do not end at a multiple of four
    mDevice.beginFrame();
    clear(0.0f, 0.0f, 1.0f);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 33, 1, 1);
    clear(1.0f, 0.0f, 0.0f);
    mDevice.endFrame();

    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
    image->resize(66, 34);
    mDevice.getScreenShot(image);
    const unsigned char* bgra = image->getData();
    EXPECT_EQ((std::vector<int>{0, 0, 255, 255, 255, 0, 0, 255}), std::vector<int>(bgra, bgra + 8));
    EXPECT_EQ((std::vector<int>{255, 0, 0, 255}), std::vector<int>(bgra + 33 * 66 * 4, bgra + 33 * 66 * 4 + 4));

    std::vector<unsigned char> rgb(66 * 34 * 3 + 4, 7);
    mDevice.getScreenShotRGB24(rgb.data());
    EXPECT_EQ((std::vector<unsigned char>{255, 0, 0, 0, 0, 255}),
              std::vector<unsigned char>(rgb.begin(), rgb.begin() + 6));
    EXPECT_EQ((std::vector<unsigned char>{0, 0, 255, 7, 7, 7, 7}),
              std::vector<unsigned char>(rgb.end() - 7, rgb.end()));
}

TEST_F(DeviceTest, picturesOfAnOddHeightOrInASharedImageAreRefused)
{
    ShowFolder folder;
    AM::ArchiveManager archives;
    archives.addArchive(folder.mPath);
    AM::Image shared = archives.loadImage("tidewheel_logo.png", -1, false);
    shared->resize(64, 64);
    open(64, 64);
    EXPECT_THROW(mDevice.getScreenShot(shared), AM::Exception);
    mDevice.open("odd", 64, 65, false);
    shared->resize(64, 65);
    EXPECT_THROW(mDevice.getScreenShot(shared), Tidewheel::Exception);
    EXPECT_THROW(mDevice.getScreenShotRGB24(nullptr), Tidewheel::Exception);
}

TEST_F(DeviceTest, theHUDLiesInTheMiddleAndIsUploadedOnlyWhenItChanged)
{
    ShowFolder folder;
    AM::ArchiveManager archives;
    archives.addArchive(folder.mPath);
    Tidewheel::HUD hud(archives);
    const int size = hud.mWidth * hud.mHeight;
    open(640, 480); // lower than the HUD, which is scaled to 480 by 480
    const auto draw = [&](std::uint32_t upper, bool dirty, bool visible) {
        std::fill(hud.mData, hud.mData + size, 0xFF00FF00u);
        std::fill(hud.mData, hud.mData + size / 2, upper);
        hud.mDirty = dirty;
        hud.mVisible = visible;
        mDevice.endFrame(); // of the last call
        mDevice.beginFrame();
        clear(0.0f, 0.0f, 1.0f);
        mDevice.displayHUD(hud);
    };
    const Pixel red = {255, 0, 0}, green = {0, 255, 0}, blue = {0, 0, 255};
    draw(0xFFFF0000, true, true);
    EXPECT_EQ((std::vector<Pixel>{red, red, green, green, blue, blue}),
              (std::vector<Pixel>{at(80, 0), at(559, 0), at(80, 479), at(559, 479), at(79, 479), at(560, 0)}));
    EXPECT_FALSE(hud.mDirty);
    draw(0xFFFFFFFF, true, false);
    EXPECT_EQ(blue, at(320, 100));
    draw(0xFFFFFFFF, false, true);
    EXPECT_EQ(red, at(320, 100));
    draw(0xFFFFFFFF, true, true);
    EXPECT_EQ((Pixel{255, 255, 255}), at(320, 100));
}

TEST_F(DeviceTest, theMiniHUDSitsFivePixelsFromTheCorner)
{
    ShowFolder folder;
    AM::ArchiveManager archives;
    archives.addArchive(folder.mPath);
    Tidewheel::MiniHUD hud(archives);
    std::fill(hud.mData, hud.mData + 64 * 32, 0x80FFFFFFu);

    open(320, 240);
    glViewport(0, 0, 800, 600); // as the setup of an effect may leave it
    mDevice.beginFrame();
    clear(0.0f, 0.0f, 0.0f);
    mDevice.displayMiniHUD(hud);
    const Pixel grey = at(251, 203);
    EXPECT_NEAR(128, grey[0], 2); // half of white: alpha takes effect
    EXPECT_EQ(grey, at(314, 234));
    EXPECT_EQ((Pixel{0, 0, 0}), at(250, 210));
    EXPECT_EQ((Pixel{0, 0, 0}), at(315, 210));
    EXPECT_EQ((Pixel{0, 0, 0}), at(260, 202));
    EXPECT_EQ((Pixel{0, 0, 0}), at(260, 235));
    mDevice.endFrame();
}

TEST_F(DeviceTest, aChangeOfModeBringsTheTexturesBack)
{
    ShowFolder folder;
    AM::ArchiveManager archives;
    archives.addArchive(folder.mPath);
    Tidewheel::MiniHUD mini(archives);
    open(320, 240);

    AM::Image red(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
    red->resize(2, 2);
    for (int i = 0; i < 16; i++) red->getWriteData()[i] = i % 4 == 2 || i % 4 == 3 ? 255 : 0;
    Fennel::TextureFormat format;
    format.type = 34;
    Fennel::Texture texture = mDevice.mTextureManager->loadTexture("red", red, format);

    for (bool fullscreen : {true, false, true})
    {
        mDevice.beginFrame();
        mDevice.displayMiniHUD(mini);
        mDevice.endFrame();
        EXPECT_NE(0u, mDevice.mMiniHudTexture);

        mDevice.setFullscreen(fullscreen);
        EXPECT_EQ(fullscreen, mDevice.isFullscreen());
        EXPECT_EQ(0u, mDevice.mMiniHudTexture);

        mDevice.beginFrame();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glEnable(GL_TEXTURE_2D);
        texture->bind();
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        glRectf(-1.0f, -1.0f, 1.0f, 1.0f);
        EXPECT_EQ((Pixel{255, 0, 0}), at(160, 120));
        mDevice.endFrame();
    }
}

TEST_F(DeviceTest, findsWholeExtensionsOnly)
{
    mDevice.mExtensions = "GL_ARB_multitexture GL_ARB_vertex_buffer_object2 GL_ARB_vertex_buffer_object GL_EXT_last";
    EXPECT_TRUE(mDevice.hasExtension("GL_ARB_multitexture"));
    EXPECT_TRUE(mDevice.hasExtension("GL_ARB_vertex_buffer_object"));
    EXPECT_TRUE(mDevice.hasExtension("GL_EXT_last"));
    EXPECT_FALSE(mDevice.hasExtension("GL_EXT_las"));
    EXPECT_FALSE(mDevice.hasExtension("GL_ARB"));
    EXPECT_FALSE(mDevice.hasExtension(""));
    open(64, 64);
    EXPECT_TRUE(mDevice.hasExtension("GL_ARB_vertex_buffer_object"));
}

class SetupProbe : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override
    {
        mSeen = &archive;
        mSetupBefore = mSetup;
    }
    void update(float, float, float) override {}

    AM::ArchiveManager* mSeen = nullptr;
    bool mSetupBefore = true;
};

TEST_F(DeviceTest, anEffectIsGivenItsDeviceTexturesAndArchives)
{
    open(64, 64);
    AM::ArchiveManager archives;
    SetupProbe effect;
    effect.setupInternal(&mDevice, &archives);
    EXPECT_EQ(&archives, effect.mSeen);
    EXPECT_FALSE(effect.mSetupBefore);
    EXPECT_TRUE(effect.mSetup);
    EXPECT_EQ(&mDevice, effect.mDevice);
    EXPECT_EQ(mDevice.mTextureManager, effect.mTextureManager);
    EXPECT_EQ(&archives, effect.mTextureManager->mArchiveManager);

    Tidewheel::DeviceSDL2D software;
    EXPECT_THROW(SetupProbe().setupInternal(&software, &archives), Tidewheel::Exception);
}

} // namespace
