#include "pieces.h"

#include "y3d_exception.h"

#include <algorithm>
#include <cmath>

namespace gltf
{

namespace
{

using y3d::TrackBlenderFloat;

const std::size_t MAX_PIECES = 100000;
const double JUMP_TIME = 1e-5;

// A piece of one curve.
struct Part
{
    double from, to, value, nextValue, slope, nextSlope;

    double getValue(double time) const
    {
        const double h = to - from, s = h > 0 ? (time - from) / h : 0.0, s2 = s * s, s3 = s2 * s;
        return (2 * s3 - 3 * s2 + 1) * value + (s3 - 2 * s2 + s) * h * slope + (3 * s2 - 2 * s3) * nextValue +
               (s3 - s2) * h * nextSlope;
    }

    double getSlope(double time) const
    {
        const double h = to - from;
        if (!(h > 0)) return slope;
        const double s = (time - from) / h, s2 = s * s;
        return (6 * s2 - 6 * s) * (value - nextValue) / h + (3 * s2 - 4 * s + 1) * slope + (3 * s2 - 2 * s) * nextSlope;
    }
};

// One curve from 0 to the end.
class Cutter
{
public:
    Cutter(const TrackBlenderFloat& curve, const Span& span, Pieces* result)
        : mCurve(curve), mKeys(curve.mKeys), mSpan(span), mResult(result)
    {
    }

    std::vector<Part> run()
    {
        if (mKeys.empty())
        {
            addLevel(0, mSpan.end, mCurve.mBaseValue);
            return mParts;
        }
        for (const TrackBlenderFloat::Key& key : mKeys)
        {
            for (const MathBase::Vector2f& point : {key.mHandleIn, key.mPoint, key.mHandleOut})
            {
                if (!std::isfinite(point.x) || !std::isfinite(point.y))
                    throw y3d::Exception("has values that are no numbers");
            }
        }
        for (std::size_t i = 1; i < mKeys.size(); ++i)
        {
            if (!(mKeys[i].mPoint.x >= mKeys[i - 1].mPoint.x))
                throw y3d::Exception("has keys that are not in the order of time");
        }
        const double first = mKeys.front().mPoint.x, last = mKeys.back().mPoint.x, length = last - first;
        const int mode = mCurve.mExtrapolation;
        const bool isCyclic = length > 0 && (mode == TrackBlenderFloat::EXTRAPOLATION_CYCLIC ||
                                             mode == TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET);
        if (!isCyclic)
        {
            addOutside(0, first, mKeys.front().mPoint, mKeys.front().mHandleIn);
            addSegments(0, 0);
            addOutside(last, mSpan.end, mKeys.back().mPoint, mKeys.back().mHandleOut);
            return mParts;
        }
        mResult->isCut = true;
        const double gain = mode == TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET
                                ? double(mKeys.back().mPoint.y) - mKeys.front().mPoint.y
                                : 0.0;
        for (double round = std::floor((0 - first) / length); first + round * length < mSpan.end; ++round)
        {
            addSegments(round * length, round * gain);
        }
        return mParts;
    }

private:
    void add(const Part& part)
    {
        if (mParts.size() > MAX_PIECES) throw y3d::Exception("its animation is too long");
        if (part.to < 0 || part.from > mSpan.end || !(part.to > part.from)) return;
        const double from = std::max(part.from, 0.0), to = std::min(part.to, mSpan.end);
        if (!(to > from)) return;
        mParts.push_back({from, to, part.getValue(from), part.getValue(to), part.getSlope(from), part.getSlope(to)});
    }

    void addLevel(double from, double to, double value) { add({from, to, value, value, 0, 0}); }

    void addOutside(double from, double to, const MathBase::Vector2f& end, const MathBase::Vector2f& handle)
    {
        const bool goesOn = mCurve.mExtrapolation == TrackBlenderFloat::EXTRAPOLATION_LINEAR &&
                            mCurve.mInterpolation != TrackBlenderFloat::INTERPOLATION_CONSTANT && handle.x != end.x;
        const double slope = goesOn ? (double(handle.y) - end.y) / (double(handle.x) - end.x) : 0.0;
        if (slope != 0.0)
        {
            mResult->isStep = false;
            mResult->isCut = true;
        }
        const double x = end.x, y = end.y;
        add({from, to, y + slope * (from - x), y + slope * (to - x), slope, slope});
    }

    void addSegments(double shift, double gain)
    {
        for (std::size_t i = 0; i + 1 < mKeys.size(); ++i) addSegment(mKeys[i], mKeys[i + 1], shift, gain);
    }

    void addSegment(const TrackBlenderFloat::Key& a, const TrackBlenderFloat::Key& b, double shift, double gain)
    {
        const double from = a.mPoint.x + shift, to = b.mPoint.x + shift, h = to - from;
        const double value = a.mPoint.y + gain, next = b.mPoint.y + gain;
        if (mCurve.mInterpolation == TrackBlenderFloat::INTERPOLATION_LINEAR)
        {
            mResult->isStep = mResult->isStep && value == next;
            add({from, to, value, next, (next - value) / h, (next - value) / h});
            return;
        }
        if (mCurve.mInterpolation != TrackBlenderFloat::INTERPOLATION_BEZIER)
        {
            addLevel(from, to, value);
            return;
        }
        mResult->isStep = mResult->isStraight = false;
        const double room = 1e-4 * h;
        const bool isThird = std::fabs(a.mHandleOut.x - a.mPoint.x - h / 3) < room &&
                             std::fabs(b.mPoint.x - b.mHandleIn.x - h / 3) < room;
        if (isThird)
        {
            add({from, to, value, next, (double(a.mHandleOut.y) - a.mPoint.y) * 3 / h,
                 (double(b.mPoint.y) - b.mHandleIn.y) * 3 / h});
            return;
        }
        mResult->isSampled = true;
        const double count = std::max(std::ceil(h * mSpan.fps), 1.0);
        for (double step = 0; step < count && from + h * step / count <= mSpan.end; ++step)
        {
            const double begin = h * step / count, end = h * (step + 1) / count;
            const Point p = pointAt(a, b, a.mPoint.x + begin), q = pointAt(a, b, a.mPoint.x + end);
            add({from + begin, from + end, p.value + gain, q.value + gain, p.slope, q.slope});
        }
    }

