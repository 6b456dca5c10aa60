#pragma once

// What in a scene follows the music. The script says at which seconds of the show a scene is seen, the score what is
// struck in them; both together give moments on the scene's own clock, and these become curves of light and movement.
//
// One scene may be seen twice, over different notes. A moment counts where the same is struck every time that it is
// seen; so nothing ever moves to a note that nobody hears, and a script that is changed changes the scenes with it.

#include "builder.h"

#include "score.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Scenes
{

// Something is struck, at a time of the scene.
struct Hit
{
    float time;
    float strength; // 1 for a full note
    float hertz;    // 0 for what has no pitch
};

// When a scene is seen, and what is heard then.
class Showing
{
public:
    // The scene that the effect of this name plays in a script. An entry that holds the camera more than a hundred
    // metres too high (its spline "y") does not show it. Throws std::runtime_error that names the file.
    Showing(const std::string& script, const std::string& effect);

    float length() const { return float(mSlots.size() * Music::SECONDS_PER_STEP); }

    // The notes of these voices, in order, at most one at a time: the loudest.
    std::vector<Hit> hits(const std::vector<Music::Voice>& voices) const;

    // Where the chord that is held at a time lies on the circle of fifths, from its tones: D minor is about 0, flat
    // chords lie below, to -2, sharp and strained ones above, to 4. It stays where no chord is heard.
    float harmony(float time) const;

private:
    // For each sixteenth of the scene the seconds of the show at which its time 0 would lie, for every entry that
    // shows that sixteenth, in the order of the show.
    std::vector<std::vector<double>> mSlots;
    std::vector<float> mHarmony; // of each sixteenth
};

// How light answers hits: fast up, slowly down.
class Swell
{
public:
    // Seconds up to the top, and from there down to a third.
    Swell(std::vector<Hit> hits, float attack, float decay) : mHits(std::move(hits)), mAttack(attack), mDecay(decay) {}

    // 0 at rest, and at the top of a hit its strength.
    float at(float time) const;
    // Where a curve of straight lines has to bend.
    std::vector<float> times() const;

private:
    std::vector<Hit> mHits;
    float mAttack, mDecay;
};

// What the lights and the movements of a scene answer to. Refers to the showing.
class Follow
{
public:
    explicit Follow(const Showing& showing);

    // The chord's colour: deep blue for flat chords, over ice and rose to copper for those that are strained or
    // of another key. It is there a fifth of a second after the chord.
    Vector3f color(float time) const;
    // The times of a swell, and those at which the chord's colour changes.
    std::vector<float> withChords(const Swell& swell) const;
    // The notes of the tune that move things of a kind, 0 up to KINDS - 1, or a multiple above.
    std::vector<Hit> tones(int kind) const;
    Swell swell(int kind) const { return Swell(tones(kind), 0.04f, 0.35f); }
    static const int KINDS = 7;

    const Swell beat;  // of the heart, or of the drum that stands for it
    const Swell snare; // and claps
    const Swell bell;
    const Swell tune; // bells and the lead
    const Swell call; // the tune, or the claps that stand for it before it begins
    const Swell chord;

private:
    const Showing& mShowing;
    const std::vector<Hit> mNotes; // of the tune
};

// Straight lines through the values of a function at the given times, in any order, without those that are on the way
// between others anyway.
void setLines(y3d::TrackBlenderFloat& curve, std::vector<float> times, const std::function<float(float)>& value);
void setColor(y3d::Light* light, const std::vector<float>& times, const std::function<Vector3f(float)>& color);

// Swings that fade out after each hit: a push of `reach` for a full one, there and back in `period` seconds.
void setSwings(y3d::TrackBlenderFloat& curve, const std::vector<Hit>& hits, float reach, float period);

} // namespace Scenes
