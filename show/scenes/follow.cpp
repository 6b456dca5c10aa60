#include "follow.h"

#include "script_loadxml.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>

namespace Scenes
{

namespace
{

const double STEP = Music::SECONDS_PER_STEP;
const float UNSEEN = 1000.0f;   // tenths of metres by which the camera is too high to see anything
const double TOGETHER = 0.01;   // seconds between notes that count as struck at once
const float TOLERANCE = 0.015f; // by which a key may be off the line between its neighbours: nobody sees it

// The colours of chords, by where they lie on the circle of fifths.
struct Shade
{
    float harmony;
    Vector3f color;
};
const Shade SHADES[] = {{-1.8f, Vector3f(0.26f, 0.40f, 1.30f)},
                        {-0.4f, Vector3f(0.44f, 0.84f, 1.15f)},
                        {0.8f, Vector3f(1.05f, 0.30f, 1.00f)},
                        {2.0f, Vector3f(1.50f, 0.27f, 0.13f)}};
const std::vector<Music::Voice> TUNE = {Music::Voice::Lead, Music::Voice::Bell};
const float GHOST = 0.3f;  // strength below which a snare is felt more than heard
const float CHANGE = 0.2f; // seconds from one chord's colour to the next

float height(const Script::Effect& entry, double time)
{
    for (const Script::Spline* spline : entry.mSplines)
        if (spline->mName == "y") return spline->getSplineValue(float(time));
    return 0.0f;
}

// Above the lowest D that anything here plays.
int semitones(double hertz)
{
    return int(std::lround(12.0 * std::log2(hertz / 440.0))) + 7 + 4 * 12;
}

// A tone on the circle of fifths: D is 0, fifths up are 1, 2, ... and fifths down -1, -2, ...; from B flat up to D
// sharp.
float fifths(double hertz)
{
    const int place = semitones(hertz) * 7 % 12;
    return float(place > 7 ? place - 12 : place);
}

// The loudest of the notes of these voices that start from one time on and before another; null where none does.
const Music::Note* loudest(const std::vector<Music::Voice>& voices, double from, double to)
{
    const Music::Note* found = nullptr;
    for (const Music::Note& note : Music::notes())
        if (note.start >= from && note.start < to &&
            std::find(voices.begin(), voices.end(), note.voice) != voices.end() &&
            (!found || note.level > found->level))
            found = &note;
    return found;
}

std::vector<Hit> above(float strength, std::vector<Hit> hits)
{
    hits.erase(std::remove_if(hits.begin(), hits.end(), [&](const Hit& hit) { return hit.strength < strength; }),
               hits.end());
    return hits;
}

} // namespace

Showing::Showing(const std::string& script, const std::string& effect)
{
    Script::ScriptEngine engine;
    try
    {
        if (!Script::LoadXML().load(script.c_str(), engine))
            throw std::runtime_error("cannot be read, or is no script");
    }
    catch (const std::exception& error)
    {
        throw std::runtime_error(script + ": " + error.what());
    }
    std::vector<const Script::Effect*> entries;
    for (const Script::Effect* entry : engine.mEffects)
        if (entry->mEnabled && entry->mName == effect) entries.push_back(entry);
    std::sort(entries.begin(), entries.end(),
              [](const Script::Effect* a, const Script::Effect* b) { return a->mStart < b->mStart; });
    for (const Script::Effect* entry : entries)
    {
        const double seconds = std::min(Music::SECONDS, std::max(0.0, double(entry->mEnd - entry->mStart)));
        const std::size_t count = std::size_t(std::ceil(seconds / STEP));
        if (mSlots.size() < count) mSlots.resize(count);
        for (std::size_t i = 0; i < count; i++)
            if (height(*entry, (double(i) + 0.5) * STEP) < UNSEEN) mSlots[i].push_back(entry->mStart);
    }
    if (mSlots.empty()) throw std::runtime_error(script + ": never shows '" + effect + "'");

    float now = 0.0f;
    for (std::size_t i = 0; i < mSlots.size(); i++)
    {
        float sum = 0.0f;
        int tones = 0;
        if (!mSlots[i].empty())
        {
            const double heard = mSlots[i][0] + double(i) * STEP;
            for (const Music::Note& note :
                 Music::notes(Music::Voice::Pad, heard - Music::SECONDS_PER_BAR + STEP / 2.0, heard + STEP / 2.0))
                sum += fifths(note.hertz), tones++;
        }
        if (tones) now = sum / float(tones);
        mHarmony.push_back(now);
    }
}

std::vector<Hit> Showing::hits(const std::vector<Music::Voice>& voices) const
{
    std::vector<Hit> found;
    for (std::size_t i = 0; i < mSlots.size(); i++)
    {
        if (mSlots[i].empty()) continue;
        const double from = mSlots[i][0] + double(i) * STEP;
        const Music::Note* const note = loudest(voices, from - TOGETHER, from + STEP - TOGETHER);
        if (!note) continue;
        const double time = note->start - mSlots[i][0];
        const bool always = std::all_of(mSlots[i].begin() + 1, mSlots[i].end(), [&](double start) {
            return loudest(voices, start + time - TOGETHER, start + time + TOGETHER) != nullptr;
        });
        if (always) found.push_back({float(time), note->level, float(note->hertz)});
    }
    return found;
}

float Showing::harmony(float time) const
{
    const double slot = std::max(0.0, std::floor(double(time) / STEP + 1e-3));
    return mHarmony[std::min(mHarmony.size() - 1, std::size_t(slot))];
}

float Swell::at(float time) const
{
    float value = 0.0f;
    for (const Hit& hit : mHits)
    {
        const float since = time - hit.time;
        if (since <= 0.0f) break;
        value =
            std::max(value, hit.strength * (since < mAttack ? since / mAttack : std::exp((mAttack - since) / mDecay)));
    }
    return value;
}

std::vector<float> Swell::times() const
{
    static const float BENDS[] = {0.0f, 0.6f, 1.6f, 3.5f}; // in decays after the top
    std::vector<float> times;
    for (std::size_t i = 0; i < mHits.size(); i++)
    {
        const float next = i + 1 < mHits.size() ? mHits[i + 1].time : 1e9f;
        times.push_back(mHits[i].time);
        for (float bend : BENDS)
        {
            const float time = mHits[i].time + mAttack + bend * mDecay;
            if (time < next) times.push_back(time);
        }
    }
    return times;
}

Follow::Follow(const Showing& showing)
    : beat(showing.hits({Music::Voice::Heart, Music::Voice::Kick}), 0.05f, 0.28f),
      snare(above(GHOST, showing.hits({Music::Voice::Snare, Music::Voice::Clap})), 0.03f, 0.16f),
      bell(showing.hits({Music::Voice::Bell}), 0.03f, 0.4f), tune(showing.hits(TUNE), 0.04f, 0.35f),
      call(showing.hits({Music::Voice::Lead, Music::Voice::Bell, Music::Voice::Clap}), 0.04f, 0.35f),
      chord(showing.hits({Music::Voice::Pad}), 0.35f, 1.1f), mShowing(showing), mNotes(showing.hits(TUNE))
{
}

Vector3f Follow::color(float time) const
{
    const float now = mShowing.harmony(time), before = mShowing.harmony(std::max(0.0f, time - CHANGE));
    const float inBar = std::fmod(time, float(Music::SECONDS_PER_BAR));
    const float at = before + (now - before) * std::min(1.0f, inBar / CHANGE);
    Vector3f color = SHADES[0].color;
    for (std::size_t i = 1; i < sizeof(SHADES) / sizeof(SHADES[0]); i++)
    {
        const float from = SHADES[i - 1].harmony, to = SHADES[i].harmony;
        color = mix(color, SHADES[i].color, std::min(1.0f, std::max(0.0f, (at - from) / (to - from))));
    }
    return color;
}

std::vector<float> Follow::withChords(const Swell& swell) const
{
    std::vector<float> times = swell.times();
    for (float time = 0.0f; time < mShowing.length(); time += float(Music::SECONDS_PER_BAR))
    {
        times.push_back(time);
        times.push_back(time + CHANGE);
    }
    return times;
}

std::vector<Hit> Follow::tones(int kind) const
{
    std::vector<Hit> found;
    for (const Hit& hit : mNotes)
        if (semitones(hit.hertz) % KINDS == kind % KINDS) found.push_back(hit);
    return found;
}

void setLines(y3d::TrackBlenderFloat& curve, std::vector<float> times, const std::function<float(float)>& value)
{
    std::sort(times.begin(), times.end());
    std::vector<Stop> stops;
    for (float time : times)
    {
        if (!stops.empty() && time - stops.back().time < 1e-3f) continue;
        stops.push_back({time, value(time)});
    }
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    curve.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CONSTANT;
    curve.mKeys.clear();
    for (std::size_t first = 0; first < stops.size();)
    {
        const MathBase::Vector2f point = {stops[first].time, stops[first].value};
        curve.mKeys.push_back({point, point, point});
        // As far as one line will do.
        std::size_t last = first + 1;
        const auto straight = [&](std::size_t end) {
            for (std::size_t i = first + 1; i < end; i++)
            {
                const float share = (stops[i].time - stops[first].time) / (stops[end].time - stops[first].time);
                if (std::fabs(stops[first].value + (stops[end].value - stops[first].value) * share - stops[i].value) >
                    TOLERANCE)
                    return false;
            }
            return true;
        };
        while (last + 1 < stops.size() && straight(last + 1)) last++;
        first = last;
    }
}

void setColor(y3d::Light* light, const std::vector<float>& times, const std::function<Vector3f(float)>& color)
{
    setLines(light->mLightColor.mR, times, [&](float time) { return color(time).x; });
    setLines(light->mLightColor.mG, times, [&](float time) { return color(time).y; });
    setLines(light->mLightColor.mB, times, [&](float time) { return color(time).z; });
}

void setSwings(y3d::TrackBlenderFloat& curve, const std::vector<Hit>& hits, float reach, float period)
{
    // Out and back, less each time, until the next hit.
    struct Turn
    {
        float time; // in periods
        float reach;
    };
    static const Turn TURNS[] = {{0.0f, 0.0f}, {0.25f, 1.0f}, {0.75f, -0.6f}, {1.25f, 0.3f}, {1.75f, 0.0f}};
    std::vector<Stop> stops;
    for (std::size_t i = 0; i < hits.size(); i++)
    {
        const float next = i + 1 < hits.size() ? hits[i + 1].time : 1e9f;
        for (const Turn& turn : TURNS)
        {
            const float time = hits[i].time + turn.time * period;
            if (time > next - 0.1f * period) break;
            // What still swings goes on from where it is.
            if (turn.reach == 0.0f && !stops.empty() && time - stops.back().time < 0.3f * period) continue;
            stops.push_back({time, turn.reach * reach * hits[i].strength});
        }
    }
    if (stops.size() > 1) setCurve(curve, stops);
}

} // namespace Scenes
