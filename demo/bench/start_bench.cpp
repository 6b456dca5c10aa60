// The start of the show, from the command to its first frame, beside its floor: what has to be read and decoded, and a
// window of OpenGL with textures of the pictures' sizes. Seconds of the processor in user mode, since the start also
// waits: for the display, and twice for the stream. Needs a display and the packed show.

#include "am.h"
#include "y3d_manager.h"

#include <GL/glu.h>
#include <SDL.h>
#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

const char WINDOW_ARGUMENT[] = "--window";
const int MUSIC_BLOCK = 4096; // frames that are decoded at a time

const char* const PICTURES[] = {
    "ballbg.jpg", "env.png",     "flame.png", "floor.png",    "font.png",           "greets.png",
    "ice.png",    "overlay.png", "rose.png",  "sandrift.png", "sandrift_ghost.png", "scenese.png",
    "sky.png",    "snow.png",    "stone.png", "sun.png",      "window.png",         "tidewheel_logo.png"};

// The start lies behind the end of the script, so that the first frame is the last.
const char CONFIGURATION[] =
    "<demo><time start=\"100000\"/><hud mini=\"off\"/>"
    "<window caption=\"start\" width=\"800\" height=\"600\" mode=\"windowed\" type=\"opengl\"/>"
    "<music file=\"glacier.ogg\" mute=\"on\"/><script file=\"glacier.xml\"/></demo>";

double userSeconds(int who)
{
    rusage usage;
    getrusage(who, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) + 1e-6 * static_cast<double>(usage.ru_utime.tv_usec);
}

// Runs a program in a folder to its end, silently, and gives its user time. Throws if it fails.
double runChild(const std::string& program, const std::vector<std::string>& arguments, const std::string& folder)
{
    const double before = userSeconds(RUSAGE_CHILDREN);
    const pid_t child = fork();
    if (child == 0)
    {
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        std::vector<char*> texts = {const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
        texts.push_back(nullptr);
        if (chdir(folder.c_str()) == 0) execv(program.c_str(), texts.data());
        _exit(127);
    }
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error(program + " ended with an error");
    return userSeconds(RUSAGE_CHILDREN) - before;
}

// The least that a program with such a window and such pictures does: "WIDTHxHEIGHT " for each picture, which is grey
// here. The exit status.
int openWindow(const char* sizes)
{
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || !SDL_SetVideoMode(800, 600, 0, SDL_OPENGL)) return 1;
    int width, height, length;
    for (; std::sscanf(sizes, "%dx%d %n", &width, &height, &length) == 2; sizes += length)
    {
        const std::vector<unsigned char> grey(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                              128);
        GLuint texture;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        gluBuild2DMipmaps(GL_TEXTURE_2D, 4, width, height, GL_BGRA, GL_UNSIGNED_BYTE, grey.data());
    }
    glClear(GL_COLOR_BUFFER_BIT);
    SDL_GL_SwapBuffers();
    SDL_Quit();
    return 0;
}

// A folder in which the program finds the packed show and a configuration of its own.
struct Show
{
    Show() : packed(SHOW_DATA)
    {
        if (!std::filesystem::exists(packed)) throw std::runtime_error(packed + " is missing; ./play makes it");
        char unique[] = "/tmp/start_bench.XXXXXX";
        if (!mkdtemp(unique)) throw std::runtime_error("no temporary folder");
        folder = unique;
        std::filesystem::create_directory(folder + "/bin");
        std::filesystem::create_symlink(packed, folder + "/ourglacierheartcold.sdr");
        archives.addArchive("zip://" + packed);
        for (const char* name : PICTURES)
        {
            const AM::Image image = archives.loadImage(name, -1, true);
            sizes += std::to_string(image->getWidth()) + "x" + std::to_string(image->getHeight()) + " ";
        }
    }
    Show(const Show&) = delete;
    Show& operator=(const Show&) = delete;
    ~Show() { std::filesystem::remove_all(folder); }

    AM::File read(const std::string& name)
    {
        const AM::File file = archives.readFile(name, -1);
        if (file.isNull()) throw std::runtime_error(packed + " has no " + name);
        return file;
    }

    std::string packed;
    std::string folder;
    std::string sizes; // of all pictures, for openWindow
    AM::ArchiveManager archives;
};

double start(Show& show)
{
    std::ofstream(show.folder + "/tidewheel.xml") << CONFIGURATION; // the program writes into it at its end
    return runChild(SHOW_PROGRAM, {}, show.folder + "/bin");
}

double decodePictures(Show& show)
{
    const double before = userSeconds(RUSAGE_SELF);
    for (const char* name : PICTURES) benchmark::DoNotOptimize(show.archives.loadImage(name, -1, true)->getData());
    return userSeconds(RUSAGE_SELF) - before;
}

double decodeMusic(Show& show)
{
    const double before = userSeconds(RUSAGE_SELF);
    const AM::File file = show.read("glacier.ogg");
    // libsndfile reads from a file here, which costs no user time.
    const std::string path = show.folder + "/music";
    std::ofstream(path).write(reinterpret_cast<const char*>(file->data), file->length);
    SF_INFO info = {};
    SNDFILE* sound = sf_open(path.c_str(), SFM_READ, &info);
    if (!sound) throw std::runtime_error(sf_strerror(nullptr));
    std::vector<float> block(static_cast<std::size_t>(MUSIC_BLOCK) * static_cast<std::size_t>(info.channels));
    while (sf_readf_float(sound, block.data(), MUSIC_BLOCK) > 0) benchmark::ClobberMemory();
    sf_close(sound);
    return userSeconds(RUSAGE_SELF) - before;
}

double readScenes(Show& show)
{
    const double before = userSeconds(RUSAGE_SELF);
    for (const char* name : {"avgrund.y3d", "katedral.y3d"})
    {
        const AM::File file = show.read(name);
        y3d::Manager manager;
        manager.load(file->data, static_cast<int>(file->length));
    }
    return userSeconds(RUSAGE_SELF) - before;
}

double windowWithPictures(Show& show)
{
    return runChild("/proc/self/exe", {WINDOW_ARGUMENT, show.sizes}, "/");
}

double wholeFloor(Show& show)
{
    return decodePictures(show) + decodeMusic(show) + readScenes(show) + windowWithPictures(show);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 2 && std::strcmp(argv[1], WINDOW_ARGUMENT) == 0) return openWindow(argv[2]);
    benchmark::Initialize(&argc, argv);
    const struct
    {
        const char* name;
        double (*seconds)(Show& show);
    } rows[] = {{"start", start},
                {"start, floor", wholeFloor},
                {"start, floor: pictures", decodePictures},
                {"start, floor: music", decodeMusic},
                {"start, floor: scenes", readScenes},
                {"start, floor: window, textures", windowWithPictures}};
    try
    {
        Show show;
        for (const auto& row : rows)
            benchmark::RegisterBenchmark(row.name,
                                         [&row, &show](benchmark::State& state) {
                                             for (auto _ : state) state.SetIterationTime(row.seconds(show));
                                         })
                ->UseManualTime()
                ->Iterations(5)
                ->Unit(benchmark::kMillisecond);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "Error: %s\n", exception.what());
        return 1;
    }
}
