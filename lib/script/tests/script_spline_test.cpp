#include "script_spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

using Script::Spline;

namespace
{

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
    const Keys one = {{5, 4, 0}};
    const Keys two = {{1, 10, 0}, {2, 20, 0}};
    const Keys bend = {{0, 0, 0}, {1, 1, 0}, {3, 1, 0}};
    const Keys four = {{0, 1, 0}, {1, 5, 0}, {4, 3, 0}, {8, 7, 0}};
    const Keys five = {{0, 1, 0}, {1, 5, 0}, {4, 3, 0}, {5, 2, 0}, {6, 8, 0}};
    const Keys mixed = {{4, 1, 0}, {2, 2, 0}, {9, 3, 0}, {5, 4, 0}}; // out of order
    const struct
    {
        const char* type;
        Keys keys;
        std::initializer_list<std::pair<float, float>> values; // time, value
    } cases[] = {
        {"linear", one, {{4.5f, 4}, {5, 4}, {5.5f, 4}}},
        {"linear", two, {{0.5f, 10}, {1, 10}, {1.5f, 15}, {2, 20}, {3, 20}}},
        {"square", two, {{0, 10}, {1.5f, 10}, {2, 10}, {2.5f, 20}}},
        // The group from 0 to 4: at 1, f is 1/4: 9/16 * 1 + 1/16 * 5 + 1/16 * 3. At its end f is 1: 5 + 3. The last
        // segment is a line, in whatever place of a group.
        {"bezier", five, {{1, 1.0625f}, {2, 2.25f}, {4, 8}, {5.5f, 5}}},
        {"bezier", four, {{6, 5}}},
        {"bezier", two, {{1.25f, 12.5f}}},
        // Tangents 1, 2/3, 0. From 0 to 1: c2 = 1/3, c3 = -1/3. From 1 to 3: c2 = -4/3, c3 = 2/3.
        {"smooth", bend, {{0.5f, 0.5f + 1.0f / 12 - 1.0f / 24}, {2, 1 + 1.0f / 12}, {3.5f, 1}}},
        // Without tangents, as for a type that means nothing: a quarter of the way is 3/16 - 2/64 of the value.
        {"wobbly", two, {{1.25f, 11.5625f}, {1.5f, 15}}},
        // The last key in the list that lies before the time rules.
        {"square", mixed, {{1, 1}, {4.5f, 2}, {6, 4}}},
        {"linear", mixed, {{3, 2}, {4.25f, 2 + 2.25f / 7}}},
    };
    for (const auto& expected : cases)
    {
        for (const auto& [time, value] : expected.values)
        {
            Spline spline;
            setKeys(spline, expected.type, expected.keys);
            EXPECT_FLOAT_EQ(spline.getSplineValue(time), value) << expected.type << " " << time;
        }
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
    spline.mTimeScale = 0.0f; // behind all keys, or before them
    EXPECT_FLOAT_EQ(spline.getSplineValue(3.0f), 6.0f);
    EXPECT_FLOAT_EQ(spline.getSplineValue(0.0f), 10.0f);
}

TEST(Spline, recalculateFindsTangentsAndRange)
{
    Spline spline;
    setKeys(spline, "smooth", {{0, 0, 9}, {1, 1, 9}, {3, 1, 9}});
    EXPECT_FLOAT_EQ(spline.mKeys[0]->tangent, 1.0f);
    EXPECT_FLOAT_EQ(spline.mKeys[1]->tangent, 0.6666667f);
    EXPECT_FLOAT_EQ(spline.mKeys[2]->tangent, 0.0f);
    // First segment: c2 = 1/3, x = 3 - 1/3, r = -sqrt(8/3) / 3; the point -r - 1/3 = 0.211 lies within the range.
    // Second segment: c2 = -4/3, x = 2 + 4/3, r = -sqrt(10/3) / 3; u = -r - 1/3 = 0.2752473 gives
    // 1 + 2/3 u - 4/3 u^2 + 2/3 u^3 = 1.0963855.
    EXPECT_FLOAT_EQ(spline.mMax, 1.0963855f);
    EXPECT_EQ(spline.mMin, 0.0f);

    // From 0 to 2 the curve rises to 2.18, but with c2 = 0.00005 no point of it is looked at.
    setKeys(spline, "smooth", {{0, -6, 0}, {1, 0, 0}, {2, 2, 0}, {3, -4.0001f, 0}});
    EXPECT_EQ(spline.mMax, 2.0f);
    setKeys(spline, "smooth", {{0, -6, 0}, {1, 0, 0}, {2, 2, 0}, {3, -4.001f, 0}});
    EXPECT_NEAR(spline.mMax, 2.18f, 0.01f);

    setKeys(spline, "linear", {{0, -3, 9}, {1, 2, 9}});
    EXPECT_EQ(spline.mKeys[0]->tangent, 9.0f);
    EXPECT_EQ(spline.mMax, 2.0f);
    EXPECT_EQ(spline.mMin, -3.0f);
    EXPECT_EQ(spline.mAbsMax, 3.0f);
}

TEST(Spline, anyValuesCanBeEvaluated)
{
    Spline spline;
    spline.mValueOffset = 3.0f;
    EXPECT_EQ(spline.getSplineValue(1.0f), 3.0f); // no keys
    for (const char* type : {"square", "linear", "bezier", "smooth", ""})
    {
        for (const float odd : {NAN, INFINITY, -INFINITY, 0.0f, 3.4e38f})
        {
            setKeys(spline, type, {{0, odd, 0}, {odd, 1, 0}, {odd, 2, 0}, {2, odd, 0}});
            for (const float time : {NAN, INFINITY, -INFINITY, 0.0f, 1.0f, 5.0f}) spline.getSplineValue(time);
        }
    }
    setKeys(spline, "linear", {{0, 1, 0}, {1, 5, 0}});
    EXPECT_EQ(spline.getSplineValue(-INFINITY), 4.0f);
    EXPECT_EQ(spline.getSplineValue(INFINITY), 8.0f);
}
