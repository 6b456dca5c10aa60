#include "instruments.h"

#include <functional>

namespace Music
{

namespace
{

// Calls voice(seconds since start) for each sample from `start` for `length` seconds and adds what it gives.
template <typename Voice> void play(Track& track, double start, double length, Voice voice)
{
    const std::size_t first = std::size_t(std::max(0.0, start) * sampleRate + 0.5);
    const std::size_t last = std::min(track.size(), first + std::size_t(length * sampleRate));
    for (std::size_t i = first; i < last; i++) voice(track[i], double(i - first) / sampleRate);
}

uint32_t seedOf(double start, double hertz)
{
    return uint32_t(start * 1000.0) * 31u + uint32_t(hertz * 10.0);
}

double decay(double time, double seconds)
{
    return std::exp(-time * 5.0 / seconds);
}

} // namespace

// Seven saws, a few cents apart, in turn on the left and on the right, under a slowly moving low pass.
void pad(Track& track, const Note& note)
{
    static const double CENTS[] = {-13.0, -8.0, -3.5, 0.0, 4.0, 8.5, 12.0};
    static const float SIDES[] = {0.0f, 1.0f, 0.06f, 0.5f, 0.94f, 0.0f, 1.0f}; // 0 left, 1 right
    const int voices = 7;
    Noise noise(seedOf(note.start, note.hertz));
    std::vector<Oscillator> saws;
    double pitch[voices];
    for (int v = 0; v < voices; v++)
    {
        saws.emplace_back(noise.next() * 0.5 + 0.5);
        pitch[v] = note.hertz * std::pow(2.0, CENTS[v] / 1200.0);
    }
    Filter left, right;
    const Envelope envelope = {0.9, 2.0, 0.85, 1.8};
    int sample = 0;
    play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
        if (sample++ % 16 == 0)
        {
            const double drift = std::sin(2.0 * pi * 0.11 * (note.start + time));
            left.set(note.brightness * (1.0 + 0.25 * drift), 0.15);
            right.set(note.brightness * (1.0 - 0.25 * drift), 0.15);
        }
        float l = 0.0f, r = 0.0f;
        for (int v = 0; v < voices; v++)
        {
            const float saw = saws[std::size_t(v)].saw(pitch[v]);
            l += saw * (1.0f - SIDES[v]);
            r += saw * SIDES[v];
        }
        const float gain = note.level * 0.075f * float(envelope.at(time, note.length));
        out.left += left.low(l) * gain;
        out.right += right.low(r) * gain;
    });
}

// A saw and a sine an octave below; the filter snaps shut after each attack.
void bass(Track& track, const Note& note)
{
    Oscillator saw, square(0.3), sub;
    Filter filter;
    const Envelope envelope = {0.004, 0.25, 0.7, 0.09};
    int sample = 0;
    play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
        if (sample++ % 8 == 0) filter.set(90.0 + note.brightness * decay(time, 0.45), 0.45);
        const float tone = 0.6f * saw.saw(note.hertz) + 0.4f * square.pulse(note.hertz * 1.003, 0.35);
        const float value = filter.low(tone) * 0.55f + sub.sine(note.hertz) * 0.5f;
        out.add(std::tanh(value * 1.6f) * 0.5f * note.level * float(envelope.at(time, note.length)), 0.0f);
    });
}

void pluck(Track& track, const Note& note)
{
    Oscillator one(0.1), two(0.6);
    Filter filter;
    const Envelope envelope = {0.002, 0.22, 0.12, 0.18};
    int sample = 0;
    play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
        if (sample++ % 8 == 0) filter.set(note.hertz * 1.1 + note.brightness * decay(time, 0.2), 0.3);
        const float tone = one.saw(note.hertz * 1.002) + two.pulse(note.hertz * 0.998, 0.28);
        out.add(filter.low(tone) * 0.22f * note.level * float(envelope.at(time, note.length)), note.pan);
    });
}

