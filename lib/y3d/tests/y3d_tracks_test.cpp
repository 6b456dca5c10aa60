#include "y3d_testing.h"

#include <cmath>

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_exception.h"
#include "y3d_trackcolor4f.h"
#include "y3d_trackfloat.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

using namespace y3d;
using MathBase::Quatf;
using MathBase::Vector2f;

namespace
{

typedef TrackBlenderFloat Curve;
typedef Curve::Key Key;

Curve curveOf(unsigned char interpolation, unsigned char extrapolation, const std::vector<Key>& keys)
{
    Curve curve;
    curve.mBaseValue = 99.0f;
    curve.mInterpolation = interpolation;
    curve.mExtrapolation = extrapolation;
    curve.mKeys = keys;
    return curve;
}

// A key with handles of the length 0.
Key key(float time, float value)
{
    return {Vector2f(time, value), Vector2f(time, value), Vector2f(time, value)};
}

// From (0, 0) to (10, 5), with handles that go on outside in other directions than the line between.
const std::vector<Key> TWO = {{Vector2f(-1, -2), Vector2f(0, 0), Vector2f(1, 1)},
                              {Vector2f(9, 4), Vector2f(10, 5), Vector2f(12, 6)}};
const std::vector<Key> THREE = {TWO[0], key(5.0f, 20.0f), TWO[1]};
const std::vector<Key> ONE = {TWO[0]};

// The segment whose four control points have these times.
std::pair<Key, Key> segment(float q0, float q1, float q2, float q3)
{
    Key a = key(q0, 0.0f);
    Key b = key(q3, 0.0f);
    a.mHandleOut.x = q1;
    b.mHandleIn.x = q2;
    return {a, b};
}

// What a track (or anything else with a loadChunk) takes in from the payload of its chunk, and what it then writes.
template <class Track> std::string reload(Track* track, const std::string& payload)
{
    const std::string bytes = std::string("Y3DF\0\4", 6) + chunk(CHUNK_TRACK_FOV, payload);
    ChunkLib::ReadBuffer reader(reinterpret_cast<const unsigned char*>(bytes.data()),
                                static_cast<unsigned int>(bytes.size()), 1);
    reader.openChunk();
    track->loadChunk(reader);

    ChunkLib::WriteBuffer writer("Y3DF", 0, 4, 1);
    track->writeChunk(writer, CHUNK_TRACK_FOV);
    return bytesOf(writer.getData().data() + 12, writer.getData().size() - 12);
}

} // namespace

