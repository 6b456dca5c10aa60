#include "showrenderer.h"

#include "edits.h"
#include "failure.h"
#include "numbers.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace Timeline
{

namespace
{

namespace fs = std::filesystem;

const char SCRIPT_FILE[] = "timeline-script.xml";
const char OWN_RENDERER[] = "ourglacierheartcold-render";
const int FRAMES_DESCRIPTOR = 3; // of the renderer
const int PATIENCE = 300 * 1000; // milliseconds for a frame
const int MAX_SIZE = 2048;

std::string absolute(const std::string& path)
{
    return fs::absolute(path).lexically_normal().string();
}

struct Pipe
{
    Pipe()
    {
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw Failure(std::string("There is no pipe to be had: ") + std::strerror(errno));
    }
    ~Pipe()
    {
        for (const int end : ends)
            if (end >= 0) ::close(end);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeWriting()
    {
        ::close(ends[1]);
        ends[1] = -1;
    }

    int ends[2];
};

// A child process that is ended and waited for, whatever happens.
class Process
{
public:
    // `setUp` runs in the child, which then becomes `words`.
    template <class SetUp> Process(const std::vector<std::string>& words, SetUp setUp)
    {
        std::vector<char*> arguments;
        for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        mId = ::fork();
        if (mId < 0) throw Failure(std::string("No process can be started: ") + std::strerror(errno));
        if (mId > 0) return;
        setUp();
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ~Process()
    {
        if (mId > 0) stop();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    int id() const { return mId; }
    int stop()
    {
        ::kill(mId, SIGTERM);
        return wait();
    }
    int wait()
    {
        int status = 0;
        while (::waitpid(mId, &status, 0) < 0 && errno == EINTR)
        {
        }
        mId = 0;
        return status;
    }
    int release()
    {
        const int id = mId;
        mId = 0;
        return id;
    }

private:
    int mId;
};

const int ENDING_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t caught = 0;

// A show with a program of its own has its renderer in its bin/; that of the tree's show lies beside this program.
std::string rendererOf(const fs::path& folder)
{
    if (!fs::exists(folder / "main.cpp")) return fs::read_symlink("/proc/self/exe").parent_path() / OWN_RENDERER;
    return folder / "bin" / (fs::canonical(folder).filename().string() + "-render");
}

void redirect(const char* path, int flags, int descriptor)
{
    const int file = ::open(path, flags, 0600);
    if (file >= 0) ::dup2(file, descriptor);
}

double milliseconds(clockid_t clock)
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// The last line that says something.
std::string lastLineOf(const std::string& path)
{
    std::ifstream file(path);
    std::string last;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line.rfind("frame ", 0) != 0) last = line;
    return last;
}

void writeText(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) throw Failure(path + " cannot be written");
}

} // namespace

// While one lives, a signal that ends this program is only taken note of, in `caught`; at its end it comes again.
class ShowRenderer::SignalCatch
{
public:
    SignalCatch()
    {
        struct sigaction note = {};
        note.sa_handler = [](int signal) { caught = signal; };
        for (std::size_t i = 0; i < std::size(ENDING_SIGNALS); ++i)
        {
            ::sigaction(ENDING_SIGNALS[i], &note, &mBefore[i]);
            if (mBefore[i].sa_handler == SIG_IGN) ::sigaction(ENDING_SIGNALS[i], &mBefore[i], nullptr);
        }
    }
    ~SignalCatch()
    {
        for (std::size_t i = 0; i < std::size(ENDING_SIGNALS); ++i)
            ::sigaction(ENDING_SIGNALS[i], &mBefore[i], nullptr);
        if (caught != 0) ::raise(caught);
    }
    SignalCatch(const SignalCatch&) = delete;
    SignalCatch& operator=(const SignalCatch&) = delete;

private:
    struct sigaction mBefore[std::size(ENDING_SIGNALS)];
};

ShowRenderer::ShowRenderer(const Show& show, const std::string& program, int width, int height)
    : mSignals(std::make_unique<SignalCatch>()), mProgram(program), mWidth(width), mHeight(height)
{
    if (mProgram.empty()) mProgram = rendererOf(show.folder().empty() ? "./" : show.folder());
    mProgram = absolute(mProgram);
    if (::access(mProgram.c_str(), X_OK) != 0)
        throw Failure("The renderer " + mProgram + " is not there; build it, or name it with --program");
    for (const std::unique_ptr<Node>& child : show.configuration().root().children)
    {
        if (child->isTag("window") && width <= 0)
        {
            mWidth = readInt(child->value("width"));
            mHeight = readInt(child->value("height"));
        }
        const std::string& file = child->value("file");
        if (!child->isTag("archive") || file.empty()) continue;
        const std::string scheme = file.rfind("zip://", 0) == 0 ? "zip://" : "";
        const std::string path = file.substr(scheme.size());
        const std::string place = scheme + absolute(path[0] == '/' ? path : show.folder() + "bin/" + path);
        mArchives += "\t<archive " + writeAttribute("file", place) + "/>\n";
    }
    if (mWidth < 16 || mHeight < 16 || mWidth > MAX_SIZE || mHeight > MAX_SIZE || mHeight % 2 != 0)
        throw Failure("Pictures of " + std::to_string(mWidth) + "x" + std::to_string(mHeight) + " cannot be drawn");

    std::string pattern = (fs::temp_directory_path() / "timeline-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw Failure(pattern + ": " + std::strerror(errno));
    mFolder = pattern + "/";
    try
    {
        layOut(show);
        const char* const display = std::getenv("DISPLAY");
        if (!display || !*display) startDisplay();
    }
    catch (...)
    {
        std::error_code ignored;
        fs::remove_all(mFolder, ignored);
        throw;
    }
}

ShowRenderer::~ShowRenderer()
{
    if (mServer > 0)
    {
        ::kill(mServer, SIGTERM);
        ::waitpid(mServer, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(mFolder, ignored);
}

// Loose files beside the program shadow the rest, so they come along by links; configuration and script are ours.
void ShowRenderer::layOut(const Show& show)
{
    fs::create_directory(mFolder + "bin");
    fs::create_directory(mFolder + "screenshots");
    const std::string root = show.folder().empty() ? "./" : show.folder();
    for (const fs::directory_entry& entry : fs::directory_iterator(root))
    {
        const std::string name = entry.path().filename().string();
        const bool isOurs = name == CONFIGURATION_FILE || name == SCRIPT_FILE;
        if ((entry.is_regular_file() && !isOurs) || (entry.is_directory() && name == "data"))
            fs::create_symlink(fs::absolute(entry.path()), mFolder + name);
    }
}

void ShowRenderer::startDisplay()
{
    Pipe numbers;
    const int writing = numbers.ends[1];
    Process server({"Xvfb", "-displayfd", std::to_string(FRAMES_DESCRIPTOR), "-screen", "0", "2048x2048x24", "-noreset",
                    "-nolisten", "tcp"},
                   [writing] {
                       redirect("/dev/null", O_RDONLY, 0);
                       redirect("/dev/null", O_WRONLY, 1);
                       redirect("/dev/null", O_WRONLY, 2);
                       if (writing == FRAMES_DESCRIPTOR)
                           ::fcntl(writing, F_SETFD, 0);
                       else
                           ::dup2(writing, FRAMES_DESCRIPTOR);
                   });
    numbers.closeWriting();
    std::string number;
    for (char c = 0; ::read(numbers.ends[0], &c, 1) == 1 && c != '\n';) number += c;
    if (number.empty()) throw Failure("There is no display, and no virtual one: Xvfb did not start");
    mDisplay = ":" + number;
    mServer = server.release();
}

std::string ShowRenderer::configuration(const Range& range) const
{
    const auto text = [](int number) { return std::to_string(number); };
    const std::string size = "\" width=\"" + text(mWidth) + "\" height=\"" + text(mHeight);
    return "<demo>\n\t<time start=\"" + shortest(range.start) +
           "\"/>\n\t<hud mini=\"off\"/>\n\t<window caption=\"timeline" + size +
           "\" mode=\"windowed\" type=\"opengl\"/>\n" + mArchives + "\t<script file=\"" + SCRIPT_FILE +
           "\"/>\n\t<videodump name=\"raw:" + text(range.skipped) + ":" + text(range.count) + ":" +
           text(FRAMES_DESCRIPTOR) + size + "\" fps=\"" + text(range.fps) + "\" fpsbase=\"" + text(range.fpsBase) +
           "\" frameskip=\"" + text(range.frameSkip) + "\"/>\n</demo>\n";
}

std::vector<ShowRenderer::Frame> ShowRenderer::receive(int descriptor, int process, int count) const
{
    clockid_t clock = CLOCK_MONOTONIC;
    if (mCountsProcessor && ::clock_getcpuclockid(process, &clock) != 0)
        throw Failure("The renderer's processor time cannot be read");
    const std::size_t size = static_cast<std::size_t>(mWidth) * static_cast<std::size_t>(mHeight) * 4;
    std::vector<Frame> frames;
    double last = milliseconds(clock);
    while (static_cast<int>(frames.size()) < count)
    {
        Frame frame{std::vector<unsigned char>(size), 0.0};
        for (std::size_t done = 0; done < size;)
        {
            if (caught != 0) throw Failure("stopped");
            pollfd waiting{descriptor, POLLIN, 0};
            const int ready = ::poll(&waiting, 1, PATIENCE);
            if (ready < 0 && errno == EINTR) continue;
            if (ready <= 0) throw Failure("The renderer has stopped drawing");
            const ssize_t got = ::read(descriptor, frame.pixels.data() + done, size - done);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return frames;
            done += static_cast<std::size_t>(got);
        }
        const double now = milliseconds(clock);
        frame.milliseconds = now - last;
        last = now;
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<ShowRenderer::Frame> ShowRenderer::render(const std::string& script, const Range& range)
{
    writeText(mFolder + SCRIPT_FILE, script);
    writeText(mFolder + CONFIGURATION_FILE, configuration(range));
    const std::string log = mFolder + "renderer.log", place = mFolder + "bin";
    Pipe pipe;
    const int writing = pipe.ends[1];
    Process renderer({mProgram}, [&] {
        redirect("/dev/null", O_RDONLY, 0);
        redirect("/dev/null", O_WRONLY, 1);
        redirect(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 2);
        if (writing == FRAMES_DESCRIPTOR)
            ::fcntl(writing, F_SETFD, 0);
        else
            ::dup2(writing, FRAMES_DESCRIPTOR);
        ::setenv("SDL_AUDIODRIVER", "dummy", 1);
        if (!mDisplay.empty()) ::setenv("DISPLAY", mDisplay.c_str(), 1);
        if (::chdir(place.c_str()) != 0) ::_exit(126);
    });
    pipe.closeWriting();
    std::vector<Frame> frames = receive(pipe.ends[0], renderer.id(), range.count);
    const int status = renderer.wait();
    const bool isWell = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!isWell)
        throw Failure("The renderer failed: " +
                      (lastLineOf(log).empty() ? "status " + std::to_string(status) : lastLineOf(log)));
    return frames;
}

} // namespace Timeline
