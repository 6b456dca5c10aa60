#include "view/viewer.h"

#include "am.h"
#include "am_imagecodec_png.h"
#include "tw_glinclude.h"
#include "y3d_exception.h"

#include <SDL.h>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace
{

const float FRAME = 0.04f;              // seconds that a step goes
const float DRAG_TURN = 0.008f;         // radians a pixel
const unsigned int LOOK_EVERY = 250;    // milliseconds between looks at the file on disk
const unsigned int SHORTEST_FRAME = 10; // milliseconds; a viewer need not heat the room
const float FULL_TURN = 6.2831853f;
const unsigned char BACKGROUND[] = {48, 43, 41, 255}; // blue, green, red, alpha

// What tells one state of a file from another: when it was changed and how long it is. Empty while it is not there.
std::string stampOf(const std::string& filename)
{
    struct stat state;
    if (stat(filename.c_str(), &state) != 0) return "";
    return std::to_string(state.st_mtim.tv_sec) + "." + std::to_string(state.st_mtim.tv_nsec) + " " +
           std::to_string(state.st_size);
}

void writePng(const std::string& filename, int width, int height, const std::vector<unsigned char>& pixels)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, filename);
    image.resize(width, height);
    std::memcpy(image.getWriteData(), pixels.data(), pixels.size());
    unsigned char* bytes = nullptr;
    std::size_t length = 0;
    if (!AM::ImageCodecPNG().encodeImage(&bytes, &length, image))
        throw y3d::Exception("%s: The picture cannot be encoded", filename.c_str());
    const std::unique_ptr<unsigned char[]> owner(bytes);
    std::FILE* file = std::fopen(filename.c_str(), "wb");
    const bool isWritten = file && std::fwrite(bytes, 1, length, file) == length;
    if ((file && std::fclose(file) != 0) || !isWritten)
        throw y3d::Exception("%s: The picture cannot be written", filename.c_str());
}

} // namespace

Viewer::Viewer(const ViewSettings& settings, bool isInteractive)
    : mSettings(settings), mWindow(settings.source.file, settings.width, settings.height, isInteractive),
      mScene(new ViewScene(settings.source)), mTime(settings.time), mStamp(stampOf(settings.source.file)), mSeen(mStamp)
{
    const std::vector<std::string>& cameras = mScene->mCameras;
    if (!settings.camera.empty() && settings.camera != "free" &&
        std::find(cameras.begin(), cameras.end(), settings.camera) == cameras.end())
        throw y3d::Exception("%s: There is no camera '%s' at the top of the scene", settings.source.file.c_str(),
                             settings.camera.c_str());
    if (settings.camera.empty())
        mCamera = cameras.empty() ? "" : cameras.front();
    else if (settings.camera != "free")
        mCamera = settings.camera;
    mScene->moveTo(mTime, "", mFree.getCamera(), 1);
    mFree.lookAt(mScene->getBox());
}

void Viewer::run()
{
    unsigned int last = mWindow.getTicks(), lastLook = last;
    while (!mHasEnded)
    {
        readInput();
        const unsigned int now = mWindow.getTicks();
        const float seconds = static_cast<float>(now - last) / 1000.0f;
        last = now;
        if (seconds > 0) mFrameRate += 0.1f * (1.0f / seconds - mFrameRate);
        flyWithKeys(seconds);
        // Behind its last key a scene starts over; one that never moves stands at its time.
        if (!mIsPaused && mScene->mEnd > 0) jumpTo(mTime + seconds > mScene->mEnd ? 0 : mTime + seconds);
        if (now - lastLook >= LOOK_EVERY)
        {
            lastLook = now;
            if (hasFileChanged()) reload();
        }

        draw();
        const Fennel::Sorrel::Node* marked = mScene->nodeAt(mMouseX, mMouseY, mWindow.getWidth(), mWindow.getHeight());
        mMarked = marked ? marked->mName : "";
        if (mSettings.hasBoxes) mScene->drawBoxes(marked);
        mWindow.show();
        mWindow.setTitle(title());
        const unsigned int spent = mWindow.getTicks() - now;
        if (spent < SHORTEST_FRAME) SDL_Delay(SHORTEST_FRAME - spent);
    }
}

