#include "script_spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Script::Spline;

namespace
{

const float cInf = std::numeric_limits<float>::infinity();
const float cNan = std::numeric_limits<float>::quiet_NaN();

void setKeys(Spline& spline, const char* type, std::initializer_list<Spline::Key> keys)
{
    for (Spline::Key* key : spline.mKeys) delete key;
    spline.mKeys.clear();
    for (const Spline::Key& key : keys) spline.mKeys.push_back(new Spline::Key(key));
    spline.mType = type;
    spline.recalculate();
}

} // namespace

TEST(Spline, valuesBetweenBeforeAndBehindTheKeys)
{
    using Keys = std::initializer_list<Spline::Key>;
    const Keys two = {{1, 10, 0}, {2, 20, 0}};
    const Keys five = {{0, 1, 0}, {1, 5, 0}, {4, 3, 0}, {5, 2, 0}, {6, 8, 0}};
    const Keys four = {{0, 1, 0}, {1, 5, 0}, {4, 3, 0}, {8, 7, 0}};
    const Keys bend = {{0, 0, 0}, {1, 1, 0}, {3, 1, 0}};
    const struct
    {
        const char* type;
        Keys keys;
        float time, value;
    } cases[] = {
        {"linear", two, 0.5f, 10},
        {"linear", two, 1, 10},
        {"linear", two, 1.5f, 15},
        {"linear", two, 2, 20},
        {"linear", two, 3, 20},
        {"linear", {{5, 4, 0}}, 5.5f, 4},
        {"square", two, 1.5f, 10},
        {"square", two, 2, 10},
        {"square", two, 2.5f, 20},
        {"square", two, 0, 10},
        // One group of three from 0 to 4: at the middle 0.25 * 1 + 0.25 * 5 + 0.25 * 3.
        {"bezier", five, 2, 2.25f},
        {"bezier", five, 1, 0.5625f * 1 + 0.0625f * 5 + 0.0625f * 3},
        // At the group's end f is 1: 5 + 3, and the next group starts from 3 again.
        {"bezier", five, 4, 8},
        // The last segment is a line, also inside a group.
        {"bezier", five, 5.5f, 5},
        {"bezier", four, 6, 5},
        {"bezier", two, 1.25f, 12.5f},
        // Tangents 1, 2/3, 0. From 0 to 1: c2 = 3 - 2 - 2/3 = 1/3, c3 = -2 + 1 + 2/3 = -1/3.
        {"smooth", bend, 0.5f, 0.5f + 1.0f / 12 - 1.0f / 24},
        // From 1 to 3: c2 = -4/3, c3 = 2/3; f = 1/2 gives 1 + 1/3 - 1/3 + 1/12.
        {"smooth", bend, 2, 1 + 1.0f / 12},
        {"smooth", bend, 3.5f, 1},
        // No tangents for a type of no meaning: half way at the middle, and a quarter is 10 * (3/16 - 2/64).
        {"wobbly", two, 1.5f, 15},
        {"wobbly", two, 1.25f, 11.5625f},
        // Out of order: the last in the list that lies before the time rules.
        {"square", {{0, 1, 0}, {5, 2, 0}, {3, 3, 0}}, 6, 3},
        {"square", {{0, 1, 0}, {5, 2, 0}, {3, 3, 0}}, 4, 3},
        {"linear", {{4, 1, 0}, {2, 2, 0}, {9, 3, 0}}, 3, 2},
    };
    for (const auto& expected : cases)
    {
        Spline spline;
        setKeys(spline, expected.type, expected.keys);
        EXPECT_FLOAT_EQ(spline.getSplineValue(expected.time), expected.value) << expected.type << " " << expected.time;
    }
}

TEST(Spline, scalesAndOffsetsActOutsideTheCurve)
{
    Spline spline;
    setKeys(spline, "linear", {{0, 0, 0}, {2, 8, 0}});
    spline.mTimeScale = 2.0f;
    spline.mTimeOffset = 1.0f;
    EXPECT_FLOAT_EQ(spline.getSplineValue(3.0f), 4.0f); // key time 1
    spline.mValueScale = -0.5f;
    spline.mValueOffset = 10.0f;
    EXPECT_FLOAT_EQ(spline.getSplineValue(3.0f), 8.0f);
    spline.recalculate();
    EXPECT_EQ(spline.mMax, 8.0f);
    spline.mTimeScale = 0.0f; // behind all keys, or before them
    EXPECT_FLOAT_EQ(spline.getSplineValue(3.0f), 6.0f);
    EXPECT_FLOAT_EQ(spline.getSplineValue(0.0f), 10.0f);
}

TEST(Spline, recalculateFindsTangentsAndRange)
{
    Spline spline;
    spline.recalculate();
    EXPECT_EQ(spline.mMax, 0.0f);
    EXPECT_EQ(spline.mAbsMax, 0.0f);

    setKeys(spline, "smooth", {{0, 0, 9}, {1, 1, 9}, {3, 1, 9}});
    EXPECT_FLOAT_EQ(spline.mKeys[0]->tangent, 1.0f);
    EXPECT_FLOAT_EQ(spline.mKeys[1]->tangent, 0.6666667f);
    EXPECT_FLOAT_EQ(spline.mKeys[2]->tangent, 0.0f);
    // First segment: c2 = 1/3, x = 3 - 1/3, r = -sqrt(8/3) / 3; the point -r - 1/3 = 0.211 lies within the range.
    // Second segment: c2 = -4/3, x = 2 + 4/3, r = -sqrt(10/3) / 3; u = -r - 1/3 = 0.2752473 gives
    // 1 + 2/3 u - 4/3 u^2 + 2/3 u^3 = 1.0963855.
    EXPECT_FLOAT_EQ(spline.mMax, 1.0963855f);
    EXPECT_EQ(spline.mMin, 0.0f);

    setKeys(spline, "linear", {{0, -3, 9}, {1, 2, 9}});
    EXPECT_EQ(spline.mKeys[0]->tangent, 9.0f);
    EXPECT_EQ(spline.mMax, 2.0f);
    EXPECT_EQ(spline.mMin, -3.0f);
    EXPECT_EQ(spline.mAbsMax, 3.0f);
    setKeys(spline, "smooth", {{4, -3, 9}});
    EXPECT_EQ(spline.mKeys[0]->tangent, 0.0f);
}

TEST(Spline, anyValuesCanBeEvaluated)
{
    Spline spline;
    spline.mValueOffset = 3.0f;
    EXPECT_EQ(spline.getSplineValue(1.0f), 3.0f); // no keys
    for (const char* type : {"square", "linear", "bezier", "smooth", ""})
    {
        for (const float odd : {cNan, cInf, -cInf, 0.0f, 3.4e38f})
        {
            setKeys(spline, type, {{0, odd, 0}, {odd, 1, 0}, {odd, 2, 0}, {2, odd, 0}});
            for (const float time : {cNan, cInf, -cInf, 0.0f, 1.0f, 5.0f}) spline.getSplineValue(time);
        }
    }
    setKeys(spline, "linear", {{0, 1, 0}, {1, 5, 0}});
    EXPECT_EQ(spline.getSplineValue(-cInf), 4.0f);
    EXPECT_EQ(spline.getSplineValue(cInf), 8.0f);
}
