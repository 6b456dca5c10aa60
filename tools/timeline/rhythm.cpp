#include "rhythm.h"

#include "failure.h"

#include <aubio/aubio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <numeric>

namespace Timeline
{

namespace
{

const uint_t WINDOW = 1024; // of the analysis, in samples
const uint_t HOP = 256;
const double PI = 3.14159265358979323846;
const double MIN_BPM = 40.0, MAX_BPM = 240.0;
const double SIXTEENTHS = 4.0; // in a beat
const double MIN_SECONDS = 4.0;

template <class T> using Owned = std::unique_ptr<T, void (*)(T*)>;

template <class T> Owned<T> own(T* object, void (*free)(T*))
{
    if (!object) throw Failure("aubio cannot work on music of this rate");
    return {object, free};
}

// Hands the music to `step` in hops of `hop` samples, the last one filled with silence.
void walk(const Music& music, uint_t hop, const std::function<void(fvec_t* samples, std::size_t position)>& step)
{
    const std::vector<float>& mono = music.mono();
    const Owned<fvec_t> samples = own(new_fvec(hop), del_fvec);
    for (std::size_t position = 0; position < mono.size(); position += hop)
    {
        for (uint_t i = 0; i < hop; ++i) samples->data[i] = position + i < mono.size() ? mono[position + i] : 0.0f;
        step(samples.get(), position);
    }
}

double median(std::vector<double> values)
{
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double guessTempo(const Music& music)
{
    const auto tempo = own(new_aubio_tempo("default", WINDOW, HOP, static_cast<uint_t>(music.rate())), del_aubio_tempo);
    const Owned<fvec_t> beat = own(new_fvec(1), del_fvec);
    std::vector<double> found;
    walk(music, HOP, [&](fvec_t* samples, std::size_t) {
        aubio_tempo_do(tempo.get(), samples, beat.get());
        const double now = static_cast<double>(aubio_tempo_get_bpm(tempo.get()));
        if (beat->data[0] != 0.0f && now > 0.0) found.push_back(now);
    });
    return median(std::move(found));
}

// Energy of any stretch of the music.
class Energy
{
public:
    explicit Energy(const Music& music) : mRate(music.rate()), mSums(music.mono().size() + 1, 0.0)
    {
        const std::vector<float>& mono = music.mono();
        for (std::size_t i = 0; i < mono.size(); ++i)
            mSums[i + 1] = mSums[i] + static_cast<double>(mono[i]) * static_cast<double>(mono[i]);
        mFloor = 1e-3 * mSums.back() / static_cast<double>(mono.size()) + 1e-12;
    }

    // The mean square between two times.
    double mean(double from, double to) const
    {
        const std::size_t begin = index(from), end = index(to);
        return end > begin ? (mSums[end] - mSums[begin]) / static_cast<double>(end - begin) : 0.0;
    }

    // The place within reach of `time` where the sound rises most steeply.
    double attackNear(double time) const
    {
        const double before = 0.05, behind = 0.03, step = 0.0005;
        double best = time, bestRise = 0.0;
        for (double at = time - before; at <= time + behind; at += step)
        {
            const double rise = (mean(at, at + 0.004) + mFloor) / (mean(at - 0.008, at) + mFloor);
            if (rise <= bestRise) continue;
            bestRise = rise;
            best = at;
        }
        return best;
    }

    double growthAt(double time) const
    {
        return std::sqrt(std::max(0.0, mean(time, time + 0.06) - mean(time - 0.06, time)));
    }

private:
    std::size_t index(double time) const
    {
        return static_cast<std::size_t>(std::clamp(time * mRate, 0.0, static_cast<double>(mSums.size() - 1)));
    }

    double mRate;
    std::vector<double> mSums;
    double mFloor;
};

std::vector<Onset> findOnsets(const Music& music, const Energy& energy)
{
    const auto onset = own(new_aubio_onset("hfc", WINDOW, HOP, static_cast<uint_t>(music.rate())), del_aubio_onset);
    const Owned<fvec_t> found = own(new_fvec(1), del_fvec);
    std::vector<Onset> onsets;
    walk(music, HOP, [&](fvec_t* samples, std::size_t) {
        aubio_onset_do(onset.get(), samples, found.get());
        if (found->data[0] == 0.0f) return;
        const double time = energy.attackNear(static_cast<double>(aubio_onset_get_last(onset.get())) / music.rate());
        if (onsets.empty() || time - onsets.back().time > 0.02)
            onsets.push_back({std::max(time, 0.0), energy.growthAt(time)});
    });
    double strongest = 0.0;
    for (const Onset& one : onsets) strongest = std::max(strongest, one.strength);
    if (!(strongest > 0.0)) throw Failure("There is no onset in the music");
    for (Onset& one : onsets) one.strength /= strongest;
    return onsets;
}

// How much of the onsets' strength a comb of this tempo gathers: teeth on beats, eighths and sixteenths.
double gathered(const std::vector<Onset>& onsets, double bpm)
{
    std::complex<double> beats = 0.0, eighths = 0.0, sixteenths = 0.0;
    for (const Onset& onset : onsets)
    {
        const std::complex<double> beat = std::polar(1.0, -2.0 * PI * bpm / 60.0 * onset.time);
        const std::complex<double> eighth = beat * beat;
        beats += onset.strength * beat;
        eighths += onset.strength * eighth;
        sixteenths += onset.strength * eighth * eighth;
    }
    return std::abs(beats) + std::abs(eighths) + std::abs(sixteenths);
}

// The tempo of the best comb; what aubio says, or 120, only tells in which octave to prefer it.
double fitTempo(const std::vector<Onset>& onsets, double seconds, double guess)
{
    const double middle = guess > 0.0 ? guess : 120.0;
    const double octaves = 0.5; // in which a comb gets two thirds of its worth
    // Neighbours differ by a third of a sixteenth at the far end of the piece.
    const double step = 60.0 / seconds / SIXTEENTHS / 3.0;
    double best = middle, bestWorth = 0.0;
    for (double bpm = MIN_BPM; bpm <= MAX_BPM; bpm += step)
    {
        const double away = std::log2(bpm / middle) / octaves;
        const double worth = gathered(onsets, bpm) * std::exp(-0.5 * away * away);
        if (worth <= bestWorth) continue;
        bestWorth = worth;
        best = bpm;
    }
    return best;
}

// Where most of the onsets' strength lies in a period, in seconds.
double phaseIn(const std::vector<Onset>& onsets, double period)
{
    std::complex<double> wave = 0.0;
    for (const Onset& onset : onsets) wave += std::polar(onset.strength, 2.0 * PI * onset.time / period);
    const double turn = std::arg(wave) / (2.0 * PI);
    return (turn < 0.0 ? turn + 1.0 : turn) * period;
}

double awayFrom(double time, double period, double offset)
{
    return std::remainder(time - offset, period);
}

// Strength of the onsets on the grid.
double strengthOn(const std::vector<Onset>& onsets, double period, double offset, double within)
{
    double sum = 0.0;
    for (const Onset& onset : onsets)
        if (std::fabs(awayFrom(onset.time, period, offset)) < within) sum += onset.strength;
    return sum;
}

// The line through the onsets near the teeth of the grid, closer each time: corrects period and offset.
void straighten(const std::vector<Onset>& onsets, double& period, double& offset, bool isTempoKnown)
{
    for (const double within : {0.03, 0.02, 0.012, 0.012})
    {
        double weight = 0.0, n = 0.0, t = 0.0, nn = 0.0, nt = 0.0;
        for (const Onset& onset : onsets)
        {
            const double away = awayFrom(onset.time, period, offset);
            if (std::fabs(away) > within) continue;
            const double tooth = std::round((onset.time - offset) / period);
            weight += onset.strength;
            n += onset.strength * tooth;
            t += onset.strength * away;
            nn += onset.strength * tooth * tooth;
            nt += onset.strength * tooth * away;
        }
        const double spread = weight * nn - n * n;
        if (!(weight > 0.0)) return;
        const double slope = isTempoKnown || !(spread > 0.0) ? 0.0 : (weight * nt - n * t) / spread;
        offset += (t - slope * n) / weight;
        period += slope;
    }
}

// The median of where onsets lie around their beats.
double settle(const std::vector<Onset>& onsets, double period, double offset)
{
    std::vector<double> residuals;
    for (const Onset& onset : onsets)
    {
        const double away = awayFrom(onset.time, period, offset);
        if (std::fabs(away) < 0.015 && onset.strength > 0.1) residuals.push_back(away);
    }
    return offset + median(std::move(residuals));
}

// The sound of the music in short steps, as the loudness of bands of pitch.
class Sound
{
public:
    explicit Sound(const Music& music) : mStep(static_cast<double>(HOP_BARS) / music.rate())
    {
        const auto vocoder = own(new_aubio_pvoc(WINDOW_BARS, HOP_BARS), del_aubio_pvoc);
        const auto spectrum = own(new_cvec(WINDOW_BARS), del_cvec);
        walk(music, HOP_BARS, [&](fvec_t* samples, std::size_t) {
            aubio_pvoc_do(vocoder.get(), samples, spectrum.get());
            Bands bands{};
            for (uint_t i = 1; i < spectrum->length; ++i)
            {
                const double pitch = std::log2(i * static_cast<double>(music.rate()) / WINDOW_BARS / LOWEST) * 3.0;
                if (pitch < 0.0 || pitch >= static_cast<double>(bands.size())) continue;
                bands[static_cast<std::size_t>(pitch)] += static_cast<double>(spectrum->norm[i]);
            }
            mBands.push_back(bands);
            for (const double band : bands) mFloor += band;
        });
        // A hundredth of the mean: what is not to be heard makes no difference.
        mFloor = 0.01 * mFloor / static_cast<double>(mBands.size() * Bands().size()) + 1e-9;
    }

    // How much comes into the sound with the beat at each of these times that was not in the beat before, as a sum over
    // every fourth of them, counted from each of the first four.
    std::array<double, BEATS_PER_BAR> changes(const std::vector<double>& beats) const
    {
        std::vector<Bands> sounds(beats.size());
        for (Bands& sound : sounds) sound.fill(mFloor);
        for (std::size_t i = 0; i < mBands.size(); ++i)
        {
            // The window of an analysis ends with its hop; one across a beat belongs to none.
            const double end = mStep * static_cast<double>(i + 1), start = end - mStep * WINDOW_BARS / HOP_BARS;
            const auto behind = std::upper_bound(beats.begin(), beats.end(), start);
            if (behind == beats.begin() || (behind != beats.end() && *behind < end)) continue;
            Bands& sound = sounds[static_cast<std::size_t>(behind - beats.begin()) - 1];
            for (std::size_t band = 0; band < sound.size(); ++band) sound[band] += mBands[i][band];
        }
        std::array<double, BEATS_PER_BAR> result{};
        for (std::size_t beat = 1; beat < beats.size(); ++beat)
            for (std::size_t band = 0; band < sounds[beat].size(); ++band)
                result[beat % BEATS_PER_BAR] += std::max(0.0, std::log(sounds[beat][band] / sounds[beat - 1][band]));
        return result;
    }

private:
    using Bands = std::array<double, 24>; // three an octave

    static const uint_t WINDOW_BARS = 4096;
    static const uint_t HOP_BARS = 1024;
    static constexpr double LOWEST = 30.0; // hertz

    double mStep; // seconds
    double mFloor = 0.0;
    std::vector<Bands> mBands;
};

// The beats of a grid, from a hair before the start of the music on.
std::vector<double> beatsFrom(double offset, double beat, double seconds)
{
    const double hair = 0.01;
    const double first = offset - beat * std::floor((offset + hair) / beat);
    std::vector<double> beats;
    for (int i = 0; first + i * beat < seconds - hair; ++i) beats.push_back(first + i * beat);
    return beats;
}

// Bars whose neighbours on both sides differ most part the piece.
std::vector<Section> findSections(const Energy& energy, const std::vector<double>& bars, double seconds)
{
    const int reach = 4;           // bars that are compared, and that a section has at least
    const double difference = 2.5; // decibels
    std::vector<double> edges = bars;
    if (edges.empty() || edges.front() > 0.02) edges.insert(edges.begin(), 0.0);
    edges.front() = 0.0;
    if (edges.back() < seconds) edges.push_back(seconds);
    std::vector<double> levels;
    const auto level = [&](double from, double to) { return 10.0 * std::log10(energy.mean(from, to) + 1e-9); };
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) levels.push_back(level(edges[i], edges[i + 1]));

    const int count = static_cast<int>(levels.size());
    std::vector<double> steps(levels.size(), 0.0);
    for (int i = 1; i < count; ++i)
    {
        const int before = std::min(reach, i), behind = std::min(reach, count - i);
        const double left = std::accumulate(levels.begin() + i - before, levels.begin() + i, 0.0) / before;
        const double right = std::accumulate(levels.begin() + i, levels.begin() + i + behind, 0.0) / behind;
        steps[static_cast<std::size_t>(i)] = std::fabs(right - left);
    }
    std::vector<Section> sections;
    int begin = 0;
    for (int i = reach; i <= count; ++i)
    {
        bool isEdge = i == count;
        if (!isEdge && i - begin >= reach && count - i >= reach && steps[static_cast<std::size_t>(i)] > difference)
        {
            const auto first = steps.begin() + std::max(begin + 1, i - reach + 1);
            const auto last = steps.begin() + std::min(count, i + reach);
            isEdge = *std::max_element(first, last) == steps[static_cast<std::size_t>(i)];
        }
        if (!isEdge) continue;
        const double from = edges[static_cast<std::size_t>(begin)], to = edges[static_cast<std::size_t>(i)];
        sections.push_back({from, to, level(from, to)});
        begin = i;
    }
    if (sections.empty()) sections.push_back({0.0, seconds, level(0.0, seconds)});
    return sections;
}

} // namespace

std::vector<double> Rhythm::bars() const
{
    std::vector<double> result;
    for (std::size_t i = static_cast<std::size_t>(firstBar); i < beats.size(); i += BEATS_PER_BAR)
        result.push_back(beats[i]);
    return result;
}

Rhythm findRhythm(const Music& music, double bpm)
{
    const double seconds = music.seconds();
    if (seconds < MIN_SECONDS) throw Failure("The music is too short for a grid");
    const Energy energy(music);
    Rhythm rhythm{};
    rhythm.seconds = seconds;
    rhythm.onsets = findOnsets(music, energy);
    const std::vector<Onset>& onsets = rhythm.onsets;
    const bool isTempoKnown = bpm > 0.0;
    rhythm.guess = isTempoKnown ? 0.0 : guessTempo(music);
    rhythm.bpm = isTempoKnown ? bpm : fitTempo(onsets, seconds, rhythm.guess);

    double sixteenth = 60.0 / rhythm.bpm / SIXTEENTHS;
    double offset = phaseIn(onsets, sixteenth);
    straighten(onsets, sixteenth, offset, isTempoKnown);
    if (!isTempoKnown)
    {
        rhythm.bpm = 60.0 / (sixteenth * SIXTEENTHS);
        // A whole number of beats a minute that comes to the same at both ends is what the composer set.
        const double whole = std::round(rhythm.bpm);
        if (std::fabs(whole - rhythm.bpm) / whole * seconds / 2.0 < 0.005)
        {
            sixteenth = 60.0 / whole / SIXTEENTHS;
            rhythm.bpm = whole;
            straighten(onsets, sixteenth, offset, true);
        }
    }
    const double beat = sixteenth * SIXTEENTHS;
    double total = 0.0;
    for (const Onset& onset : onsets) total += onset.strength;
    rhythm.fit = strengthOn(onsets, sixteenth, offset, 0.02) / total;

    // The beat is one of the sixteenths with strong onsets: the one that has the bar, on which bass and chords change.
    std::vector<double> strengths;
    for (int i = 0; i < static_cast<int>(SIXTEENTHS); ++i)
        strengths.push_back(strengthOn(onsets, beat, offset + i * sixteenth, 0.02));
    const Sound sound(music);
    double mostChange = -1.0;
    for (std::size_t i = 0; i < strengths.size(); ++i)
    {
        if (strengths[i] < 0.5 * *std::max_element(strengths.begin(), strengths.end())) continue;
        const double settled = settle(onsets, beat, offset + static_cast<double>(i) * sixteenth);
        const std::vector<double> beats = beatsFrom(std::round(settled * 1000.0) / 1000.0, beat, seconds);
        if (beats.size() < 2) throw Failure("The music is too short for a grid of this tempo");
        const std::array<double, BEATS_PER_BAR> changes = sound.changes(beats);
        const auto most = std::max_element(changes.begin(), changes.end());
        if (*most <= mostChange) continue;
        mostChange = *most;
        rhythm.beats = beats;
        rhythm.offset = beats.front();
        rhythm.firstBar = static_cast<int>(most - changes.begin());
    }
    rhythm.sections = findSections(energy, rhythm.bars(), seconds);
    return rhythm;
}

} // namespace Timeline
