#include "tw_base.h"

#include "tw_device_sdl2d.h"
#include "tw_effect.h"
#include "tw_exception.h"
#include "tw_hud.h"
#include "tw_minihud.h"

#include "am_image.h"
#include "am_videofile.h"
#include "fsound.h"
#include "script_savexml.h"
#include "xml_exception.h"

#include <SDL.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <exception>
#include <numeric>

namespace Tidewheel
{

namespace
{

// A point of the show in the milliseconds of the stream, truncated. What no int can hold becomes the nearest one.
int toMilliseconds(float seconds)
{
    const float milliseconds = seconds * 1000.0f;
    if (!(milliseconds > static_cast<float>(INT_MIN))) return INT_MIN;
    if (!(milliseconds < static_cast<float>(INT_MAX))) return INT_MAX;
    return static_cast<int>(milliseconds);
}

// The wall clock in seconds, for what happens outside the show.
float wallTime()
{
    return static_cast<float>(SDL_GetTicks() / 1000.0);
}

template <typename Value> std::string printed(const char* format, Value value)
{
    char text[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, format, value);
#pragma GCC diagnostic pop
    return text;
}

bool isKeyDown(const Event& event, int key)
{
    return event.type == EVENT_KEYDOWN && event.key == key;
}

// The user wants to leave.
bool isExit(const Event& event)
{
    return event.type == EVENT_QUIT || isKeyDown(event, SDLK_ESCAPE);
}

} // namespace

// What lives as long as the main loop.
struct Base::Loop
{
    static const int SAMPLE_COUNT = 32;

    float time;           // seconds; the time of this frame
    Uint32 lastTicks = 0; // milliseconds; start of the last frame
    bool running = true;
    float samples[SAMPLE_COUNT] = {}; // ring of frames per second, one for each time event
    unsigned int sampleIndex = 0;
    int dumpCounter = 0; // drawn frames since the last dumped one; 0 dumps
    AM::Image image;     // of the device's size from the first screenshot or dumped frame on