// A pulse whose width wanders on the left, a saw on the right, their octave in the middle, with a vibrato that comes in
// late; the singing voice of the piece.
void lead(Track& track, const Note& note)
{
    Oscillator one(0.0), two(0.37), octave(0.71), middle(0.2);
    Filter left, right;
    const Envelope envelope = {0.03, 0.5, 0.75, 0.3};
    int sample = 0;
    play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
        if (sample++ % 8 == 0)
        {
            const double cutoff = 1400.0 + 2300.0 * decay(time, 0.9) + note.hertz;
            left.set(cutoff * 1.08, 0.2);
            right.set(cutoff, 0.2);
        }
        const double vibrato = 1.0 + 0.006 * std::min(1.0, time * 1.6) * std::sin(2.0 * pi * 5.1 * time);
        const double width = 0.38 + 0.1 * std::sin(2.0 * pi * 0.6 * (note.start + time));
        const double pitch = note.hertz * vibrato;
        const float both = 0.35f * octave.sine(pitch * 2.0) + 0.3f * middle.saw(pitch);
        const float gain = 0.17f * note.level * float(envelope.at(time, note.length));
        out.left += left.low(one.pulse(pitch * 1.004, width) + both) * gain;
        out.right += right.low(two.saw(pitch * 0.996) * 1.25f + both) * gain;
    });
}

// A hollow tone on each side, a little apart, that swells into its notes: glass that is rubbed.
void counter(Track& track, const Note& note)
{
    Oscillator low[2] = {Oscillator(0.1), Oscillator(0.6)}, high[2] = {Oscillator(0.3), Oscillator(0.8)};
    const Envelope envelope = {0.06, 0.8, 0.85, 0.45};
    play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
        const double vibrato = 0.004 * std::min(1.0, time * 1.2) * std::sin(2.0 * pi * 4.7 * time);
        const double pitch[2] = {note.hertz * (1.003 + vibrato), note.hertz * (0.997 - vibrato)};
        float tone[2];
        for (int side = 0; side < 2; side++)
        {
            const float third = high[side].sine(pitch[side] * 3.0);
            tone[side] = low[side].sine(pitch[side]) + third * (0.3f - 0.2f * third * third);
        }
        const float gain = 0.24f * note.level * float(envelope.at(time, note.length));
        out.left += tone[0] * gain;
        out.right += tone[1] * gain;
    });
}

// Two-operator frequency modulation with an inharmonic ratio: ice that is struck.
void bell(Track& track, const Note& note)
{
    play(track, note.start, 3.2, [&](Stereo& out, double time) {
        const double index = 3.1 * decay(time, 1.3);
        const double modulator = std::sin(2.0 * pi * note.hertz * 3.51 * time) * index;
        const double shimmer = std::sin(2.0 * pi * note.hertz * 2.002 * time) * 0.3 * decay(time, 1.8);
        const double attack = std::min(1.0, time * 400.0);
        const double value = (std::sin(2.0 * pi * note.hertz * time + modulator) + shimmer) * decay(time, 2.8) * attack;
        out.add(float(value) * 0.2f * note.level, note.pan);
    });
}

// Saws through three fixed resonances, as a throat has them (an open "ah").
void choir(Track& track, const Note& note)
{
    static const double formants[] = {640.0, 1080.0, 2450.0};
    static const float gains[] = {1.0f, 0.55f, 0.22f};
    for (int singer = 0; singer < 3; singer++)
    {
        Oscillator saw(singer * 0.31);
        Filter throats[3];
        for (int f = 0; f < 3; f++) throats[f].set(formants[f] * (1.0 + 0.02 * (singer - 1)), 0.9);
        const Envelope envelope = {0.7, 2.0, 0.9, 1.2};
        const double detune = std::pow(2.0, (singer - 1) * 9.0 / 1200.0);
        play(track, note.start, envelope.end(note.length), [&](Stereo& out, double time) {
            const double vibrato = 1.0 + 0.004 * std::sin(2.0 * pi * (4.6 + 0.3 * singer) * time + singer);
            const float tone = saw.saw(note.hertz * detune * vibrato);
            float value = 0.0f;
            for (int f = 0; f < 3; f++) value += throats[f].band(tone) * gains[f];
            out.add(value * 0.06f * note.level * float(envelope.at(time, note.length)), float(singer - 1) * 0.7f);
        });
    }
}

