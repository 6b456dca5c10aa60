#include "effect_calls.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

using GLRecorder::gl;

namespace
{

// Of a long frame: how many calls of each name from the front, how many from the end, and how many of all between.
const int FIRST = 5, LAST = 2;
const std::size_t SAMPLES = 24;
const std::size_t CORNERS = 6; // parts of a long primitive from the front, and half as many more

#define NAMED(constant)                                                                                                \
    {                                                                                                                  \
        constant, #constant                                                                                            \
    }
const std::map<long, const char*> NAMES = {NAMED(GL_TEXTURE_1D),
                                           NAMED(GL_TEXTURE_2D),
                                           NAMED(GL_BLEND),
                                           NAMED(GL_DEPTH_TEST),
                                           NAMED(GL_LIGHTING),
                                           NAMED(GL_LIGHT0),
                                           NAMED(GL_COLOR_MATERIAL),
                                           NAMED(GL_CULL_FACE),
                                           NAMED(GL_STENCIL_TEST),
                                           NAMED(GL_FOG),
                                           NAMED(GL_SRC_ALPHA),
                                           NAMED(GL_ONE_MINUS_SRC_ALPHA),
                                           NAMED(GL_ONE_MINUS_DST_ALPHA),
                                           NAMED(GL_MODELVIEW),
                                           NAMED(GL_PROJECTION),
                                           NAMED(GL_TEXTURE_MIN_FILTER),
                                           NAMED(GL_TEXTURE_MAG_FILTER),
                                           NAMED(GL_TEXTURE_WRAP_S),
                                           NAMED(GL_TEXTURE_WRAP_T),
                                           NAMED(GL_NEAREST),
                                           NAMED(GL_LINEAR),
                                           NAMED(GL_CLAMP),
                                           NAMED(GL_RGB),
                                           NAMED(GL_ALPHA),
                                           NAMED(GL_LUMINANCE),
                                           NAMED(GL_UNSIGNED_BYTE),
                                           NAMED(GL_FLOAT),
                                           NAMED(GL_UNSIGNED_INT),
                                           NAMED(GL_VERTEX_ARRAY),
                                           NAMED(GL_NORMAL_ARRAY),
                                           NAMED(GL_TEXTURE_COORD_ARRAY),
                                           NAMED(GL_ALWAYS),
                                           NAMED(GL_LESS),
                                           NAMED(GL_GREATER),
                                           NAMED(GL_EQUAL),
                                           NAMED(GL_NOTEQUAL),
                                           NAMED(GL_KEEP),
                                           NAMED(GL_INCR),
                                           NAMED(GL_FRONT),
                                           NAMED(GL_BACK),
                                           NAMED(GL_LINE),
                                           NAMED(GL_FILL),
                                           NAMED(GL_COMPILE),
                                           NAMED(GL_FOG_MODE),
                                           NAMED(GL_FOG_COLOR),
                                           NAMED(GL_FOG_DENSITY),
                                           NAMED(GL_FOG_START),
                                           NAMED(GL_FOG_END),
                                           NAMED(GL_TEXTURE_GEN_S),
                                           NAMED(GL_TEXTURE_GEN_T),

                                           NAMED(GL_TEXTURE_GEN_MODE),
                                           NAMED(GL_SPHERE_MAP)};
#undef NAMED
const char* const MODES[] = {"GL_POINTS",         "GL_LINES",        "GL_LINE_LOOP", "GL_LINE_STRIP", "GL_TRIANGLES",
                             "GL_TRIANGLE_STRIP", "GL_TRIANGLE_FAN", "GL_QUADS",     "GL_QUAD_STRIP", "GL_POLYGON"};

std::vector<std::string> split(const std::string& text, const std::string& between)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end = 0; end != std::string::npos; start = end + between.size())
    {
        end = text.find(between, start);
        parts.push_back(text.substr(start, end - start));
    }
    return parts;
}

// A call with names for its numbers, and cut where it is a long primitive.
std::string readable(const std::string& call)
{
    const std::vector<std::string> parts = split(call, ", ");
    std::string line;
    for (const std::string& word : split(parts[0], " "))
    {
        const auto name = NAMES.find(std::strtol(word.c_str(), nullptr, 10));
        const bool named = name != NAMES.end() && word == std::to_string(name->first);
        line += (line.empty() ? "" : " ") + (named ? name->second : word);
    }
    if (parts[0].compare(0, 8, "glBegin ") == 0) line = std::string("glBegin ") + MODES[std::stoi(parts[0].substr(8))];
    for (std::size_t i = 1; i < parts.size(); ++i)
        if (i <= CORNERS || i + CORNERS / 2 >= parts.size() || parts.size() < 2 * CORNERS)
            line += ", " + parts[i];
        else if (i == CORNERS + 1)
            line += ", (" + std::to_string(parts.size() - CORNERS - CORNERS / 2) + " more)";
    return line;
}

