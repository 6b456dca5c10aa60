#include "sheetdrawing.h"

#include "commandline.h"
#include "numbers.h"
#include "sheet_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>

namespace Timeline
{

namespace
{

// All in pixels, but for what is said to be in seconds.
const int RULER_HEIGHT = 18;
const int HEADINGS_HEIGHT = 16;
const int WAVE_HEIGHT = 64;
const int HEADING_HEIGHT = 22;
const int BAR_HEIGHT = 16;
const int CURVES_HEIGHT = 40;
const int ROW_GAP = 4;
const int LETTER = 7; // room for one
const double MAX_SECONDS = 4 * 3600;
const double COLUMNS_PER_SECOND = 20.0;
const int CURVE_COLORS = 6;
const std::size_t MAX_HEADING = 40; // letters
const char ALLOW[] = "timeline:";   // begins a comment that is for this tool

struct Color
{
    const char* name;
    const char* light;
    const char* dark;
};

const Color COLORS[] = {
    {"ground", "#fcfcfa", "#16181c"}, {"panel", "#f1f1ec", "#22252b"},  {"ink", "#1d2126", "#e4e4df"},
    {"faint", "#6d737b", "#8d949d"},  {"line", "#c4c7ca", "#454b54"},   {"beat", "#eaebea", "#24272d"},
    {"stripe", "#f4f4f0", "#1a1d22"}, {"peaks", "#a9c3da", "#35536f"},  {"loudness", "#4f82ad", "#6fa3cf"},
    {"mark", "#fff0b8", "#4a4220"},   {"now", "#d0452f", "#ff7a5c"},    {"curve0", "#1f5fa8", "#7fb8ff"},
    {"curve1", "#b3401f", "#ff9d77"}, {"curve2", "#2b7a3d", "#86d695"}, {"curve3", "#7a3fa0", "#d09cf5"},
    {"curve4", "#8a6a00", "#e6c34d"}, {"curve5", "#00797d", "#62d4d6"},
};

std::string number(double value)
{
    return readable(value);
}

// Text as XML holds it, in UTF-8.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : jsonText(text))
    {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return result;
}

std::string element(const std::string& name, const std::string& attributes, const std::string& content = "")
{
    return "<" + name + " " + attributes + (content.empty() ? "/>" : ">" + content + "</" + name + ">") + "\n";
}

std::string text(double x, double y, const std::string& words, const std::string& kind = "")
{
    return element("text",
                   "x=\"" + number(x) + "\" y=\"" + number(y) + (kind.empty() ? "" : "\" class=\"" + kind) + "\"",
                   escaped(words));
}

std::string rectangle(double x, double y, double width, double height, const std::string& more)
{
    return element("rect", "x=\"" + number(x) + "\" y=\"" + number(y) + "\" width=\"" + number(width) + "\" height=\"" +
                               number(height) + "\" " + more);
}

// What keeps its shape at a time, whatever the scale.
std::string at(double time, int y, double scale, const std::string& content, const std::string& more = "")
{
    const std::string place = number(time) + "\" data-y=\"" + std::to_string(y);
    return element("g",
                   "class=\"at\" data-t=\"" + place + "\" transform=\"translate(" + number(time) + " " +
                       std::to_string(y) + ") scale(" + shortest(1.0 / scale) + " 1)\"" + more,
                   content);
}

// Things of one kind along the time; those that would lie on the one before are not shown.
class Crowd
{
public:
    Crowd(const char* kind, int y, double scale) : mKind(kind), mY(y), mScale(scale) {}