// A sine that falls from a click to its ground note.
void kick(Track& track, const Note& note)
{
    double phase = 0.0;
    play(track, note.start, 0.42, [&](Stereo& out, double time) {
        phase += (47.0 + 210.0 * decay(time, 0.16) + 900.0 * decay(time, 0.014)) / sampleRate;
        const double fade = std::min(1.0, (0.42 - time) * 50.0);
        const double value = std::sin(2.0 * pi * phase) * decay(time, 0.75) * fade;
        out.add(std::tanh(float(value) * 1.9f) * 0.85f * note.level, 0.0f);
    });
}

// A drum's body in the middle and a rattle that is wide.
void snare(Track& track, const Note& note)
{
    Noise noises[2] = {Noise(seedOf(note.start, 190.0)), Noise(seedOf(note.start, 191.0))};
    Filter filters[2];
    for (Filter& filter : filters) filter.set(1700.0, 0.1);
    double phase = 0.0;
    play(track, note.start, 0.35, [&](Stereo& out, double time) {
        phase += (178.0 + 120.0 * decay(time, 0.05)) / sampleRate;
        const float body = float(std::sin(2.0 * pi * phase) * decay(time, 0.22)) * 0.55f;
        const float rattle = 0.5f * float(decay(time, 0.3));
        const float fade = float(std::min(1.0, (0.35 - time) * 100.0)) * 0.55f * note.level;
        out.left += (body + filters[0].high(noises[0].next()) * rattle) * fade;
        out.right += (body + filters[1].high(noises[1].next()) * rattle) * fade;
    });
}

// Four bursts of noise, the last one long.
void clap(Track& track, const Note& note)
{
    Noise noise(seedOf(note.start, 77.0));
    Filter filter;
    filter.set(1250.0, 0.45);
    play(track, note.start, 0.4, [&](Stereo& out, double time) {
        double burst = 0.0;
        for (int hand = 0; hand < 4; hand++)
        {
            const double since = time - hand * 0.011;
            if (since >= 0.0) burst = std::exp(-since * (hand == 3 ? 16.0 : 160.0));
        }
        out.add(filter.band(noise.next()) * float(burst) * 0.55f * note.level, -0.1f);
    });
}

// Sand that is shaken: a hiss around 4 kHz, wide.
void shaker(Track& track, const Note& note)
{
    Noise left(seedOf(note.start, 11.0)), right(seedOf(note.start, 12.0));
    Filter filters[2];
    for (Filter& filter : filters) filter.set(3900.0, 0.55);
    const double length = 0.11;
    play(track, note.start, length, [&](Stereo& out, double time) {
        const double swell = std::min(1.0, time * 120.0) * std::min(1.0, (length - time) * 100.0);
        const float gain = float(decay(time, 0.12) * swell) * 0.5f * note.level;
        out.left += filters[0].band(left.next()) * gain;
        out.right += filters[1].band(right.next()) * gain;
    });
}

// Noise without its lower part, wide.
void hat(Track& track, const Note& note)
{
    const bool open = note.voice == Voice::OpenHat;
    Noise left(seedOf(note.start, open ? 9.0 : 5.0)), right(seedOf(note.start, open ? 10.0 : 6.0));
    Filter filters[2];
    for (Filter& filter : filters) filter.set(6600.0, 0.2);
    const double length = open ? 0.32 : 0.07;
    play(track, note.start, length, [&](Stereo& out, double time) {
        const double fade = std::min(1.0, (length - time) * 200.0);
        const float gain = float(decay(time, length * 0.9) * fade) * 0.19f * note.level;
        out.left += filters[0].high(left.next()) * gain * 0.9f;
        out.right += filters[1].high(right.next()) * gain * 1.1f;
    });
}

void tom(Track& track, const Note& note)
{
    double phase = 0.0;
    play(track, note.start, 0.6, [&](Stereo& out, double time) {
        phase += note.hertz * (1.0 + 0.9 * decay(time, 0.12)) / sampleRate;
        const double fade = std::min(1.0, (0.6 - time) * 40.0);
        out.add(float(std::sin(2.0 * pi * phase) * decay(time, 0.7) * fade) * 0.6f * note.level, note.pan);
    });
}

