#include "commands.h"

#include "am_exception.h"
#include "am_image.h"
#include "am_imagecodec_png.h"
#include "commandline.h"
#include "rhythm.h"
#include "sheetdrawing.h"
#include "showrenderer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Draw the whole show on one page.";
const char DETAILS[] =
    "OUT.html opens in any browser, without a network: the music with its beats and bars, a row for each entry with "
    "its "
    "bar, its triggers and its curves, under the words of the comment ahead of it. Ctrl and the wheel, or + and -, "
    "zoom; "
    "hovering tells times and values; a click shows the lines of the script. It prints, on wide paper. --render draws "
    "pictures of the show in between; --pictures takes those of a FOLDER, such as './render FOLDER --fps 1/4' makes. "
    "--svg gives the same as a still.\n"
    "Example: timeline sheet sheet.html --render";

const int PICTURE_HEIGHT = 72;
const int RENDERED_WIDTH = 400, RENDERED_HEIGHT = 300;
const int STEPS = 16; // drawn for each rendered picture: some effects live on the frames before

struct Options
{
    std::string output;
    Source source;
    std::string svg;
    std::string music;
    double bpm = 0.0;
    std::string pictures;
    bool render = false;
    int every = 4;
    std::string program;
    double scale = 8.0;
};

// `image` at the height of the sheet's pictures: each pixel the mean of those under it.
SheetPicture shrink(double time, AM::ImageObject& image)
{
    const int width = image.getWidth(), height = image.getHeight();
    if (width < 1 || height < 1) throw Failure("A picture without pixels");
    const int newHeight = std::min(PICTURE_HEIGHT, height);
    const int newWidth =
        std::clamp(static_cast<int>(std::lround(static_cast<double>(width) * newHeight / height)), 1, width);
    AM::ImageObject small(0, 0, nullptr, nullptr, "");
    small.resize(newWidth, newHeight);
    unsigned char* target = small.getWriteData();
    const auto edge = [](int i, int from, int to) { return static_cast<int>(static_cast<long long>(i) * from / to); };
    for (int y = 0; y < newHeight; ++y)
        for (int x = 0; x < newWidth; ++x)
        {
            const int left = edge(x, width, newWidth), right = edge(x + 1, width, newWidth);
            const int top = edge(y, height, newHeight), bottom = edge(y + 1, height, newHeight);
            long long sums[3] = {};
            for (int v = top; v < bottom; ++v)
                for (int u = left; u < right; ++u)
                    for (int i = 0; i < 3; ++i)
                        sums[i] += image.getData()[4 * (static_cast<std::size_t>(v) * static_cast<std::size_t>(width) +
                                                        static_cast<std::size_t>(u)) +
                                                   static_cast<std::size_t>(i)];
            for (const long long sum : sums)
                *target++ = static_cast<unsigned char>(sum / ((right - left) * (bottom - top)));
            *target++ = 255;
        }
    unsigned char* bytes = nullptr;
    std::size_t length = 0;
    AM::ImageCodecPNG().encodeImage(&bytes, &length, small);
    const std::unique_ptr<unsigned char[]> owner(bytes);
    return {time, newWidth, newHeight, {reinterpret_cast<const char*>(bytes), length}};
}

// The first picture lies one interval behind the start of the show, as the renderer has it.
std::vector<SheetPicture> readPictures(const std::string& folder, int every)
{
    if (!std::filesystem::is_directory(folder)) throw Failure(folder + " is no folder");
    std::vector<std::string> paths;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".png") paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    if (paths.empty()) throw Failure("There is no PNG picture in " + folder);
    std::vector<SheetPicture> pictures;
    for (const std::string& path : paths)
    {
        const std::string bytes = readFile(path);
        AM::ImageObject image(0, 0, nullptr, nullptr, "");
        try
        {
            AM::ImageCodecPNG().decodeImage(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), image);
        }
        catch (const AM::Exception& exception)
        {
            throw Failure(path + ": " + exception.what());
        }
        pictures.push_back(shrink(every * static_cast<double>(pictures.size() + 1), image));
    }
    return pictures;
}

