#include "grid.h"

#include "numbers.h"
#include "score.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>
#include <utility>

namespace Timeline
{

namespace
{

const double BEATS_PER_BAR = 4.0;

// "1/8" as beats: 0.5. "2" is two bars.
double divisionInBeats(const std::string& text)
{
    const std::size_t slash = text.find('/');
    const std::string above = text.substr(0, slash);
    const std::string below = slash == std::string::npos ? "1" : text.substr(slash + 1);
    const double beats =
        isNumber(above) && isNumber(below) ? BEATS_PER_BAR * readDouble(above) / readDouble(below) : 0.0;
    if (!(beats > 0.0) || !std::isfinite(beats)) throw Failure("A grid is a note such as 1/4 or 1/16 ('" + text + "')");
    return beats;
}

} // namespace

Grid::Grid(double bpm, double offset, const std::string& division) : mBeatsPerPoint(divisionInBeats(division))
{
    if (!(bpm > 0.0) || !std::isfinite(bpm) || !std::isfinite(offset)) throw Failure("A tempo is a number above 0");
    mBeats = {offset, offset + 60.0 / bpm};
}

Grid::Grid(std::vector<double> beats, const std::string& division)
    : mBeats(std::move(beats)), mBeatsPerPoint(divisionInBeats(division))
{
    if (mBeats.size() < 2) throw Failure("A grid of beats needs at least two of them");
    for (std::size_t i = 1; i < mBeats.size(); ++i)
        if (!(mBeats[i] > mBeats[i - 1]))
            throw Failure("The beats are not in ascending order at " + readable(mBeats[i]));
}

double Grid::nearest(double time) const
{
    return timeOf(std::round(beatAt(time) / mBeatsPerPoint) * mBeatsPerPoint);
}

double Grid::step(double time) const
{
    const double point = std::floor(beatAt(time) / mBeatsPerPoint) * mBeatsPerPoint;
    return timeOf(point + mBeatsPerPoint) - timeOf(point);
}

double Grid::beatAt(double time) const
{
    const auto behind = std::upper_bound(mBeats.begin() + 1, mBeats.end() - 1, time);
    const double begin = *(behind - 1);
    return static_cast<double>(behind - 1 - mBeats.begin()) + (time - begin) / (*behind - begin);
}

double Grid::timeOf(double beat) const
{
    const double last = static_cast<double>(mBeats.size() - 2);
    const double index = std::clamp(std::floor(beat), 0.0, last);
    const double begin = mBeats[static_cast<std::size_t>(index)];
    return begin + (beat - index) * (mBeats[static_cast<std::size_t>(index) + 1] - begin);
}

std::vector<double> readBeats(const std::string& path)
{
    const std::string text = readFile(path);
    std::vector<double> beats;
    if (text.find('{') != std::string::npos)
    {
        const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
        if (!json.is_object() || !json.contains("beats") || !json["beats"].is_array())
            throw Failure(path + " has no array \"beats\"");
        for (const nlohmann::json& beat : json["beats"])
        {
            if (!beat.is_number()) throw Failure(path + ": a beat is a number of seconds");
            beats.push_back(beat.get<double>());
        }
        return beats;
    }
    std::istringstream words(text);
    for (std::string word; words >> word;)
    {
        if (!isNumber(word)) throw Failure(path + ": a beat is a number of seconds, not '" + word + "'");
        beats.push_back(readDouble(word));
    }
    return beats;
}

} // namespace Timeline