    // `room` is its width.
    std::string add(double time, const std::string& content, int room)
    {
        const bool fits = !(time * mScale < mEnd);
        if (fits) mEnd = time * mScale + room;
        return at(time, mY, mScale, content,
                  std::string(" data-kind=\"") + mKind + "\" data-room=\"" + std::to_string(room) + "\"" +
                      (fits ? "" : " style=\"display:none\""));
    }

private:
    const char* mKind;
    int mY;
    double mScale;
    double mEnd = 0.0;
};

std::string base64(const std::string& bytes)
{
    const char* const letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        const auto byte = [&](std::size_t n) {
            return i + n < bytes.size() ? static_cast<unsigned char>(bytes[i + n]) : 0u;
        };
        const unsigned three = byte(0) << 16 | byte(1) << 8 | byte(2);
        for (unsigned n = 0; n < 4; ++n) result += i + n <= bytes.size() ? letters[three >> (18 - 6 * n) & 63] : '=';
    }
    return result;
}

// Colours that differ from name to name, of one lightness.
std::string colorOf(std::size_t index)
{
    const double hue = std::fmod(205.0 + static_cast<double>(index) * 137.5, 360.0);
    char hex[8];
    const auto channel = [&](double n) {
        const double k = std::fmod(n + hue / 30.0, 12.0);
        const double a = 0.45 * 0.42;
        return static_cast<int>(255.0 * (0.58 - a * std::max(-1.0, std::min({k - 3.0, 9.0 - k, 1.0}))));
    };
    std::snprintf(hex, sizeof(hex), "#%02x%02x%02x", channel(0.0), channel(8.0), channel(4.0));
    return hex;
}

// The heading in a comment: what stands ahead of its colon, or the whole if it is short; a longer one is a remark.
std::string headingOf(const std::string& comment)
{
    const std::size_t begin = comment.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return "";
    std::string words = comment.substr(begin, comment.find_first_of(":\r\n", begin) - begin);
    while (!words.empty() && words.back() == ' ') words.pop_back();
    return words.size() <= MAX_HEADING ? words : "";
}

// The curve of a spline while its entry runs, in show time, close enough for lines between the points to be the curve.
std::vector<std::pair<double, double>> sample(const Entry& entry, const Spline& spline)
{
    if (spline.keys.empty()) return {};
    const double length = static_cast<double>(entry.end) - static_cast<double>(entry.start);
    if (!(length > 0.0) || !std::isfinite(length)) return {};
    std::vector<double> times;
    const int steps = static_cast<int>(std::clamp(length * 12.0, 24.0, 240.0));
    for (int i = 0; i <= steps; ++i) times.push_back(length * i / steps);
    for (const Key& key : spline.keys)
        for (const double aside : {-1e-4, 0.0, 1e-4})
        {
            const double time = spline.local(key) + aside;
            if (time > 0.0 && time < length) times.push_back(time);
        }
    std::sort(times.begin(), times.end());
    const std::unique_ptr<Script::Spline> curve = spline.curve();
    std::vector<std::pair<double, double>> points;
    for (const double time : times)
        points.emplace_back(entry.showStart() + time,
                            static_cast<double>(curve->getSplineValue(static_cast<float>(time))));
    return points;
}

std::vector<double> firings(const Entry& entry, const Trigger& trigger)
{
    const int most = 1000;
    std::vector<double> times;
    const double length = static_cast<double>(entry.end) - static_cast<double>(entry.start);
    for (int n = 0; n < std::min(trigger.repeat, most) && trigger.due(n) < length; ++n)
        times.push_back(entry.showStart() + std::max(0.0, trigger.due(n)));
    return times;
}

int lastLine(const Score& score, const Node& node)
{
    const std::string_view whole = score.document().bytes(node.span());
    return node.line + static_cast<int>(std::count(whole.begin(), whole.end(), '\n'));
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t i = text.find(from); i != std::string::npos; i = text.find(from, i + to.size()))
        text.replace(i, from.size(), to);
}

std::string svg(const std::string& kind, double width, int height, const std::string& content)
{
    return element("svg",
                   "class=\"" + kind + "\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" + number(width) +
                       "\" height=\"" + std::to_string(height) + "\"",
                   "\n" + content);
}

std::string timed(double scale, const std::string& content)
{
    return element("g", "class=\"time\" transform=\"scale(" + number(scale) + " 1)\"", "\n" + content);
}

} // namespace