void Viewer::writePicture(const std::string& filename)
{
    draw();
    if (mSettings.hasBoxes) mScene->drawBoxes(nullptr);
    writePng(filename, mWindow.getWidth(), mWindow.getHeight(), readPixels());
}

void Viewer::writeTurntable(const std::string& filename, int count)
{
    const int columns = static_cast<int>(std::ceil(std::sqrt(count))), rows = (count + columns - 1) / columns;
    const std::size_t width = static_cast<std::size_t>(mWindow.getWidth()), height = mWindow.getHeight();
    std::vector<unsigned char> sheet(width * columns * height * rows * 4);
    for (std::size_t i = 0; i < sheet.size(); ++i) sheet[i] = BACKGROUND[i % 4];
    goFree();
    mFree.lookAt(mScene->getBox());
    for (int i = 0; i < count; ++i)
    {
        draw();
        if (mSettings.hasBoxes) mScene->drawBoxes(nullptr);
        const std::vector<unsigned char> pixels = readPixels();
        for (std::size_t y = 0; y < height; ++y)
            std::memcpy(&sheet[((i / columns * height + y) * columns + i % columns) * width * 4],
                        &pixels[y * width * 4], width * 4);
        mFree.orbit(FULL_TURN / static_cast<float>(count), 0);
    }
    writePng(filename, static_cast<int>(width) * columns, static_cast<int>(height) * rows, sheet);
}

void Viewer::readInput()
{
    for (const ViewInput& input : mWindow.poll())
    {
        switch (input.kind)
        {
        case ViewInput::KEY:
            processKey(input);
            break;
        case ViewInput::DRAG:
            drag(input);
            break;
        case ViewInput::WHEEL:
            goFree();
            mFree.zoom(input.y > 0 ? 0.9f : 1.0f / 0.9f);
            break;
        case ViewInput::MOVE:
            mMouseX = input.x;
            mMouseY = input.y;
            break;
        case ViewInput::RESIZE:
            break; // the next frame takes the new size
        case ViewInput::QUIT:
            mHasEnded = true;
            break;
        }
    }
}

void Viewer::processKey(const ViewInput& input)
{
    const float step = input.shift ? 1.0f : FRAME;
    switch (input.key)
    {
    case SDLK_ESCAPE:
        mHasEnded = true;
        break;
    case SDLK_SPACE:
        mIsPaused = !mIsPaused;
        break;
    case SDLK_LEFT:
    case SDLK_RIGHT:
        mIsPaused = true;
        jumpTo(mTime + (input.key == SDLK_RIGHT ? step : -step));
        break;
    case SDLK_HOME:
        jumpTo(0);
        break;
    case SDLK_END:
        jumpTo(mScene->mEnd);
        break;
    case SDLK_c:
        chooseNextCamera();
        break;
    case SDLK_f:
        goFree();
        mFree.lookAt(mScene->getBox());
        break;
    case SDLK_z:
        mSettings.isWireframe = !mSettings.isWireframe;
        break;
    case SDLK_b:
        mSettings.hasBoxes = !mSettings.hasBoxes;
        break;
    case SDLK_r:
        reload();
        break;
    case SDLK_p:
        try
        {
            draw();
            writePng("screenshot.png", mWindow.getWidth(), mWindow.getHeight(), readPixels());
            std::printf("screenshot.png\n");
        }
        catch (const std::exception& error)
        {
            std::fprintf(stderr, "y3d: %s\n", error.what()); // the session goes on
        }
        break;
    default:
        break;
    }
}

void Viewer::drag(const ViewInput& input)
{
    goFree();
    const float x = static_cast<float>(input.x), y = static_cast<float>(input.y);
    const float height = static_cast<float>(mWindow.getHeight());
    if (input.button == 2 || (input.button == 1 && input.shift))
        mFree.pan(-x / height, y / height);
    else if (input.button == 1)
        mFree.orbit(-x * DRAG_TURN, y * DRAG_TURN);
    else
        mFree.turn(-x * DRAG_TURN, y * DRAG_TURN);
}

