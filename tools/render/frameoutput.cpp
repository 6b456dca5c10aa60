#include "frameoutput.h"

#include "am_exception.h"
#include "am_imagecodec_png.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>

namespace
{

const std::size_t WAITING_FRAMES = 8; // at most, besides those that are being written

AM::VideoFile* makeFrameOutput()
{
    return new FrameOutput;
}

// Before `main` asks for something that writes frames.
const bool IS_OFFERED = AM::VideoFile::offer(makeFrameOutput);

// Writes all of a block; the reason where that fails.
std::string writeAll(int descriptor, const unsigned char* data, std::size_t length)
{
    while (length > 0)
    {
        const ssize_t written = ::write(descriptor, data, length);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return std::strerror(errno);
        data += written;
        length -= static_cast<std::size_t>(written);
    }
    return "";
}

// Of all threads of the program since its start, in milliseconds.
int processorTime()
{
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<int>(time.tv_sec * 1000 + time.tv_nsec / 1000000);
}

} // namespace

FrameOutput::FrameOutput() = default;

FrameOutput::~FrameOutput()
{
    finish();
}

void FrameOutput::attach(AM::Image& image)
{
    mImage = image;
}

bool FrameOutput::openForWrite(const std::string& name, const Format& format, AM::ArchiveManager*)
{
    char kind[4] = "";
    int pathStart = 0;
    if (std::sscanf(name.c_str(), "%3[a-z]:%d:%d:%n", kind, &mFirst, &mCount, &pathStart) != 3 || pathStart == 0)
        return false;
    mIsRaw = std::strcmp(kind, "raw") == 0;
    if ((!mIsRaw && std::strcmp(kind, "png") != 0) || mFirst < 0 || mCount < 0) return false;
    mPath = name.substr(static_cast<std::size_t>(pathStart));
    if (mIsRaw && std::sscanf(mPath.c_str(), "%d", &mDescriptor) != 1) return false;
    mFormat = format;
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is an error like any other

    // Raw frames keep their order; compressing them takes what there is.
    const unsigned int workers = mIsRaw ? 1 : std::max(1u, std::thread::hardware_concurrency());
    for (unsigned int i = 0; i < workers; ++i) mWorkers.emplace_back(&FrameOutput::work, this);
    return true;
}

void FrameOutput::writeFrame()
{
    const int number = mDrawn++ - mFirst;
    if (number < 0) std::fprintf(stderr, "passed %d\n", mDrawn);
    if (number < 0 || (mCount > 0 && number >= mCount)) return;
    if (mIsRaw || ::access(pathOf(number).c_str(), F_OK) != 0)
    {
        const unsigned char* data = mImage->getData();
        const std::size_t size = static_cast<std::size_t>(mImage->getWidth()) * mImage->getHeight() * 4;
        Frame frame{number, processorTime(), std::vector<unsigned char>(data, data + size)};
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mWaiting.size() < WAITING_FRAMES || !mTrouble.empty(); });
        if (!mTrouble.empty()) throw AM::Exception("%s", mTrouble.c_str());
        mWaiting.push_back(std::move(frame));
        mChanged.notify_all();
    }
    else
    {
        std::fprintf(stderr, "frame %d %d\n", number + 1, processorTime());
    }
    // SDL makes a quit event of it, so that the show ends in order.
    if (number + 1 == mCount) std::raise(SIGTERM);
}

void FrameOutput::work()
{
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;)
    {
        mChanged.wait(lock, [this] { return !mWaiting.empty() || mIsClosing; });
        if (mWaiting.empty()) return;
        const Frame frame = std::move(mWaiting.front());
        mWaiting.pop_front();
        mChanged.notify_all();

        lock.unlock();
        std::string trouble;
        try
        {
            mIsRaw ? writeRaw(frame) : writePng(frame);
        }
        catch (const std::exception& exception)
        {
            trouble = exception.what();
        }
        lock.lock();
        if (trouble.empty())
            std::fprintf(stderr, "frame %d %d\n", ++mDone, frame.processorTime);
        else if (mTrouble.empty())
            mTrouble = trouble;
        if (!mTrouble.empty()) mWaiting.clear();
        mChanged.notify_all();
    }
}

void FrameOutput::writeRaw(const Frame& frame)
{
    const std::string trouble = writeAll(mDescriptor, frame.pixels.data(), frame.pixels.size());
    if (!trouble.empty()) throw AM::Exception("A frame could not be handed on (%s)", trouble.c_str());
}

// Beside its place first, so that a file of a frame's name is always whole.
void FrameOutput::writePng(const Frame& frame)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, "");
    image.resize(mFormat.width, mFormat.height);
    std::memcpy(image.getWriteData(), frame.pixels.data(), frame.pixels.size());
    unsigned char* bytes = nullptr;
    std::size_t length = 0;
    AM::ImageCodecPNG().encodeImage(&bytes, &length, image);
    const std::unique_ptr<unsigned char[]> owner(bytes);

    const std::string path = pathOf(frame.number), beside = path + ".part";
    std::FILE* file = std::fopen(beside.c_str(), "wb");
    bool isWritten = file && std::fwrite(bytes, 1, length, file) == length;
    isWritten = file && std::fclose(file) == 0 && isWritten;
    if (isWritten && std::rename(beside.c_str(), path.c_str()) == 0) return;
    const std::string reason = std::strerror(errno);
    std::remove(beside.c_str());
    throw AM::Exception("%s could not be written (%s)", path.c_str(), reason.c_str());
}

std::string FrameOutput::pathOf(int number) const
{
    char digits[16];
    std::snprintf(digits, sizeof(digits), "%010d", number);
    return mPath + digits + ".png";
}

void FrameOutput::finish()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsClosing = true;
        mChanged.notify_all();
    }
    for (std::thread& worker : mWorkers) worker.join();
    mWorkers.clear();
    if (!mTrouble.empty()) std::fprintf(stderr, "Error: %s\n", mTrouble.c_str());
}