TEST(TrackBlenderFloat, valuesInsideAndOutsideTheKeys)
{
    enum
    {
        CONSTANT,
        LINEAR,
        BEZIER,
        CYCLIC = 2,
        OFFSET
    };
    struct
    {
        unsigned char interpolation, extrapolation;
        const std::vector<Key>* keys;
        std::vector<std::pair<float, float>> values; // time and value
    } const cases[] = {
        {LINEAR, CONSTANT, &TWO, {{-1, 0}, {0, 0}, {5, 2.5f}, {10, 5}, {11, 5}}},
        {LINEAR, LINEAR, &TWO, {{-1, -2}, {-2, -4}, {0, 0}, {10, 5}, {12, 6}, {14, 7}}},
        {LINEAR, CYCLIC, &TWO, {{-5, 2.5f}, {25, 2.5f}, {0, 0}, {10, 0}, {-12, 4}, {-10, 5}}},
        {LINEAR, OFFSET, &TWO, {{-5, -2.5f}, {25, 12.5f}, {0, 0}, {10, 5}, {-10, -5}}},
        {LINEAR, 4, &TWO, {{-1, 5}, {5, 2.5f}, {10, 5}, {11, 5}, {std::nanf(""), 5}}},
        {LINEAR, OFFSET, &THREE, {{2.5f, 10}, {7.5f, 12.5f}, {12.5f, 15}, {-7.5f, 5}}},
        {LINEAR, CYCLIC, &THREE, {{5, 20}, {7.5f, 12.5f}, {12.5f, 10}, {-10, 5}, {std::nanf(""), 5}}},
        {CONSTANT, CONSTANT, &THREE, {{-1, 0}, {4.9f, 0}, {5, 20}, {9.9f, 20}, {10, 5}}},
        {CONSTANT, LINEAR, &THREE, {{-9, 0}, {19, 5}}},
        {CONSTANT, OFFSET, &THREE, {{-9, -5}, {-1, 15}, {19, 25}}},
        {3, CONSTANT, &TWO, {{9, 0}}},
        {BEZIER, LINEAR, &TWO, {{-2, -4}, {0, 0}, {10, 5}, {14, 7}}},
        {BEZIER, CONSTANT, &ONE, {{-1, 0}, {0, 0}, {1, 0}}},
        {BEZIER, CYCLIC, &ONE, {{-1, 0}, {0, 0}, {1, 0}}},
        {LINEAR, OFFSET, &ONE, {{-1, 0}, {1, 0}}},
        {LINEAR, LINEAR, &ONE, {{-2, -4}, {2, 2}}},
        {LINEAR, 4, &ONE, {{-2, 0}, {2, 0}, {std::nanf(""), 0}}},
    };
    testing::internal::CaptureStdout();
    for (const auto& test : cases)
    {
        const Curve curve = curveOf(test.interpolation, test.extrapolation, *test.keys);
        for (const auto& [time, value] : test.values)
        {
            SCOPED_TRACE(testing::Message()
                         << "interpolation " << +test.interpolation << ", extrapolation " << +test.extrapolation
                         << ", keys " << test.keys->size() << ", time " << time);
            EXPECT_NEAR(curve.getValue(time), value, 1e-5f);
        }
    }
    EXPECT_EQ(curveOf(BEZIER, LINEAR, {}).getValue(7.0f), 99.0f);
    EXPECT_EQ(curveOf(LINEAR, OFFSET, {key(3, 1), key(3, 2)}).getValue(4.0f), 2.0f);   // no cycle
    EXPECT_EQ(curveOf(LINEAR, LINEAR, {key(0, 1), key(10, 2)}).getValue(11.0f), 2.0f); // handles without direction
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// A movement without end, told by its first cycle, at the frames of a minute: many lie within rounding of a whole
// cycle.
TEST(TrackBlenderFloat, cyclesWithOffsetJoinWithoutAJump)
{
    const auto straight = [](float time) {
        return Key{Vector2f(time - 0.01f, time - 0.01f), Vector2f(time, time), Vector2f(time + 0.01f, time + 0.01f)};
    };
    testing::internal::CaptureStdout();
    int jumps = 0;
    for (const unsigned char interpolation : {1, 2})
    {
        for (const float end : {0.28f, 0.36f, 0.56f})
        {
            for (const std::vector<Key>& keys : {std::vector<Key>{straight(0.04f), straight(end)},
                                                 std::vector<Key>{straight(0.04f), straight(0.08f), straight(end)}})
            {
                const Curve curve = curveOf(interpolation, 3, keys);
                for (int frame = -750; frame < 1500; ++frame)
                {
                    const float time = 0.04f * static_cast<float>(frame);
                    jumps += std::fabs(curve.getValue(time) - time) > 1e-3f;
                }
            }
        }
    }
    EXPECT_EQ(jumps, 0);
    EXPECT_EQ(curveOf(1, 3, {key(0.04f, 0), key(0.08f, 1), key(0.28f, 10)}).getValue(0.28f), 10.0f);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(TrackBlenderFloat, bezierGoesThroughTimeAndValueTogether)
{
    // Times 0, 1, 2, 3 make the parameter a third of the time.
    const Curve even =
        curveOf(2, 0, {{Vector2f(), Vector2f(0, 0), Vector2f(1, 3)}, {Vector2f(2, 0), Vector2f(3, 3), Vector2f()}});
    EXPECT_FLOAT_EQ(even.getValue(1.5f), 1.5f);
    EXPECT_FLOAT_EQ(even.getValue(1.0f), 13.0f / 9.0f);
    // Flat handles of half the length: with u = 1/4 time is 0.296875 and value 0.15625.
    const Curve ease = curveOf(
        2, 0, {{Vector2f(), Vector2f(0, 0), Vector2f(0.5f, 0)}, {Vector2f(0.5f, 1), Vector2f(1, 1), Vector2f()}});
    EXPECT_FLOAT_EQ(ease.getValue(0.296875f), 0.15625f);
    EXPECT_FLOAT_EQ(ease.getValue(0.5f), 0.5f);
    EXPECT_FLOAT_EQ(ease.getValue(0.703125f), 0.84375f);
}

TEST(TrackBlenderFloat, solvesTheTimePolynomialInAllItsCases)
{
    struct
    {
        const char* name;
        float q[4], time;
        std::vector<float> roots;
    } const cases[] = {
        {"cubic, one real root", {0, 0.5f, 0.5f, 1}, 0.5f, {0.5f}},
        {"cubic, one real root outside", {0, 0.5f, 0.5f, 1}, 2.0f, {}},
        {"cubic, two real roots", {0, 0, 1, 1}, 0.0f, {0.0f}},
        {"cubic, three, one inside", {0, 0, 1, 1}, 0.5f, {0.5f}},
        {"cubic, three inside", {0, 2, -1, 1}, 0.5f, {0.8872983f, 0.1127017f, 0.5f}},
        {"quadratic", {0, 0.5f, 1.5f, 3}, 1.0f, {0.4574271f}},
        {"quadratic, two inside", {0, 1.5f, 1.5f, 0}, 0.84375f, {0.75f, 0.25f}},
        {"quadratic, touching", {0, 1.5f, 1.5f, 0}, 1.125f, {0.5f}},
        {"quadratic, none", {0, 1.5f, 1.5f, 0}, 2.0f, {}},
        {"linear", {0, 1, 2, 3}, 2.25f, {0.75f}},
        {"all at one time", {1, 1, 1, 1}, 1.0f, {0.0f}},
        {"all at another time", {1, 1, 1, 1}, 2.0f, {}},
        {"no number", {0, std::nanf(""), 1, 1}, 0.5f, {}},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        const auto keys = segment(test.q[0], test.q[1], test.q[2], test.q[3]);
        float roots[3];
        const int count = Curve().solveForTime(keys.first, keys.second, test.time, roots);
        ASSERT_EQ(count, static_cast<int>(test.roots.size()));
        for (int i = 0; i < count; ++i) EXPECT_NEAR(roots[i], test.roots[i], 1e-6f);
    }
    EXPECT_NEAR(Sqrt3d(-27.0), -3.0, 1e-12);
    EXPECT_NEAR(Sqrt3d(27.0), 3.0, 1e-12);
    EXPECT_EQ(Sqrt3d(0.0), 0.0);
}

TEST(TrackBlenderFloat, tellsOfKeysOutOfOrderAndOfSegmentsWithoutARoot)
{
    const Curve backwards = curveOf(1, 2, {key(10, 4), key(0, 8)});
    testing::internal::CaptureStdout();
    EXPECT_FLOAT_EQ(backwards.getValue(5.0f), 6.0f);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error (10.000000,0.000000),5.000000!\n");

    Curve broken = curveOf(2, 3, TWO);
    broken.mKeys[0].mHandleOut.x = std::nanf("");
    testing::internal::CaptureStdout();
    EXPECT_FLOAT_EQ(broken.getValue(15.0f), 5.0f);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error, solveForTime returned zero\n");
}

TEST(TrackBlenderFloat, rememberedSegmentChangesNoValue)
{
    Curve curve = curveOf(1, 2, {});
    for (int i = 0; i < 1000; ++i) // some of them at the same time, up to 208
    {
        curve.mKeys.push_back(key(0.25f * static_cast<float>(i / 2 + i / 3), static_cast<float>(i * 7 % 31)));
    }
    for (int i = 0; i < 4000; ++i) // forwards, then by jumps back and forth
    {
        const float time = i < 2000 ? 0.11f * static_cast<float>(i) : static_cast<float>(i * 7919 % 2090) * 0.1f;
        ASSERT_EQ(curve.getValue(time), Curve(curveOf(1, 2, curve.mKeys)).getValue(time)) << "at " << time;
    }
}

TEST(TrackBlenderFloat, loadShortensHandlesThatReachAcrossEachOther)
{
    struct
    {
        const char* name;
        char interpolation;
        float out[2], in[2], expectedOut[2], expectedIn[2];
    } const cases[] = {
        {"longer than the segment", 2, {8, 4}, {2, 1}, {5, 2.5f}, {5, 2.5f}},
        {"pointing away count too", 2, {-15, 3}, {5, 5}, {-7.5f, 1.5f}, {7.5f, 5}},
        {"as long as the segment", 2, {4, 9}, {4, -9}, {4, 9}, {4, -9}},
        {"of length 0", 2, {0, 7}, {10, 8}, {0, 7}, {10, 8}},
        {"of a linear curve", 1, {8, 4}, {2, 1}, {8, 4}, {2, 1}},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        const std::string modes = {test.interpolation, 3};
        const std::string before =
            modes + floats({-50, 1, 0, 0, test.out[0], test.out[1], test.in[0], test.in[1], 10, 5, 70, 2});
        const std::string after = modes + floats({-50, 1, 0, 0, test.expectedOut[0], test.expectedOut[1],
                                                  test.expectedIn[0], test.expectedIn[1], 10, 5, 70, 2});
        const std::string base = chunk(CHUNK_VALUE_FLOAT, floats({1.5f}));
        TrackFloat track;
        EXPECT_EQ(reload(&track, chunk(CHUNK_CURVE_1, before) + base), chunk(CHUNK_CURVE_1, after) + base);
    }
}

TEST(TrackBlenderFloat, numberOfKeysFollowsFromTheLengthOfTheChunk)
{
    const std::pair<int, std::size_t> cases[] = {{0, 0}, {1, 0}, {2, 0}, {25, 0}, {26, 1}, {49, 1}, {50, 2}};
    for (const auto& [length, count] : cases)
    {
        TrackFloat track;
        track.mCurve.mKeys.resize(7);
        track.mCurve.mLastKey = 5;
        reload(&track, chunk(CHUNK_CURVE_1, std::string(static_cast<std::size_t>(length), '\1')));
        EXPECT_EQ(track.mCurve.mKeys.size(), count) << "of a chunk of " << length << " bytes";
        EXPECT_EQ(track.mCurve.mInterpolation, length >= 1);
        EXPECT_EQ(track.mCurve.mExtrapolation, length >= 2);
        EXPECT_EQ(track.mCurve.mLastKey, -1);
    }
}

TEST(Tracks, keepCurvesAndBaseByComponent)
{
    std::string curve[4];
    for (int i = 0; i < 4; ++i)
        curve[i] = chunk(0xFB00 + 16 * i, std::string("\1\2", 2) + floats({0, 0, 1, 10.0f + i, 2, 0}));
    const std::string vector = chunk(CHUNK_VALUE_VECTOR3, floats({0.5f, 0.25f, 0.125f}));
    const std::string quat = chunk(CHUNK_VALUE_VECTOR4, floats({0, 0.6f, 0, 0.8f}));

    TrackVector3f position;
    EXPECT_EQ(reload(&position, vector + chunk(0xFB40, "567") + curve[3] + curve[1]), curve[1] + curve[3] + vector);
    const MathBase::Vector3f place = position.getValue(0.0f);
    EXPECT_TRUE(place.x == 11.0f && place.y == 0.25f && place.z == 13.0f);

    TrackColor4f color;
    EXPECT_EQ(reload(&color, quat + curve[2] + curve[0]), curve[0] + curve[2] + quat);
    const Color4f shade = color.getValue(0.0f);
    EXPECT_TRUE(shade.r == 10.0f && shade.g == 0.6f && shade.b == 12.0f && shade.a == 0.8f);

    TrackQuatf rotation;
    EXPECT_EQ(reload(&rotation, curve[0] + curve[1] + curve[2] + curve[3] + quat),
              curve[0] + curve[1] + curve[2] + curve[3] + quat);
    EXPECT_NEAR(rotation.getValue(0.0f).z, 13.0f / std::sqrt(534.0f), 1e-6f); // 100 + 121 + 144 + 169
    EXPECT_EQ(reload(&rotation, vector + curve[0] + curve[2]), curve[1] + curve[2] + curve[3] + vector);
    rotation.clear();
    EXPECT_EQ(reload(&rotation, ""), chunk(CHUNK_VALUE_VECTOR4, floats({1, 0, 0, 0})));
}

TEST(TrackQuatf, alwaysGivesASoundRotation)
{
    struct
    {
        const char* name;
        unsigned int id;
        std::vector<float> base;
        Quatf expected;
    } const cases[] = {
        {"normalised", CHUNK_VALUE_VECTOR4, {0, 3, 0, 4}, Quatf(0, 0.6f, 0, 0.8f)},
        {"zero", CHUNK_VALUE_VECTOR4, {0, 0, 0, 0}, Quatf()},
        {"no number", CHUNK_VALUE_VECTOR4, {1, std::nanf(""), 0, 0}, Quatf()},
        {"angles", CHUNK_VALUE_VECTOR3, {1.5707964f, 0, 0}, Quatf(0.70710678f, 0.70710678f, 0, 0)},
        {"an infinite angle", CHUNK_VALUE_VECTOR3, {INFINITY, 0, 0}, Quatf()},
    };
    for (const auto& test : cases)
    {
        TrackQuatf track;
        reload(&track, chunk(test.id, floats(test.base)));
        const Quatf value = track.getValue(1.0f), &expected = test.expected;
        const Quatf off(value.w - expected.w, value.x - expected.x, value.y - expected.y, value.z - expected.z);
        EXPECT_NEAR(off.length(), 0.0f, 2e-6f) << test.name;
    }

    TrackQuatf track;
    track.setBaseValue(Quatf(0, 1, 0, 0));
    EXPECT_EQ(track.getValue(0.0f).x, 1.0f);
    track.mX.mKeys = {key(0, 0)}; // a curve that takes the only component away
    EXPECT_EQ(track.getValue(0.0f).w, 1.0f);
    track.mEuler = true;
    EXPECT_THROW(track.setBaseValue(Quatf()), Exception);
}
