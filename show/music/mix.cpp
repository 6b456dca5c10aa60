#include "mix.h"

#include "score.h"

namespace Music
{

namespace
{

const double TARGET_LOUDNESS = -13.8; // LUFS, before the limiter has taken a little
const float CEILING = 0.77f;          // -2.3 dB of true peak: a lossy codec adds up to one
const float WIDTH = 1.1f;             // of pads, voices and hall: gain of what differs between the sides

float decibels(double value)
{
    return float(std::pow(10.0, value / 20.0));
}

// 1, but down to `depth` right after each kick and back within about a quarter second.
std::vector<float> duckingCurve(const std::vector<double>& kicks, std::size_t length, float depth)
{
    std::vector<float> curve(length, 1.0f);
    const std::size_t recovery = std::size_t(0.26 * sampleRate);
    const std::size_t attack = std::size_t(0.004 * sampleRate);
    for (double kick : kicks)
    {
        const std::size_t start = std::size_t(kick * sampleRate + 0.5);
        for (std::size_t i = 0; i < recovery && start + i < length; i++)
        {
            const float in = std::min(1.0f, float(i) / float(attack));
            const float back = float(i) / float(recovery);
            curve[start + i] = std::min(curve[start + i], 1.0f - (1.0f - depth) * in * (1.0f - back * back));
        }
    }
    return curve;
}

// A second-order section in direct form.
struct Biquad
{
    double b0, b1, b2, a1, a2;
    double s1 = 0.0, s2 = 0.0;

    double run(double in)
    {
        const double out = b0 * in + s1;
        s1 = b1 * in - a1 * out + s2;
        s2 = b2 * in - a2 * out;
        return out;
    }
};

// The two stages of K-weighting for 44.1 kHz, from their analogue prototypes by the bilinear transform.
Biquad shelfStage()
{
    const double gain = 3.999843853973347, q = 0.7071752369554196;
    const double k = std::tan(pi * 1681.974450955533 / sampleRate);
    const double high = std::pow(10.0, gain / 20.0), band = std::pow(high, 0.4996667741545416);
    const double a0 = 1.0 + k / q + k * k;
    return {(high + band * k / q + k * k) / a0, 2.0 * (k * k - high) / a0, (high - band * k / q + k * k) / a0,
            2.0 * (k * k - 1.0) / a0, (1.0 - k / q + k * k) / a0};
}

Biquad lowCutStage()
{
    const double q = 0.5003270373238773;
    const double k = std::tan(pi * 38.13547087602444 / sampleRate);
    const double a0 = 1.0 + k / q + k * k;
    return {1.0, -2.0, 1.0, 2.0 * (k * k - 1.0) / a0, (1.0 - k / q + k * k) / a0};
}

// Pads, voices and hall are spread; what differs below some 150 Hz stays as it is, so that the ground is in the middle.
struct Spread
{
    float low = 0.0f;

    Stereo run(Stereo in)
    {
        static const float WEIGHT = 1.0f - float(std::exp(-2.0 * pi * 150.0 / sampleRate));
        const float middle = 0.5f * (in.left + in.right), side = 0.5f * (in.left - in.right);
        low += WEIGHT * (side - low);
        const float wide = low + (side - low) * WIDTH;
        return {middle + wide, middle - wide};
    }
};

// The gain of each sample, from the straight lines of DYNAMICS in decibels.
class Swell
{
public:
    float at(std::size_t sample)
    {
        if (sample % 32 == 0) mGain = decibels(level(double(sample) / sampleRate / SECONDS_PER_BAR));
        mSmooth += 0.002f * (mGain - mSmooth);
        return mSmooth;
    }

private:
    double level(double bar)
    {
        while (mNext < DYNAMICS.size() && DYNAMICS[mNext].bar <= bar) mNext++;
        if (mNext == 0) return DYNAMICS.front().decibels;
        if (mNext == DYNAMICS.size()) return DYNAMICS.back().decibels;
        const Dynamic &from = DYNAMICS[mNext - 1], &to = DYNAMICS[mNext];
        return from.decibels + (to.decibels - from.decibels) * (bar - from.bar) / (to.bar - from.bar);
    }