    struct Point
    {
        double value, slope;
    };

    // Value and change at a time of a Bezier segment, which the curve itself finds.
    Point pointAt(const TrackBlenderFloat::Key& a, const TrackBlenderFloat::Key& b, double time) const
    {
        float roots[3];
        const float moment = std::clamp(static_cast<float>(time), a.mPoint.x, b.mPoint.x);
        double u = mCurve.solveForTime(a, b, moment, roots) > 0 ? roots[0] : 0.0;
        u = std::clamp(u, 0.0, 1.0);
        const auto at = [&](double t, float p0, float p1, float p2, float p3) {
            const double v = 1 - t;
            return v * v * v * p0 + 3 * v * v * t * p1 + 3 * v * t * t * p2 + t * t * t * p3;
        };
        const auto change = [&](double t, double p0, double p1, double p2, double p3) {
            const double v = 1 - t;
            return 3 * (v * v * (p1 - p0) + 2 * v * t * (p2 - p1) + t * t * (p3 - p2));
        };
        const double value = at(u, a.mPoint.y, a.mHandleOut.y, b.mHandleIn.y, b.mPoint.y);
        // A handle of no length leaves no direction at its key itself; a little beside it there is one.
        const double beside = std::clamp(u, 1e-3, 1 - 1e-3);
        const double dx = change(beside, a.mPoint.x, a.mHandleOut.x, b.mHandleIn.x, b.mPoint.x);
        const double dy = change(beside, a.mPoint.y, a.mHandleOut.y, b.mHandleIn.y, b.mPoint.y);
        return {value, dx > 1e-9 ? dy / dx : 0.0};
    }

    const TrackBlenderFloat& mCurve;
    const std::vector<TrackBlenderFloat::Key>& mKeys;
    const Span mSpan;
    Pieces* mResult;
    std::vector<Part> mParts;
};

} // namespace

Pieces cutCurves(const std::vector<const y3d::TrackBlenderFloat*>& curves, const Span& span)
{
    Pieces result;
    std::vector<std::vector<Part>> parts;
    std::vector<double> cuts;
    const bool moves =
        std::any_of(curves.begin(), curves.end(), [](const auto* curve) { return !curve->mKeys.empty(); });
    if (!moves || !(span.end > 0)) return result;
    for (const TrackBlenderFloat* curve : curves)
    {
        parts.push_back(Cutter(*curve, span, &result).run());
        if (parts.back().empty()) // all keys at one time
        {
            const double value = curve->getValue(0);
            parts.back().push_back({0, span.end, value, value, 0, 0});
        }
        for (const Part& part : parts.back()) cuts.insert(cuts.end(), {part.from, part.to});
    }
    std::sort(cuts.begin(), cuts.end());
    std::vector<std::size_t> current(curves.size());
    double from = 0.0;
    for (const double to : cuts)
    {
        if (!(to > from + 1e-9)) continue;
        Pieces::Piece piece = {from, to, {}, {}, {}, {}};
        for (std::size_t i = 0; i < curves.size(); ++i)
        {
            const double middle = (from + to) / 2;
            while (current[i] + 1 < parts[i].size() && parts[i][current[i]].to <= middle) ++current[i];
            const Part& part = parts[i][current[i]];
            piece.value.push_back(part.getValue(from));
            piece.nextValue.push_back(part.getValue(to));
            piece.slope.push_back(part.getSlope(from));
            piece.nextSlope.push_back(part.getSlope(to));
        }
        result.pieces.push_back(piece);
        from = to;
    }
    return result;
}

Sampler toSampler(const Pieces& pieces)
{
    Sampler sampler;
    sampler.mode = pieces.isStep ? Sampler::STEP : pieces.isStraight ? Sampler::LINEAR : Sampler::CUBIC;
    const auto isNear = [](const std::vector<double>& a, const std::vector<double>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), [](double x, double y) {
            return std::fabs(x - y) <= 1e-6 * (std::fabs(x) + std::fabs(y)) + 1e-9;
        });
    };
    for (std::size_t i = 0; i < pieces.pieces.size(); ++i)
    {
        const Pieces::Piece& piece = pieces.pieces[i];
        const Pieces::Piece* before = i > 0 ? &pieces.pieces[i - 1] : nullptr;
        Sampler::Key key = {piece.from, piece.value, piece.slope, piece.slope};
        if (before && isNear(before->nextValue, piece.value))
            key.in = before->nextSlope;
        else if (before && sampler.mode != Sampler::STEP)
        {
            const std::vector<double> level(piece.value.size(), 0.0);
            const double moment = std::max(piece.from - JUMP_TIME, (before->from + piece.from) / 2);
            sampler.keys.push_back({moment, before->nextValue, before->nextSlope, level});
            key.in = level;
        }
        sampler.keys.push_back(key);
    }
    const Pieces::Piece& last = pieces.pieces.back();
    sampler.keys.push_back({last.to, last.nextValue, last.nextSlope, last.nextSlope});
    return sampler;
}

} // namespace gltf
