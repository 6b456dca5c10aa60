#pragma once

#include <cstdint>
#include <vector>

#include "mb_vector2f.h"

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

// One animated float, in Blender's curve model: keys with two Bezier handles each, a mode for the way from one key to
// the next, and a mode for the time outside the keys.
//
// Evaluation allocates nothing. It remembers the segment between two keys in which the last time lay, and tries that
// one and its successor before it searches, so that playing forwards costs the same for any number of keys. For that
// memory evaluation is a constant operation in name only: one curve cannot be evaluated by two threads at once.
class TrackBlenderFloat
{
public:
    enum Interpolation
    {
        INTERPOLATION_CONSTANT = 0, // and any other value
        INTERPOLATION_LINEAR = 1,
        INTERPOLATION_BEZIER = 2
    };

    enum Extrapolation
    {
        EXTRAPOLATION_CONSTANT = 0,
        EXTRAPOLATION_LINEAR = 1,
        EXTRAPOLATION_CYCLIC = 2,
        EXTRAPOLATION_CYCLIC_OFFSET = 3 // each cycle goes on from the value at which the last one ended
    };

    // Three points in time (x, in seconds) and value (y). 24 bytes in a file, in this order.
    struct Key
    {
        MathBase::Vector2f mHandleIn; // on the side of the previous key
        MathBase::Vector2f mPoint;
        MathBase::Vector2f mHandleOut; // on the side of the next key
    };

    // Removes the keys and sets everything else back to its start value.
    void clear();

    // Reads modes and keys from the open curve chunk in place of those that are there. Handles of a Bezier curve that
    // reach across each other in time are shortened, so that time never runs back inside a segment.
    void loadKeys(ChunkLib::ReadBuffer& buffer);

    // Appends one chunk with the given identifier, or nothing when there are no keys. The base value is not part of it.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;

    // The value at a time. Keys out of order, or a time that is not a number, give some value and touch nothing else:
    // where no segment holds the time, that of the last key.
    float getValue(float time) const;

    // Finds the parameters u of the segment from a to b at which its time polynomial has the value `time`. Stores up to
    // three and returns how many of them are valid, which is about 0 to 1; the valid ones stand first.
    int solveForTime(const Key& a, const Key& b, float time, float* roots) const;

    // True when the value is the same at any time.
    bool isStatic() const;

    float mBaseValue = 0.0f;                              // the value without keys
    std::uint8_t mInterpolation = INTERPOLATION_CONSTANT; // Interpolation; a byte, as in a file
    std::uint8_t mExtrapolation = EXTRAPOLATION_CONSTANT; // Extrapolation
    std::vector<Key> mKeys;                               // ascending in time
    mutable int mLastKey = -1; // segment of the last evaluation, -1 for none; only a shortcut

private:
    void correctHandles();
    bool extrapolate(const MathBase::Vector2f& end, const MathBase::Vector2f& handle, float time, float* value) const;
    void wrap(float time, float cycleStart, float* t, float* offset) const;
    bool isSegment(int segment, float time) const;
    int findSegment(float time) const;
    float evaluateSegment(const Key& a, const Key& b, float time, float offset) const;
};

// The real cube root.
double Sqrt3d(double x);

} // namespace y3d
