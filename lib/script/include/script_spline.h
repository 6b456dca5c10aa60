#pragma once

#include "script_callback.h"

#include "gr_pool.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Script
{

// A named value over an entry's local time: keys and a rule for what lies between them. Key time is
// (time - mTimeOffset) / mTimeScale; the value of the curve is multiplied by mValueScale, then mValueOffset is added.
class Spline
{
public:
    struct Key
    {
        static void* operator new(std::size_t size) { return Pool<Key>::take(size); }
        static void operator delete(void* key, std::size_t size) { Pool<Key>::give(key, size); }

        float time = 0.0f; // seconds of key time
        float value = 0.0f;
        float tangent = 0.0f; // value units over a whole segment; written by recalculate, for "smooth" alone
    };

    Spline() = default;
    Spline(const Spline&) = delete;
    Spline& operator=(const Spline&) = delete;
    ~Spline();

    // The value at `time`, in the entry's local seconds. Without keys the curve is 0.
    float getSplineValue(float time) const;

    // Computes the tangents and mMax, mMin, mAbsMax. Call it after any change of mKeys or mType.
    void recalculate();

    // Hands the value at `time` to `callback`.
    void update(Callback* callback, float time);

    std::string mName = "new";
    std::string mType = "smooth"; // "square", "linear", "bezier" or "smooth"; anything else is drawn as "smooth"
    std::vector<Key*> mKeys;      // owned, in ascending order of time
    float mMax = 0.0f;            // greatest value of the curve before scale and offset; for display
    float mMin = 0.0f;            // least value, likewise
    float mAbsMax = 0.0f;         // the larger of |mMax| and |mMin|
    float mTimeOffset = 0.0f;     // seconds
    float mValueOffset = 0.0f;
    float mValueScale = 1.0f;
    float mTimeScale = 1.0f;

private:
    void widen(float value);
};

} // namespace Script