std::vector<SheetPicture> renderPictures(const Options& options, const Score& score)
{
    const Show show(showFolder(options.source.show));
    ShowRenderer renderer(show, options.program, RENDERED_WIDTH, RENDERED_HEIGHT);
    ShowRenderer::Range range;
    range.fps = 1;
    range.fpsBase = options.every;
    range.frameSkip = STEPS;
    range.count = static_cast<int>(std::clamp(score.end() / options.every, 1.0, 10000.0));
    std::vector<SheetPicture> pictures;
    for (const ShowRenderer::Frame& frame : renderer.render(score.document().text(), range))
    {
        AM::ImageObject image(0, 0, nullptr, nullptr, "");
        image.resize(renderer.width(), renderer.height());
        std::memcpy(image.getWriteData(), frame.pixels.data(), frame.pixels.size());
        pictures.push_back(shrink(options.every * (static_cast<double>(pictures.size()) + 1.0 / STEPS), image));
    }
    return pictures;
}

// The music that is asked for, or the show's; null if a lone script has none.
std::unique_ptr<Music> loadMusic(const Options& options)
{
    if (!options.music.empty()) return std::make_unique<Music>(Music::load(options.music));
    const std::string folder = showFolder(options.source.show);
    const bool isLone = !options.source.file.empty() && options.source.show.empty();
    if (isLone && !std::filesystem::exists(CONFIGURATION_FILE)) return nullptr;
    Show show(folder);
    if (show.music().empty()) return nullptr;
    const AM::File file = show.read(show.music());
    if (file.isNull())
    {
        std::fprintf(stderr, "timeline: the music '%s' is not there; the sheet goes without\n", show.music().c_str());
        return nullptr;
    }
    return std::make_unique<Music>(reinterpret_cast<const unsigned char*>(file->data),
                                   static_cast<std::size_t>(file->length), show.labelOf(show.music()));
}

void run(const Options& options)
{
    if (options.output.empty() && options.svg.empty()) throw Failure("Where to? Name OUT.html, or --svg OUT.svg");
    const Score score = options.source.load();
    const std::unique_ptr<Music> music = loadMusic(options);
    std::unique_ptr<Rhythm> rhythm;
    try
    {
        if (music) rhythm = std::make_unique<Rhythm>(findRhythm(*music, options.bpm));
    }
    catch (const Failure& failure)
    {
        std::fprintf(stderr, "timeline: no beats: %s\n", failure.what());
    }
    std::vector<SheetPicture> pictures;
    if (!options.pictures.empty()) pictures = readPictures(options.pictures, options.every);
    if (options.render) pictures = renderPictures(options, score);
    const SheetDrawing drawing(score, music.get(), rhythm.get(), std::move(pictures));
    if (!options.output.empty()) writeFile(options.output, drawing.page());
    if (!options.svg.empty()) writeFile(options.svg, drawing.still(options.scale));
}

} // namespace

void addSheet(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "sheet", ABOUT, DETAILS);
    command->add_option("OUT.html", options->output, "Where the page goes")->type_name("");
    options->source.addTo(*command);
    command->add_option("--svg", options->svg, "Where the still goes")->type_name("OUT.svg");
    command->add_option("--scale", options->scale, "Pixels a second of the still, 8 at first")
        ->type_name("PIXELS")
        ->check(CLI::Range(0.1, 400.0));
    command->add_option("--music", options->music, "Other music than that of the show")->type_name("MUSIC");
    command->add_option("--bpm", options->bpm, "Its tempo, where it is known")
        ->type_name("B")
        ->check(CLI::Range(1.0, 1000.0));
    CLI::Option* const pictures =
        command->add_option("--pictures", options->pictures, "Take the PNG pictures of this folder")
            ->type_name("FOLDER");
    command->add_flag("--render", options->render, "Draw pictures of the show")->excludes(pictures);
    command->add_option("--every", options->every, "Seconds from one picture to the next, 4 at first")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600));
    command->add_option("--program", options->program, "The renderer, if it is not the show's own")->type_name("PATH");
    command->callback([options] { run(*options); });
}

} // namespace Timeline
