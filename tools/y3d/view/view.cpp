// y3d view: a window that plays a scene file, or a picture of it.

#include "commands.h"
#include "view/viewer.h"

#include "y3d_exception.h"

#include <cmath>
#include <cstdlib>

namespace
{

const int LARGEST_SIZE = 8192; // pixels; more than any driver's window
const int MOST_VIEWS = 64;
const int LARGEST_SHEET = 1 << 26; // pixels

double readNumber(const Arguments& arguments, const std::string& option, double lowest, double highest)
{
    const std::string& text = arguments.options.at(option);
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end || !(value >= lowest && value <= highest))
        throw y3d::Exception("%s: '%s' is no number from %g to %g", option.c_str(), text.c_str(), lowest, highest);
    return value;
}

void readSize(const std::string& text, ViewSettings* settings)
{
    char* end = nullptr;
    const long width = std::strtol(text.c_str(), &end, 10);
    const char* rest = end;
    const long height = *rest == 'x' ? std::strtol(rest + 1, &end, 10) : 0;
    if (*end || width < 1 || height < 1 || width > LARGEST_SIZE || height > LARGEST_SIZE)
        throw y3d::Exception("--size: '%s' is no size such as 800x600, at most %d each", text.c_str(), LARGEST_SIZE);
    settings->width = static_cast<int>(width);
    settings->height = static_cast<int>(height);
}

} // namespace

int runView(const Arguments& arguments)
{
    const auto text = [&arguments](const std::string& option) {
        return arguments.has(option) ? arguments.options.at(option) : "";
    };
    ViewSettings settings;
    settings.source.file = arguments.files[0];
    settings.source.pictures = text("--pictures");
    if (!settings.source.pictures.empty() && settings.source.pictures.back() != '/') settings.source.pictures += '/';
    settings.source.name = text("--scene");
    settings.camera = text("--camera");
    settings.isWireframe = arguments.has("--wireframe");
    settings.hasBoxes = arguments.has("--boxes");
    if (arguments.has("--time")) settings.time = static_cast<float>(readNumber(arguments, "--time", 0, 1e6));
    if (arguments.has("--size")) readSize(text("--size"), &settings);
    if (settings.source.file == "-")
        throw y3d::Exception("A file to view must have a name: it is read again when it changes");

    const std::string picture = text("--screenshot");
    if (!arguments.has("--screenshot"))
    {
        if (arguments.has("--turntable")) throw y3d::Exception("--turntable needs --screenshot OUT.png");
        Viewer(settings, true).run();
        return STATUS_FINE;
    }
    if (picture.size() < 5 || picture.compare(picture.size() - 4, 4, ".png") != 0)
        throw y3d::Exception("--screenshot: '%s' does not end in .png", picture.c_str());
    if (!arguments.has("--turntable"))
    {
        Viewer(settings, false).writePicture(picture);
        return STATUS_FINE;
    }
    const int views = static_cast<int>(readNumber(arguments, "--turntable", 1, MOST_VIEWS));
    if (static_cast<long long>(settings.width) * settings.height * views > LARGEST_SHEET)
        throw y3d::Exception("--turntable: %d pictures of %dx%d are too large a sheet", views, settings.width,
                             settings.height);
    Viewer(settings, false).writeTurntable(picture, views);
    return STATUS_FINE;
}