void heart(Track& track, const Note& note)
{
    double phase = 0.0;
    play(track, note.start, 0.4, [&](Stereo& out, double time) {
        phase += (38.0 + 42.0 * decay(time, 0.1)) / sampleRate;
        const double swell = std::min(1.0, time * 90.0) * std::min(1.0, (0.4 - time) * 30.0);
        out.add(float(std::sin(2.0 * pi * phase) * decay(time, 0.55) * swell) * note.level, 0.0f);
    });
}

void impact(Track& track, const Note& note)
{
    Noise left(seedOf(note.start, 1.0)), right(seedOf(note.start, 2.0));
    Filter filters[2];
    double phase = 0.0;
    int sample = 0;
    play(track, note.start, 4.0, [&](Stereo& out, double time) {
        if (sample++ % 16 == 0)
            for (Filter& filter : filters) filter.set(120.0 + 5200.0 * decay(time, 1.1), 0.1);
        phase += (34.0 + 60.0 * decay(time, 0.4)) / sampleRate;
        const float boom = float(std::sin(2.0 * pi * phase) * decay(time, 2.6)) * 0.7f;
        const float fade = float(decay(time, 2.2) * std::min(1.0, (4.0 - time) * 4.0)) * 0.5f;
        out.left += (boom + filters[0].low(left.next()) * fade) * note.level * 0.7f;
        out.right += (boom + filters[1].low(right.next()) * fade) * note.level * 0.7f;
    });
}

void riser(Track& track, const Note& note)
{
    Noise left(seedOf(note.start, 3.0)), right(seedOf(note.start, 4.0));
    Filter filters[2];
    Oscillator tone;
    int sample = 0;
    play(track, note.start, note.length, [&](Stereo& out, double time) {
        const double share = time / note.length;
        if (sample++ % 16 == 0)
            for (Filter& filter : filters) filter.set(250.0 * std::pow(30.0, share), 0.55);
        const double swell = share * share * std::min(1.0, (note.length - time) * 60.0);
        const float whistle = tone.saw(146.83 * std::pow(4.0, share)) * 0.1f;
        out.left += (filters[0].band(left.next()) * 0.5f + whistle) * float(swell) * note.level;
        out.right += (filters[1].band(right.next()) * 0.5f + whistle) * float(swell) * note.level;
    });
}

void wind(Track& track, const Note& note)
{
    Noise left(seedOf(note.start, 5.0)), right(seedOf(note.start, 6.0));
    Filter filters[2];
    int sample = 0;
    play(track, note.start, note.length, [&](Stereo& out, double time) {
        if (sample++ % 16 == 0)
        {
            filters[0].set(520.0 + 300.0 * std::sin(2.0 * pi * 0.071 * time) + 130.0 * std::sin(2.0 * pi * 0.31 * time),
                           0.82);
            filters[1].set(560.0 + 300.0 * std::sin(2.0 * pi * 0.083 * time + 1.0), 0.82);
        }
        const double swell = std::min({1.0, time / 3.0, (note.length - time) / 3.0});
        out.left += filters[0].band(left.next()) * float(swell) * 0.16f * note.level;
        out.right += filters[1].band(right.next()) * float(swell) * 0.16f * note.level;
    });
}

void crackle(Track& track, const Note& note)
{
    Noise noise(seedOf(note.start, 7.0));
    for (double at = note.start; at < note.start + note.length;)
    {
        const float pan = noise.next();
        const double hertz = 900.0 + 1400.0 * (noise.next() + 1.0);
        const float strength = (noise.next() * 0.5f + 0.5f) * note.level;
        play(track, at, 0.05, [&](Stereo& out, double time) {
            const double fade = std::min(1.0, (0.05 - time) * 100.0) * std::min(1.0, time * 3000.0);
            out.add(float(std::sin(2.0 * pi * hertz * time) * decay(time, 0.02) * fade) * 0.22f * strength, pan);
        });
        at += 0.03 + 0.22 * (noise.next() + 1.0) * (noise.next() + 1.0);
    }
}

} // namespace Music