    std::size_t mNext = 0;
    float mGain = 1.0f;
    float mSmooth = 1.0f;
};

// Lifts what lies above 2.5 kHz by 5 dB: air for hats and ice.
struct Lift
{
    float low = 0.0f;

    float run(float in)
    {
        static const float WEIGHT = 1.0f - float(std::exp(-2.0 * pi * 2500.0 / sampleRate));
        low += WEIGHT * (in - low);
        return low + (in - low) * 1.8f;
    }
};

// Finds how high the wave rises between two samples, by a windowed sinc at each quarter of the way.
class TruePeak
{
public:
    TruePeak()
    {
        for (int quarter = 0; quarter < 3; quarter++)
            for (int tap = 0; tap < TAPS; tap++)
            {
                const double x = tap - (TAPS / 2 - 1) - 0.25 * (quarter + 1);
                const double window = 0.5 + 0.5 * std::cos(2.0 * pi * x / TAPS);
                mTaps[quarter][tap] = float(std::sin(pi * x) / (pi * x) * window);
            }
    }

    // Of sample i and the way to the next. What is far below the ceiling is not looked at closely.
    float at(const Track& track, std::size_t i) const
    {
        const std::size_t before = TAPS / 2 - 1;
        const float here = level(track[i]);
        if (i < before || i + TAPS / 2 >= track.size()) return here;
        const float peak = std::max(here, level(track[i + 1]));
        if (peak < 0.5f * CEILING) return peak;
        Stereo between[3];
        const Stereo* in = &track[i - before];
        for (int tap = 0; tap < TAPS; tap++)
            for (int quarter = 0; quarter < 3; quarter++)
            {
                between[quarter].left += in[tap].left * mTaps[quarter][tap];
                between[quarter].right += in[tap].right * mTaps[quarter][tap];
            }
        return std::max({peak, level(between[0]), level(between[1]), level(between[2])});
    }

private:
    static const int TAPS = 16;

    static float level(Stereo sample) { return std::max(std::fabs(sample.left), std::fabs(sample.right)); }