// The calls since the last time.
void takeCalls(std::ostream& list)
{
    const std::size_t stride = gl.calls.size() / SAMPLES | 1;
    std::map<std::string, int> before, left;
    const auto nameOf = [](const std::string& call) { return call.substr(0, call.find(' ')); };
    for (const std::string& call : gl.calls) ++left[nameOf(call)];
    list << "  " << gl.calls.size() << " calls\n";
    for (std::size_t i = 0; i < gl.calls.size(); ++i)
    {
        const std::string name = nameOf(gl.calls[i]);
        if (before[name]++ < FIRST || left[name] - before[name] < LAST || i % stride == 0)
            list << "  " << i << ": " << readable(gl.calls[i]) << "\n";
    }
    gl.calls.clear();
}

void step(Stage& stage, Tidewheel::Effect3D& effect, const std::string& text)
{
    const std::string name = text.substr(0, text.find('=')),
                      value = text.substr(std::min(name.size() + 1, text.size()));
    float time = 0, delta = 0, position = 0;
    if (std::sscanf(text.c_str(), "@%f %f %f", &time, &delta, &position) == 3)
        stage.draw(effect, time, position, delta);
    else if (text == "reset")
        effect.resetTriggers();
    else if (text[0] == '~')
        effect.updateSpline(time, name.substr(1), std::stof(value));
    else
        effect.executeTrigger(time, name, value);
}

// Alike to the last digits of a number; whole numbers and words to the letter.
bool alike(const std::string& a, const std::string& b)
{
    const std::vector<std::string> as = split(a, " "), bs = split(b, " ");
    if (as.size() != bs.size()) return false;
    for (std::size_t i = 0; i < as.size(); ++i)
    {
        if (as[i] == bs[i]) continue;
        if ((as[i] + bs[i]).find_first_of(".e") == std::string::npos) return false;
        char* end = nullptr;
        const double x = std::strtod(as[i].c_str(), &end), y = std::strtod(bs[i].c_str(), nullptr);
        if (end == as[i].c_str() || !(std::fabs(x - y) <= 2e-5 + 2e-5 * std::fabs(x))) return false;
    }
    return true;
}

} // namespace

std::string listCalls(Stage& stage, Tidewheel::Effect3D& effect, const std::string& script)
{
    std::ostringstream list;
    gl.inFull = true;
    gl.calls.clear();
    const GLuint before = gl.lastName;
    effect.mTextureManager = &stage.mTextures;
    effect.setup(stage.mArchives);
    list << "setup\n";
    takeCalls(list);
    for (auto texture = gl.textures.upper_bound(before); texture != gl.textures.end(); ++texture)
    {
        unsigned int check = 0;
        for (unsigned char byte : texture->second) check = (check * 31 + byte) % 65521;
        list << "  texture " << texture->first << ": " << texture->second.size() << " bytes, check " << check << "\n";
    }
    for (const char* unknown : {"", "Color", "R", "mode ", "falloff1", "Alpha", "JUMP", "max", "percent"})
    {
        effect.executeTrigger(0.1f, unknown, "1");
        effect.updateSpline(0.1f, unknown, 77);
    }
    effect.resetTriggers(); // cubes split on any name
    for (const std::string& text : split(script, "; "))
    {
        list << text << "\n";
        step(stage, effect, text);
        if (!gl.calls.empty()) takeCalls(list);
    }
    return list.str();
}

void compareCalls(const std::string& name, const std::string& calls)
{
    const std::string path = std::string(EFFECT_CALLS) + "/" + name + ".txt";
    if (std::getenv("RENEW_CALLS"))
    {
        std::ofstream(path) << calls;
        return;
    }
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    const std::vector<std::string> expected = split(text.str(), "\n"), found = split(calls, "\n");
    std::string differences, step;
    int count = 0;
    for (std::size_t i = 0; i < std::max(expected.size(), found.size()) && count < 10; ++i)
    {
        const std::string before = i < expected.size() ? expected[i] : "", now = i < found.size() ? found[i] : "";
        if (now[0] != ' ') step = now;
        if (alike(before, now)) continue;
        differences += "at " + step + "\n- " + before + "\n+ " + now + "\n";
        ++count;
    }
    EXPECT_EQ(count, 0) << name << " asks OpenGL for something else than " << path << " says:\n"
                        << differences << "If this is what it should: RENEW_CALLS=1 before this test writes it anew.";
}
