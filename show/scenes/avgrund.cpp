#include "scenes.h"

#include "picture_files.h"

#include <cmath>
#include <cstdlib>

namespace Scenes
{

namespace
{

// The crevasse runs towards negative z: it begins as a crack at the tip, is as deep and wide as it should be at the
// mouth, and ends behind the heart.
const float TIP = 62.0f;
const float MOUTH = 8.0f;
const float HEART_PLACE = -920.0f;
const float END = -980.0f;
const int SEGMENTS = 24; // of the walls, each a mesh of its own so that what lies behind is not drawn
const int COLUMNS = 18;  // along one of them

const float SURFACE_METRES = 58.0f; // that one picture of snow covers

float center(float z)
{
    return 30.0f * std::sin(z * 0.0105f) + 13.0f * std::sin(z * 0.027f + 1.2f);
}

// How far down, 0 at the mouth and 1 at the heart.
float progress(float z)
{
    const float start = 40.0f;
    return std::min(1.0f, std::max(0.0f, (start - z) / (start - HEART_PLACE)));
}

// How far the crevasse is open, 0 to 1.
float opening(float z)
{
    return smooth(TIP, MOUTH, z);
}

// The glacier's surface.
float surfaceHeight(float x, float z)
{
    return 10.0f * fractal(Vector3f(x * 0.012f, 0.0f, z * 0.012f), 2);
}

// What the camera flies over.
float floorHeight(float z)
{
    return -6.0f - 175.0f * std::pow(progress(z), 0.8f);
}

// The same, but rising to the surface where the crevasse begins.
float groundHeight(float z)
{
    const float open = std::pow(opening(z), 0.35f);
    return floorHeight(z) * open + (surfaceHeight(center(z), z) - 1.0f) * (1.0f - open);
}

float halfWidth(float z)
{
    const float end = std::max(0.0f, 1.0f - std::fabs(z - HEART_PLACE) / 90.0f); // a hall around the heart
    return 12.0f + 3.5f * std::sin(z * 0.043f) + 24.0f * end * end;
}

// How much wider the crevasse is at a height than at its ground.
float flare(float z, float height)
{
    const float bottom = floorHeight(z);
    const float up = (height - bottom) / std::max(1.0f, -bottom);
    return 1.0f + 0.55f * up * up * std::min(1.0f, -bottom / 60.0f);
}

// Where the wall of a side stands at a place and height; side -1 is the left one. Narrow below, wider above, with bands
// that stand out and folds that run down.
float wallPlace(float side, float z, float height)
{
    const Vector3f place(center(z) * 0.2f + side * 40.0f, height, z);
    const float bands = 0.8f * std::sin(height * 0.32f + 2.0f * fractal(0.02f * place, 3));
    const float folds = 11.0f * fractal(Vector3f(place.x * 0.03f, height * 0.012f, z * 0.055f), 4);
    const float rough = 2.2f * fractal(0.16f * place, 3);
    const float open = opening(z);
    return center(z) +
           side * (open * (halfWidth(z) * flare(z, height) + folds) + std::min(1.0f, 3.0f * open) * (bands + rough));
}

// Where a wall meets the surface: wall, snow bank and plain all come together here.
Vector3f lip(float side, float z)
{
    const float top = surfaceHeight(wallPlace(side, z, 0.0f), z);
    return Vector3f(wallPlace(side, z, top), top, z);
}

// Where the plain of a side ends, a little outside the lip, under the snow bank.
float plainEdge(float side, float z)
{
    const float open = opening(z) * smooth(END - 40.0f, END, z);
    return center(z) + side * open * (halfWidth(z) * flare(z, 0.0f) + 10.0f);
}

// Seen from inside, u runs right: away on the left side, towards the viewer on the right one.
float alongSide(float side, float from, float to, float u)
{
    return side < 0 ? from + (to - from) * u : to + (from - to) * u;
}

// One side of a stretch of the crevasse, from the ground to the lip.
Surface wall(const std::string& material, float side, float from, float to)
{
    Surface surface(material);
    surface.grid(COLUMNS, 25, (from - to) / 26.0f, 4.0f, [&](float u, float v) {
        const float z = alongSide(side, from, to, u);
        const float bottom = groundHeight(z) - 1.0f;
        const float height = bottom + (lip(side, z).y - bottom) * v;
        return Vector3f(wallPlace(side, z, height), height, z);
    });
    surface.smoothNormals();
    return surface;
}

// Wind-blown snow along the lip: it hangs over a little, swells, and sinks into the plain.
Surface bank(float side, float from, float to)
{
    struct Row
    {
        float inward; // metres over the edge
        float out;    // share of the way to where it ends
        float rise;   // metres over the surface
    };
    static const Row ROWS[] = {{-0.4f, 0.0f, -2.4f}, {0.9f, 0.0f, -0.5f}, {0.8f, 0.02f, 0.5f}, {0.0f, 0.10f, 1.2f},
                               {0.0f, 0.28f, 1.3f},  {0.0f, 0.55f, 0.4f}, {0.0f, 1.0f, -2.4f}};
    const int last = int(sizeof(ROWS) / sizeof(ROWS[0])) - 1;
    Surface surface("snow");
    surface.grid(COLUMNS, last, 1.0f, 1.0f, [&](float u, float v) {
        const float z = alongSide(side, from, to, u);
        const Row& row = ROWS[int(v * float(last) + 0.5f)];
        const float open = opening(z);
        const Vector3f edge = lip(side, z);
        const float swell = 0.7f + fractal(Vector3f(z * 0.07f, side * 9.0f, 3.0f), 2);
        const float end = std::max(side * edge.x, side * plainEdge(side, z)) + 11.0f; // to the side
        const float over = std::min(row.inward, row.inward * swell) * open;
        const float x = edge.x + side * (row.out * (end - side * edge.x) - over);
        const float rise = row.rise > 0 ? row.rise * swell : row.rise;
        return Vector3f(x, surfaceHeight(x, z) + rise * open - 0.6f * smooth(0.06f, 0.0f, open), z);
    });
    surface.smoothNormals();
    surface.mapFromAbove(SURFACE_METRES);
    return surface;
}

// What closes the crevasse behind the heart.
Surface endWall(const std::string& material)
{
    const float z = HEART_PLACE - 56.0f;
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

Surface ground(float from, float to)
{
    Surface surface("meltwater");
    surface.grid(12, COLUMNS, 3.0f, (from - to) / 30.0f, [&](float u, float v) {
        const float z = from + (to - from) * v;
        const float x = center(z) + (u * 2.0f - 1.0f) * opening(z) * (halfWidth(z) + 12.0f);
        return Vector3f(x, groundHeight(z) + 1.2f * opening(z) * fractal(Vector3f(x * 0.09f, 0, z * 0.09f), 3), z);
    });
    surface.smoothNormals();
    return surface;
}

// The glacier on one side of the crevasse, out to the foot of the mountains. Its rows are closer where the camera
// flies.
Surface plain(float side)
{
    const float start = 440.0f, near = 320.0f, far = -160.0f, end = -1180.0f; // z
    Surface surface("snow");
    surface.grid(26, 84, 1.0f, 1.0f, [&](float u, float v) {
        const float z = v < 0.05f  ? start + (near - start) * v / 0.05f
                        : v < 0.7f ? near + (far - near) * (v - 0.05f) / 0.65f
                                   : far + (end - far) * (v - 0.7f) / 0.3f;
        const float out = side < 0 ? 1.0f - u : u; // 0 at the crevasse, 1 far out; u runs right
        const float x = plainEdge(side, z) + side * 900.0f * std::pow(out, 2.3f);
        // The bank covers the edge.
        const float under = smooth(TIP + 8.0f, TIP - 4.0f, z) * smooth(0.2f, 0.0f, out);
        return Vector3f(x, surfaceHeight(x, z) - 0.8f * under, z);
    });
    surface.smoothNormals();
    surface.mapFromAbove(SURFACE_METRES);
    return surface;
}

// A closed ring of ridges around everything.
Surface mountains()
{
    const float foot = 790.0f, depth = 360.0f, middle = -330.0f;
    Surface surface("mountain");
    surface.grid(220, 12, 9.0f, 1.0f, [&](float u, float v) {
        const float angle = 2.0f * PI * u, radius = foot + depth * v;
        const float x = std::cos(angle) * radius, z = std::sin(angle) * radius;
        const float crest = ridges(Vector3f(x * 0.0034f, 4.0f, z * 0.0034f), 5); // about 0.4 to 0.9
        const float spurs = fractal(Vector3f(std::cos(angle) * 34.0f, v * 2.0f, std::sin(angle) * 34.0f), 3);
        const float slope = smooth(0.0f, 0.85f, v);
        return Vector3f(x, -14.0f + slope * (60.0f + 330.0f * (crest - 0.35f) + 40.0f * spurs), z + middle);
    });
    surface.smoothNormals();
    return surface;
}

Surface sky()
{
    Surface surface("sky");
    surface.grid(48, 14, 4.0f, 1.0f, [&](float u, float v) {
        const float angle = 2.0f * PI * u, height = (v * 1.08f - 0.08f) * PI / 2.0f;
        return Vector3f(std::cos(angle) * std::cos(height) * 1500.0f, std::sin(height) * 1500.0f,
                        std::sin(angle) * std::cos(height) * 1500.0f);
    });
    surface.smoothNormals();
    return surface;
}

// A six-sided crystal with a slanted tip, one metre across and four high, with a long root to grow from.
Surface crystal(const std::string& material)
{
    Surface surface(material);
    surface.revolve({{0.0f, -2.6f}, {0.3f, -2.5f}, {0.55f, 0.4f}, {0.44f, 2.8f}, {0.0f, 4.0f}}, 6, 1.0f, 2.0f);
    for (Vector3f& position : surface.mPositions) position.x += 0.10f * std::max(0.0f, position.y);
    surface.facet();
    return surface;
}

// A cone of ice one metre long that hangs from the origin.
Surface icicle()
{
    Surface surface("crystal");
    surface.revolve({{0.0f, -1.0f}, {0.03f, -0.75f}, {0.065f, -0.4f}, {0.11f, -0.1f}, {0.16f, 0.12f}}, 7, 1.0f, 1.0f);
    surface.smoothNormals();
    return surface;
}

// What the ice has left standing across the crevasse: it flows out of one wall and into the other.
const float BRIDGE_SAG = 5.0f;
Vector3f bridgeCore(float z, float height, float share)
{
    const float left = wallPlace(-1, z, height) - 4.0f, right = wallPlace(1, z, height) + 4.0f;
    const float along = share * 2.0f - 1.0f;
    return Vector3f(left + (right - left) * share, height + BRIDGE_SAG * (1.0f - along * along), z + 3.0f * along);
}

Surface bridge(const std::string& material, float z, float height, float thick)
{
    Surface surface(material);
    surface.grid(26, 12, 2.0f, 1.5f, [&](float u, float v) {
        const float along = u * 2.0f - 1.0f, angle = 2.0f * PI * v;
        const float radius = thick * (1.0f + 3.2f * along * along * along * along);
        const Vector3f around(0.0f, -std::cos(angle), -std::sin(angle));
        const Vector3f core = bridgeCore(z, height, u);
        const float rough = 1.0f + 0.55f * fractal(0.22f * core + 1.3f * around, 3);
        return core + radius * rough * Vector3f(0.0f, around.y, 1.6f * around.z);
    });
    surface.smoothNormals();
    return surface;
}

// The walls' material at a place: pale above, deep blue below.
const int ICES = 6;
std::string iceAt(float z)
{
    return "ice" + std::to_string(std::min(ICES - 1, int((TIP - z) / (TIP - END) * float(ICES))));
}

void makeMaterials(Builder& b)
{
    const Vector3f none;
    b.shadeless("sky", Vector3f(1, 1, 1), PictureFiles::SKY);
    b.material("snow", Vector3f(0.62f, 0.76f, 0.88f), Vector3f(0.30f, 0.45f, 0.60f), Vector3f(0.1f, 0.12f, 0.15f), 20,
               Vector3f(0.02f, 0.04f, 0.07f), PictureFiles::SNOW);
    b.material("mountain", Vector3f(0.62f, 0.80f, 0.95f), Vector3f(0.25f, 0.40f, 0.55f), none, 10,
               Vector3f(0.05f, 0.10f, 0.15f), PictureFiles::RIDGE);
    b.material("meltwater", Vector3f(0.10f, 0.26f, 0.36f), none, Vector3f(0.7f, 0.85f, 0.95f), 90,
               Vector3f(0.004f, 0.012f, 0.02f), PictureFiles::ICE);
    b.material("crystal", Vector3f(0.60f, 0.85f, 0.95f), Vector3f(0.2f, 0.4f, 0.5f), Vector3f(0.9f, 0.95f, 1.0f), 110,
               Vector3f(0.03f, 0.07f, 0.10f), PictureFiles::ICE);
    b.material("ember", Vector3f(0.9f, 0.40f, 0.16f), none, Vector3f(1.0f, 0.7f, 0.4f), 60,
               Vector3f(0.30f, 0.055f, 0.012f), PictureFiles::ICE);
    b.material("heart", Vector3f(0.50f, 0.13f, 0.06f), none, Vector3f(0.9f, 0.5f, 0.3f), 50,
               Vector3f(0.22f, 0.028f, 0.010f), "");
    b.material("vein", Vector3f(0.9f, 0.5f, 0.2f), none, Vector3f(1.0f, 0.8f, 0.5f), 40, Vector3f(0.80f, 0.28f, 0.06f),
               "");
    // The walls: pale ice above, deep blue below, the haze of depth in what they send out themselves.
    for (int i = 0; i < ICES; i++)
    {
        const float d = float(i) / float(ICES - 1);
        b.material("ice" + std::to_string(i), mix(Vector3f(0.74f, 0.88f, 0.95f), Vector3f(0.36f, 0.56f, 0.72f), d),
                   mix(Vector3f(0.25f, 0.42f, 0.52f), Vector3f(0.02f, 0.06f, 0.1f), d), Vector3f(0.45f, 0.55f, 0.6f),
                   70, mix(Vector3f(0.015f, 0.05f, 0.08f), Vector3f(0.006f, 0.022f, 0.042f), d), PictureFiles::ICE);
    }
}

// Clusters that grow out of the walls, inwards and up: a large crystal between two small ones.
void placeCrystals(Builder& b)
{
    b.mesh("crystal", {crystal("crystal")});
    Chance chance(20051u);
    const int clusters = 30;
    for (int cluster = 0; cluster < clusters; cluster++)
    {
        const float side = cluster % 2 ? 1.0f : -1.0f;
        const float z = -50.0f - (float(cluster) + chance.next()) / float(clusters) * (-40.0f - HEART_PLACE);
        const float low = floorHeight(z);
        const float height = low + 1.0f + chance.next() * chance.next() * std::min(34.0f, -low * 0.5f);
        const float spread = 13.0f + 16.0f * chance.next();
        for (int i = -1; i <= 1; i++)
        {
            const float at = z + 1.6f * (chance.next() - 0.5f), up = height + 1.2f * (chance.next() - 0.5f);
            const float size = (i ? 0.8f : 1.5f) + 0.9f * chance.next();
            const std::string name = "crystal" + std::to_string(cluster * 3 + i + 1);
            y3d::MeshInstance* node = b.instance(name, "crystal");
            setPosition(node, Vector3f(wallPlace(side, at, up) + side * 0.9f, up, at));
            const Vector3f axis(0.9f * (chance.next() - 0.5f), 0.2f * (chance.next() - 0.5f), 1.0f);
            setTurn(node, axis, side * (58.0f + spread * float(i)));
            // Mirrored along the crevasse, so that they still lean inwards.
            setScale(node, Vector3f(size, size * (0.9f + 0.6f * chance.next()), cluster % 2 ? size : -size));
            if (progress(z) > 0.75f && cluster % 2 == 0) node->mMaterialReferences[0] = "ember";
        }
    }
}

// Bridges from wall to wall, with icicles under them.
void placeBridges(Builder& b, const Follow& follow)
{
    b.mesh("icicle", {icicle()});
    Chance chance(771u);
    const int bridges = 7, icicles = 9;
    for (int i = 0; i < bridges; i++)
    {
        const float z = -110.0f - 105.0f * float(i);
        const float height = floorHeight(z) + 27.0f + 6.0f * chance.next();
        const float thick = 1.5f + chance.next();
        const std::string name = "bridge" + std::to_string(i);
        b.mesh(name, {bridge(iceAt(z), z, height, thick)});
        b.instance(name, name);
        for (int k = 0; k < icicles; k++)
        {
            const float share = (float(k) + 0.8f * chance.next() + 0.6f) / float(icicles + 1);
            const Vector3f core = bridgeCore(z, height, share);
            y3d::MeshInstance* node = b.instance(name + "icicle" + std::to_string(k), "icicle");
            setPosition(node, core + Vector3f(0, -0.75f * thick, thick * (chance.next() - 0.5f)));
            const float length = 2.0f + 5.0f * chance.next() * chance.next();
            setScale(node, Vector3f(2.2f + 0.3f * length, length, 2.2f + 0.3f * length));
            node->mRotation.mEuler = true;
            node->mRotation.mW.mBaseValue = 0.0f;
            setSwings(node->mRotation.mX, follow.tones(k), 0.13f, 0.6f);
        }
    }
}

// The heart, in a nest of crystals, with splinters that circle it.
void placeHeart(Builder& b, const std::string& models, const Follow& follow)
{
    const Vector3f place(center(HEART_PLACE), floorHeight(HEART_PLACE) + 17.0f, HEART_PLACE);
    b.mesh("heart", readMesh(models + "/heart.y3d"));
    y3d::MeshInstance* node = b.instance("heart", "heart");
    setPosition(node, place);
    // It beats with the drums as long as they are heard, then by itself, and at the end it stands still.
    for (y3d::TrackBlenderFloat* scale : {&node->mScale.mX, &node->mScale.mY, &node->mScale.mZ})
        setLines(*scale, follow.beat.times(), [&](float time) { return 9.0f + 1.6f * follow.beat.at(time); });
    Chance chance(914u);
    const int thorns = 16;
    for (int i = 0; i < thorns; i++)
    {
        y3d::MeshInstance* thorn = b.instance("thorn" + std::to_string(i), "crystal");
        const float angle = 2.0f * PI * (float(i) + 0.5f * chance.next()) / float(thorns);
        const Vector3f out(std::cos(angle), 0.0f, std::sin(angle));
        if (out.z > 0.7f) continue; // in front of the heart
        setPosition(thorn,
                    Vector3f(place.x, floorHeight(HEART_PLACE) - 1.0f, place.z) + (17.0f + 4.0f * chance.next()) * out);
        setTurn(thorn, Vector3f(out.z, 0.0f, -out.x), 10.0f + 40.0f * chance.next());
        const float size = 1.6f + 2.6f * chance.next();
        setScale(thorn, Vector3f(size, size * 1.2f, size));
    }
    y3d::Dummy* hub = b.dummy("splinters");
    setPosition(hub, place);
    hub->mRotation.mEuler = true;
    hub->mRotation.mW.mBaseValue = 0.0f;
    setCurve(hub->mRotation.mY, {{0, 0}, {16, 2.0f * PI}});
    hub->mRotation.mY.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    hub->mRotation.mY.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET;
    const int splinters = 18;
    for (int i = 0; i < splinters; i++)
    {
        y3d::MeshInstance* splinter = b.instance("splinter" + std::to_string(i), "crystal", hub);
        const float angle = 2.0f * PI * (float(i) + chance.next()) / float(splinters);
        const float radius = 14.0f + 4.0f * chance.next();
        setPosition(splinter,
                    Vector3f(std::cos(angle) * radius, 9.0f * (chance.next() - 0.5f), std::sin(angle) * radius));
        setTurn(splinter, Vector3f(chance.next() - 0.5f, chance.next() - 0.5f, chance.next() - 0.5f),
                360.0f * chance.next());
        const float size = 0.12f + 0.28f * chance.next() * chance.next();
        setScale(splinter, Vector3f(i % 2 ? -size : size, size, size));
    }
}

void placeLights(Builder& b, const std::vector<View>& flight, const Follow& follow)
{
    // Bells glint on the snow.
    y3d::Light* moon = b.light("moon", Vector3f(320, 520, 240), Vector3f(), 2600.0f);
    setColor(moon, follow.withChords(follow.bell), [&](float time) {
        return (0.82f + 1.4f * follow.bell.at(time)) * mix(Vector3f(0.70f, 0.85f, 1.0f), follow.color(time), 0.25f);
    });
    // A lamp that goes ahead of the camera, and flares with the tune, before it with the claps.
    y3d::Light* lamp = b.light("lamp", Vector3f(), Vector3f(), 26.0f);
    setColor(lamp, follow.withChords(follow.call), [&](float time) {
        return (0.85f + 0.9f * follow.call.at(time)) * mix(Vector3f(0.80f, 0.92f, 1.0f), follow.color(time), 0.8f);
    });
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
    const float places[] = {HEART_PLACE, -760.0f, -560.0f, -380.0f};
    for (int i = 0; i < 4; i++)
    {
        const float at = places[i];
        const float strength = 1.25f - 0.27f * float(i);
        y3d::Light* glow = b.light("glow" + std::to_string(i),
                                   Vector3f(center(at) + (i % 2 ? 7.0f : -7.0f) * (i ? 1.0f : 0.0f),
                                            floorHeight(at) + (i ? 5.0f : 14.0f), at + (i ? 0.0f : 10.0f)),
                                   Vector3f(), i ? 9.0f : 34.0f);
        setColor(glow, follow.beat.times(), [&](float time) {
            return (0.5f + 1.6f * follow.beat.at(time)) * strength * Vector3f(1.1f, 0.36f, 0.09f);
        });
    }
    // Cold light from far above, through the ice.
    for (int i = 0; i < 2; i++)
    {
        const float at = i ? -660.0f : -250.0f;
        y3d::Light* shaft = b.light(
            "shaft" + std::to_string(i),
            Vector3f(center(at) + (i ? -5.0f : 6.0f), floorHeight(at) + (i ? 50.0f : 55.0f), at), Vector3f(), 22.0f);
        setColor(shaft, follow.withChords(follow.snare), [&](float time) {
            return (0.8f + 1.0f * follow.snare.at(time)) * mix(Vector3f(0.25f, 0.55f, 0.75f), follow.color(time), 0.7f);
        });
    }
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
    views.push_back({64.0f, along(-870.0f, 17.0f), along(HEART_PLACE, 17.0f), 0.0f});
    views.push_back({68.0f, along(-880.0f, 18.0f), along(HEART_PLACE, 17.0f), 0.0f});
    return views;
}

} // namespace

void buildAvgrund(Builder& b, const std::string& models, const Showing& showing)
{
    const Follow follow(showing);
    makeMaterials(b);

    b.mesh("mountains", {mountains()});
    b.instance("mountains", "mountains");
    b.mesh("plainLeft", {plain(-1)});
    b.instance("plainLeft", "plainLeft");
    b.mesh("plainRight", {plain(1)});
    b.instance("plainRight", "plainRight");

    const float length = (TIP - END) / SEGMENTS;
    for (int i = 0; i < SEGMENTS; i++)
    {
        const float from = TIP - length * float(i), to = from - length;
        const std::string ice = iceAt(0.5f * (from + to));
        const std::string name = "crevasse" + std::to_string(i);
        b.mesh(name, {wall(ice, -1, from, to), wall(ice, 1, from, to), ground(from, to)});
        b.instance(name, name);
        const std::string banks = "banks" + std::to_string(i);
        b.mesh(banks, {bank(-1, from, to), bank(1, from, to)});
        b.instance(banks, banks);
    }

    b.mesh("end", {endWall("ice5")});
    b.instance("end", "end");

    placeCrystals(b);
    placeBridges(b, follow);
    placeHeart(b, models, follow);

    const std::vector<View> views = flight();
    placeLights(b, views, follow);
    setFlight(b.camera("camera", 62.0f), views);

    // What is loaded last is drawn last as a rule, and leaves its front face to the effects that follow: the sky, which
    // is always in view and not mirrored.
    b.mesh("sky", {sky()});
    b.instance("sky", "sky");
}

} // namespace Scenes