    float mTaps[3][TAPS];
};

// Brings true peaks under the ceiling: the gain falls ahead of a peak, over 5 ms, and comes back over 120 ms.
void limit(Track& track)
{
    const std::size_t ahead = std::size_t(0.005 * sampleRate);
    const float release = float(std::exp(-1.0 / (0.12 * sampleRate)));
    const TruePeak truePeak;
    std::vector<float> wanted(track.size(), 1.0f);
    for (std::size_t i = 0; i < track.size(); i++)
    {
        const float peak = truePeak.at(track, i);
        if (peak <= CEILING) continue;
        wanted[i] = std::min(wanted[i], CEILING / peak);
        if (i + 1 < track.size()) wanted[i + 1] = CEILING / peak;
    }
    // Each sample's gain is at most what the peaks up to 5 ms ahead allow, approached on a straight line.
    for (std::size_t i = track.size() - 1; i-- > 0;)
        wanted[i] = std::min(wanted[i], wanted[i + 1] + 1.0f / float(ahead));
    float gain = 1.0f;
    for (std::size_t i = 0; i < track.size(); i++)
    {
        gain = std::min(wanted[i], 1.0f - (1.0f - gain) * release);
        track[i].left *= gain;
        track[i].right *= gain;
    }
}

void fadeOut(Track& track, double seconds)
{
    const std::size_t length = std::size_t(seconds * sampleRate);
    for (std::size_t i = 0; i < length; i++)
    {
        const float share = float(i) / float(length); // 0 at the very end
        Stereo& sample = track[track.size() - 1 - i];
        sample.left *= share * share * (3.0f - 2.0f * share);
        sample.right *= share * share * (3.0f - 2.0f * share);
    }
}

} // namespace

Track mix(const Orchestra& o)
{
    const std::size_t length = o.drums.size();
    const std::vector<float> duck = duckingCurve(o.kicks, length, 0.35f);
    Hall hall(3.4, 4200.0);
    PingPong echo(3.0 * SECONDS_PER_STEP, 0.45f);
    Biquad cuts[2] = {lowCutStage(), lowCutStage()};
    Lift lift[2];
    Spread spread;
    Swell swell;

    Track out(length);
    for (std::size_t i = 0; i < length; i++)
    {
        const float under = duck[i];
        const float halfUnder = 0.5f + 0.5f * under;
        const Stereo echoed = echo.run(o.voices[i]);
        Stereo voices = {(o.voices[i].left + 0.42f * echoed.left) * halfUnder,
                         (o.voices[i].right + 0.42f * echoed.right) * halfUnder};
        Stereo pads = {o.pads[i].left * under, o.pads[i].right * under};

        const Stereo send = {0.36f * pads.left + 0.30f * voices.left + 0.55f * o.air[i].left + 0.07f * o.drums[i].left,
                             0.36f * pads.right + 0.30f * voices.right + 0.55f * o.air[i].right +
                                 0.07f * o.drums[i].right};
        const Stereo back = hall.run(send);

        const Stereo wide =
            spread.run({pads.left * 0.6f + voices.left * 0.66f + o.air[i].left * 0.7f + back.left * 0.75f,
                        pads.right * 0.6f + voices.right * 0.66f + o.air[i].right * 0.7f + back.right * 0.75f});
        const float gain = swell.at(i);
        const float left = (o.drums[i].left * 1.1f + o.bass[i].left * 0.8f * under + wide.left) * gain;
        const float right = (o.drums[i].right * 1.1f + o.bass[i].right * 0.8f * under + wide.right) * gain;
        out[i].left = lift[0].run(float(cuts[0].run(left)));
        out[i].right = lift[1].run(float(cuts[1].run(right)));
    }

    fadeOut(out, 7.0);
    // Two rounds: the limiter takes a little loudness away again.
    for (int round = 0; round < 2; round++)
    {
        const float gain = decibels(TARGET_LOUDNESS - loudness(out));
        for (Stereo& sample : out)
        {
            sample.left *= gain;
            sample.right *= gain;
        }
        limit(out);
    }
    return out;
}

double loudness(const Track& track)
{
    Biquad stages[2][2] = {{shelfStage(), lowCutStage()}, {shelfStage(), lowCutStage()}};
    const std::size_t hop = sampleRate / 10;
    std::vector<double> hops; // energy of each 100 ms
    double energy = 0.0;
    for (std::size_t i = 0; i < track.size(); i++)
    {
        const double left = stages[0][1].run(stages[0][0].run(track[i].left));
        const double right = stages[1][1].run(stages[1][0].run(track[i].right));
        energy += left * left + right * right;
        if ((i + 1) % hop == 0)
        {
            hops.push_back(energy / double(hop));
            energy = 0.0;
        }
    }
    std::vector<double> blocks; // 400 ms, overlapping by three quarters
    for (std::size_t i = 3; i < hops.size(); i++)
        blocks.push_back((hops[i] + hops[i - 1] + hops[i - 2] + hops[i - 3]) / 4.0);

    const auto meanAbove = [&](double gate) {
        double sum = 0.0;
        int count = 0;
        for (double block : blocks)
            if (-0.691 + 10.0 * std::log10(block + 1e-20) > gate)
            {
                sum += block;
                count++;
            }
        return count ? -0.691 + 10.0 * std::log10(sum / count) : -70.0;
    };
    return meanAbove(meanAbove(-70.0) - 10.0);
}

} // namespace Music