void Viewer::flyWithKeys(float seconds)
{
    const auto axis = [this](int more, int less) {
        return static_cast<float>(mWindow.isHeld(more)) - static_cast<float>(mWindow.isHeld(less));
    };
    const float right = axis(SDLK_d, SDLK_a), up = axis(SDLK_e, SDLK_q), ahead = axis(SDLK_w, SDLK_s);
    if (right == 0 && up == 0 && ahead == 0) return;
    goFree();
    mFree.fly(right * seconds, up * seconds, ahead * seconds);
}

// Through all cameras of the scene and then the free one.
void Viewer::chooseNextCamera()
{
    const std::vector<std::string>& cameras = mScene->mCameras;
    if (mCamera.empty())
    {
        if (!cameras.empty()) mCamera = cameras.front();
        return;
    }
    const auto next = std::find(cameras.begin(), cameras.end(), mCamera);
    if (next == cameras.end() || next + 1 == cameras.end())
        goFree();
    else
        mCamera = *(next + 1);
}

// The free camera goes on from what is seen.
void Viewer::goFree()
{
    if (mCamera.empty()) return;
    mFree.takeOver(mScene->getCamera(), mScene->getBox());
    mCamera.clear();
}

void Viewer::jumpTo(float time)
{
    mTime = std::max(time, 0.0f);
}

// A file that is being written is left alone until it was the same twice.
bool Viewer::hasFileChanged()
{
    const std::string stamp = stampOf(mSettings.source.file);
    const bool isSettled = stamp == mSeen;
    mSeen = stamp;
    return isSettled && !stamp.empty() && stamp != mStamp;
}

// What is shown stays where the new file cannot be shown.
void Viewer::reload()
{
    mStamp = stampOf(mSettings.source.file);
    mTrouble.clear();
    try
    {
        mScene = std::make_unique<ViewScene>(mSettings.source);
        const std::vector<std::string>& cameras = mScene->mCameras;
        if (!mCamera.empty() && std::find(cameras.begin(), cameras.end(), mCamera) == cameras.end())
            mCamera = cameras.empty() ? "" : cameras.front();
    }
    catch (const std::exception& error)
    {
        mTrouble = error.what();
        std::fprintf(stderr, "y3d: %s\n", error.what());
    }
}

void Viewer::draw()
{
    glViewport(0, 0, mWindow.getWidth(), mWindow.getHeight());
    glClearColor(static_cast<float>(BACKGROUND[2]) / 255, static_cast<float>(BACKGROUND[1]) / 255,
                 static_cast<float>(BACKGROUND[0]) / 255, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const float aspect = static_cast<float>(mWindow.getWidth()) / static_cast<float>(mWindow.getHeight());
    mScene->moveTo(mTime, mCamera, mFree.getCamera(), aspect);
    mScene->draw(mSettings.isWireframe);
}

std::string Viewer::title() const
{
    char text[256];
    std::snprintf(text, sizeof(text), " - %.2f of %.2f s%s - %.0f fps - %d nodes, %d triangles",
                  static_cast<double>(mTime), static_cast<double>(mScene->mEnd), mIsPaused ? " (paused)" : "",
                  static_cast<double>(mFrameRate), mScene->mNodes, mScene->mTriangles);
    std::string title = mSettings.source.file + (mCamera.empty() ? " - free camera" : " - camera '" + mCamera + "'");
    if (mScene->mCameras.empty()) title += " (the scene has none)";
    if (!mScene->mHasLights) title += " - no light in the scene";
    title += text;
    if (!mMarked.empty()) title += " - '" + mMarked + "'";
    if (!mTrouble.empty()) title += " - NOT RELOADED: " + mTrouble;
    return title;
}

// The frame in the back buffer, top row first, opaque.
std::vector<unsigned char> Viewer::readPixels() const
{
    const std::size_t width = mWindow.getWidth(), height = mWindow.getHeight();
    std::vector<unsigned char> pixels(width * height * 4), flipped(pixels.size());
    glReadPixels(0, 0, mWindow.getWidth(), mWindow.getHeight(), GL_BGRA, GL_UNSIGNED_BYTE, pixels.data());
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    for (std::size_t y = 0; y < height; ++y)
        std::memcpy(&flipped[y * width * 4], &pixels[(height - 1 - y) * width * 4], width * 4);
    return flipped;
}