SheetDrawing::SheetDrawing(const Score& score, const Music* music, const Rhythm* rhythm,
                           std::vector<SheetPicture> pictures)
    : mScore(score), mMusic(music), mRhythm(rhythm), mPictures(std::move(pictures)),
      mSeconds(std::max({1.0, score.end(), music ? music->seconds() : 0.0}))
{
    if (mSeconds > MAX_SECONDS) throw Failure(score.path() + ": the show is too long for a sheet");
    layOut();
}

void SheetDrawing::layOut()
{
    std::map<const Node*, std::string> headings;
    std::string heading;
    for (const std::unique_ptr<Node>& node : mScore.document().root().children)
    {
        const bool isComment = node->kind == Node::Kind::COMMENT && node->name.find(ALLOW) == std::string::npos;
        const std::string found = isComment ? headingOf(node->name) : "";
        if (!found.empty()) heading = found;
        if (!node->isTag("effect")) continue;
        if (!heading.empty()) headings[node.get()] = heading;
        heading.clear();
    }
    std::size_t letters = 8;
    for (const Entry* entry : mScore.all())
    {
        const auto found = headings.find(entry->node);
        if (found != headings.end())
        {
            mRows.push_back({nullptr, found->second, mRowsHeight, HEADING_HEIGHT});
            mRowsHeight += HEADING_HEIGHT;
            mHeadings.emplace_back(std::max(0.0, entry->showStart()), found->second);
        }
        const int height = BAR_HEIGHT + (entry->splines.empty() ? 0 : CURVES_HEIGHT) + ROW_GAP;
        mRows.push_back({entry, "", mRowsHeight, height});
        mRowsHeight += height;
        letters = std::max(letters, entry->number.size() + entry->name.size() + 3);
    }
    std::stable_sort(mHeadings.begin(), mHeadings.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    mNamesWidth = static_cast<int>(std::min<std::size_t>(letters, 32)) * LETTER + 16;
    mWaveTop = RULER_HEIGHT + HEADINGS_HEIGHT;
    mPicturesTop = mWaveTop + (mMusic ? WAVE_HEIGHT : 0) + 2;
    int tallest = 0;
    for (const SheetPicture& picture : mPictures) tallest = std::max(tallest, picture.height);
    mHeadHeight = mPicturesTop + tallest + 2;
}

std::string SheetDrawing::lines(const char* kind, const std::vector<double>& times, int top, int bottom) const
{
    std::string path;
    for (const double time : times)
        path += "M" + number(time) + " " + std::to_string(top) + "V" + std::to_string(bottom);
    return path.empty() ? "" : element("path", "class=\"" + std::string(kind) + "\" d=\"" + path + "\"");
}

std::string SheetDrawing::drawHeadNames() const
{
    std::string result = text(8, 13, mRhythm ? readable(std::round(mRhythm->bpm * 100.0) / 100.0) + " bpm" : "seconds");
    if (mRhythm) result += text(8, mWaveTop + 14, "bars", "faint");
    return result;
}

// Peaks, and within them the loudness.
std::string SheetDrawing::drawWave() const
{
    const std::vector<float>& mono = mMusic->mono();
    const std::size_t step = std::max<std::size_t>(1, static_cast<std::size_t>(mMusic->rate() / COLUMNS_PER_SECOND));
    const double middle = mWaveTop + WAVE_HEIGHT / 2.0;
    std::string upper[2];
    std::vector<std::string> lower[2];
    for (std::size_t begin = 0; begin < mono.size(); begin += step)
    {
        float peak = 0.0f;
        double sum = 0.0;
        const std::size_t end = std::min(begin + step, mono.size());
        for (std::size_t i = begin; i < end; ++i)
        {
            peak = std::max(peak, std::fabs(mono[i]));
            sum += static_cast<double>(mono[i]) * static_cast<double>(mono[i]);
        }
        const double heights[] = {static_cast<double>(peak), std::sqrt(sum / static_cast<double>(end - begin))};
        const std::string x = number(static_cast<double>(begin) / mMusic->rate()) + " ";
        for (int i = 0; i < 2; ++i)
        {
            const double height = heights[i] * WAVE_HEIGHT / 2.0;
            upper[i] += "L" + x + number(std::round((middle - height) * 10.0) / 10.0);
            lower[i].push_back("L" + x + number(std::round((middle + height) * 10.0) / 10.0));
        }
    }
    for (int i = 0; i < 2; ++i)
        for (auto point = lower[i].rbegin(); point != lower[i].rend(); ++point) upper[i] += *point;
    const std::string start = "M0 " + number(middle);
    return element("path", "class=\"peaks\" d=\"" + start + upper[0] + "Z\"") +
           element("path", "class=\"loudness\" d=\"" + start + upper[1] + "Z\"");
}

std::string SheetDrawing::drawHead(double scale) const
{
    std::string result;
    if (mRhythm)
    {
        result += lines("beats", mRhythm->beats, mWaveTop, mPicturesTop);
        result += lines("bars", mRhythm->bars(), mWaveTop, mPicturesTop);
    }
    if (mMusic) result += drawWave();
    Crowd seconds("seconds", 0, scale), numbers("bars", mWaveTop, scale), headings("sections", RULER_HEIGHT, scale),
        pictures("pictures", mPicturesTop, scale);
    for (int second = 0; second <= mSeconds; ++second)
    {
        char words[16];
        std::snprintf(words, sizeof(words), "%d:%02d", second / 60, second % 60);
        if (second % 2 == 0) result += seconds.add(second, text(2, 13, words, "faint"), 38);
    }
    const std::vector<double> bars = mRhythm ? mRhythm->bars() : std::vector<double>();
    for (std::size_t i = 0; i < bars.size(); ++i)
        result += numbers.add(bars[i], text(2, 11, std::to_string(i + 1), "number"), 24);
    for (const auto& heading : mHeadings)
        result += headings.add(heading.first, text(2, 12, heading.second, "section"),
                               static_cast<int>(heading.second.size()) * LETTER + 12);
    for (const SheetPicture& picture : mPictures)
        result += pictures.add(picture.time,
                               element("image", "width=\"" + std::to_string(picture.width) + "\" height=\"" +
                                                    std::to_string(picture.height) +
                                                    "\" href=\"data:image/png;base64," + base64(picture.png) + "\""),
                               picture.width + 1);
    result +=
        element("line", "class=\"now\" style=\"display:none\" y1=\"0\" y2=\"" + std::to_string(mHeadHeight) + "\"");
    return timed(scale, result);
}

std::string SheetDrawing::drawNames() const
{
    std::string result;
    for (const Row& row : mRows)
    {
        if (!row.entry)
        {
            result += text(8, row.y + 16, row.heading, "section");
            continue;
        }
        const double indent = 10.0 * (row.entry->node->depth - 1);
        result += element("g", row.entry->enabled ? "class=\"on\"" : "class=\"off\"",
                          text(8 + indent, row.y + 13, row.entry->number, "number") +
                              text(8 + indent + LETTER * 4, row.y + 13, row.entry->name));
        for (std::size_t i = 0; i < row.entry->splines.size(); ++i)
        {
            // As many as there is room for.
            const double x = 8 + indent + LETTER * 4 + 60.0 * static_cast<double>(i / 3);
            if (x + 50.0 > mNamesWidth) break;
            const double y = row.y + BAR_HEIGHT + 11 + 12.0 * static_cast<double>(i % 3);
            const std::string color = "var(--curve" + std::to_string(i % CURVE_COLORS) + ")";
            result += element(
                "text", "x=\"" + number(x) + "\" y=\"" + number(y) + "\" style=\"font-size:10px;fill:" + color + "\"",
                escaped(row.entry->splines[i].name));
        }
    }
    return result;
}

std::string SheetDrawing::drawEntry(const Row& row, double scale) const
{
    const Entry& entry = *row.entry;
    const double start = std::max(0.0, entry.showStart());
    const double length = std::max(0.0, std::min(entry.showEnd(), mSeconds) - start);
    std::size_t index = 0;
    for (const Row& other : mRows)
    {
        if (other.entry && other.entry->name == entry.name) break;
        ++index;
    }
    const int body = row.height - ROW_GAP;
    std::string result = rectangle(start, row.y + 2, length, body, "class=\"bar\" fill=\"" + colorOf(index) + "\"");
    for (std::size_t i = 0; i < entry.splines.size(); ++i)
    {
        const auto points = sample(entry, entry.splines[i]);
        double least = 0.0, most = 0.0;
        for (const auto& point : points)
        {
            least = point == points.front() ? point.second : std::min(least, point.second);
            most = point == points.front() ? point.second : std::max(most, point.second);
        }
        std::string path;
        for (const auto& point : points)
        {
            if (point.first < 0.0) continue; // ahead of the show
            const double share = most > least ? (point.second - least) / (most - least) : 0.5;
            const double y = row.y + BAR_HEIGHT + 2 + (1.0 - share) * (CURVES_HEIGHT - 4);
            path += (path.empty() ? "M" : "L") + number(point.first) + " " + number(std::round(y * 10.0) / 10.0);
        }
        if (!path.empty())
            result += element("path", "class=\"curve c" + std::to_string(i % CURVE_COLORS) + "\" d=\"" + path + "\"");
    }
    for (const Trigger& trigger : entry.triggers)
        for (const double time : firings(entry, trigger))
            result += at(time, row.y + 2, scale,
                         element("path", "class=\"trigger\" d=\"M-4.5 0H4.5L0 8Z\"",
                                 element("title", "", escaped(trigger.name + " " + trigger.value))));
    if (entry.triggers.empty()) result += at(start, row.y + 2, scale, text(4, 12, entry.name));
    return element("g",
                   std::string("class=\"entry") + (entry.enabled ? "" : " off") + "\" data-line=\"" +
                       std::to_string(entry.node->line) + "\"",
                   "\n" + result);
}

std::string SheetDrawing::drawRows(double scale) const
{
    std::string result;
    for (std::size_t i = 0; i < mRows.size(); i += 2)
        result += rectangle(0, mRows[i].y, mSeconds, mRows[i].height, "class=\"stripe\"");
    if (mRhythm)
    {
        result += lines("beats", mRhythm->beats, 0, mRowsHeight);
        result += lines("bars", mRhythm->bars(), 0, mRowsHeight);
    }
    std::vector<double> cuts;
    for (const auto& heading : mHeadings) cuts.push_back(heading.first);
    result += lines("cut", cuts, 0, mRowsHeight);
    for (const Row& row : mRows)
        if (row.entry) result += drawEntry(row, scale);
    result +=
        element("line", "class=\"now\" style=\"display:none\" y1=\"0\" y2=\"" + std::to_string(mRowsHeight) + "\"");
    return timed(scale, result);
}

std::string SheetDrawing::data(double scale) const
{
    using Json = nlohmann::ordered_json;
    const auto rounded = [](double value) { return std::round(value * 1e4) / 1e4; };
    Json rows = Json::array(), script = Json::array();
    for (const Row& row : mRows)
    {
        if (!row.entry) continue;
        const Entry& entry = *row.entry;
        Json triggers = Json::array(), splines = Json::array();
        for (const Trigger& trigger : entry.triggers)
            triggers.push_back({{"name", jsonText(trigger.name)},
                                {"value", jsonText(trigger.value)},
                                {"line", trigger.node->line},
                                {"times", firings(entry, trigger)}});
        for (const Spline& spline : entry.splines)
        {
            Json points = Json::array();
            for (const auto& point : sample(entry, spline))
                points.push_back({rounded(point.first), rounded(point.second)});
            splines.push_back({{"name", jsonText(spline.name)}, {"points", std::move(points)}});
        }
        rows.push_back({{"number", entry.number},
                        {"name", jsonText(entry.name)},
                        {"start", entry.showStart()},
                        {"end", entry.showEnd()},
                        {"on", entry.enabled},
                        {"line", entry.node->line},
                        {"last", lastLine(mScore, *entry.node)},
                        {"y", row.y},
                        {"height", row.height},
                        {"triggers", std::move(triggers)},
                        {"splines", std::move(splines)}});
    }
    const std::string& whole = mScore.document().text();
    for (std::size_t begin = 0; begin <= whole.size();)
    {
        const std::size_t end = std::min(whole.find('\n', begin), whole.size());
        script.push_back(jsonText(whole.substr(begin, end - begin)));
        begin = end + 1;
    }
    const std::vector<double> bars = mRhythm ? mRhythm->bars() : std::vector<double>();
    std::string text = Json{{"seconds", mSeconds},
                            {"scale", scale},
                            {"beat", mRhythm ? 60.0 / mRhythm->bpm : 0.0},
                            {"firstBar", bars.empty() ? 0.0 : bars.front()},
                            {"rows", std::move(rows)},
                            {"script", std::move(script)}}
                           .dump();
    replaceAll(text, "<", "\\u003c"); // nothing in it may end the element that holds it
    return text;
}

std::string SheetDrawing::page() const
{
    const double scale = 8.0;
    std::string light, dark;
    for (const Color& color : COLORS)
    {
        light += std::string(" --") + color.name + ": " + color.light + ";";
        dark += std::string(" --") + color.name + ": " + color.dark + ";";
    }
    const std::string colors = ":root {" + light + " }\n@media screen and (prefers-color-scheme: dark) { :root {" +
                               dark + " } }\n@media screen { :root[data-theme=light] { color-scheme: light;" + light +
                               " }\n:root[data-theme=dark] { color-scheme: dark;" + dark + " } }\n";
    const double width = mSeconds * scale;
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + escaped(mScore.path()) +
           "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>\n" + colors + SHEET_CSS + SHEET_DRAWING_CSS +
           "</style>\n</head>\n<body>\n<header><h1>" + escaped(mScore.path()) +
           "</h1><span class=\"hint\">Ctrl and wheel, or + and -: zoom. 0: all. Arrows, Home, End: scroll. Click: the "
           "script.</span><button id=\"theme\">light / dark</button></header>\n"
           "<div id=\"scroll\" tabindex=\"0\"><div id=\"table\">\n" +
           svg("corner", mNamesWidth, mHeadHeight, drawHeadNames()) + svg("head", width, mHeadHeight, drawHead(scale)) +
           svg("names", mNamesWidth, mRowsHeight, drawNames()) + svg("rows", width, mRowsHeight, drawRows(scale)) +
           "</div></div>\n<pre id=\"lines\" hidden></pre>\n<div id=\"tip\" hidden></div>\n"
           "<script type=\"application/json\" id=\"data\">" +
           data(scale) + "</script>\n<script>\n" + SHEET_JS + "</script>\n</body>\n</html>\n";
}

std::string SheetDrawing::still(double scale) const
{
    const auto moved = [](int x, int y, const std::string& content) {
        return element("g", "transform=\"translate(" + std::to_string(x) + " " + std::to_string(y) + ")\"",
                       "\n" + content);
    };
    std::string style = SHEET_DRAWING_CSS;
    std::string result =
        rectangle(0, 0, mNamesWidth + mSeconds * scale, mHeadHeight + mRowsHeight, "fill=\"var(--ground)\"");
    result += moved(0, 0, drawHeadNames()) + moved(mNamesWidth, 0, drawHead(scale)) +
              moved(0, mHeadHeight, drawNames()) + moved(mNamesWidth, mHeadHeight, drawRows(scale));
    result = "<style>\n" + style + "</style>\n" + result;
    for (const Color& color : COLORS) replaceAll(result, std::string("var(--") + color.name + ")", color.light);
    return svg("sheet", mNamesWidth + mSeconds * scale, mHeadHeight + mRowsHeight, result);
}

} // namespace Timeline
