#pragma once

// The building blocks of the synthesiser: oscillators, filters, envelopes, delays. All run at one sample rate, in
// double or float, one sample at a time, and are deterministic.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Music
{

const int sampleRate = 44100;
const double pi = 3.14159265358979323846;

// One stereo sample.
struct Stereo
{
    float left = 0.0f;
    float right = 0.0f;

    void add(float value, float pan) // pan: -1 left to 1 right, constant power
    {
        const float angle = (pan + 1.0f) * float(pi / 4.0);
        left += value * std::cos(angle);
        right += value * std::sin(angle);
    }
};

using Track = std::vector<Stereo>;

// Noise that is the same in every run (xorshift).
class Noise
{
public:
    explicit Noise(uint32_t seed) : mState(seed * 2654435761u + 1u) {}

    float next() // -1 to 1
    {
        mState ^= mState << 13;
        mState ^= mState >> 17;
        mState ^= mState << 5;
        return float(mState) * (2.0f / 4294967296.0f) - 1.0f;
    }

private:
    uint32_t mState;
};

// Band-limited saw and pulse: the naive waveform, its steps rounded by a two-sample polynomial (polyBLEP).
class Oscillator
{
public:
    explicit Oscillator(double phase = 0.0) : mPhase(phase) {}

    float saw(double hertz)
    {
        const double step = advance(hertz);
        return float(2.0 * mPhase - 1.0 - blep(mPhase, step));
    }

    float pulse(double hertz, double width)
    {
        const double step = advance(hertz);
        double other = mPhase + 1.0 - width;
        if (other >= 1.0) other -= 1.0;
        return float((mPhase < width ? 1.0 : -1.0) + blep(mPhase, step) - blep(other, step));
    }

    float sine(double hertz)
    {
        advance(hertz);
        return float(std::sin(2.0 * pi * mPhase));
    }

private:
    double advance(double hertz)
    {
        const double step = hertz / sampleRate;
        mPhase += step;
        if (mPhase >= 1.0) mPhase -= 1.0;
        return step;
    }

    static double blep(double phase, double step)
    {
        if (phase < step)
        {
            const double t = phase / step;
            return t + t - t * t - 1.0;
        }
        if (phase > 1.0 - step)
        {
            const double t = (phase - 1.0) / step;
            return t * t + t + t + 1.0;
        }
        return 0.0;
    }

    double mPhase;
};

// State variable filter, trapezoidal integration: stable at any cutoff and while it is swept.
class Filter
{
public:
    void set(double hertz, double resonance) // resonance: 0 none to just below 1
    {
        const double g = std::tan(pi * std::min(hertz, sampleRate * 0.45) / sampleRate);
        const double k = 2.0 - 2.0 * resonance;
        mK = k;
        mA1 = 1.0 / (1.0 + g * (g + k));
        mA2 = g * mA1;
        mA3 = g * mA2;
    }

    float low(float in)
    {
        run(in);
        return float(mV2);
    }

    float band(float in)
    {
        run(in);
        return float(mV1);
    }

    float high(float in)
    {
        run(in);
        return float(in - mK * mV1 - mV2);
    }

private:
    void run(double in)
    {
        const double v3 = in - mS2;
        mV1 = mA1 * mS1 + mA2 * v3;
        mV2 = mS2 + mA2 * mS1 + mA3 * v3;
        mS1 = 2.0 * mV1 - mS1;
        mS2 = 2.0 * mV2 - mS2;
    }

    double mK = 2.0, mA1 = 1.0, mA2 = 0.0, mA3 = 0.0;
    double mS1 = 0.0, mS2 = 0.0, mV1 = 0.0, mV2 = 0.0;
};

// Attack, decay to a sustain level, release behind the note's length; all in seconds, the release exponential.
struct Envelope
{
    double attack;
    double decay;
    double sustain; // 0 to 1
    double release;

    double at(double time, double length) const
    {
        if (time < length) return held(time);
        return held(length) * std::exp(-(time - length) * 5.0 / release);
    }

    // When the sound has died away, in seconds behind the note's start.
    double end(double length) const { return length + release * 1.6; }

private:
    double held(double time) const
    {
        if (time < attack) return time / attack;
        return sustain + (1.0 - sustain) * std::exp(-(time - attack) * 4.0 / decay);
    }
};

// A ring of samples, read at a fixed distance.
class DelayLine
{
public:
    explicit DelayLine(std::size_t length) : mRing(length, 0.0f) {}

    float read() const { return mRing[mPlace]; }

    void write(float value)
    {
        mRing[mPlace] = value;
        mPlace = mPlace + 1 == mRing.size() ? 0 : mPlace + 1;
    }

private:
    std::vector<float> mRing;
    std::size_t mPlace = 0;
};

// A wide hall: eight damped delay lines, mixed into each other by a Householder reflection, which loses no energy;
// what dies away does so by the feedback gain alone.
class Hall
{
public:
    // `seconds` until the sound is down by 60 dB; `damping`: cutoff of the lines' low pass in hertz.
    Hall(double seconds, double damping)
    {
        static const int lengths[lineCount] = {1687, 1933, 2239, 2633, 3067, 3511, 4027, 4751}; // mutually prime
        mDamp = 1.0f - float(std::exp(-2.0 * pi * damping / sampleRate));
        for (int i = 0; i < lineCount; i++)
        {
            mLines.emplace_back(std::size_t(lengths[i]));
            mGain[i] = float(std::pow(10.0, -3.0 * lengths[i] / (seconds * sampleRate)));
        }
    }

    Stereo run(Stereo in)
    {
        float taps[lineCount];
        float sum = 0.0f;
        for (int i = 0; i < lineCount; i++)
        {
            mLow[i] += mDamp * (mLines[std::size_t(i)].read() - mLow[i]);
            taps[i] = mLow[i] * mGain[i];
            sum += taps[i];
        }
        sum *= 2.0f / lineCount;
        Stereo out;
        for (int i = 0; i < lineCount; i++)
        {
            const bool left = (i & 1) == 0;
            mLines[std::size_t(i)].write((left ? in.left : in.right) + taps[i] - sum);
            const float sign = (i & 2) ? -1.0f : 1.0f;
            (left ? out.left : out.right) += sign * taps[i] * 0.5f;
        }
        return out;
    }

private:
    static const int lineCount = 8;

    std::vector<DelayLine> mLines;
    float mGain[lineCount] = {};
    float mLow[lineCount] = {};
    float mDamp;
};

// Echoes that change sides.
class PingPong
{
public:
    PingPong(double seconds, float feedback)
        : mLeft(std::size_t(seconds * sampleRate)), mRight(std::size_t(seconds * sampleRate)), mFeedback(feedback)
    {
        mTone.set(3200.0, 0.0);
    }

    Stereo run(Stereo in)
    {
        const Stereo out = {mLeft.read(), mRight.read()};
        mLeft.write((in.left + in.right) * 0.5f + mTone.low(out.right) * mFeedback);
        mRight.write(out.left);
        return out;
    }

private:
    DelayLine mLeft;
    DelayLine mRight;
    Filter mTone;
    float mFeedback;
};

} // namespace Music