    explicit Loop(float startTime) : time(startTime), image(new AM::ImageObject(0, 0, nullptr, nullptr, "")) {}
};

Base::Base()
    : mStream(nullptr), mPauseTime(0.0f), mPaused(false), mMute(false), mLoaded(false), mFullscreen(false),
      mLastHudTicks(0), mStartTime(0.0f), mFrameTime(0.0f), mDevice(nullptr), mLoadingEffect(nullptr), mHUD(nullptr),
      mMiniHUD(nullptr), mTimeOffset(0), mVideoFile(nullptr), mFrameSkip(0)
{
    mEvents.events = new Event[Events::CAPACITY];

    // A file that would grow too long, or a pipe that nobody reads any more, is a write that fails, and no reason to
    // end without saving.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

Base::~Base() noexcept(false)
{
    std::exception_ptr failure;
    try
    {
        if (mLoaded) save();
    }
    catch (...)
    {
        failure = std::current_exception();
    }

    closeMusic();
    delete mVideoFile;
    delete mHUD;
    delete mMiniHUD;
    delete mDevice;
    delete[] mEvents.events;

    if (!failure) return;
    if (std::uncaught_exceptions() == 0) std::rethrow_exception(failure);
    try
    {
        std::rethrow_exception(failure);
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "Error: %s\n", exception.what());
    }
    catch (...)
    {
        std::fprintf(stderr, "Error: Unknown exception!\n");
    }
}

void Base::addEffect(const std::string& name, Effect* effect)
{
    mScriptEngine.addCallback(name, effect);
}

void Base::addArchive(const std::string& uri)
{
    if (!uri.empty()) mArchives.addArchive(uri);
}

void Base::addScreenshotArchive(const std::string& uri)
{
    if (!uri.empty()) mScreenshotArchives.addArchive(uri);
}

float Base::getMusicTime() const
{
    if (mPaused) return mPauseTime;
    return static_cast<float>((SDL_GetTicks() - static_cast<Uint32>(mTimeOffset)) / 1000.0);
}

void Base::setMusicTime(float seconds)
{
    if (!mPaused)
    {
        // Without music the clock goes exactly where it is told.
        int position = std::max(toMilliseconds(seconds), 0);
        if (mStream)
        {
            FSOUND_Stream_SetTime(mStream, toMilliseconds(seconds));
            position = FSOUND_Stream_GetTime(mStream);
        }
        mTimeOffset = static_cast<int>(SDL_GetTicks() - static_cast<Uint32>(position));
    }
    mPauseTime = seconds;
}

void Base::closeMusic()
{
    if (!mStream) return;
    FSOUND_Stream_Close(mStream);
    FSOUND_Close();
    mStream = nullptr;
}

void Base::run()
{
    checkWindow();
    setupEffects();
    startMusic();

    Loop loop(mStartTime);
    while (loop.running) runFrame(loop);

    closeMusic();
}

void Base::checkWindow() const
{
    if (!mDevice)
        throw Exception(mLoaded ? "[Tidewheel] There is no window tag in 'tidewheel.xml'"
                                : "[Tidewheel] The root tag of 'tidewheel.xml' is not 'demo'");
    if (dynamic_cast<const DeviceSDL2D*>(mDevice))
        throw Exception("[Tidewheel] The window in 'tidewheel.xml' is not of the type 'opengl'");
    if (!mVideoFile) return;
    if (mDevice->getHeight() % 2 != 0)
        throw Exception("[Tidewheel] Frames can be dumped only from a window of even height (%d)",
                        mDevice->getHeight());
    if (mVideoFile->getFormat().frameRate < 1)
        throw Exception("[Tidewheel] The fps of the videodump in 'tidewheel.xml' must be at least 1 (%d)",
                        mVideoFile->getFormat().frameRate);
}

// Sets up all effects, in the order of their names, and shows after each how far it is.
void Base::setupEffects()
{
    const int entries = static_cast<int>(mScriptEngine.mEffects.size());
    if (mLoadingEffect)
    {
        mLoadingEffect->setupInternal(mDevice, &mArchives);
        mLoadingEffect->executeTrigger(0.0f, "max", printed("%d", entries));
    }

    int index = 0;
    for (const auto& callback : mScriptEngine.mCallbacks)
    {
        mEvents.count = 0;
        mDevice->updateEvents(mEvents);
        if (std::any_of(mEvents.events, mEvents.events + mEvents.count, isExit)) throw Exception("User aborted!");

        // addEffect lets nothing but effects into the map.
        static_cast<Effect*>(callback.second)->setupInternal(mDevice, &mArchives);
        mDevice->beginFrame();
        showLoading(index++);
        mDevice->endFrame();
    }
}

void Base::showLoading(int index)
{
    const float done = static_cast<float>(index);
    const float callbacks = static_cast<float>(mScriptEngine.mCallbacks.size());
    if (!mLoadingEffect)
    {
        mDevice->displayLoadingBar(callbacks > 1.0f ? done / (callbacks - 1.0f) : 1.0f);
        return;
    }

    // The share of the work is measured against the entries of the script, for which an empty one stands as one.
    const float entries = static_cast<float>(std::max<std::size_t>(mScriptEngine.mEffects.size(), 1));
    const float time = wallTime();
    mLoadingEffect->executeTrigger(time, "percent", printed("%f", static_cast<double>(done / callbacks)));
    mLoadingEffect->executeTrigger(time, "index", printed("%d", index));
    mLoadingEffect->update(time, 0.0f, done / entries);
}

// Starts the stream and takes it to the start of the show. Some streams need to run for a moment before they can tell
// a position after a seek, hence three seeks, under mute.
void Base::startMusic()
{
    const int pause = 50; // milliseconds
    if (mStream)
    {
        FSOUND_Stream_Play(FSOUND_FREE, mStream);
        FSOUND_SetMute(FSOUND_ALL, true);
    }
    setMusicTime(mStartTime);
    SDL_Delay(pause);
    setMusicTime(mStartTime);
    SDL_Delay(pause);
    setMusicTime(mStartTime);
    if (mStream) FSOUND_SetMute(FSOUND_ALL, mMute);
}

void Base::runFrame(Loop& loop)
{
    processInput(loop);
    advanceTime(loop);
    updateHUDs(loop);

    mDevice->beginFrame();
    if (!mScriptEngine.update(loop.time)) loop.running = false;
    mDevice->displayHUD(*mHUD);
    if (mMiniHUD->mVisible) mDevice->displayMiniHUD(*mMiniHUD);
    mDevice->endFrame();

    if (mVideoFile) dumpFrame(loop);
    if (mDevice->isFullscreen() != mFullscreen) mDevice->setFullscreen(mFullscreen);
}

void Base::processInput(Loop& loop)
{
    mEvents.count = 0;
    mDevice->updateEvents(mEvents);
    for (int i = 0; i < mEvents.count; i++)
    {
        const Event& event = mEvents.events[i];
        if (isExit(event) && !mHUD->mVisible) loop.running = false;
        if (event.type == EVENT_KEYDOWN && !mHUD->mTextField) processKey(event, loop);
    }
}

void Base::processKey(const Event& event, Loop& loop)
{
    switch (event.key)
    {
    case SDLK_RETURN:
        if (event.ctrl || event.alt) mFullscreen = !mFullscreen;
        break;
    case SDLK_p:
        processStartKey(event);
        break;
    case SDLK_s:
        if (event.ctrl)
            saveScript();
        else if (!mVideoFile)
            writeScreenShot(loop.image);
        break;
    case SDLK_m:
        mMute = !mMute;
        if (mStream) FSOUND_SetMute(FSOUND_ALL, mMute);
        break;
    case SDLK_PAGEUP:
        seek(event, 1.0f);
        break;
    case SDLK_PAGEDOWN:
        seek(event, -1.0f);
        break;
    case SDLK_SPACE:
        togglePause();
        break;
    case SDLK_TAB:
        mHUD->mVisible = !mHUD->mVisible;
        break;
    case SDLK_f:
        mMiniHUD->mVisible = !mMiniHUD->mVisible;
        break;
    }
}

// P goes to the start of the show, with Alt to a new start at 0; with Ctrl the start comes to where the show is.
void Base::processStartKey(const Event& event)
{
    if (event.ctrl)
    {
        mStartTime = getMusicTime();
        return;
    }
    if (event.alt) mStartTime = 0.0f;
    setMusicTime(mStartTime);
}

// Five pixels of the HUD's axis forward or back, with Ctrl and with Shift five more each. Back ends at 0; forward also
// goes on from a start that lies before it.
void Base::seek(const Event& event, float direction)
{
    const float distance = mHUD->getTimePerPixel() * 5.0f;
    const float factor = 1.0f + (event.ctrl ? 1.0f : 0.0f) + (event.shift ? 1.0f : 0.0f);
    const float target = getMusicTime() + direction * factor * distance;
    setMusicTime(direction < 0.0f ? std::max(target, 0.0f) : target);
}

void Base::togglePause()
{
    if (!mPaused)
    {
        mPauseTime = getMusicTime();
        if (mStream) FSOUND_Stream_Stop(mStream);
        mPaused = true;
        return;
    }

    if (mStream) FSOUND_Stream_Play(FSOUND_FREE, mStream);
    mPaused = false;
    setMusicTime(mPauseTime);
}

void Base::saveScript()
{
    try
    {
        Script::SaveXML writer;
        writeText(mScriptFile, writer.saveMem(mScriptEngine));
    }
    catch (const Xml::XmlException& exception)
    {
        // Nested so deep that no file holds it; the file stays as it was, and the show goes on.
        std::fprintf(stderr, "[Tidewheel] The script cannot be saved: %s\n", exception.what());
    }
}

void Base::writeScreenShot(AM::Image& image)
{
    // A wrong window height is no reason to lose what an author has been working on.
    if (mDevice->getHeight() % 2 != 0)
    {
        std::fprintf(stderr, "[Tidewheel] A screenshot needs a window of even height (%d)\n", mDevice->getHeight());
        return;
    }
    sizeImage(image);
    mDevice->getScreenShot(image);
    mScreenshotArchives.writeImage("screenshot.png", image);
}

// Gives the image the device's size, unless it has it already. True if it was given now.
bool Base::sizeImage(AM::Image& image) const
{
    if (image->getWidth() != 0) return false;
    image->resize(mDevice->getWidth(), mDevice->getHeight());
    return true;
}

void Base::advanceTime(Loop& loop)
{
    if (mPaused)
        loop.time = mPauseTime;
    else if (!mVideoFile)
        loop.time = getMusicTime();
    else
    {
        const AM::VideoFile::Format format = mVideoFile->getFormat();
        const float frame = static_cast<float>(format.frameRateBase) / static_cast<float>(format.frameRate);
        const float next = loop.time + frame / static_cast<float>(mFrameSkip);
        if (!(next > loop.time))
            throw Exception("[Tidewheel] The step between frames is too small to go on from %g seconds",
                            static_cast<double>(loop.time));
        loop.time = next;
    }

    const float weight = 0.99f; // of the frames so far in the running average
    const Uint32 ticks = SDL_GetTicks();
    const float frameTime = static_cast<float>((ticks - loop.lastTicks) / 1000.0);
    loop.lastTicks = ticks;
    mFrameTime = weight * mFrameTime + (1.0f - weight) * frameTime;
}

// While a HUD is on screen, gives it the events of the frame and, about once a pixel of its axis, the time.
void Base::updateHUDs(Loop& loop)
{
    if (!mHUD->mVisible && !mMiniHUD->mVisible) return;

    // In a frame with a full list the time waits for the next one.
    const float pixel = mHUD->getTimePerPixel() * 1000.0f;
    const Uint32 ticks = SDL_GetTicks();
    if (static_cast<float>(ticks) > static_cast<float>(mLastHudTicks) + pixel && !mEvents.isFull())
    {
        mLastHudTicks = static_cast<int>(ticks);
        loop.samples[loop.sampleIndex++ % Loop::SAMPLE_COUNT] = 1.0f / mFrameTime;

        Event event;
        event.type = EVENT_TIME;
        event.time = loop.time;
        event.start = mStartTime;
        event.fps = 0.0f;
        if (loop.time - mPauseTime > 0.1f)
            event.fps = std::accumulate(loop.samples, loop.samples + Loop::SAMPLE_COUNT, 0.0f) / Loop::SAMPLE_COUNT;
        mEvents.append(event);
    }

    if (mHUD->mVisible) mHUD->processEvents(mEvents);
    if (mMiniHUD->mVisible) mMiniHUD->processEvents(mEvents);
}

void Base::dumpFrame(Loop& loop)
{
    if (loop.dumpCounter == 0)
    {
        if (sizeImage(loop.image)) mVideoFile->attach(loop.image);
        mDevice->getScreenShot(loop.image);
        mVideoFile->writeFrame();
    }
    loop.dumpCounter = (loop.dumpCounter + 1) % mFrameSkip;
}

} // namespace Tidewheel
