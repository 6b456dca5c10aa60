#include "scenes.h"

#include "picture_files.h"

#include <cmath>
#include <cstdlib>

namespace Scenes
{

namespace
{

// The crevasse runs towards negative z, from its mouth at z = 40 to the heart at z = -920.
const float mouth = 40.0f;
const float heartPlace = -920.0f;
const int segments = 24; // of the walls, each a mesh of its own so that what lies behind is not drawn

float center(float z)
{
    return 30.0f * std::sin(z * 0.0105f) + 13.0f * std::sin(z * 0.027f + 1.2f);
}

// How far down, 0 at the mouth and 1 at the heart.
float progress(float z)
{
    return std::min(1.0f, std::max(0.0f, (mouth - z) / (mouth - heartPlace)));
}

float floorHeight(float z)
{
    return -6.0f - 175.0f * std::pow(progress(z), 0.8f);
}

float halfWidth(float z)
{
    const float end = std::max(0.0f, 1.0f - std::fabs(z - heartPlace) / 90.0f); // a hall around the heart
    return 12.0f + 3.5f * std::sin(z * 0.043f) + 24.0f * end * end;
}

float lipHeight(float x, float z)
{
    return 5.0f * fractal(Vector3f(x * 0.012f, 0.0f, z * 0.012f), 4) * 2.0f;
}

// Where the wall of a side stands at a place and height; side -1 is the left one. Narrow below, wider above, with bands
// that stand out and folds that run down.
float wallPlace(float side, float z, float height)
{
    const float bottom = floorHeight(z);
    const float up = (height - bottom) / std::max(1.0f, -bottom);
    const Vector3f place(center(z) * 0.2f + side * 40.0f, height, z);
    const float bands = 0.8f * std::sin(height * 0.32f + 2.0f * fractal(0.02f * place, 3));
    const float folds = 11.0f * fractal(Vector3f(place.x * 0.03f, height * 0.012f, z * 0.055f), 4);
    const float rough = 2.2f * fractal(0.16f * place, 3);
    const float flare = 1.0f + 0.55f * up * up * std::min(1.0f, -bottom / 60.0f);
    return center(z) + side * (halfWidth(z) * flare + bands + folds + rough);
}

// One side of a stretch of the crevasse, from the floor to the lip.
Surface wall(const std::string& material, float side, float from, float to)
{
    Surface surface(material);
    surface.grid(18, 26, (from - to) / 26.0f, 4.0f, [&](float u, float v) {
        // Seen from inside, u runs right: away on the left wall, towards the viewer on the right one.
        const float z = side < 0 ? from + (to - from) * u : to + (from - to) * u;
        const float height = floorHeight(z) * (1.0f - v);
        const float x = wallPlace(side, z, height);
        return Vector3f(x, v > 0.97f ? lipHeight(x, z) : height, z);
    });
    surface.smoothNormals();
    return surface;
}

// What closes the crevasse behind the heart.
Surface endWall(const std::string& material)
{
    const float z = heartPlace - 56.0f;
    Surface surface(material);
    surface.grid(24, 26, 4.0f, 4.0f, [&](float u, float v) {
        const float across = u * 2.0f - 1.0f;
        const float height = floorHeight(z) * (1.0f - v);
        const float folds = 9.0f * fractal(Vector3f(across * 3.0f, height * 0.012f, 4.0f), 4);
        return Vector3f(center(z) + across * 75.0f, height, z + 26.0f * across * across + folds);
    });
    surface.smoothNormals();
    return surface;
}

Surface floor(float from, float to)
{
    Surface surface("meltwater");
    surface.grid(14, 18, 3.0f, (from - to) / 30.0f, [&](float u, float v) {
        const float z = from + (to - from) * v;
        const float x = center(z) + (u * 2.0f - 1.0f) * (halfWidth(z) + 12.0f);
        return Vector3f(x, floorHeight(z) + 1.2f * fractal(Vector3f(x * 0.09f, 0, z * 0.09f), 3), z);
    });
    surface.smoothNormals();
    return surface;
}

// The glacier on one side of the crevasse, out to the foot of the mountains.
Surface plain(float side)
{
    Surface surface("snow");
    surface.grid(28, 70, 17.0f, 26.0f, [&](float u, float v) {
        const float z = 420.0f - 1500.0f * v;
        const float out = side < 0 ? 1.0f - u : u; // 0 at the crevasse, 1 far out; u runs right
        const float edge = center(std::max(heartPlace, std::min(mouth, z)));
        const float open = z < mouth + 20.0f ? std::min(1.0f, (mouth + 20.0f - z) / 60.0f) : 0.0f;
        const float gap = open * (halfWidth(z) * 1.5f + 6.0f);
        const float x = edge + side * (gap + 620.0f * out * out);
        return Vector3f(x, lipHeight(x, z) - 2.0f * open * (1.0f - out), z);
    });
    surface.smoothNormals();
    return surface;
}

// A ring of peaks around everything.
Surface mountains()
{
    Surface surface("mountain");
    surface.grid(160, 10, 40.0f, 3.0f, [&](float u, float v) {
        const float angle = 2.0f * pi * u;
        const float radius = 1150.0f - 330.0f * (1.0f - v);
        const float ridge = 1.0f - std::fabs(fractal(Vector3f(std::cos(angle) * 7.0f, std::sin(angle) * 7.0f, 2.0f), 5) * 1.8f);
        const float height = 270.0f * ridge * ridge * std::pow(v, 1.3f);
        const float rough = 26.0f * fractal(Vector3f(std::cos(angle) * 30.0f, v * 5.0f, std::sin(angle) * 30.0f), 4) * v;
        return Vector3f(std::cos(angle) * radius, height + rough - 12.0f, std::sin(angle) * radius - 330.0f);
    });
    surface.smoothNormals();
    return surface;
}

Surface sky()
{
    Surface surface("sky");
    surface.grid(48, 14, 4.0f, 1.0f, [&](float u, float v) {
        const float angle = 2.0f * pi * u, height = (v * 1.08f - 0.08f) * pi / 2.0f;
        return Vector3f(std::cos(angle) * std::cos(height) * 1500.0f, std::sin(height) * 1500.0f,
                        std::sin(angle) * std::cos(height) * 1500.0f);
    });
    surface.smoothNormals();
    return surface;
}

// A six-sided crystal with a slanted tip, one metre across and four high, standing on its root.
Surface crystal(const std::string& material)
{
    Surface surface(material);
    surface.revolve({{0.0f, -0.6f}, {0.42f, -0.2f}, {0.5f, 0.6f}, {0.44f, 2.8f}, {0.0f, 4.0f}}, 6, 1.0f, 2.0f);
    for (Vector3f& position : surface.mPositions) position.x += 0.10f * position.y;
    surface.facet();
    return surface;
}

// A span of ice across the crevasse: 2 wide from -1 to 1 in x, thick at its feet.
Surface bridge()
{
    Surface surface("crystal");
    surface.grid(28, 12, 4.0f, 1.0f, [&](float u, float v) {
        const float along = u * 2.0f - 1.0f, angle = 2.0f * pi * v;
        const float thick = 0.10f + 0.22f * along * along;
        const Vector3f core(along, 0.22f * (1.0f - along * along), 0.0f);
        const float rough = 1.0f + 0.5f * fractal(Vector3f(along * 6.0f, std::cos(angle), std::sin(angle)), 3);
        return core + Vector3f(0.0f, -std::cos(angle) * thick * rough, -std::sin(angle) * thick * 1.4f * rough);
    });
    surface.smoothNormals();
    return surface;
}

// The heart: a ball of facets, drawn out and dented.
Surface heart()
{
    Surface surface("heart");
    std::vector<std::pair<float, float>> profile;
    for (int i = 0; i <= 14; i++)
    {
        const float angle = -pi / 2.0f + pi * float(i) / 14.0f;
        profile.push_back({std::max(0.0f, std::cos(angle)) * 1.0f, std::sin(angle) * 1.25f});
    }
    surface.revolve(profile, 18, 3.0f, 3.0f);
    for (Vector3f& p : surface.mPositions) p = (1.0f + 0.28f * fractal(2.1f * p, 3)) * p;
    surface.facet();
    return surface;
}

float unit()
{
    static uint32_t state = 20051u;
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return float(state >> 8) / 16777216.0f;
}

void makeMaterials(Builder& b)
{
    const Vector3f none;
    b.shadeless("sky", Vector3f(1, 1, 1), PictureFiles::SKY);
    b.material("snow", Vector3f(0.62f, 0.76f, 0.88f), Vector3f(0.30f, 0.45f, 0.60f), Vector3f(0.1f, 0.12f, 0.15f), 20, Vector3f(0.02f, 0.04f, 0.07f), PictureFiles::SNOW);
    b.material("mountain", Vector3f(0.34f, 0.50f, 0.64f), Vector3f(0.25f, 0.40f, 0.55f), none, 10, Vector3f(0.025f, 0.06f, 0.095f), PictureFiles::SNOW);
    b.material("meltwater", Vector3f(0.10f, 0.26f, 0.36f), none, Vector3f(0.7f, 0.85f, 0.95f), 90, Vector3f(0.004f, 0.012f, 0.02f), PictureFiles::ICE);
    b.material("crystal", Vector3f(0.60f, 0.85f, 0.95f), Vector3f(0.2f, 0.4f, 0.5f), Vector3f(0.9f, 0.95f, 1.0f), 110, Vector3f(0.03f, 0.07f, 0.10f), PictureFiles::ICE);
    b.material("ember", Vector3f(0.9f, 0.40f, 0.16f), none, Vector3f(1.0f, 0.7f, 0.4f), 60, Vector3f(0.30f, 0.055f, 0.012f), PictureFiles::ICE);
    b.material("heart", Vector3f(0.9f, 0.42f, 0.15f), none, Vector3f(1.0f, 0.8f, 0.5f), 40, Vector3f(0.58f, 0.13f, 0.03f), "");
    // The walls: pale ice above, deep blue below, the haze of depth in what they send out themselves.
    for (int i = 0; i < 6; i++)
    {
        const float d = float(i) / 5.0f;
        b.material("ice" + std::to_string(i), mix(Vector3f(0.74f, 0.88f, 0.95f), Vector3f(0.36f, 0.56f, 0.72f), d), mix(Vector3f(0.25f, 0.42f, 0.52f), Vector3f(0.02f, 0.06f, 0.1f), d),
                   Vector3f(0.45f, 0.55f, 0.6f), 70, mix(Vector3f(0.015f, 0.05f, 0.08f), Vector3f(0.006f, 0.022f, 0.042f), d), PictureFiles::ICE);
    }
}

void placeCrystals(Builder& b)
{
    b.mesh("crystal", {crystal("crystal")});
    for (int i = 0; i < 90; i++)
    {
        const float z = mouth - 90.0f - unit() * (mouth - 90.0f - heartPlace + 10.0f);
        const float side = i % 2 ? 1.0f : -1.0f;
        const float low = floorHeight(z);
        const float height = low + unit() * unit() * std::min(40.0f, -low * 0.6f);
        const float size = 1.0f + 2.4f * unit() * unit();
        y3d::MeshInstance* node = b.instance("crystal" + std::to_string(i), "crystal");
        setPosition(node, Vector3f(wallPlace(side, z, height) + side * 0.6f, height, z));
        // They grow out of the walls, inwards and up; every other one is mirrored.
        const float lean = 20.0f + 45.0f * unit();
        setTurn(node, Vector3f(0.3f * (unit() - 0.5f), 0.2f * (unit() - 0.5f), 1.0f), side * lean);
        setScale(node, Vector3f(i % 4 < 2 ? size : -size, size * (0.8f + 0.8f * unit()), size));
        if (progress(z) > 0.75f && i % 3 == 0) node->mMaterialReferences[0] = "ember";
    }
}

// Shards that turn about each other where the way is wide.
void placeShards(Builder& b)
{
    for (int group = 0; group < 5; group++)
    {
        const float z = -150.0f - 160.0f * float(group);
        y3d::Dummy* hub = b.dummy("shards" + std::to_string(group));
        setPosition(hub, Vector3f(center(z) + (group % 2 ? 5.0f : -5.0f), floorHeight(z) + 21.0f, z));
        hub->mRotation.mEuler = true;
        hub->mRotation.mW.mBaseValue = 0.0f;
        setCurve(hub->mRotation.mY, {{0, 0}, {8, group % 2 ? 2.0f * pi : -2.0f * pi}});
        hub->mRotation.mY.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
        hub->mRotation.mY.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET;
        for (int i = 0; i < 6; i++)
        {
            y3d::MeshInstance* shard = b.instance("shard" + std::to_string(group * 6 + i), "crystal", hub);
            const float angle = 2.0f * pi * float(i) / 6.0f, radius = 2.5f + 1.5f * unit();
            setPosition(shard, Vector3f(std::cos(angle) * radius, 2.0f * (unit() - 0.5f), std::sin(angle) * radius));
            setTurn(shard, Vector3f(unit() - 0.5f, unit() - 0.5f, unit() - 0.5f), 360.0f * unit());
            const float size = 0.35f + 0.5f * unit();
            setScale(shard, Vector3f(i % 2 ? -size : size, size, size));
        }
    }
}

void placeHeart(Builder& b)
{
    b.mesh("heart", {heart()});
    y3d::MeshInstance* node = b.instance("heart", "heart");
    setPosition(node, Vector3f(center(heartPlace), floorHeight(heartPlace) + 17.0f, heartPlace));
    // Two strokes every two seconds, as in the music.
    const std::vector<Stop> beat = {{0.0f, 9.4f}, {0.08f, 10.6f}, {0.22f, 9.3f}, {0.33f, 10.1f}, {0.6f, 9.1f}, {1.4f, 9.0f}, {2.0f, 9.4f}};
    setCurve(node->mScale.mX, beat, true);
    setCurve(node->mScale.mY, beat, true);
    setCurve(node->mScale.mZ, beat, true);
    for (int i = 0; i < 14; i++)
    {
        y3d::MeshInstance* thorn = b.instance("thorn" + std::to_string(i), "crystal");
        const float angle = 2.0f * pi * float(i) / 14.0f;
        setPosition(thorn, Vector3f(center(heartPlace) + std::cos(angle) * 19.0f, floorHeight(heartPlace) - 1.0f, heartPlace + std::sin(angle) * 19.0f));
        setTurn(thorn, Vector3f(std::sin(angle), 0.0f, -std::cos(angle)), -38.0f);
        const float size = 3.0f + 2.0f * unit();
        setScale(thorn, Vector3f(size, size * 1.2f, i % 2 ? size : -size));
    }
}

void placeLights(Builder& b, const std::vector<View>& flight)
{
    b.light("moon", Vector3f(320, 520, 240), Vector3f(0.70f, 0.85f, 1.0f), 2600.0f);
    // A lamp that goes ahead of the camera.
    y3d::Light* lamp = b.light("lamp", Vector3f(), Vector3f(0.80f, 0.92f, 1.0f), 26.0f);
    std::vector<Stop> x, y, z;
    for (const View& view : flight)
    {
        const Vector3f place = view.eye + 5.0f * normalized(view.target - view.eye) + Vector3f(0, 3.0f, 0);
        x.push_back({view.time, place.x});
        y.push_back({view.time, place.y});
        z.push_back({view.time, place.z});
    }
    setCurve(lamp->mPosition.mX, x);
    setCurve(lamp->mPosition.mY, y);
    setCurve(lamp->mPosition.mZ, z);

    // The glow of the heart, and what of it comes through the ice on the way. It beats.
    const float places[] = {heartPlace, -760.0f, -560.0f, -380.0f};
    for (int i = 0; i < 4; i++)
    {
        const float at = places[i];
        const float strength = 1.25f - 0.27f * float(i);
        y3d::Light* glow = b.light("glow" + std::to_string(i), Vector3f(center(at) + (i % 2 ? 7.0f : -7.0f) * (i ? 1.0f : 0.0f), floorHeight(at) + (i ? 5.0f : 14.0f), at + (i ? 0.0f : 10.0f)),
                                   Vector3f(), i ? 9.0f : 34.0f);
        const auto beat = [&](float full) {
            return std::vector<Stop>{{0.0f, 0.55f * full}, {0.08f, full}, {0.22f, 0.5f * full}, {0.33f, 0.85f * full}, {0.7f, 0.45f * full}, {1.4f, 0.4f * full}, {2.0f, 0.55f * full}};
        };
        setCurve(glow->mLightColor.mR, beat(1.0f * strength), true);
        setCurve(glow->mLightColor.mG, beat(0.42f * strength), true);
        setCurve(glow->mLightColor.mB, beat(0.13f * strength), true);
    }
    // Cold light from far above, through the ice.
    b.light("shaft0", Vector3f(center(-250) + 6, floorHeight(-250) + 55, -250), Vector3f(0.25f, 0.55f, 0.75f), 22.0f);
    b.light("shaft1", Vector3f(center(-660) - 5, floorHeight(-660) + 50, -660), Vector3f(0.20f, 0.45f, 0.70f), 22.0f);
}

// Over the glacier for ten seconds, a dive, then along the crevasse a little above its floor.
std::vector<View> flight()
{
    std::vector<View> views;
    const auto along = [](float z, float above) { return Vector3f(center(z), floorHeight(z) + above, z); };
    views.push_back({0.0f, Vector3f(26, 58, 330), Vector3f(0, 58, 0), 0.0f});
    views.push_back({3.0f, Vector3f(20, 46, 270), Vector3f(2, 30, 0), 2.0f});
    views.push_back({6.0f, Vector3f(10, 33, 195), Vector3f(2, 10, 30), 4.0f});
    views.push_back({9.0f, Vector3f(center(100), 20, 105), along(10, 8), -3.0f});
    views.push_back({11.0f, Vector3f(center(45), 12, 45), along(-35, 8), -8.0f});
    float z = -5.0f;
    for (float time = 13.0f; time < 60.5f; time += 2.0f)
    {
        const float above = 15.0f + 3.0f * std::sin(time * 0.45f);
        const float bend = center(z - 45.0f) - center(z);
        views.push_back({time, along(z, above), along(z - 46.0f, above - 3.0f), -0.9f * bend});
        z -= time < 50.0f ? 36.5f : 29.0f;
    }
    views.push_back({64.0f, along(-856.0f, 19.0f), along(heartPlace, 17.0f), 0.0f});
    views.push_back({68.0f, along(-862.0f, 20.0f), along(heartPlace, 17.0f), 0.0f});
    return views;
}

} // namespace

void buildAvgrund(Builder& b)
{
    makeMaterials(b);

    b.mesh("mountains", {mountains()});
    b.instance("mountains", "mountains");
    b.mesh("plainLeft", {plain(-1)});
    b.instance("plainLeft", "plainLeft");
    b.mesh("plainRight", {plain(1)});
    b.instance("plainRight", "plainRight");

    const float length = (mouth - heartPlace + 60.0f) / segments;
    for (int i = 0; i < segments; i++)
    {
        const float from = mouth - length * float(i), to = from - length;
        const std::string ice = "ice" + std::to_string(i * 6 / segments);
        const std::string name = "crevasse" + std::to_string(i);
        b.mesh(name, {wall(ice, -1, from, to), wall(ice, 1, from, to), floor(from, to)});
        b.instance(name, name);
    }

    b.mesh("end", {endWall("ice5")});
    b.instance("end", "end");

    placeCrystals(b);
    placeShards(b);
    b.mesh("bridge", {bridge()});
    for (int i = 0; i < 7; i++)
    {
        const float z = -110.0f - 105.0f * float(i);
        y3d::MeshInstance* span = b.instance("bridge" + std::to_string(i), "bridge");
        setPosition(span, Vector3f(center(z), floorHeight(z) + 28.0f + 6.0f * unit(), z));
        const float size = halfWidth(z) * 1.7f;
        setScale(span, Vector3f(i % 2 ? size : -size, 9.0f + 8.0f * unit(), 10.0f + 6.0f * unit()));
    }
    placeHeart(b);

    const std::vector<View> views = flight();
    placeLights(b, views);
    setFlight(b.camera("camera", 62.0f), views);

    // What is loaded last is drawn last as a rule, and leaves its front face to the effects that follow: the sky, which
    // is always in view and not mirrored.
    b.mesh("sky", {sky()});
    b.instance("sky", "sky");
}

} // namespace Scenes
